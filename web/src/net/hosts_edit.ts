// Finding in the hosts file, and commenting lines out.

/** Where a text is found, whatever its case. */
export function findAll(text: string, wanted: string): number[] {
  if (wanted === '') return [];
  const pattern = new RegExp(wanted.replace(/[\\^$.*+?()[\]{}|]/g, '\\$&'), 'gi');
  return [...text.matchAll(pattern)].map(({ index }) => index);
}

/** Index of the match that comes next from a place, or before it; the ends of the text are joined. */
export function nextMatch(matches: readonly number[], place: number, back: boolean): number {
  const found = back ? matches.findLastIndex((at) => at < place) : matches.findIndex((at) => at >= place);
  return found >= 0 || !back ? Math.max(found, 0) : matches.length - 1;
}

/** Lines that hold nothing but comment marks stay as they are: they have nothing to switch on or off. */
const isBare = (line: string) => /^#*\s*$/.test(line);

/**
 * Comments the lines of a selection out, or brings them back: one "#" is put before each or taken away, so that twice gives
 * the same text again. Returns the whole lines in [start, end) and what takes their place.
 */
export function toggleComment(text: string, from: number, to: number) {
  const start = text.lastIndexOf('\n', from - 1) + 1;
  // A selection that ends at the beginning of a line does not take that line in.
  const last = to > from && text[to - 1] === '\n' ? to - 1 : to;
  const lineEnd = text.indexOf('\n', last);
  const end = lineEnd < 0 ? text.length : lineEnd;
  const lines = text.slice(start, end).split('\n');
  const marks = lines.filter((line) => !isBare(line)).map((line) => line.match(/^#*/)![0].length);
  const off = Math.min(...marks) % 2 === 1;
  const changed = lines.map((line) => (isBare(line) ? line : off ? line.slice(1) : `#${line}`));
  return { start, end, text: changed.join('\n') };
}
