// What the program says of the machine, against the registry and what is seen from outside Wine.
import assert from 'node:assert/strict';
import { readFile, statfs } from 'node:fs/promises';
import { test } from 'node:test';

import { withVarnel } from './harness.mjs';
import { driveC, prepareWine, readRegistry, registryText, writeRegistry } from './wine.mjs';

const kMachine = 'HKLM\\HARDWARE\\DESCRIPTION\\System';
const kValues = {
  [`${kMachine}\\CentralProcessor\\0`]: { ProcessorNameString: '   Peat(R) Core  i7-0000  ' },
  [`${kMachine}\\BIOS`]: {
    BaseBoardManufacturer: 'Gigabyte Technology Co., Ltd.',
    BaseBoardProduct: 'B650 PEAT',
  },
  'HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion': {
    ProductName: 'Windows 10 Pro',
    CurrentBuild: '22631',
    DisplayVersion: '23H2',
  },
};
const mapValues = (object, map) =>
  Object.fromEntries(Object.entries(object).map(([name, value]) => [name, map(value, name)]));

test('specs are those of the registry; memory and drives those of the system', async () => {
  await prepareWine();
  const before = {};
  for (const [key, values] of Object.entries(kValues)) {
    const present = (await readRegistry(key)) ?? {};
    before[key] = mapValues(values, (_, name) => present[name]);
  }
  await writeRegistry(mapValues(kValues, (values) => mapValues(values, registryText)));
  try {
    await withVarnel({ page: false }, async (app) => {
      const { cpu, motherboard, os } = (await app.request('getStatus')).specs;
      assert.deepEqual(
        [cpu, motherboard, os],
        ['   Peat(R) Core  i7-0000  ', 'Gigabyte B650 PEAT', 'Windows 11 Pro (Version 23H2)'],
      );
      const { ram, disks } = await app.request('getTelemetry');
      const memory = await readFile('/proc/meminfo', 'utf8');
      const [total, available] = ['Total', 'Available'].map((name) =>
        Number(new RegExp(`Mem${name}: *(\\d+)`).exec(memory)[1]),
      );
      assert.ok(Math.abs(ram - 100 * (1 - available / total)) < 10, `${ram} % of the memory`);
      const { blocks, bsize } = await statfs(driveC);
      const { totalBytes, usedBytes, freeBytes } = disks.find(({ drive }) => drive === 'C:');
      assert.deepEqual([totalBytes, usedBytes + freeBytes], [blocks * bsize, blocks * bsize]);
    });
  } finally {
    await writeRegistry(before);
  }
});
