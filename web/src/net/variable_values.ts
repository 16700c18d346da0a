// Handles environment variables whose value is a list, such as Path.
import { isPlainPath } from '../base/paths.ts';

/** Splits a value at semicolons, except those inside quotes. Joining the entries restores the text. */
export function splitList(value: string): string[] {
  const entries = [''];
  let quoted = false;
  for (const letter of value) {
    if (letter === '"') quoted = !quoted;
    if (letter === ';' && !quoted) entries.push('');
    else entries[entries.length - 1] += letter;
  }
  return entries;
}

export const joinList = (entries: readonly string[]) => entries.join(';');

export const isList = (name: string, value: string) =>
  /^(path|pathext|psmodulepath)$/i.test(name) || splitList(value).length > 1;

/** Returns true if an earlier entry means the same. */
export function isRepeated(entries: readonly string[], index: number): boolean {
  const plain = (entry: string) =>
    entry
      .trim()
      .replace(/^"(.*)"$/, '$1')
      .replace(/\\+$/, '')
      .toLowerCase();
  const mine = plain(entries[index]!);
  return mine !== '' && entries.slice(0, index).some((entry) => plain(entry) === mine);
}

/** Returns the path that an entry names, with every %name% expanded, or undefined if that is not certain. */
export function pathOf(entry: string, values: ReadonlyMap<string, string>): string | undefined {
  let path = entry
    .trim()
    .replace(/^"(.*)"$/, '$1')
    .replaceAll('/', '\\');
  // A value may refer to others, and even to itself.
  for (let depth = 0; depth < 4; ++depth)
    path = path.replace(/%([^%]+)%/g, (name, word) => values.get(word.toLowerCase()) ?? name);
  path = path.replace(/(.)\\+$/, '$1');
  return isPlainPath(path) ? path : undefined;
}

/** Returns the reason why a new variable cannot have that name, given the existing names. */
export function nameFault(
  name: string,
  existing: readonly string[],
): 'empty' | 'equals' | 'exists' | undefined {
  if (name.trim() === '') return 'empty';
  if (name.includes('=')) return 'equals';
  return existing.some((other) => other.toLowerCase() === name.toLowerCase()) ? 'exists' : undefined;
}
