/** Returns one element per key: the last one, in the place of the first. */
export function distinctBy<T>(list: readonly T[], keyOf: (element: T) => unknown): T[] {
  return [...new Map(list.map((one) => [keyOf(one), one])).values()];
}
