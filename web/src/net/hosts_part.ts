// Divides a long hosts file into parts, because a text area is slow with tens of thousands of lines.

/** The whole lines in [start, end) of a text. */
export interface Part {
  start: number;
  end: number;
  /** Number of lines before the part. */
  before: number;
  /** Number of lines after the part. */
  after: number;
}

const partLines = 2000;

export function countLines(text: string): number {
  let lines = 1;
  for (let at = text.indexOf('\n'); at >= 0; at = text.indexOf('\n', at + 1)) lines++;
  return lines;
}

/** Returns the part of a text that holds a place, or the last part if the place is behind the end. */
export function partAround(text: string, place: number): Part {
  const starts = [0];
  let lines = 1;
  for (let at = text.indexOf('\n'); at >= 0; at = text.indexOf('\n', at + 1))
    if (lines++ % partLines === 0) starts.push(at + 1);
  const index = starts.findLastIndex((start) => start <= place);
  const next = starts[index + 1];
  return {
    start: starts[index]!,
    end: next === undefined ? text.length : next - 1,
    before: index * partLines,
    after: next === undefined ? 0 : lines - (index + 1) * partLines,
  };
}

/** Returns the start and end of a line (from 1), or of the last line if there is no such line. */
export function rangeOf(text: string, line: number): [start: number, end: number] {
  let start = 0;
  for (let end = text.indexOf('\n'); end >= 0; end = text.indexOf('\n', start)) {
    if (--line <= 0) return [start, end];
    start = end + 1;
  }
  return [start, text.length];
}
