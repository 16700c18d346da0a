// Drive C of the prefix, analysed through the page; every figure is counted a second time from outside Wine.
import assert from 'node:assert/strict';
import { mkdir, readdir, rename, rm, symlink, truncate, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';

import { checkAccessibility, inWords, makeHome, openView, screenshot, withVarnel } from './harness.mjs';
import { driveC, filesBelow, makeFolder, prepareWine } from './wine.mjs';

const kManyFiles = 5200;
const kMB = 1_000_000;
const kLong = ['x'.repeat(100), 'y'.repeat(100), 'z'.repeat(100)].join('/');

// A tree on drive C with what a scan can stumble over. Links lead to folders that would change every figure if they counted.
async function makeTree() {
  const tree = await makeFolder('Strom ž-');
  const canary = await makeFolder('varnel-canary-');
  const put = async (name, size) => {
    const path = join(tree.unix, name);
    await mkdir(join(path, '..'), { recursive: true });
    await writeFile(path, '');
    await truncate(path, size);
  };
  for (let i = 0; i < kManyFiles; ++i) await put(`many/${String(i).padStart(4, '0')}.txt`, i);
  for (let i = 0; i < 34; ++i)
    await put(`big/${i % 2 ? 'Žluťoučký kůň' : '漢字かな'}/video ${i}.mkv`, 900 * kMB + i * 1_234_567);
  await put(`${kLong}/at the end.dat`, 77 * kMB);
  const home = {
    'Dovolená.mkv': 810,
    'Zimní koncert.flac': 340,
    'Zálohy.zip': 520,
    'Panorama z Lysé hory.jpg': 95,
    'Kronika rodu.pdf': 160,
    'Hra.exe': 260,
    'disk.vhdx': 430,
    'Fotky/léto 2024.jpg': 480,
    'Fotky/zima 2025.jpg': 180,
    'Škola/prezentace.pptx': 210,
    'Škola/data.db': 120,
  };
  for (const [name, size_mb] of Object.entries(home)) await put(`Domov/${name}`, size_mb * kMB);
  await put('empty file', 0);
  await put('.hidden.log', 4321);
  await put('zeros/a', 0);
  await mkdir(join(tree.unix, 'no files/inside'), { recursive: true });
  for (const name of ['a.bin', 'inner/b.bin']) {
    await mkdir(join(canary.unix, 'inner'), { recursive: true });
    await writeFile(join(canary.unix, name), '');
    await truncate(join(canary.unix, name), 123 * kMB);
  }
  await symlink(canary.unix, join(tree.unix, 'link'));
  await symlink(tree.unix, join(tree.unix, 'big', 'loop'));
  return { ...tree, canary, remove: () => Promise.all([tree.remove(), canary.remove()]) };
}

const sumOf = (files) => files.reduce((total, { size }) => total + size, 0);
const windowsPath = (unix) => `C:\\${unix.slice(driveC.length + 1).replaceAll('/', '\\')}`;

// {name: {isDirectory, size}} of a folder: a link to a folder is one without bytes.
async function listOutside(unix) {
  const entries = await readdir(unix, { withFileTypes: true });
  const files = new Map((await filesBelow(unix)).map(({ path, size }) => [path, size]));
  return Object.fromEntries(
    await Promise.all(
      entries.map(async (entry) => {
        const path = join(unix, entry.name);
        const size = entry.isDirectory() ? sumOf(await filesBelow(path)) : (files.get(path) ?? 0);
        return [entry.name, { isDirectory: !entry.isFile(), size }];
      }),
    ),
  );
}

// The rows that a listing is to be shown as: {name: [size, share]}.
function rowsOf(listing, language) {
  const total = sumOf(Object.values(listing));
  const share = (size) => (total > 0 ? size / total : 0).toLocaleString(language, { style: 'percent' });
  return Object.fromEntries(
    Object.entries(listing).map(([name, { isDirectory, size }]) => [
      name,
      isDirectory && size === 0 ? ['—', '—'] : [inWords(size, language), share(size)],
    ]),
  );
}

const contents = (page) => page.getByRole('grid', { name: /^(Folder contents|Obsah složky)$/ });
const largest = (page) => page.getByRole('grid', { name: /^(Largest files|Největší soubory)$/ });
const cells = (grid) =>
  grid
    .locator('tbody tr')
    .evaluateAll((rows) => rows.map((row) => [...row.cells].map((cell) => cell.textContent)));
const shownRows = async (page) =>
  Object.fromEntries((await cells(contents(page))).map(([name, size, share]) => [name, [size, share]]));
const crumbs = (page) => page.locator('.crumb').allInnerTexts();
const dones = (app) =>
  app.messages.filter(({ type, status }) => type === 'disk_analysis_progress' && status === 'done');

async function analyse(app, name) {
  await openView(app.page, 'disk');
  await app.page.click('[data-drive="C:"] input');
  await app.page.getByRole('button', { name }).click();
  await contents(app.page).waitFor();
}

// Table, map and breadcrumb show the folder `unix`, and its figures are those of the disk.
async function checkFolder(app, unix, language = 'en') {
  const { page } = app;
  const path = windowsPath(unix);
  const names = path.split('\\').filter((name) => name !== '');
  await app.waitUntilShown(
    async () => (await crumbs(page)).join('\\') === names.join('\\'),
    `the path ${path}`,
  );
  assert.deepEqual(await shownRows(page), rowsOf(await listOutside(unix), language));
  assert.ok((await page.getAttribute('canvas', 'aria-label')).includes(path));
}

// Moves the pointer over the map until it names `path`; gives what the map says of it.
async function pointAt(page, path) {
  const { x, y, width, height } = await page.locator('canvas').boundingBox();
  for (let top = 4; top < height; top += 14) {
    for (let left = 4; left < width; left += 14) {
      await page.mouse.move(x + left, y + top);
      const hint = await page.locator('[data-testid=map-hint]').allInnerTexts();
      if (hint[0]?.split('\n')[0] === path) return hint[0].split('\n');
    }
  }
  throw new Error(`the map does not show ${path}`);
}

async function enter(page, name) {
  await contents(page).locator('tbody tr').filter({ hasText: name }).first().click();
  await page.keyboard.press('Enter');
}

await prepareWine();

test('every figure of an analysis is the one of the disk', async () => {
  const tree = await makeTree();
  try {
    await withVarnel(
      { settings: { theme: 'light', language: 'en' }, viewport: { width: 1250, height: 700 } },
      async (app) => {
        const { page } = app;
        await openView(page, 'disk');
        await page.click('[data-drive="C:"] input');
        await checkAccessibility(page);
        await screenshot(page, 'disk-ready-light-en');

        // What the page shows while it runs, and what it posts when the button is pressed twice before anything is drawn.
        const start = page.getByRole('button', { name: 'Analyse C:' });
        await start.evaluate((button) => {
          window.seen = [];
          window.posted = [];
          const { webview } = window.chrome;
          const post = webview.postMessage;
          webview.postMessage = (text) => {
            window.posted.push(JSON.parse(text).action);
            post(text);
          };
          new MutationObserver(() => {
            const progress = document.querySelector('[data-testid=disk-progress]');
            if (progress) window.seen.push({ disabled: button.disabled, text: progress.innerText });
          }).observe(document.querySelector('main'), {
            subtree: true,
            childList: true,
            characterData: true,
            attributes: true,
          });
          button.click();
          button.click();
        });
        await contents(page).waitFor();
        const seen = await page.evaluate(() => window.seen);
        assert.ok(seen.length > 0 && seen.every(({ disabled }) => disabled), 'no second start while it runs');
        assert.ok(await start.isEnabled());
        assert.deepEqual(
          (await page.evaluate(() => window.posted)).filter((action) => action === 'startDiskAnalysis'),
          ['startDiskAnalysis'],
        );

        // Progress came, in whole thousands, and was shown.
        const progress = app.messages.filter(
          ({ type, status }) => type === 'disk_analysis_progress' && status === 'scanning',
        );
        assert.deepEqual(
          progress.map(({ scanned }) => scanned),
          [5000],
        );
        assert.ok(
          existsSync(join(driveC, progress[0].currentFolder.slice(3).replaceAll('\\', '/'))),
          progress[0].currentFolder,
        );
        assert.ok(
          seen.some(({ text }) => text.includes('5,000') && text.includes(progress[0].currentFolder)),
          'the count and folder were shown',
        );

        // The root: the program's answer to the byte, the page in words.
        const root = await listOutside(driveC);
        const [done] = dones(app);
        assert.deepEqual(
          Object.fromEntries(
            done.folders.map(({ name, isDirectory, size }) => [name, { isDirectory, size }]),
          ),
          root,
        );
        await checkFolder(app, driveC);
        const total = sumOf(Object.values(root));
        assert.ok((await page.innerText('[data-testid=disk-total]')).startsWith(`${inWords(total)} found`));

        // The largest files of the whole drive, in order.
        const files = (await filesBelow(driveC))
          .sort((a, b) => b.size - a.size)
          .slice(0, 30)
          .map(({ path, size }) => ({ path: windowsPath(path), size }));
        assert.deepEqual(done.files, files);
        assert.deepEqual(
          (await cells(largest(page))).map((row) => row.slice(1)),
          files.map(({ path, size }) => {
            const cut = path.lastIndexOf('\\');
            return [path.slice(cut + 1), path.slice(0, cut), inWords(size)];
          }),
        );
        await checkAccessibility(page);
        await screenshot(page, 'disk-after-light-en');

        // Down and up: Enter, the map, Backspace, the breadcrumb.
        const name = tree.windows.slice(3);
        await enter(page, name);
        await checkFolder(app, tree.unix);
        assert.deepEqual(
          (await cells(contents(page)))
            .filter(([, , , kind]) => kind === 'no figures')
            .map(([entry]) => entry)
            .sort(),
          ['link', 'no files', 'zeros'],
        );
        const big = await filesBelow(join(tree.unix, 'big'));
        assert.deepEqual(await pointAt(page, `${tree.windows}\\big`), [
          `${tree.windows}\\big`,
          inWords(sumOf(big)),
        ]);
        await page.mouse.down();
        await page.mouse.up();
        await checkFolder(app, join(tree.unix, 'big'));
        for (const inner of ['Žluťoučký kůň', '漢字かな']) {
          await enter(page, inner);
          await checkFolder(app, join(tree.unix, 'big', inner));
          await page.keyboard.press('Backspace');
          await checkFolder(app, join(tree.unix, 'big'));
        }
        await page.keyboard.press('Backspace');
        await enter(page, 'x'.repeat(100));
        for (let folder = join(tree.unix, kLong.split('/')[0]), i = 1; i < 3; ++i) {
          await checkFolder(app, folder);
          await enter(page, kLong.split('/')[i]);
          folder = join(folder, kLong.split('/')[i]);
        }
        await checkFolder(app, join(tree.unix, kLong));
        await page.click('.crumb >> nth=1');
        await checkFolder(app, tree.unix);

        // A long folder is drawn in part and counted whole.
        await enter(page, 'many');
        await page.getByRole('status').filter({ hasText: '5,200 rows' }).waitFor();
        const drawn = await shownRows(page);
        assert.ok(Object.keys(drawn).length > 10 && Object.keys(drawn).length < 200);
        const want = rowsOf(await listOutside(join(tree.unix, 'many')), 'en');
        for (const [file, figures] of Object.entries(drawn).filter(([, [size]]) => size !== undefined))
          assert.deepEqual(figures, want[file], file);
        await page.click('.crumb >> nth=0');
        await checkFolder(app, driveC);
        assert.equal(dones(app).length, 1);
      },
    );
  } finally {
    await tree.remove();
  }
});

test('what changed after the analysis is marked, and a large file goes to the recycle bin', async () => {
  const tree = await makeTree();
  const home = await makeHome();
  try {
    await withVarnel(
      { settings: { theme: 'amethyst', language: 'cs' }, env: { HOME: home.unix } },
      async (app) => {
        const { page } = app;
        await openView(page, 'disk');
        await page.waitForSelector('[data-drive="C:"]');
        await checkAccessibility(page);
        await screenshot(page, 'disk-ready-amethyst-cs');
        await analyse(app, 'Analyzovat C:');
        await enter(page, tree.windows.slice(3));
        await checkFolder(app, tree.unix, 'cs');

        await mkdir(join(tree.unix, 'nová'));
        await writeFile(join(tree.unix, 'nová', 'a'), 'x'.repeat(5000));
        await writeFile(join(tree.unix, 'nový soubor'), 'x'.repeat(5000));
        await page.keyboard.press('F5');
        const row = (name) => cells(contents(page)).then((rows) => rows.find(([entry]) => entry === name));
        const marked = await app.waitUntilShown(() => row('nová'), 'the new folder');
        assert.deepEqual(marked.slice(1), ['—', '—', 'bez údajů']);
        assert.equal((await row('nový soubor'))[1], inWords(5000, 'cs'));

        const victim = join(tree.unix, 'big/Žluťoučký kůň/video 33.mkv');
        const first = (await cells(largest(page)))[0];
        assert.deepEqual(first.slice(1), [
          'video 33.mkv',
          windowsPath(join(victim, '..')),
          inWords(900 * kMB + 33 * 1_234_567, 'cs'),
        ]);
        await largest(page).getByRole('checkbox').nth(1).click();
        const button = page.getByRole('button', { name: 'Přesunout do koše' });
        await button.click();
        const dialog = page.getByRole('dialog');
        await dialog.waitFor();
        assert.ok((await dialog.innerText()).includes(windowsPath(victim)));
        await checkAccessibility(page);
        await page.keyboard.press('Escape');
        await dialog.waitFor({ state: 'detached' });
        assert.ok(existsSync(victim), 'nothing happens before the user agrees');
        await button.click();
        await dialog.getByRole('button', { name: 'Přesunout do koše' }).click();
        await app.waitUntilShown(
          async () => (await cells(largest(page))).length === 29,
          'the file to leave the list',
        );
        assert.equal(existsSync(victim), false);
        assert.deepEqual(await readdir(join(home.trash, 'files')), ['video 33.mkv']);
        assert.equal(
          (await app.waitForMessage(({ type }) => type === 'deleteSpecificFiles')).deletedCount,
          1,
        );
        await checkAccessibility(page);
        await screenshot(page, 'disk-after-amethyst-cs');

        // Put back: a new analysis finds it again.
        await rename(join(home.trash, 'files', 'video 33.mkv'), victim);
        await page.getByRole('button', { name: 'Analyzovat C:' }).click();
        await app.waitUntil(() => dones(app).length === 2, 'the second analysis');
        await app.waitUntilShown(
          async () => (await cells(largest(page)))[0]?.[1] === 'video 33.mkv',
          'the file to be back',
        );
        await checkFolder(app, driveC, 'cs');
        await enter(page, tree.windows.slice(3));
        await checkFolder(app, tree.unix, 'cs');
        await enter(page, 'Domov');
        await checkFolder(app, join(tree.unix, 'Domov'), 'cs');
        await page
          .locator('.toast .icon-button')
          .evaluateAll((all) => all.forEach((button) => button.click()));
        await screenshot(page, 'disk-map-amethyst-cs');
      },
    );
  } finally {
    await tree.remove();
    await home.remove();
  }
});
