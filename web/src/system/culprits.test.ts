import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { ProcessRow } from '../shell/process_shares.ts';
import { culprits, memoryInUse } from './culprits.ts';

test('culprits are the programs that use most, not processes, and never use nothing', () => {
  const of = (name: string, share: number, memUsageMB: number): ProcessRow => {
    return { name, pid: 1, share, memUsageMB, mem: memUsageMB, cpuTimeSec: 1, isSystem: false };
  };
  const rows = [of('idle', 0, 1), of('tab', 4, 40), of('hog', 7, 9), of('tab', 4, 40), of('a', 1, 70)];
  assert.deepEqual(
    culprits(rows, 'share').map(({ name }) => name),
    ['tab', 'hog', 'a'],
  );
  assert.deepEqual(
    culprits(rows, 'memUsageMB').map(({ name }) => name),
    ['tab', 'a', 'hog', 'idle'],
  );
});

test('used memory needs a known total', () => {
  assert.deepEqual(memoryInUse('32 GB DDR5 @ 6000 MHz', 50), { used: 2 ** 34, total: 2 ** 35 });
  assert.equal(memoryInUse('', 50), undefined);
});
