import assert from 'node:assert/strict';
import { test } from 'node:test';
import { allTicked, outcomes, tick, tickedBytes, type Sizes, type Ticks } from './junk.ts';

const low = { windowsTemp: 1, prefetch: 2, userTemp: 4, winUpdate: 8 };
const sizes: Sizes = { ...low, browserCache: 16, shaderCache: 32, systemLogs: 64 };
const ticksOf = (...ticked: string[]) =>
  Object.fromEntries(Object.keys(sizes).map((key) => [key, ticked.includes(key)])) as unknown as Ticks;

test('Windows temporary files and Prefetch are ticked together; the total follows the ticks', () => {
  const off = tick(allTicked, 'prefetch', false);
  const cases: [ticks: Ticks, bytes: number][] = [
    [allTicked, 127],
    [ticksOf(), 0],
    [tick(allTicked, 'windowsTemp', false), 124],
    [off, 124],
    [tick(off, 'windowsTemp', true), 127],
    [tick(allTicked, 'browserCache', false), 111],
  ];
  for (const [i, [ticks, bytes]] of cases.entries()) {
    assert.equal(ticks.prefetch, ticks.windowsTemp, `row ${i}`);
    assert.equal(tickedBytes(sizes, ticks), bytes, `row ${i}`);
  }
});

test('freed space is before minus after per cleaned category, and never negative', () => {
  const after: Sizes = { ...sizes, userTemp: 0, winUpdate: 3, systemLogs: 80, shaderCache: 0 };
  assert.deepEqual(outcomes(sizes, after, ticksOf('userTemp', 'winUpdate', 'systemLogs')), {
    userTemp: { freed: 4, left: 0 },
    winUpdate: { freed: 5, left: 3 },
    systemLogs: { freed: 0, left: 80 },
  });
});
