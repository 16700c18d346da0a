import assert from 'node:assert/strict';
import { test } from 'node:test';
import { clockText, withShares, type ProcessRow, type Running } from '../src/lib/processes.ts';
import { keepPlaces } from '../src/lib/table.ts';

const one = (pid: number, cpuTimeSec: number, more: Partial<Running> = {}): Running => ({
  name: 'a.exe',
  pid,
  mem: 5,
  memUsageMB: 5,
  cpuTimeSec,
  isSystem: false,
  ...more,
});

test('share of the processors between two lists', () => {
  const cases: [
    name: string,
    before: ProcessRow[],
    now: Running,
    elapsed_s: number,
    want: number | undefined,
  ][] = [
    ['first list', [], one(7, 1), 3, undefined],
    ['half of one of four', [one(7, 1)], one(7, 2.5), 3, 12.5],
    ['idle', [one(7, 1)], one(7, 1), 3, 0],
    ['never more than all', [one(7, 0)], one(7, 100), 3, 100],
    ['number taken over by another program', [one(7, 1)], one(7, 2, { name: 'b.exe' }), 3, undefined],
    ['number taken over by the same program', [one(7, 9)], one(7, 2), 3, undefined],
    ['not opened by the host', [one(7, 0, { memUsageMB: 0 })], one(7, 0, { memUsageMB: 0 }), 3, undefined],
    ['soon after the first list', [one(7, 1)], one(7, 2), 0.02, undefined],
    ['soon after a later one', [{ ...one(7, 1), share: 40 }], one(7, 1.016), 0.02, 40],
  ];
  for (const [name, before, now, elapsed_s, want] of cases)
    assert.equal(withShares(before, [now], elapsed_s, 4)[0]!.share, want, name);
});

test('processor time as a clock', () => {
  for (const [seconds, want] of [
    [0, '0:00:00'],
    [59.9, '0:00:59'],
    [3723, '1:02:03'],
    [360_000, '100:00:00'],
  ] as const) {
    assert.equal(clockText(seconds), want);
  }
});

test('new data in the places of the old', () => {
  const place = (before: string, now: string) => {
    const { rows, gone } = keepPlaces([...before], [...now], (row) => row.toLowerCase());
    return `${rows.join('')} ${[...gone].join('')}`;
  };
  const cases: [name: string, before: string, now: string, want: string][] = [
    ['another order', 'abc', 'CBA', 'ABC '],
    ['new ones last', 'bc', 'AXBC', 'BCAX '],
    ['gone ones keep place and data', 'abc', 'CA', 'AbC b'],
    ['back again', 'abc', 'cb', 'abc a'],
    ['all gone', 'ab', '', 'ab ab'],
  ];
  for (const [name, before, now, want] of cases) assert.equal(place(before, now), want, name);
});
