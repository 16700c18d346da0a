import assert from 'node:assert/strict';
import { test } from 'node:test';
import { kAllTicked, outcomes, tick, tickedBytes, type Sizes, type Ticks } from '../src/lib/junk.ts';

const sizes: Sizes = {
  windowsTemp: 1,
  prefetch: 2,
  userTemp: 4,
  winUpdate: 8,
  browserCache: 16,
  shaderCache: 32,
  systemLogs: 64,
};
const none: Ticks = {
  windowsTemp: false,
  prefetch: false,
  userTemp: false,
  winUpdate: false,
  browserCache: false,
  shaderCache: false,
  systemLogs: false,
};

test('the ticks of Windows temporary files and Prefetch never differ, and the total follows the ticks', () => {
  const cases: [name: string, ticks: Ticks, bytes: number][] = [
    ['all', kAllTicked, 127],
    ['none', none, 0],
    ['Windows temporary files off', tick(kAllTicked, 'windowsTemp', false), 124],
    ['Prefetch off', tick(kAllTicked, 'prefetch', false), 124],
    ['Prefetch alone on', tick(none, 'prefetch', true), 3],
    ['off and on again', tick(tick(kAllTicked, 'prefetch', false), 'windowsTemp', true), 127],
    ['another one off', tick(kAllTicked, 'browserCache', false), 111],
  ];
  for (const [name, ticks, bytes] of cases) {
    assert.equal(ticks.prefetch, ticks.windowsTemp, name);
    assert.equal(tickedBytes(sizes, ticks), bytes, name);
  }
  assert.ok(kAllTicked.windowsTemp, 'ticking changes a copy');
});

test('freed is before minus after, of what was cleaned, and growth is no negative space', () => {
  const cleaned: Ticks = { ...none, userTemp: true, winUpdate: true, browserCache: true, systemLogs: true };
  const after: Sizes = {
    ...sizes,
    userTemp: 0,
    winUpdate: 3,
    browserCache: 16,
    systemLogs: 80,
    shaderCache: 0,
  };
  assert.deepEqual(outcomes(sizes, after, cleaned), {
    userTemp: { freed: 4, left: 0 },
    winUpdate: { freed: 5, left: 3 },
    browserCache: { freed: 0, left: 16 },
    systemLogs: { freed: 0, left: 80 },
  });
});
