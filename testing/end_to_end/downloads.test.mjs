// Recycles old downloads and looks into the recycle bin from outside Wine.
import assert from 'node:assert/strict';
import { mkdir, readdir, rm, truncate, utimes, writeFile } from 'node:fs/promises';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { unixPath } from './wine.mjs';

const { dialogOf, inWords, makeHome, openView, press, rowsOf, tick, toastOf, withVarnel } = harness;

test('large old downloads go to the recycle bin, and only by their own names', async () => {
  const windows = `C:\\users\\${userInfo().username}\\Downloads`;
  const folder = unixPath(windows);
  const kMiB = 1_048_576;
  const home = await makeHome();
  await rm(folder, { recursive: true, force: true });
  await mkdir(folder);
  for (const [name, size, hours] of [
    ['Žluťoučký instalátor.ISO', 2 * kMiB, 31 * 24],
    ['above.zip', kMiB + 1, 721],
    ['young.exe', 2 * kMiB, 719],
    ['young.exe.', 1, 0],
  ]) {
    await writeFile(join(folder, name), '');
    await truncate(join(folder, name), size);
    await utimes(join(folder, name), new Date(), new Date(Date.now() - hours * 3_600_000));
  }
  await withVarnel({ language: 'cs', service: {}, env: { HOME: home.unix } }, async (app) => {
    const { page } = app;
    const file = `${windows}\\young.exe`;
    const paths = [
      ...[`${file}.`, `${file} `, `${file}\0x`, 'young.exe', 'C:', '', `${windows}/young.exe`],
      ...['.', 'x\\..'].map((step) => `${windows}\\${step}\\young.exe`),
    ];
    const { success, deletedCount } = await app.request('deleteSpecificFiles', { paths });
    assert.deepEqual([success, deletedCount, (await readdir(folder)).length], [false, 0, 4]);

    const label = app.text('downloads.title');
    await openView(page, 'cleaning');
    await page.getByRole('grid', { name: label }).waitFor();
    assert.deepEqual(
      (await rowsOf(page, label)).map(([name, size]) => `${name} ${size}`),
      [`Žluťoučký instalátor.ISO ${inWords(2 * kMiB, 'cs')}`, `above.zip ${inWords(kMiB + 1, 'cs')}`],
    );
    for (const name of ['Žluťoučký', 'above']) await tick(page, label, name);
    await rm(join(folder, 'above.zip'));
    await press(page, app.text('recycle.verbSize', { size: inWords(3 * kMiB + 1, 'cs') }));
    await press(await dialogOf(page, app.text('recycle.title', { n: 2 })), app.text('recycle.verb'));
    await toastOf(page, app.text('recycle.some', { n: 1, total: 2 }), 'alert').waitFor();
    await page.getByText(app.text('downloads.none')).waitFor();
    assert.deepEqual((await readdir(folder)).toSorted(), ['young.exe', 'young.exe.']);
    assert.deepEqual(await readdir(join(home.trash, 'files')), ['Žluťoučký instalátor.ISO']);
  });
  await Promise.all([home.remove(), rm(folder, { recursive: true })]);
  await mkdir(folder);
});
