import assert from 'node:assert/strict';
import { test } from 'node:test';
import { groupByName, withShares, type ProcessRow } from './process_shares.ts';

const one = (cpuTimeSec: number, more: Partial<ProcessRow> = {}): ProcessRow => {
  return { name: 'a.exe', pid: 7, mem: 5, memUsageMB: 5, cpuTimeSec, isSystem: false, ...more };
};

test('the processor share is the difference of two lists', () => {
  const closed = one(0, { memUsageMB: 0 });
  type Case = [name: string, before: ProcessRow[], now: ProcessRow, elapsedSeconds: number, want?: number];
  const cases: Case[] = [
    ['first list', [], one(1), 3],
    ['half of one of four', [one(1)], one(2.5), 3, 12.5],
    ['never more than all', [one(0)], one(100), 3, 100],
    ['number taken over by another program', [one(1)], one(2, { name: 'b.exe' }), 3],
    ['not opened by the host', [closed], closed, 3],
    ['after a look at something else', [one(1)], one(9), 10.1],
    ['soon after the first list', [one(1)], one(2), 0.02],
    ['soon after a later one', [{ ...one(1), share: 40 }], one(1.016), 0.02, 40],
  ];
  for (const [name, before, now, elapsedSeconds, want] of cases)
    assert.equal(withShares(before, [now], elapsedSeconds, 4)[0]!.share, want, name);
});

test('processes are summed up into one row per program', () => {
  const rows = [
    one(1, { share: 2 }),
    one(2, { name: 'A.EXE', pid: 8, isSystem: true }),
    one(4, { name: 'b.exe' }),
  ];
  const [a, b, ...more] = groupByName(rows);
  const { members, cpuTimeSec, mem, share, isSystem } = a!;
  assert.deepEqual([cpuTimeSec, mem, share, isSystem, members], [3, 10, 2, false, rows.slice(0, 2)]);
  assert.deepEqual([b, more], [rows[2], []], 'a lone process stays what it is');
});
