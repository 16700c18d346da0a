import assert from 'node:assert/strict';
import { mock, test } from 'node:test';
import { host } from '../bridge/host.ts';
import { telemetry } from './telemetry.ts';

test('a load covers neither only a moment nor an absence', async () => {
  mock.timers.enable({ apis: ['setTimeout', 'Date'] });
  mock.method(performance, 'now', () => Date.now());
  let samples = 0;
  mock.method(host, 'request', () => Promise.resolve({ cpu: ++samples }));
  const steps: [name: string, secondsSince: number, samples: number, loads: number[]][] = [
    ['the first has nothing to compare with', 0, 1, []],
    ['too early', 1.4, 1, []],
    ['by the poll', 3, 2, [2]],
    ['a little late', 10, 3, [2, 3]],
    ['the one that ends an absence is dropped', 10.1, 5, [2, 3, 5]],
    ['too early after the absence', 1, 5, [2, 3, 5]],
  ];
  let sampledAt = 0;
  for (const [name, secondsSince, total, loads] of steps) {
    mock.timers.tick(sampledAt + secondsSince * 1000 - Date.now());
    const before = samples;
    const done = telemetry.reload();
    await new Promise(setImmediate);
    if (total - before === 2) mock.timers.tick(1000);
    await done;
    if (samples > before) sampledAt = Date.now();
    const shown = telemetry.get().data!.rates.cpu.map(({ value }) => value);
    assert.deepEqual([samples, shown], [total, loads], name);
  }
});
