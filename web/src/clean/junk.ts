// The seven categories of disposable files: their ticks, and the space that a clean has freed.

/** In the order of the cards. The two that share a tick are side by side. */
export const categories = [
  'windowsTemp',
  'prefetch',
  'userTemp',
  'winUpdate',
  'browserCache',
  'shaderCache',
  'systemLogs',
] as const;

export type Category = (typeof categories)[number];
export type Sizes = Record<Category, number>;
export type Ticks = Record<Category, boolean>;

export const allTicked = Object.fromEntries(categories.map((category) => [category, true])) as Ticks;

/**
 * Ticks a category. Prefetch is cleaned exactly if the temporary files of Windows are, so both ticks change
 * together.
 */
export function tick(ticks: Ticks, category: Category, on: boolean): Ticks {
  const paired = category === 'windowsTemp' || category === 'prefetch';
  return paired ? { ...ticks, windowsTemp: on, prefetch: on } : { ...ticks, [category]: on };
}

export function tickedBytes(sizes: Sizes, ticks: Ticks): number {
  return categories.reduce((sum, category) => sum + (ticks[category] ? sizes[category] : 0), 0);
}

/** The result of cleaning one category, in bytes. */
export interface Outcome {
  freed: number;
  left: number;
}

/**
 * Returns the results of the cleaned categories. A category that has grown in the meantime freed nothing,
 * and subtracts nothing from the others.
 */
export function outcomes(before: Sizes, after: Sizes, cleaned: Ticks): Partial<Record<Category, Outcome>> {
  const result: Partial<Record<Category, Outcome>> = {};
  for (const category of categories) {
    if (!cleaned[category]) continue;
    result[category] = { freed: Math.max(0, before[category] - after[category]), left: after[category] };
  }
  return result;
}
