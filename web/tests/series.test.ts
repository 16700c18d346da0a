import assert from 'node:assert/strict';
import { test } from 'node:test';
import { niceCeiling, sparkline, stats } from '../src/lib/series.ts';

const frame = { width: 120, height: 10, now: 120_000, window_ms: 120_000, top: 100, gap_ms: 7500 };

test('current, average and peak; nothing for no points', () => {
  assert.equal(stats([]), undefined);
  const points = [4, 10, 1].map((value, i) => ({ at: i, value }));
  assert.deepEqual(stats(points), { current: 1, average: 5, peak: 10 });
});

test('the scale ends at the next 1, 2 or 5, and never below 1', () => {
  const cases = [
    [0, 1],
    [0.3, 1],
    [1, 1],
    [1.01, 2],
    [2, 2],
    [3, 5],
    [5, 5],
    [5.1, 10],
    [10, 10],
    [48.7, 50],
    [940, 1000],
    [NaN, 1],
  ] as const;
  for (const [value, want] of cases) assert.equal(niceCeiling(value), want, String(value));
});

test('points lie where their time and value say, values beyond the scale at its edge', () => {
  const { line, area } = sparkline(
    [
      { at: 114_000, value: 0 },
      { at: 117_000, value: 50 },
      { at: 120_000, value: 130 },
    ],
    frame,
  );
  assert.equal(line, 'M114 10L117 5L120 0');
  assert.equal(area, 'M114 10L114 10L117 5L120 0L120 10Z');
});

test('a pause in the measurement is a gap, not a line across it', () => {
  const points = [30_000, 33_000, 60_000, 63_000].map((at) => ({ at, value: 50 }));
  assert.equal(sparkline(points, frame).line, 'M30 5L33 5M60 5L63 5');
  assert.equal(sparkline([{ at: 60_000, value: 50 }], frame).line, 'M60 5h0', 'a lone point is a dot');
  assert.equal(sparkline([], frame).line, '');
});
