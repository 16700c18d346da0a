// Installs and removes one job at a time: the tools share locks, and their messages do not say which run
// they belong to.
import { appendLines, percentOf, type Incoming, type Line } from '../base/lines.ts';
import { isSuccess, needsRestart, type JobKind } from './exit_codes.ts';

export interface Task {
  kind: JobKind;
  /** ID of a package, or title of a driver. */
  id: string;
  name: string;
}

export interface Job extends Task {
  state: 'waiting' | 'running' | 'done' | 'restart' | 'failed';
  lines: readonly Line[];
  /** Progress of the tool's current step; absent if the tool gives none. */
  percent?: number;
  /** Exit code; absent if the tool's end was not reported. */
  code?: number;
  /** Windows must be restarted, even after a failure. */
  restart?: boolean;
  /** When the tool last printed something (ms since the epoch). */
  lastOutput?: number;
  /** Runs with the user's own rights, because the helper service could not be reached. */
  unelevated?: true;
  /** No longer waited for, although its tool may still end. */
  abandoned?: true;
}

export type Jobs = readonly Job[];

export const sameJob = (a: Task, b: Task) => a.kind === b.kind && a.id === b.id;
/** Returns the stream of a job's messages. They do not say which job they belong to. */
const streamOf = (kind: JobKind) => (kind === 'uninstall' ? 'uninstall_stream' : 'update_stream');
export type Stream = ReturnType<typeof streamOf>;
/** Returns the word for a job's state. An unknown end is not a failure. */
export const stateWord = ({ state, code }: Job) =>
  state === 'failed' && code === undefined ? 'unknown' : state;
export const isPending = ({ state }: Job) => state === 'waiting' || state === 'running';

/**
 * Adds tasks at the end, except those that are waiting or running. A new job replaces an ended one of the
 * same task. An abandoned one stays, because its tool may still be running.
 */
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

/** Starts the first waiting job, unless one is running. */
export function startNext(jobs: Jobs, now: number): Jobs {
  if (jobs.some(({ state }) => state === 'running')) return jobs;
  return change(jobs, 'waiting', (job) => ({ ...job, state: 'running', lastOutput: now }));
}

/** Adds an output line to the running job. */
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

/** Ends the running job whose tool was not started or is no longer waited for. */
export function endUnknown(jobs: Jobs, abandoned?: true, restart = false): Jobs {
  return change(jobs, 'running', (job) => ({
    ...ended(job, undefined, restart),
    ...(abandoned && { abandoned }),
  }));
}

/**
 * Ends a job whose tool has ended. The end could also belong to a job of the same stream that is no longer
 * waited for, so it is credited only if there is a single candidate.
 */
export function toolEnded(jobs: Jobs, stream: Stream, code: number | undefined, restart: boolean): Jobs {
  const open = jobs.filter(
    ({ kind, state, abandoned }) => streamOf(kind) === stream && (abandoned || state === 'running'),
  );
  if (open.length === 1) return jobs.with(jobs.indexOf(open[0]!), ended(open[0]!, code, restart));
  return open.some(({ state }) => state === 'running') ? endUnknown(jobs, true, restart) : jobs;
}

/**
 * Notes that the host found the helper service missing. This can only concern the driver that is just
 * starting, if there is one.
 */
export function withoutService(jobs: Jobs): Jobs {
  return change(jobs, 'running', (job) =>
    job.kind === 'driver' && !job.unelevated && job.lines.length <= 1 ? { ...job, unelevated: true } : job,
  );
}

/**
 * Removes the jobs that have ended, but keeps an abandoned one as long as its end could be mistaken for
 * another's.
 */
export const pendingOnly = (jobs: Jobs): Jobs =>
  jobs.some(isPending) ? jobs.filter((job) => isPending(job) || job.abandoned) : [];

/** Removes the jobs that are not running yet. */
export const withoutWaiting = (jobs: Jobs): Jobs => jobs.filter(({ state }) => state !== 'waiting');
