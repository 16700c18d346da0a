// Cleans real junk on drive C of the prefix and checks the disk from outside Wine.
import assert from 'node:assert/strict';
import { mkdir, readdir, rm, symlink, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import * as wine from './wine.mjs';

const { asked, dialogOf, inWords, openView, press, withVarnel } = harness;
const { makeFolder, prepareWine, registryText, unixPath, withRegistry } = wine;

const kUser = `C:\\users\\${userInfo().username}`;
const kLocal = `${kUser}\\AppData\\Local`;
const kBrowsers = ['Google\\Chrome', 'Microsoft\\Edge'].flatMap((name) =>
  ['Cache', 'Code Cache'].map((cache) => `${kLocal}\\${name}\\User Data\\Default\\${cache}`),
);
await prepareWine();
const kUserTemp = (await wine.runInPrefix('cmd', ['/c', 'echo %TEMP%'])).stdout.trim();

// Typed by hand: [folders to empty, folders only measured].
const kCategories = {
  windowsTemp: [['C:\\Windows\\Temp'], ['C:\\Windows\\SystemTemp']],
  prefetch: [['C:\\Windows\\Prefetch'], []],
  userTemp: [[kUserTemp], []],
  winUpdate: [['C:\\Windows\\SoftwareDistribution\\Download'], []],
  browserCache: [
    [...kBrowsers, `${kLocal}\\BraveSoftware\\Brave-Browser\\User Data\\Default\\Cache`],
    [`${kLocal}\\Mozilla\\Firefox\\Profiles`],
  ],
  shaderCache: [['NVIDIA\\DXCache', 'NVIDIA\\GLCache', 'D3DSCache'].map((name) => `${kLocal}\\${name}`), []],
  systemLogs: [['C:\\ProgramData\\Microsoft\\Windows\\WER', 'C:\\Windows\\Logs'], ['C:\\Windows\\Minidump']],
};
const kNames = Object.keys(kCategories);
const kFolders = Object.values(kCategories).flat(2);
const kDeep = ['x', 'y', 'z'].map((letter) => letter.repeat(120)).join('/');
const only = (...names) => Object.fromEntries(kNames.map((name) => [name, names.includes(name)]));

// Counts the bytes of every category, without links. From 1 on, counts only what its cleaning leaves.
async function countJunk(from = 0) {
  const sizes = {};
  for (const name of kNames) {
    const folders = kCategories[name].slice(from).flat();
    const files = await Promise.all(folders.map((folder) => wine.filesBelow(unixPath(folder))));
    sizes[name] = files.flat().reduce((total, { size }) => total + size, 0);
  }
  return sizes;
}
const sum = (sizes) => Object.values(sizes).reduce((total, size) => total + size, 0);

// Runs `body` with two files of different sizes in every folder, and with links to canaries beside them.
// Nothing behind a link may be deleted, and no folder itself.
async function withJunk(body) {
  const outside = await makeFolder('varnel-canary-');
  await writeFile(join(outside.unix, 'canary'), 'canary');
  for (const [i, folder] of kFolders.entries()) {
    const path = unixPath(folder);
    await rm(path, { recursive: true, force: true });
    await mkdir(join(path, kDeep), { recursive: true });
    await mkdir(join(path, 'empty'));
    await writeFile(join(path, 'read-only'), 'x'.repeat(2 ** i), { mode: 0o444 });
    await writeFile(join(path, kDeep, 'žluť 漢字.tmp'), 'x'.repeat(1000 + i));
    for (const link of ['link', `${kDeep}/link`]) await symlink(outside.unix, join(path, link));
  }
  try {
    await body();
    assert.deepEqual(await readdir(outside.unix), ['canary'], 'what links lead to is untouched');
    for (const folder of kFolders) assert.ok(existsSync(unixPath(folder)), `${folder} itself stays`);
  } finally {
    for (const folder of kFolders) {
      await rm(unixPath(folder), { recursive: true, force: true });
      await mkdir(unixPath(folder), { recursive: true });
    }
    await outside.remove();
  }
}

// --- the host ---

test('with the service, only the service empties; without it, each category is emptied separately', () =>
  withJunk(() =>
    withVarnel({ page: false, service: {} }, async (app) => {
      const [want, kept] = [await countJunk(), await countJunk(1)];
      const data = only('prefetch', 'userTemp');
      for (const cleanJunk of [{ reply: { success: true } }, { reply: { success: false } }, {}]) {
        await app.scriptService({ cleanJunk });
        await app.request('cleanJunk', data);
        assert.deepEqual(await countJunk(), want, 'nothing is deleted here, whatever the service answers');
      }
      assert.deepEqual(await asked(app, 'cleanJunk'), Array(3).fill({ action: 'cleanJunk', data }));
      await app.stopService();
      assert.deepEqual((await app.request('getJunk')).categories, want);
      for (const name of [undefined, ...kNames]) {
        const { success, categories, total, bytes } = await app.request('cleanJunk', only(name));
        if (name) want[name] = kept[name];
        assert.deepEqual(await countJunk(), want, name);
        assert.deepEqual([success, categories, total, bytes], [true, want, sum(want), sum(want)]);
      }
    }),
  ));

test('--silent-clean cleans all categories without a window, a browser or the service', () =>
  withJunk(async () => {
    const kept = await countJunk(1);
    const service = { '*': { reply: { success: true } } };
    await withVarnel({ args: ['--quiet', 'x--silent-clean=now', '/y'], service }, async (app) => {
      let looks = 0;
      for (; app.process.code === undefined; ++looks) assert.equal((await app.window()).found, false);
      assert.ok(looks > 0);
      assert.deepEqual([await app.exited, app.calls], [0, []]);
      assert.deepEqual(await app.serviceRequests(), []);
    });
    assert.deepEqual(await countJunk(), kept);
  }));

// Without TMP and TEMP, the system returns the profile folder.
test('the profile does not count as a temporary folder', async () => {
  const kMachine = 'HKLM\\System\\CurrentControlSet\\Control\\Session Manager\\Environment';
  const canary = unixPath(`${kUser}\\canary.txt`);
  await writeFile(canary, 'canary');
  for (const folder of [undefined, 'C:\\users']) {
    const values = folder ? { TEMP: registryText(folder), TMP: registryText(folder) } : {};
    await withRegistry({ 'HKCU\\Environment': values, [kMachine]: undefined }, async () => {
      await wine.writeRegistry({ [kMachine]: { TEMP: undefined, TMP: undefined } });
      await withVarnel({ page: false, service: { cleanJunk: {} } }, async (app) => {
        const { categories, kept } = await app.request('getJunk');
        assert.deepEqual([categories.userTemp, kept], [0, ['userTemp']], folder);
        assert.deepEqual((await app.request('cleanJunk', only('userTemp'))).kept, ['userTemp']);
        await app.stopService();
        await app.request('cleanJunk', only('userTemp'));
        assert.ok(existsSync(canary), folder);
      });
    });
  }
  await rm(canary);
});

// --- the story ---

test("selected junk is cleaned, and the page's figures match the disk", () =>
  withJunk(async () => {
    const settings = { theme: 'light', language: 'cs' };
    await withVarnel({ settings, viewport: { width: 1250, height: 700 } }, async (app) => {
      const { page } = app;
      const before = await countJunk();
      const bytesOf = async (selector) =>
        Number((await page.getAttribute(selector, 'title')).replace(/[^0-9]/g, ''));
      const confirm = async (answer) => {
        await press(page, app.text('cleaning.clean'));
        const dialog = await dialogOf(page, app.text('cleaning.confirm'));
        const items = await dialog.getByRole('listitem').count();
        await press(dialog, app.text(answer));
        await dialog.waitFor({ state: 'detached' });
        return items;
      };
      await openView(page, 'cleaning');
      await page.waitForSelector('.junk-total[aria-busy=false] [data-testid=junk-total][title]');
      assert.equal(await bytesOf('[data-testid=junk-total]'), sum(before));
      await harness.look(app, 'cleaning-ready-light-cs');

      // Measuring misses the service, but only the marks say so.
      assert.ok(app.messages.some(({ type }) => type === 'show_service_error_modal'));
      assert.equal(await page.getByRole('dialog').count(), 0);
      const marked = await page
        .locator('.service-mark')
        .evaluateAll((marks) => marks.map((mark) => mark.closest('[data-junk]')?.dataset.junk ?? ''));
      assert.deepEqual(marked, ['windowsTemp', 'prefetch', 'winUpdate', 'systemLogs', '']);

      for (const name of ['userTemp', 'browserCache']) {
        await page.click(`[data-junk=${name}] [aria-expanded]`);
        const folders = page.locator(`[data-junk=${name}] [data-folder]`, { hasText: 'read-only' });
        await folders.first().waitFor();
        const shown = await folders.evaluateAll((all) => all.map((one) => one.dataset.folder));
        assert.deepEqual(shown, kCategories[name].flat());
      }

      await page.click('[data-junk=shaderCache] input');
      assert.equal(await bytesOf('[data-testid=junk-total]'), sum(before) - before.shaderCache);
      assert.equal(await confirm('app.cancel'), 6);
      assert.deepEqual(await countJunk(), before, 'nothing happens before the user agrees');
      await confirm('cleaning.clean');
      await page.waitForSelector('.junk-outcome');

      const after = { ...(await countJunk(1)), shaderCache: before.shaderCache };
      assert.deepEqual(await countJunk(), after);
      assert.equal(await page.innerText('[data-testid=junk-total]'), inWords(sum(before) - sum(after), 'cs'));
    });
  }));
