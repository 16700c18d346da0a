// Checks the text of the hosts file, and preserves its line ends through an editor that knows only LF.

export interface Problem {
  /** Number of the line, from 1. */
  line: number;
  kind: 'address' | 'noName' | 'name' | 'twice';
  /** The faulty word. */
  word: string;
  /** For a repeated name: the line that counts. */
  first?: number;
}

/** Returns 4 or 6, or undefined if the resolver does not accept the word as an address. */
function familyOf(address: string): 4 | 6 | undefined {
  if (!address.includes(':'))
    return /^(?:(?:25[0-5]|2[0-4]\d|1\d\d|\d\d?)(?:\.(?!$)|$)){4}$/.test(address) ? 4 : undefined;
  return URL.canParse(`http://[${address.replace(/%[\w-]+$/, '')}]/`) ? 6 : undefined;
}

const isName = (word: string) =>
  word.length <= 255 && /^[\p{L}\p{M}\p{N}_-]+(\.[\p{L}\p{M}\p{N}_-]+)*\.?$/u.test(word);

const slice = 2000; // lines, which take a few milliseconds

/** Checks one slice of the lines per step. Returns the problems. */
export function* checkSlices(lines: readonly string[]): Generator<void, Problem[]> {
  const problems: Problem[] = [];
  const seen = new Map<string, number>();
  for (let from = 0; from < lines.length; from += slice) {
    if (from > 0) yield;
    lines.slice(from, from + slice).forEach((text, i) => checkLine(text, from + i + 1, seen, problems));
  }
  return problems;
}

/** Returns the problems in the lines in one go. */
export function checkHosts(lines: readonly string[]): Problem[] {
  const check = checkSlices(lines);
  for (;;) {
    const step = check.next();
    if (step.done) return step.value;
  }
}

/** Checks one line. A name may have one address of each family; the first one counts. */
function checkLine(text: string, line: number, seen: Map<string, number>, problems: Problem[]) {
  const words = text.replace(/#.*/s, '').match(/\S+/g);
  if (!words) return;
  const [address = '', ...names] = words;
  const family = familyOf(address);
  if (!family) return problems.push({ line, kind: 'address', word: address });
  if (names.length === 0) return problems.push({ line, kind: 'noName', word: address });
  for (const word of names) {
    const key = `${family} ${word.toLowerCase()}`;
    const first = seen.get(key);
    if (!isName(word)) problems.push({ line, kind: 'name', word });
    else if (first !== undefined) problems.push({ line, kind: 'twice', word, first });
    else seen.set(key, line);
  }
}

const lineEnd = /\r\n|\r|\n/g;

/** Returns the text with the line ends of an editor. */
export const withLf = (text: string) => text.replace(lineEnd, '\n');

/** Returns the indices [in a, in b] of lines that occur exactly once in both ranges, in the order of b. */
function uniquePairs(
  a: readonly string[],
  aFrom: number,
  aTo: number,
  b: readonly string[],
  bFrom: number,
  bTo: number,
) {
  const found = new Map<string, { a: number; b: number }>(); // -1: not yet, -2: more than once
  const note = (side: 'a' | 'b', lines: readonly string[], from: number, to: number) => {
    for (let i = from; i < to; i++) {
      const entry = found.get(lines[i]!) ?? { a: -1, b: -1 };
      entry[side] = entry[side] === -1 ? i : -2;
      found.set(lines[i]!, entry);
    }
  };
  note('b', b, bFrom, bTo);
  note('a', a, aFrom, aTo);
  return [...found.values()].filter((pair) => pair.a >= 0 && pair.b >= 0).sort((x, y) => x.b - y.b);
}

/** Returns the longest run of pairs in which `a` grows, too. */
function growing(pairs: readonly { a: number; b: number }[]) {
  const ends: number[] = []; // for each length, the last pair of its best run
  const before: number[] = [];
  pairs.forEach((pair, i) => {
    let low = 0;
    for (let high = ends.length; low < high;) {
      const middle = (low + high) >> 1;
      if (pairs[ends[middle]!]!.a < pair.a) low = middle + 1;
      else high = middle;
    }
    before[i] = low > 0 ? ends[low - 1]! : -1;
    ends[low] = i;
  });
  const run: { a: number; b: number }[] = [];
  for (let i = ends.at(-1) ?? -1; i >= 0; i = before[i]!) run.push(pairs[i]!);
  return run.reverse();
}

/**
 * Returns the edited text (line ends LF) with the line ends of the original. Every line that still exists
 * keeps its own, even if it was changed in place. New lines get the file's most common one (CR LF in an
 * empty file).
 */
export function restoreLineEnds(original: string, edited: string): string {
  const ends = original.match(lineEnd) ?? [];
  const a = original.split(/\r\n|\r|\n/);
  const b = edited.split('\n');
  const counts = (end: string) => ends.filter((other) => other === end).length;
  const common = ['\r\n', '\n', '\r'].sort((x, y) => counts(y) - counts(x))[0]!;
  const chosen: (string | undefined)[] = [];

  function match(aFrom: number, aTo: number, bFrom: number, bTo: number) {
    const same = (i: number, j: number) => a[i] === b[j];
    while (aFrom < aTo && bFrom < bTo && same(aFrom, bFrom)) chosen[bFrom++] = ends[aFrom++];
    while (aFrom < aTo && bFrom < bTo && same(aTo - 1, bTo - 1)) chosen[--bTo] = ends[--aTo];
    const run = growing(uniquePairs(a, aFrom, aTo, b, bFrom, bTo));
    if (run.length === 0) {
      if (aTo - aFrom === bTo - bFrom) while (bFrom < bTo) chosen[bFrom++] = ends[aFrom++];
      return;
    }
    for (const pair of [...run, { a: aTo, b: bTo }]) {
      match(aFrom, pair.a, bFrom, pair.b);
      [aFrom, bFrom] = [pair.a, pair.b];
    }
  }
  match(0, a.length, 0, b.length);
  return b.map((line, i) => (i < b.length - 1 ? line + (chosen[i] ?? common) : line)).join('');
}
