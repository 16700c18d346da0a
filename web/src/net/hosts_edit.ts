// Finds text in the hosts file, and comments lines out.

/** Returns the places of a text, ignoring case. */
export function findAll(text: string, wanted: string): number[] {
  if (wanted === '') return [];
  const pattern = new RegExp(wanted.replace(/[\\^$.*+?()[\]{}|]/g, '\\$&'), 'gi');
  return [...text.matchAll(pattern)].map(({ index }) => index);
}

/** Returns the index of the next match from a place, or of the previous one. The search wraps around. */
export function nextMatch(matches: readonly number[], place: number, back: boolean): number {
  const found = back ? matches.findLastIndex((at) => at < place) : matches.findIndex((at) => at >= place);
  return found >= 0 || !back ? Math.max(found, 0) : matches.length - 1;
}

/**
 * Returns true for a line of nothing but comment marks. Such lines stay unchanged, because there is nothing
 * to switch on or off.
 */
const isBare = (line: string) => /^#*\s*$/.test(line);

/**
 * Comments out the lines of a selection or restores them: adds or removes one "#" per line, so that doing
 * it twice gives the same text again. Returns the whole lines in [start, end) and their replacement.
 */
export function toggleComment(text: string, from: number, to: number) {
  const start = text.lastIndexOf('\n', from - 1) + 1;
  // A selection that ends at the beginning of a line excludes that line.
  const last = to > from && text[to - 1] === '\n' ? to - 1 : to;
  const lineEnd = text.indexOf('\n', last);
  const end = lineEnd < 0 ? text.length : lineEnd;
  const lines = text.slice(start, end).split('\n');
  const marks = lines.filter((line) => !isBare(line)).map((line) => line.match(/^#*/)![0].length);
  const off = Math.min(...marks) % 2 === 1;
  const changed = lines.map((line) => (isBare(line) ? line : off ? line.slice(1) : `#${line}`));
  return { start, end, text: changed.join('\n') };
}
