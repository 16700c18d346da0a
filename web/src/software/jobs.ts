// Installing and removing, one at a time: the tools share locks, and their messages do not tell which run they belong to.
import { appendLines, percentOf, type Incoming, type Line } from '../base/lines.ts';
import { isSuccess, needsRestart, type JobKind } from './exit_codes.ts';

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
  /** When the tool last printed something (ms since the epoch). */
  lastOutput?: number;
  /** Runs with the user's own rights: the helper service could not be reached. */
  unelevated?: true;
  /** Not waited for any longer; its tool may still end. */
  abandoned?: true;
}

export type Jobs = readonly Job[];

export const sameJob = (a: Task, b: Task) => a.kind === b.kind && a.id === b.id;
/** The messages that a job is told of. They do not say which job they belong to. */
const streamOf = (kind: JobKind) => (kind === 'uninstall' ? 'uninstall_stream' : 'update_stream');
export type Stream = ReturnType<typeof streamOf>;
/** What is said of a job; an end that is not known is no failure. */
export const stateWord = ({ state, code }: Job) =>
  state === 'failed' && code === undefined ? 'unknown' : state;
export const isPending = ({ state }: Job) => state === 'waiting' || state === 'running';

/** What waits or runs already is not added again; what has ended starts anew, at the end. One whose tool may still run stays as well. */
export function addTasks(jobs: Jobs, tasks: readonly Task[]): Jobs {
  const fresh = tasks.filter((task) => !jobs.some((job) => isPending(job) && sameJob(job, task)));
  return [
    ...jobs.filter((job) => job.abandoned || !fresh.some((task) => sameJob(job, task))),
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
  return change(jobs, 'waiting', (job) => ({ ...job, state: 'running', lastOutput: now }));
}

/** A line of the tool that runs. */
export function addLine(jobs: Jobs, stream: Stream, line: Incoming, now: number): Jobs {
  return change(jobs, 'running', (job) => {
    if (streamOf(job.kind) !== stream) return job;
    const { percent: _, ...rest } = job;
    const percent = percentOf(line.text);
    return {
      ...rest,
      lines: appendLines(job.lines, [line]),
      lastOutput: now,
      ...(percent !== undefined && { percent }),
    };
  });
}

function ended({ percent: _, abandoned: __, ...job }: Job, code: number | undefined, restart: boolean): Job {
  const needed = restart || needsRestart(code);
  const good = isSuccess(code);
  const state = !good ? 'failed' : needed ? 'restart' : 'done';
  return { ...job, state, ...(code !== undefined && { code }), ...(needed && { restart: true }) };
}

/** The tool that runs has not been started, or is not waited for any longer. */
export function endUnknown(jobs: Jobs, abandoned?: true, restart = false): Jobs {
  return change(jobs, 'running', (job) => ({
    ...ended(job, undefined, restart),
    ...(abandoned && { abandoned }),
  }));
}

/**
 * A tool has ended. While one of the same stream that is not waited for any longer may still run, the end could be its own:
 * it is credited only when there is no other.
 */
export function toolEnded(jobs: Jobs, stream: Stream, code: number | undefined, restart: boolean): Jobs {
  const open = jobs.filter(
    ({ kind, state, abandoned }) => streamOf(kind) === stream && (abandoned || state === 'running'),
  );
  if (open.length === 1) return jobs.with(jobs.indexOf(open[0]!), ended(open[0]!, code, restart));
  return open.some(({ state }) => state === 'running') ? endUnknown(jobs, true, restart) : jobs;
}

/** The host has told that the helper service is missing: the driver that was about to be installed is meant, if there is one. */
export function withoutService(jobs: Jobs): Jobs {
  return change(jobs, 'running', (job) =>
    job.kind === 'driver' && !job.unelevated && job.lines.length <= 1 ? { ...job, unelevated: true } : job,
  );
}

/** Takes away what has ended; a tool that was given up is remembered as long as its end could be taken for another's. */
export const pendingOnly = (jobs: Jobs): Jobs =>
  jobs.some(isPending) ? jobs.filter((job) => isPending(job) || job.abandoned) : [];

/** Takes away what does not run yet. */
export const withoutWaiting = (jobs: Jobs): Jobs => jobs.filter(({ state }) => state !== 'waiting');
