// Scans a tree on drive C of the prefix and counts every figure again from outside Wine.
import assert from 'node:assert/strict';
import { mkdir, readdir, symlink, truncate, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { test } from 'node:test';

import { dialogOf, inWords, look, makeHome, openView, press, rowsOf, withVarnel } from './harness.mjs';
import { driveC, filesBelow, makeFolder } from './wine.mjs';

const kMB = 1_000_000;
const kLong = ['x', 'y', 'z'].map((letter) => letter.repeat(100)).join('/');
const sumOf = (files) => files.reduce((total, { size }) => total + size, 0);
const windowsPath = (unix) => `C:\\${unix.slice(driveC.length + 1).replaceAll('/', '\\')}`;

// Runs `body` with a tree of everything that a scan may stumble over. A link leads to files that would
// change every figure.
async function withTree(body) {
  const tree = await makeFolder('Strom ž-');
  const canary = await makeFolder('varnel-canary-');
  const put = async (path, size) => {
    await mkdir(dirname(path), { recursive: true });
    await writeFile(path, '');
    await truncate(path, size);
  };
  for (let i = 0; i < 34; ++i)
    await put(
      join(tree.unix, 'big', i % 2 ? 'Žluťoučký kůň' : '漢字かな', `video ${i}.mkv`),
      (900 + i) * kMB,
    );
  for (const [name, size] of [
    [`${kLong}/at the end.dat`, 77 * kMB],
    ['huge.vhdx', 5 * 2 ** 30],
    ['Home/Holiday.mkv', 810 * kMB],
    ['Home/Backup.zip', 520 * kMB],
    ['Home/Photos/summer.jpg', 480 * kMB],
    ['Home/Game.exe', 260 * kMB],
    ['dots/same/x', 10],
    ['dots/same./x', 20],
  ])
    await put(join(tree.unix, name), size);
  await put(join(canary.unix, 'b.bin'), 1230 * kMB);
  await symlink(canary.unix, join(tree.unix, 'link'));
  await symlink(tree.unix, join(tree.unix, 'big', 'loop'));
  try {
    await body(tree);
  } finally {
    await Promise.all([tree.remove(), canary.remove()]);
  }
}

// Returns {name: size} of a folder. A link to a folder has no bytes.
async function listOutside(unix) {
  const files = await filesBelow(unix);
  const isIn = (name) => (file) => `${file.path}/`.startsWith(`${join(unix, name)}/`);
  const names = await readdir(unix);
  return Object.fromEntries(names.map((name) => [name, sumOf(files.filter(isIn(name)))]));
}
const listed = (items) => Object.fromEntries(items.map(({ name, size }) => [name, size]));

// --- the host ---

test('an analysis matches the disk, and a listing uses the last analysis', () =>
  withTree((tree) =>
    withVarnel({ page: false }, async (app) => {
      const isDone = ({ type, status }) => type === 'disk_analysis_progress' && status === 'done';
      const list = async (path) => listed((await app.request('getFolderContents', { path })).items);
      const below = (name) => `${tree.windows}\\${name.replaceAll('/', '\\')}`;
      assert.equal((await list(tree.windows)).big, 0, 'no analysis yet');
      const done = (await app.posted('startDiskAnalysis', { drive: tree.windows }, isDone)).at(-1);
      assert.deepEqual(listed(done.folders), await listOutside(tree.unix));
      const largest = (await filesBelow(tree.unix)).toSorted((a, b) => b.size - a.size).slice(0, 30);
      const want = largest.map(({ path, size }) => ({ path: windowsPath(path), size }));
      assert.deepEqual(done.files, want);
      for (const name of ['big', 'big/漢字かな', 'dots', kLong])
        assert.deepEqual(await list(below(name)), await listOutside(join(tree.unix, name)));
    }),
  ));

// --- the story ---

test('a drive is analysed and browsed, and a folder goes to the recycle bin', () =>
  withTree(async (tree) => {
    const home = await makeHome();
    const settings = { theme: 'amethyst', language: 'en' };
    await withVarnel({ settings, env: { HOME: home.unix } }, async (app) => {
      const { page } = app;
      const contents = () => rowsOf(page, app.text('disk.contents'));
      const row = (name) => page.locator('tbody tr').filter({ hasText: name }).first();
      // Checks that table and breadcrumb show a folder with the disk's figures.
      const shows = async (unix) => {
        const path = windowsPath(unix).replace(/\\$/, '');
        const crumbs = page.locator('.crumb');
        await app.until(async () => (await crumbs.allInnerTexts()).join('\\') === path, `the path ${path}`);
        const want = Object.entries(await listOutside(unix)).filter(([, size]) => size > 0);
        const shown = (await contents()).filter(([, size]) => !/^(—|0\sB)$/.test(size));
        assert.deepEqual(
          shown.map(([name, size]) => `${name} ${size}`).toSorted(),
          want.map(([name, size]) => `${name} ${inWords(size)}`).toSorted(),
        );
      };

      await openView(page, 'disk');
      await page.click('[data-drive="C:"] input');
      // Clicks twice before anything is redrawn.
      const start = page.getByRole('button', { name: app.text('disk.analyse', { drive: 'C:' }) });
      await start.evaluate((button) => [button.click(), button.click()]);
      await page.getByRole('grid', { name: app.text('disk.contents') }).waitFor();
      await row(tree.windows.slice(3)).click();
      await page.keyboard.press('Enter');
      await shows(tree.unix);
      await page.locator('canvas').dblclick({ position: { x: 8, y: 8 } }); // the map begins with the largest
      await shows(join(tree.unix, 'big'));
      await page.keyboard.press('Backspace');
      await row('Home').click();
      await page.keyboard.press('Enter');
      await page.locator('.crumb', { hasText: 'Home' }).waitFor();
      await look(app, 'disk-map-amethyst-en');
      await page.keyboard.press('Backspace');

      // A folder goes to the bin and is subtracted from every sum. A folder that Windows needs is not
      // offered.
      const remove = async (answer) => {
        await row('Home').click();
        await page.keyboard.press('Delete');
        const dialog = await dialogOf(page, app.text('recycle.title', { n: 1 }));
        assert.ok((await dialog.innerText()).includes(`${tree.windows}\\Home`));
        await press(dialog, app.text(answer));
        await dialog.waitFor({ state: 'detached' });
      };
      await remove('app.cancel');
      assert.ok(existsSync(join(tree.unix, 'Home')), 'nothing happens before the user agrees');
      await remove('recycle.verb');
      await app.until(async () => !(await contents()).some(([name]) => name === 'Home'), 'the row to go');
      assert.deepEqual(await readdir(join(home.trash, 'files')), ['Home']);
      await page.click('.crumb >> nth=0');
      await shows(driveC);
      await row(/^windows/).click({ button: 'right' });
      await page.getByRole('menuitem', { name: app.text('disk.open') }).waitFor();
      assert.equal(await page.getByRole('menuitem', { name: app.text('recycle.verb') }).count(), 0);
      assert.equal(app.messages.filter(({ status }) => status === 'done').length, 1, 'analysed once');
    });
    await home.remove();
  }));
