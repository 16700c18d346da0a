import { groupByName, isMeasured, type ProcessRow } from '../shell/process_shares.ts';

const shown = 5;

/** The programs that take most of something, the greatest first; none that takes nothing. */
export function culprits(rows: readonly ProcessRow[], of: 'share' | 'memUsageMB'): ProcessRow[] {
  return groupByName(rows.filter(isMeasured))
    .filter((one) => (one[of] ?? 0) > 0)
    .sort((a, b) => b[of]! - a[of]!)
    .slice(0, shown);
}

/** "18.9 of 32": bytes in use of the memory that the computer's description begins with ("32 GB DDR5"). */
export function memoryInUse(description: string, percent: number) {
  const total = parseFloat(/^([\d.]+) GB/.exec(description)?.[1] ?? '') * 2 ** 30;
  return Number.isNaN(total) ? undefined : { used: (total * percent) / 100, total };
}
