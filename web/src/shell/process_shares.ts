// What two lists of processes, taken one after the other, say together.
import type { Message } from '../bridge/protocol.ts';

export type Running = Message<'processes'>['processes'][number];

export interface ProcessRow extends Running {
  /** Percent of all processors since the list before; absent when there is nothing to compare with. */
  share?: number;
  /** What a row stands for that is the sum of several processes. */
  members?: readonly ProcessRow[];
}

export const membersOf = (row: ProcessRow): readonly ProcessRow[] => row.members ?? [row];

const ownName = 'varnel.exe';

/** Varnel itself. */
export const isOwn = ({ name }: Running) => name.toLowerCase() === ownName;

/** One row per program: its processes summed up. */
export function groupByName(rows: readonly ProcessRow[]): ProcessRow[] {
  const groups = new Map<string, ProcessRow[]>();
  for (const row of rows) {
    const name = row.name.toLowerCase();
    (groups.get(name) ?? groups.set(name, []).get(name)!).push(row);
  }
  return [...groups.values()].map((members) => {
    const sum = (of: (row: ProcessRow) => number) => members.reduce((all, one) => all + of(one), 0);
    return {
      ...members[0]!,
      memUsageMB: sum((one) => one.memUsageMB),
      mem: sum((one) => one.mem),
      cpuTimeSec: sum((one) => one.cpuTimeSec),
      isSystem: members.every((one) => one.isSystem),
      ...(members.some((one) => one.share !== undefined) && { share: sum((one) => one.share ?? 0) }),
      ...(members.length > 1 && { members }),
    };
  });
}

/** Memory and time are zero together only for those that the host does not open. */
export const isMeasured = ({ memUsageMB, cpuTimeSec }: Running) => memUsageMB > 0 || cpuTimeSec > 0;

/** The same process, not another one that has got its number. */
export function isSameProcess(before: Running, now: Running): boolean {
  return before.pid === now.pid && before.name === now.name && before.cpuTimeSec <= now.cpuTimeSec;
}

/** Windows counts processor time in steps of about 16 ms: over less than this a share would be noise. */
export const shortestSpanSeconds = 1;

/** Over more than this a share would say little about now. */
const longestSpanSeconds = 10;

/** Over too short a span the shares are those of the list before. */
export function withShares(
  before: readonly ProcessRow[],
  now: readonly Running[],
  elapsedSeconds: number,
  processors: number,
): ProcessRow[] {
  const known = new Map(before.map((one) => [one.pid, one]));
  return now.map((one) => {
    const last = known.get(one.pid);
    if (!last || !isMeasured(one) || !isSameProcess(last, one)) return one;
    if (elapsedSeconds > longestSpanSeconds) return one;
    if (elapsedSeconds < shortestSpanSeconds)
      return last.share === undefined ? one : { ...one, share: last.share };
    return {
      ...one,
      share: Math.min(100, (100 * (one.cpuTimeSec - last.cpuTimeSec)) / elapsedSeconds / processors),
    };
  });
}

/** Seconds as "1:02:03". */
export function clockText(seconds: number): string {
  const whole = Math.floor(seconds);
  const two = (n: number) => String(n % 60).padStart(2, '0');
  return `${Math.floor(whole / 3600)}:${two(Math.floor(whole / 60))}:${two(whole)}`;
}
