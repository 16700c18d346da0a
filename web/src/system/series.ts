// Computes values over time for sparklines and the figures beside them.
import type { Point } from '../shell/telemetry.ts';

export interface Stats {
  current: number;
  average: number;
  peak: number;
}

export function stats(points: readonly Point[]): Stats | undefined {
  const last = points.at(-1);
  if (!last) return undefined;
  const values = points.map((point) => point.value);
  return {
    current: last.value,
    average: values.reduce((sum, v) => sum + v, 0) / values.length,
    peak: Math.max(...values),
  };
}

/** Returns the smallest of 1, 2, 5, 10, 20, 50 ... that is at least `value`. */
export function niceCeiling(value: number): number {
  if (!(value > 1)) return 1;
  const power = 10 ** Math.floor(Math.log10(value));
  const step = [1, 2, 5, 10].find((factor) => factor * power >= value * (1 - 1e-9));
  return (step ?? 10) * power;
}

export interface Frame {
  width: number;
  height: number;
  /** The right edge (ms since the epoch), and the span from there to the left edge. */
  now: number;
  windowMs: number;
  /** The value at the top edge. */
  top: number;
  /** Points further apart than this are not joined, because nothing was measured between them. */
  gapMs: number;
}

/** Returns SVG paths: the line, and the area below it. */
export function sparkline(points: readonly Point[], frame: Frame): { line: string; area: string } {
  const x = (at: number) => round(frame.width * (1 - (frame.now - at) / frame.windowMs));
  const y = (value: number) => round(frame.height * (1 - Math.min(Math.max(value / frame.top, 0), 1)));
  let line = '';
  let area = '';
  let start = 0;
  points.forEach((point, i) => {
    const next = points[i + 1];
    if (next && next.at - point.at <= frame.gapMs) return;
    const run = points.slice(start, i + 1);
    const path = run.map(({ at, value }) => `${x(at)} ${y(value)}`).join('L');
    start = i + 1;
    line += `M${path}${run.length > 1 ? '' : 'h0'}`; // a single point is a dot
    area += `M${x(run[0]!.at)} ${frame.height}L${path}L${x(point.at)} ${frame.height}Z`;
  });
  return { line, area };
}

function round(value: number): number {
  return Math.round(value * 10) / 10;
}
