// Compares the program's facts about the machine with the registry and with the view from outside Wine.
import assert from 'node:assert/strict';
import { readFile, statfs } from 'node:fs/promises';
import { test } from 'node:test';

import { withVarnel } from './harness.mjs';
import { driveC, prepareWine, readRegistry, registryText, writeRegistry } from './wine.mjs';

// Keys that the system creates at each start.
const kHardware = 'HKLM\\HARDWARE\\DESCRIPTION\\System';
const [kName, kMaker] = ['   Peat(R) Core  i7-0000  ', 'Gigabyte Technology Co., Ltd.'].map(registryText);
const kWindows = 'HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion';

test('specs match the registry; load, memory and drives match the system', async () => {
  await prepareWine();
  await writeRegistry({
    [`${kHardware}\\CentralProcessor\\0`]: { ProcessorNameString: kName },
    [`${kHardware}\\BIOS`]: { BaseBoardManufacturer: kMaker, BaseBoardProduct: '"B650 PEAT"' },
  });
  const { ProductName } = await readRegistry(kWindows);
  await withVarnel({ page: false }, async (app) => {
    const { cpu, motherboard, os } = (await app.request('getStatus')).specs;
    assert.deepEqual([cpu, motherboard], ['   Peat(R) Core  i7-0000  ', 'Gigabyte B650 PEAT']);
    assert.ok(os.startsWith(ProductName.slice(1, -1)), os);

    const first = await app.request('getTelemetry');
    const want = { cpu: 0, download: 0, upload: 0, cpuTemp: 34, gpuTemp: 36 };
    assert.deepEqual({ ...first, ...want }, first, 'the first sample has nothing to compare with');
    const memory = await readFile('/proc/meminfo', 'utf8');
    const [total, available] = memory.match(/(?<=Mem(Total|Available): *)\d+/g);
    assert.ok(Math.abs(first.ram - 100 * (1 - available / total)) < 10, `${first.ram} % of the memory`);
    const { blocks, bsize } = await statfs(driveC);
    const { totalBytes, usedBytes, freeBytes } = first.disks.find(({ drive }) => drive === 'C:');
    assert.deepEqual([totalBytes, usedBytes + freeBytes], [blocks * bsize, blocks * bsize]);

    for (const end = Date.now() + 300; Date.now() < end;);
    const lines = await app.posted('debugSystem');
    const [load] = lines.flatMap(({ message }) => /(?<=CPU Load: )[\d.]+(?=%)/.exec(message) ?? []);
    assert.ok(Number(load) > 0, 'the load since the first sample');
  });
});
