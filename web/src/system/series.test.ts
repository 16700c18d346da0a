import assert from 'node:assert/strict';
import { test } from 'node:test';
import { niceCeiling, sparkline, stats } from './series.ts';

const frame = { width: 120, height: 10, now: 120_000, windowMs: 120_000, top: 100, gapMs: 7500 };
const linesOf = (points: Record<number, number>) => {
  const series = Object.entries(points).map(([at, value]) => ({ at: Number(at), value }));
  return sparkline(series, frame);
};

test('stats are current, average and peak, or nothing without points', () => {
  assert.equal(stats([]), undefined);
  const points = [4, 10, 1].map((value, i) => ({ at: i, value }));
  assert.deepEqual(stats(points), { current: 1, average: 5, peak: 10 });
});

test('the scale ends at the next 1, 2 or 5, and never below 1', () => {
  const values = [0, 1, 1.01, 2, 3, 5, 5.1, 10, 940, NaN];
  assert.deepEqual(values.map(niceCeiling), [1, 1, 2, 2, 5, 5, 10, 10, 1000, 1]);
});

test('points are placed by time and value, limited to the edges, with gaps for pauses', () => {
  const { line, area } = linesOf({ 114_000: 0, 117_000: 50, 120_000: 130 });
  assert.deepEqual([line, area], ['M114 10L117 5L120 0', 'M114 10L114 10L117 5L120 0L120 10Z']);
  assert.equal(linesOf({ 30_000: 50, 33_000: 50, 60_000: 50, 63_000: 50 }).line, 'M30 5L33 5M60 5L63 5');
  assert.equal(linesOf({ 60_000: 50 }).line, 'M60 5h0', 'a lone point is a dot');
  assert.equal(linesOf({}).line, '');
});
