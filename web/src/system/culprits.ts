import { groupByName, isMeasured, type ProcessRow } from '../shell/process_shares.ts';

const shown = 5;

/** Returns the programs that use most of something, the greatest first. Leaves out those that use nothing. */
export function culprits(rows: readonly ProcessRow[], of: 'share' | 'memUsageMB'): ProcessRow[] {
  return groupByName(rows.filter(isMeasured))
    .filter((one) => (one[of] ?? 0) > 0)
    .sort((a, b) => b[of]! - a[of]!)
    .slice(0, shown);
}

/**
 * Returns the used and the total bytes of the memory that Windows can use, which the hint tells in the
 * host's words, or undefined without a size.
 */
export function memoryInUse(hint: string, percent: number) {
  const total = Number(/K dispozici pro systém: ([\d.]+) GB/.exec(hint)?.[1] ?? 0) * 2 ** 30;
  return total > 0 ? { used: (total * percent) / 100, total } : undefined;
}
