// Installing and removing, one at a time: the tools share locks, and their messages do not tell which run they belong to.
import { appendLines, looksLikeRedraw, type Incoming, type Line } from './terminal.ts';

export type JobKind = 'update' | 'driver' | 'uninstall';

export interface Task {
  kind: JobKind;
  /** Identifier of a package, title of a driver. */
  id: string;
  name: string;
}

export interface Job extends Task {
  state: 'waiting' | 'running' | 'done' | 'restart' | 'failed';
  lines: readonly Line[];
  /** Of the step that the tool is at; absent when it gives none. */
  percent?: number;
  /** Exit code; absent when the tool's end was not reported. */
  code?: number;
  /** Windows has to be restarted, also after a failure. */
  restart?: boolean;
  /** When the tool was last heard of (ms since the epoch). */
  heard?: number;
  /** Runs with the person's own rights: the helper service could not be reached. */
  alone?: true;
  /** Not waited for any longer; its tool may still end. */
  lost?: true;
}

export type Jobs = readonly Job[];

export const sameJob = (a: Task, b: Task) => a.kind === b.kind && a.id === b.id;
/** The messages that a job is told of. They do not say which job they belong to. */
export const streamOf = (kind: JobKind) => (kind === 'uninstall' ? 'uninstall_stream' : 'update_stream');
export type Stream = ReturnType<typeof streamOf>;
/** What is said of a job; an end that is not known is no failure. */
export const stateWord = ({ state, code }: Job) =>
  state === 'failed' && code === undefined ? 'unknown' : state;
export const isPending = ({ state }: Job) => state === 'waiting' || state === 'running';

/** What waits or runs already is not added again; what has ended starts anew, at the end. One whose tool may still run stays as well. */
export function addTasks(jobs: Jobs, tasks: readonly Task[]): Jobs {
  const fresh = tasks.filter((task) => !jobs.some((job) => isPending(job) && sameJob(job, task)));
  return [
    ...jobs.filter((job) => job.lost || !fresh.some((task) => sameJob(job, task))),
    ...fresh.map(({ kind, id, name }): Job => ({ kind, id, name, state: 'waiting', lines: [] })),
  ];
}

const change = (jobs: Jobs, state: Job['state'], to: (job: Job) => Job): Jobs => {
  const job = jobs.find((one) => one.state === state);
  const changed = job && to(job);
  return job === changed ? jobs : jobs.with(jobs.indexOf(job!), changed!);
};

/** Starts the first that waits, unless one runs. */
export function startNext(jobs: Jobs, now: number): Jobs {
  if (jobs.some(({ state }) => state === 'running')) return jobs;
  return change(jobs, 'waiting', (job) => ({ ...job, state: 'running', heard: now }));
}

/** A line of the tool that runs. */
export function hearLine(jobs: Jobs, stream: Stream, line: Incoming, now: number): Jobs {
  return change(jobs, 'running', (job) => {
    if (streamOf(job.kind) !== stream) return job;
    const { percent: _, ...rest } = job;
    const percent = percentOf(line.text);
    return {
      ...rest,
      lines: appendLines(job.lines, [line]),
      heard: now,
      ...(percent !== undefined && { percent }),
    };
  });
}

function ended({ percent: _, lost: __, ...job }: Job, code: number | undefined, restart: boolean): Job {
  const needed = restart || restartCodes.has(code ?? 0);
  const good = code === 0 || finishedCodes.has(code ?? -1);
  const state = !good ? 'failed' : needed ? 'restart' : 'done';
  return { ...job, state, ...(code !== undefined && { code }), ...(needed && { restart: true }) };
}

/** The tool that runs has not been started, or is not waited for any longer. */
export function endUnknown(jobs: Jobs, lost?: true, restart = false): Jobs {
  return change(jobs, 'running', (job) => ({ ...ended(job, undefined, restart), ...(lost && { lost }) }));
}

/**
 * A tool has ended. While one of the same stream that is not waited for any longer may still run, the end could be its own:
 * it is credited only when there is no other.
 */
