import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
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
  const { specs } = JSON.parse(readFileSync('../testing/messages/status.json', 'utf8'));
  const total = 31.1 * 2 ** 30;
  assert.deepEqual(memoryInUse(specs.ramTooltip, 50), { used: total / 2, total });
  assert.equal(memoryInUse('Fyzicky osazeno: 0 GB | K dispozici pro systém: 0.0 GB', 50), undefined);
});
