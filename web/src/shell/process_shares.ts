// Compares two successive lists of processes.
import type { Message } from '../bridge/protocol.ts';

export type Running = Message<'processes'>['processes'][number];

export interface ProcessRow extends Running {
  /** Percent of all processors since the previous list; absent if there is nothing to compare with. */
  share?: number;
  /** The processes that the row sums up, if it stands for several. */
  members?: readonly ProcessRow[];
}

export const membersOf = (row: ProcessRow): readonly ProcessRow[] => row.members ?? [row];

const ownName = 'varnel.exe';

/** Returns true for Varnel itself. */
export const isOwn = ({ name }: Running) => name.toLowerCase() === ownName;

/** Returns one row per program, with the sums of its processes. */
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
      ...(members.some((one) => one.share !== undefined) && {
        share: Math.min(
          100,
          sum((one) => one.share ?? 0),
        ),
      }),
      ...(members.length > 1 && { members }),
    };
  });
}

/** Returns false for a process that the host does not open: only those have zero memory and zero time. */
export const isMeasured = ({ memUsageMB, cpuTimeSec }: Running) => memUsageMB > 0 || cpuTimeSec > 0;

/** Returns true for the same process, as opposed to another one with its reused number. */
export function isSameProcess(before: Running, now: Running): boolean {
  return before.pid === now.pid && before.name === now.name && before.cpuTimeSec <= now.cpuTimeSec;
}

/** Windows counts processor time in steps of about 16 ms, so a share over a shorter span would be noise. */
export const shortestSpanSeconds = 1;

/** A share over a longer span would say little about the present. */
const longestSpanSeconds = 10;

/** Adds the shares. If the span is too short, they are those of the previous list. */
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

/** Formats seconds as "1:02:03". */
export function clockText(seconds: number): string {
  const whole = Math.floor(seconds);
  const two = (n: number) => String(n % 60).padStart(2, '0');
  return `${Math.floor(whole / 3600)}:${two(Math.floor(whole / 60))}:${two(whole)}`;
}
