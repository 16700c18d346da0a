// A tree on drive C of the prefix; every figure is counted a second time from outside Wine.
import assert from 'node:assert/strict';
import { mkdir, readdir, symlink, truncate, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { test } from 'node:test';

import { dialogOf, inWords, look, makeHome, openView, press, rowsOf, withVarnel } from './harness.mjs';
import { driveC, filesBelow, makeFolder } from './wine.mjs';

const kMB = 1_000_000;
const kLong = ['x', 'y', 'z'].map((letter) => letter.repeat(100)).join('/');
const kHome = { 'Holiday.mkv': 810, 'Backup.zip': 520, 'Photos/summer.jpg': 480, 'Game.exe': 260 };
const sumOf = (files) => files.reduce((total, { size }) => total + size, 0);
const windowsPath = (unix) => `C:\\${unix.slice(driveC.length + 1).replaceAll('/', '\\')}`;

// Runs `body` with a tree of what a scan can stumble over. A link leads to what would change every figure.
async function withTree(body) {
  const tree = await makeFolder('Strom ž-');
  const canary = await makeFolder('varnel-canary-');
  const put = async (path, size) => {
    await mkdir(dirname(path), { recursive: true });
    await writeFile(path, '');
    await truncate(path, size);
  };
  const inBig = (i) => join(tree.unix, 'big', i % 2 ? 'Žluťoučký kůň' : '漢字かな', `video ${i}.mkv`);
  for (let i = 0; i < 34; ++i) await put(inBig(i), (900 + i) * kMB);
  for (const [name, size] of [
    [`${kLong}/at the end.dat`, 77 * kMB],
    ['huge.vhdx', 5 * 2 ** 30],
    ...['a', 'b', 'c'].map((name, i) => [`three/${name}`, (i + 1) * kMB]),
    ...Object.entries(kHome).map(([name, size_mb]) => [`Home/${name}`, size_mb * kMB]),
    ['dots/same/x', 10],
    ['dots/same./x', 20],
    ['zeros/a', 0],
    ['.hidden.log', 4321],
  ])
    await put(join(tree.unix, name), size);
  await mkdir(join(tree.unix, 'no files/inside'), { recursive: true });
  await put(join(canary.unix, 'b.bin'), 1230 * kMB);
  await symlink(canary.unix, join(tree.unix, 'link'));
  await symlink(tree.unix, join(tree.unix, 'big', 'loop'));
  try {
    await body(tree);
  } finally {
    await Promise.all([tree.remove(), canary.remove()]);
  }
}

// {name: {isDirectory, size}} of a folder: a link to a folder is one without bytes.
async function listOutside(unix) {
  const files = await filesBelow(unix);
  const entries = (await readdir(unix, { withFileTypes: true })).map((entry) => {
    const path = join(unix, entry.name);
    const inside = files.filter((file) => file.path === path || file.path.startsWith(`${path}/`));
    return [entry.name, { isDirectory: !entry.isFile(), size: sumOf(inside) }];
  });
  return Object.fromEntries(entries);
}

const listed = (items) =>
  Object.fromEntries(items.map(({ name, isDirectory, size }) => [name, { isDirectory, size }]));

const largestOutside = async (unix) =>
  (await filesBelow(unix))
    .toSorted((a, b) => b.size - a.size)
    .slice(0, 30)
    .map(({ path, size }) => ({ path: windowsPath(path), size }));

// --- the host ----------------------------------------------------------------------------------------------

test('an analysis has every figure of the disk, and a listing those of the last one', () =>
  withTree((tree) =>
    withVarnel({ page: false }, async (app) => {
      const isDone = ({ type, status }) => type === 'disk_analysis_progress' && status === 'done';
      const analyse = async (drive) => (await app.posted('startDiskAnalysis', { drive }, isDone)).at(-1);
      const list = async (path) => listed((await app.request('getFolderContents', { path })).items);
      const below = `${tree.windows}\\big`;
      assert.equal((await list(tree.windows)).big.size, 0, 'no analysis yet');
      const done = await analyse(tree.windows);
      assert.deepEqual(listed(done.folders), await listOutside(tree.unix));
      assert.deepEqual(done.files, await largestOutside(tree.unix));
      for (const inner of ['big', 'big/漢字かな', 'dots', kLong])
        assert.deepEqual(
          await list(`${tree.windows}\\${inner.replaceAll('/', '\\')}`),
          await listOutside(join(tree.unix, inner)),
        );
      for (const none of [`${tree.windows}\\missing`, `${tree.windows}\\huge.vhdx`, '?:\\']) {
        const { folders, files } = await analyse(none);
        assert.deepEqual([folders, files, await list(none)], [[], [], {}], none);
      }
      assert.equal((await list(below))['漢字かな'].size, 0, 'the last analysis has not been there');

      // Many at the same time do not mix.
      const from = app.messages.length;
      const names = ['big', 'Home', 'dots'];
      const want = await Promise.all(names.map((name) => listOutside(join(tree.unix, name))));
      for (let id = 0; id < 60; ++id) {
        const place = `${tree.windows}\\${names[id % 3]}`;
        if (id < 21) await app.send({ action: 'startDiskAnalysis', requestId: id, data: { drive: place } });
        await app.send({ action: 'getFolderContents', requestId: 120 + id, data: { path: place } });
      }
      const answers = () =>
        app.messages.slice(from).filter((message) => isDone(message) || message.type === 'getFolderContents');
      await app.until(() => answers().length === 81, '21 analyses and 60 listings');
      for (const { requestId, folders, items } of answers()) {
        const got = listed(folders ?? items);
        for (const [name, { isDirectory, size }] of Object.entries(want[requestId % 3])) {
          const sizes = items && isDirectory ? [size, 0] : [size];
          assert.ok(sizes.includes(got[name].size), `${requestId} ${name}: ${got[name].size}`);
        }
      }
    }),
  ));

// --- the story ---------------------------------------------------------------------------------------------

// Moves the pointer over the map until it names `path`, and clicks there so often; gives what the map says of it.
async function clickInMap(page, path, clickCount) {
  const { x, y, width, height } = await page.locator('canvas').boundingBox();
  for (let top = 4; top < height; top += 14) {
    for (let left = 4; left < width; left += 14) {
      await page.mouse.move(x + left, y + top);
      const [hint = ''] = await page.locator('[data-testid=map-hint]').allInnerTexts();
      if (hint.split('\n')[0] !== path) continue;
      await page.mouse.click(x + left, y + top, { clickCount });
      return hint.split('\n')[1];
    }
  }
  throw new Error(`the map does not show ${path}`);
}

test('a drive is analysed once, walked through, and a large file goes to the recycle bin', () =>
  withTree(async (tree) => {
    const home = await makeHome();
    const settings = { theme: 'amethyst', language: 'en' };
    await withVarnel({ settings, env: { HOME: home.unix } }, async (app) => {
      const { page } = app;
      const contents = () => rowsOf(page, app.text('disk.contents'));
      const largest = () => rowsOf(page, app.text('disk.largest'));
      // Table, map and breadcrumb show a folder, and its figures are those of the disk.
      const shows = async (unix) => {
        const path = windowsPath(unix).replace(/\\$/, '');
        const crumbs = page.locator('.crumb');
        await app.until(async () => (await crumbs.allInnerTexts()).join('\\') === path, `the path ${path}`);
        const outside = await listOutside(unix);
        const total = sumOf(Object.values(outside));
        const share = (size) => (total > 0 ? size / total : 0).toLocaleString('en', { style: 'percent' });
        const want = Object.entries(outside).map(([name, { isDirectory, size }]) =>
          [name, ...(isDirectory && size === 0 ? ['—', '—'] : [inWords(size), share(size)])].join(' '),
        );
        const shown = (await contents()).map((cells) => cells.slice(0, 3).join(' '));
        assert.deepEqual(shown.toSorted(), want.toSorted());
        assert.ok((await page.getAttribute('canvas', 'aria-label')).includes(path));
      };
      const enter = async (name) => {
        await page.locator('tbody tr').filter({ hasText: name }).first().click();
        await page.keyboard.press('Enter');
      };

      await openView(page, 'disk');
      await page.click('[data-drive="C:"] input');
      // Pressed twice before anything is drawn.
      const start = page.getByRole('button', { name: app.text('disk.analyse', { drive: 'C:' }) });
      await start.evaluate((button) => [button.click(), button.click()]);
      await page.getByRole('grid', { name: app.text('disk.contents') }).waitFor();
      await shows(driveC);
      assert.ok(app.messages.filter(({ type }) => type === 'getFolderContents').length <= 8);
      const files = (await largestOutside(driveC)).map(({ path, size }) => {
        const cut = path.lastIndexOf('\\');
        return [path.slice(cut + 1), path.slice(0, cut), inWords(size)];
      });
      assert.deepEqual(await largest(), files);

      await enter(tree.windows.slice(3));
      await shows(tree.unix);
      // A tile inside another: one click marks the row of the outer one, two enter.
      await clickInMap(page, `${tree.windows}\\big\\漢字かな`, 1);
      await page.locator('tr[aria-selected=true]').filter({ hasText: 'big' }).waitFor();
      const big = sumOf(await filesBelow(join(tree.unix, 'big')));
      assert.equal(await clickInMap(page, `${tree.windows}\\big`, 2), inWords(big));
      await shows(join(tree.unix, 'big'));
      await page.click('.crumb >> nth=1');
      await enter('Home');
      await shows(join(tree.unix, 'Home'));
      await look(app, 'disk-map-amethyst-en');
      await page.keyboard.press('Backspace');
      await shows(tree.unix);

      // A folder goes to the bin and leaves every sum; what Windows needs is not offered.
      const recycle = async (path, ask, answer = 'recycle.verb') => {
        await ask();
        const dialog = await dialogOf(page, app.text('recycle.title', { n: 1 }));
        assert.ok((await dialog.innerText()).includes(windowsPath(path)));
        await press(dialog, app.text(answer));
        await dialog.waitFor({ state: 'detached' });
      };
      const three = join(tree.unix, 'three');
      const pressDelete = async () => {
        await page.locator('tbody tr').filter({ hasText: 'three' }).first().click();
        await page.keyboard.press('Delete');
      };
      await recycle(three, pressDelete, 'app.cancel');
      assert.ok(existsSync(three), 'nothing happens before the user agrees');
      await recycle(three, pressDelete);
      await app.until(async () => !(await contents()).some(([name]) => name === 'three'), 'the row to go');
      assert.deepEqual([existsSync(three), await readdir(join(home.trash, 'files'))], [false, ['three']]);
      await shows(tree.unix);
      await page.click('.crumb >> nth=0');
      await shows(driveC);
      const left = inWords(sumOf(Object.values(await listOutside(driveC))));
      assert.ok((await page.innerText('[data-testid=disk-total]')).startsWith(`${left} `));
      for (const name of ['windows', tree.windows.slice(3)]) {
        const shown = page.locator('tbody tr').filter({ hasText: new RegExp(`^${name}`) });
        await shown.first().click({ button: 'right' });
        const item = page.getByRole('menuitem', { name: app.text('recycle.verb') });
        await page.getByRole('menuitem', { name: app.text('disk.open') }).waitFor();
        assert.equal(await item.count(), name === 'windows' ? 0 : 1);
        await page.keyboard.press('Escape');
      }
      const huge = join(tree.unix, 'huge.vhdx');
      const boxes = page.getByRole('grid', { name: app.text('disk.largest') }).getByRole('checkbox');
      await boxes.nth(1).click();
      const verb = page.locator('.card .button', { hasText: app.text('recycle.verb') });
      await recycle(huge, () => verb.click());
      await app.until(async () => (await largest()).length === 29, 'the file to leave the list');
      assert.deepEqual((await readdir(join(home.trash, 'files'))).toSorted(), ['huge.vhdx', 'three']);
      assert.equal(existsSync(huge), false);
      assert.equal(app.messages.filter(({ status }) => status === 'done').length, 1, 'analysed once');
    });
    await home.remove();
  }));
