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
 * Returns the used and the total bytes of the memory, whose size begins its description ("32 GB DDR5"), or
 * undefined without a size.
 */
export function memoryInUse(description: string, percent: number) {
  const total = parseFloat(/^([\d.]+) GB/.exec(description)?.[1] ?? '') * 2 ** 30;
  return Number.isNaN(total) ? undefined : { used: (total * percent) / 100, total };
}
