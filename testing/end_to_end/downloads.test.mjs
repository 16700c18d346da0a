// Old downloads and the recycle bin, looked into from outside Wine.
import assert from 'node:assert/strict';
import { mkdir, readFile, readdir, rm, truncate, utimes, writeFile } from 'node:fs/promises';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { makeFolder, unixPath } from './wine.mjs';

const { dialogOf, inWords, makeHome, openView, press, rowsOf, tick, toastOf, withVarnel } = harness;

const kUser = `C:\\users\\${userInfo().username}`;

// --- the host ----------------------------------------------------------------------------------------------

test('nothing is recycled by another name than its own', async () => {
  const folder = await makeFolder();
  const home = await makeHome();
  for (const name of ['kept.zip', 'kept.zip.']) await writeFile(join(folder.unix, name), 'kept');
  const file = `${folder.windows}\\kept.zip`;
  const paths = [
    ...[`${file}.`, `${file} `, `${file}\0x`, 'kept.zip', 'C:', '', `${folder.windows}/kept.zip`],
    ...['.', 'x\\..'].map((step) => `${folder.windows}\\${step}\\kept.zip`),
  ];
  await withVarnel({ page: false, env: { HOME: home.unix } }, async (app) => {
    const { success, deletedCount } = await app.request('deleteSpecificFiles', { paths });
    assert.deepEqual([success, deletedCount], [false, 0]);
    assert.deepEqual((await readdir(folder.unix)).filter((name) => name.startsWith('kept')).length, 2);
  });
  await Promise.all([folder.remove(), home.remove()]);
});

// --- the story ---------------------------------------------------------------------------------------------

test('old large downloads go to the recycle bin and come back', async () => {
  const folder = unixPath(`${kUser}\\Downloads`);
  const kMiB = 1_048_576;
  const home = await makeHome();
  await rm(folder, { recursive: true, force: true });
  await mkdir(folder);
  for (const [name, size, hours] of [
    ['Žluťoučký instalátor.ISO', 2 * kMiB, 31 * 24],
    ['above.zip', kMiB + 1, 721],
    ['young.exe', 2 * kMiB, 719],
  ]) {
    await writeFile(join(folder, name), `first bytes of ${name}`);
    await truncate(join(folder, name), size);
    await utimes(join(folder, name), new Date(), new Date(Date.now() - hours * 3_600_000));
  }
  await withVarnel({ language: 'cs', service: {}, env: { HOME: home.unix } }, async (app) => {
    const { page } = app;
    const label = app.text('downloads.title');
    await openView(page, 'cleaning');
    await page.getByRole('grid', { name: label }).waitFor();
    const age = (n) => {
      const month = new Intl.DateTimeFormat('cs', { month: 'long', year: 'numeric' });
      return `${app.text('downloads.days', { n })} (${month.format(Date.now() - n * 86_400_000)})`;
    };
    assert.deepEqual(await rowsOf(page, label), [
      ['Žluťoučký instalátor.ISO', inWords(2 * kMiB, 'cs'), age(31)],
      ['above.zip', inWords(kMiB + 1, 'cs'), age(30)],
    ]);
    for (const name of ['Žluťoučký', 'above']) await tick(page, label, name);
    await rm(join(folder, 'above.zip'));
    await press(page, app.text('recycle.verbSize', { size: inWords(3 * kMiB + 1, 'cs') }));
    const dialog = await dialogOf(page, app.text('recycle.title', { n: 2 }));
    assert.ok((await dialog.innerText()).includes(`${kUser}\\Downloads\\Žluťoučký instalátor.ISO`));
    await press(dialog, app.text('recycle.verb'));
    await toastOf(page, app.text('recycle.some', { n: 1, total: 2 }), 'alert').waitFor();
    await page.getByText(app.text('downloads.none')).waitFor();

    // The bin knows where the file was, and has it whole.
    const [note, ...others] = await readdir(join(home.trash, 'info'));
    assert.deepEqual(others, []);
    const [, origin] = /^Path=(.*)$/m.exec(await readFile(join(home.trash, 'info', note), 'utf8'));
    const path = decodeURIComponent(origin);
    assert.ok(path.endsWith('/Downloads/Žluťoučký instalátor.ISO'), path);
    const recycled = await readFile(join(home.trash, 'files', note.replace(/\.trashinfo$/, '')), 'utf8');
    assert.match(recycled, /^first bytes of Žluťoučký/);
  });
  await Promise.all([home.remove(), rm(folder, { recursive: true })]);
  await mkdir(folder);
});
