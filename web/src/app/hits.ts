import { fold } from '../base/fold.ts';

const most = 8;

/** Something that the search finds by its title. */
export interface Findable {
  title: string;
  folded: string;
}

export const findable = <T extends { title: string }>(thing: T): T & Findable => ({
  ...thing,
  folded: fold(thing.title),
});

/**
 * Returns the things that contain every word of the query: first those that begin with it, then those with
 * words that begin with its words, then the rest.
 */
export function bestHits<T extends Findable>(things: readonly T[], query: string): T[] {
  const whole = fold(query).trim();
  const words = whole.split(/\s+/);
  if (whole === '') return [];
  const ranks: T[][] = [[], [], []];
  for (const thing of things) {
    const { folded } = thing;
    if (!words.every((word) => folded.includes(word))) continue;
    const begins = (word: string) =>
      folded.startsWith(word) || /[^\p{L}\p{N}]/u.test(folded[folded.indexOf(word) - 1] ?? '');
    ranks[folded.startsWith(whole) ? 0 : words.every(begins) ? 1 : 2]!.push(thing);
  }
  return ranks.flat().slice(0, most);
}