export function toolEnded(jobs: Jobs, stream: Stream, code: number | undefined, restart: boolean): Jobs {
  const open = jobs.filter(
    ({ kind, state, lost }) => streamOf(kind) === stream && (lost || state === 'running'),
  );
  if (open.length === 1) return jobs.with(jobs.indexOf(open[0]!), ended(open[0]!, code, restart));
  return open.some(({ state }) => state === 'running') ? endUnknown(jobs, true, restart) : jobs;
}

/** The host has told that the helper service is missing: the driver that was about to be installed is meant, if there is one. */
export function withoutService(jobs: Jobs): Jobs {
  return change(jobs, 'running', (job) =>
    job.kind === 'driver' && !job.alone && job.lines.length <= 1 ? { ...job, alone: true } : job,
  );
}

/** Takes away what has ended; a tool that was given up is remembered as long as its end could be taken for another's. */
export const pendingOnly = (jobs: Jobs): Jobs =>
  jobs.some(isPending) ? jobs.filter((job) => isPending(job) || job.lost) : [];

/** Takes away what does not run yet. */
export const withoutWaiting = (jobs: Jobs): Jobs => jobs.filter(({ state }) => state !== 'waiting');

const unitBytes: Record<string, number> = { B: 1, KB: 2 ** 10, MB: 2 ** 20, GB: 2 ** 30, TB: 2 ** 40 };

/** 0 to 100 out of a line of progress: "40%", or "30.1 MB / 63.0 MB". */
export function percentOf(text: string): number | undefined {
  if (!looksLikeRedraw(text)) return undefined;
  const percent = /(\d+(?:[.,]\d+)?)\s*%/.exec(text)?.[1];
  const sizes = /(\d+(?:[.,]\d+)?)\s*([KMGT]?B)\s*\/\s*(\d+(?:[.,]\d+)?)\s*([KMGT]?B)/i.exec(text);
  const number = (figure = '') => Number(figure.replace(',', '.'));
  const bytes = (figure = '', unit = '') => number(figure) * (unitBytes[unit.toUpperCase()] ?? 1);
  const share =
    percent !== undefined
      ? number(percent)
      : sizes
        ? (100 * bytes(sizes[1], sizes[2])) / bytes(sizes[3], sizes[4])
        : NaN;
  return Number.isFinite(share) ? Math.min(100, share) : undefined;
}

const packageManagerCodes = 0x8a150000;
const restartCodes = new Set([0x109, 0x10a, 0x10b].map((low) => packageManagerCodes + low));
const finishedCodes = new Set([0x109, 0x10b].map((low) => packageManagerCodes + low));

const packageCodes = {
  0x02: 'oldTool',
  0x06: 'installer',
  0x08: 'download',
  0x0f: 'source',
  0x10: 'noInstaller',
  0x11: 'hash',
  0x14: 'notFound',
  0x16: 'several',
  0x19: 'rights',
  0x2b: 'noUpdate',
  0x2f: 'noUninstall',
  0x30: 'uninstaller',
  0x3a: 'policy',
  0x45: 'source',
  0x46: 'agreements',
  0x4b: 'source',
  0x4f: 'noUpdate',
  0x50: 'unknownVersion',
  0x56: 'elevated',
  0x68: 'pinned',
  0x7d: 'elevated',
  0x101: 'inUse',
  0x102: 'otherInstall',
  0x103: 'inUse',
  0x105: 'diskFull',
  0x109: 'restart',
  0x10a: 'restartFirst',
  0x10b: 'restart',
  0x10c: 'cancelled',
} as const;

const driverCodes = {
  1: 'notStarted',
  2: 'notOffered',
  3: 'download',
  4: 'driver',
  5: 'rights',
  6: 'search',
  7: 'noAgent',
} as const;

type Values<T> = T[keyof T];
export type CodeWord = Values<typeof packageCodes> | Values<typeof driverCodes> | 'refused';

/** What is known about an exit code (unsigned, 32 bits). */
export function wordOf(kind: JobKind, code: number): CodeWord | undefined {
  if (code === 999) return 'refused';
  if (kind === 'driver') return driverCodes[code as keyof typeof driverCodes];
  return code === 1 ? 'notStarted' : packageCodes[(code - packageManagerCodes) as keyof typeof packageCodes];
}

/** Codes of the package manager are known by their hexadecimal form. */
export const codeText = (code: number) =>
  code >= 2 ** 31 ? `0x${code.toString(16).toUpperCase()}` : String(code);
