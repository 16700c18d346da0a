// Real junk on drive C of the prefix; what is on the disk is counted from outside Wine.
import assert from 'node:assert/strict';
import { chmod, mkdir, readdir, rm, symlink, truncate, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import * as wine from './wine.mjs';

const { asked, closeServiceDialog, dialogOf, inWords, openView, press, toastOf, withVarnel } = harness;
const { makeFolder, prepareWine, registryText, unixPath, withRegistry } = wine;

const kUser = `C:\\users\\${userInfo().username}`;
const kLocal = `${kUser}\\AppData\\Local`;
const kBrowsers = ['Google\\Chrome', 'Microsoft\\Edge'].flatMap((name) =>
  ['Cache', 'Code Cache'].map((cache) => `${kLocal}\\${name}\\User Data\\Default\\${cache}`),
);
await prepareWine();
const kUserTemp = (await wine.runInPrefix('cmd', ['/c', 'echo %TEMP%'])).stdout.trim();

// Typed by hand: [what is emptied, what is only measured].
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

// Bytes of every category, links neither counted nor followed; from 1 on only of what its cleaning leaves.
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

// Runs `body` with two files in every folder, each of another size, and links to canaries beside both.
// Nothing may be deleted behind a link, nor a folder itself.
async function withJunk(body) {
  const outside = await makeFolder('varnel-canary-');
  await writeFile(join(outside.unix, 'canary'), 'canary');
  for (const [i, folder] of kFolders.entries()) {
    const path = unixPath(folder);
    await rm(path, { recursive: true, force: true });
    await mkdir(join(path, kDeep), { recursive: true });
    await mkdir(join(path, 'empty'));
    const sizes = { 'read-only': 2 ** (i + 12), [`${kDeep}/žluť 漢字.tmp`]: 1000 + i };
    for (const [name, size] of Object.entries(sizes)) {
      await writeFile(join(path, name), '');
      await truncate(join(path, name), size);
    }
    await chmod(join(path, 'read-only'), 0o444);
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

// --- the host ----------------------------------------------------------------------------------------------

test('each category is measured and emptied alone', () =>
  withJunk(() =>
    withVarnel({ page: false }, async (app) => {
      const want = await countJunk();
      const kept = await countJunk(1);
      assert.deepEqual((await app.request('getJunk')).categories, want);
      for (const name of [undefined, ...kNames]) {
        const { success, categories, total, bytes } = await app.request('cleanJunk', only(name));
        if (name) want[name] = kept[name];
        assert.deepEqual(await countJunk(), want, name);
        assert.deepEqual([success, categories, total, bytes], [true, want, sum(want), sum(want)]);
      }
    }),
  ));

test('with the service the program deletes nothing itself, whatever the service answers', () =>
  withJunk(() =>
    withVarnel({ page: false, service: {} }, async (app) => {
      const want = await countJunk();
      const windowsTempBytes = want.windowsTemp + 5_000_000;
      const reply = { success: true, windowsTempBytes, prefetchBytes: 1 };
      for (const cleanJunk of [{ reply: { success: true } }, { reply: { success: false } }, {}]) {
        await app.scriptService({ getJunkSizes: { reply }, cleanJunk });
        const from = (await asked(app, 'cleanJunk')).length;
        const { categories } = await app.request('cleanJunk', only('prefetch', 'userTemp'));
        assert.deepEqual([categories, await countJunk()], [want, want]);
        const requests = (await asked(app, 'cleanJunk')).slice(from);
        assert.deepEqual(requests, [{ action: 'cleanJunk', data: only('prefetch', 'userTemp') }]);
      }
      const { categories } = await app.request('getJunk');
      assert.deepEqual(categories, { ...want, windowsTemp: windowsTempBytes }, 'the larger figure counts');
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

// Without TMP and TEMP the system answers with the profile folder.
test('the profile is no temporary folder, and the page says so', async () => {
  const kMachine = 'HKLM\\System\\CurrentControlSet\\Control\\Session Manager\\Environment';
  const canary = unixPath(`${kUser}\\canary.txt`);
  await writeFile(canary, 'canary');
  for (const folder of [undefined, kUser, 'C:\\users', 'C:\\']) {
    const values = folder ? { TEMP: registryText(folder), TMP: registryText(folder) } : {};
    const options = { language: 'cs', service: {}, ...(folder && { page: false }) };
    await withRegistry({ 'HKCU\\Environment': values, [kMachine]: undefined }, async () => {
      await wine.writeRegistry({ [kMachine]: { TEMP: undefined, TMP: undefined } });
      await withVarnel(options, async (app) => {
        const { categories, kept } = await app.request('getJunk');
        assert.deepEqual([categories.userTemp, kept], [0, ['userTemp']], folder);
        await app.scriptService({ cleanJunk: {} });
        assert.deepEqual((await app.request('cleanJunk', only('userTemp'))).kept, ['userTemp']);
        await app.stopService();
        await app.request('cleanJunk', only('userTemp'));
        assert.ok(existsSync(canary), folder);
        if (!app.page) return;
        await app.startService({});
        await openView(app.page, 'cleaning');
        const card = app.page.locator('[data-junk=userTemp]');
        await card.getByText(app.text('junk.kept')).waitFor();
        assert.ok(await card.getByRole('checkbox').isDisabled());
      });
    });
  }
  await rm(canary);
});

// --- the story ---------------------------------------------------------------------------------------------

const measured = (page) =>
  page.waitForSelector('.junk-total[aria-busy=false] [data-testid=junk-total][title]');
const titleOf = async (page, selector) =>
  Number((await page.getAttribute(selector, 'title')).replace(/[^0-9]/g, ''));
const tick = (page, name) => page.click(`[data-junk=${name}] input`);

test('junk is measured, cleaned by choice, and what the page says is what the disk has', () =>
  withJunk(async () => {
    const locked = join(unixPath(kUserTemp), 'locked.tmp');
    await writeFile(locked, 'x'.repeat(54_321));
    const holds = [{ hold: `${kUserTemp}\\locked.tmp`, text: 'held' }, { delay_ms: 600_000 }];
    const options = {
      settings: { theme: 'light', language: 'cs' },
      tools: { 'holder.exe': { steps: holds } },
    };
    await withVarnel({ ...options, viewport: { width: 1250, height: 700 } }, async (app) => {
      const { page } = app;
      const holder = await app.startTool('holder');
      const before = await countJunk();
      const confirm = async (answer) => {
        await press(page, app.text('cleaning.clean'));
        const dialog = await dialogOf(page, app.text('cleaning.confirm'));
        const items = await dialog.getByRole('listitem').allInnerTexts();
        await press(dialog, app.text(answer));
        await dialog.waitFor({ state: 'detached' });
        return items.length;
      };
      // Whoever only looks is not told that the service is missing; what needs it is marked.
      await openView(page, 'cleaning');
      await measured(page);
      assert.equal(await page.getByRole('dialog').count(), 0);
      const marks = page.getByRole('img', { name: app.text('service.needed') });
      await app.until(async () => (await marks.count()) === 5, 'what needs the service to be marked');
      for (const name of kNames)
        assert.equal(await titleOf(page, `[data-junk=${name}] .junk-size`), before[name], name);
      await page.click('[data-junk=windowsTemp] button');
      for (const folder of kCategories.windowsTemp.flat()) {
        const inside = page.locator(`[data-folder="${folder.replaceAll('\\', '\\\\')}"]`);
        const names = await readdir(unixPath(folder));
        const there = names.map((name) => name.replace(/^(empty|x{120}|link)$/, '$&\\'));
        const items = inside.getByRole('listitem').locator('span:first-child');
        await app.until(async () => (await items.count()) === there.length, folder);
        assert.deepEqual((await items.allInnerTexts()).toSorted(), there.toSorted());
      }
      await harness.look(app, 'cleaning-ready-light-cs');
      await page.setViewportSize({ width: 690, height: 430 });
      for (const top of [0, 300, 9999]) {
        await page.locator('.content').evaluate((box, y) => box.scrollTo(0, y), top);
        const { y, height } = await page.locator('.junk-total .button').boundingBox();
        assert.ok(y > 48 && y + height < 430 - 36, `the button is in sight, scrolled to ${top}`);
      }
      await page.setViewportSize({ width: 1250, height: 700 });

      // The two folders of Windows go together, and the total follows.
      await tick(page, 'prefetch');
      assert.equal(await page.isChecked('[data-junk=windowsTemp] input'), false);
      await tick(page, 'windowsTemp');
      await tick(page, 'shaderCache');
      assert.equal(await titleOf(page, '[data-testid=junk-total]'), sum(before) - before.shaderCache);
      assert.equal(await confirm('app.cancel'), 6);
      assert.deepEqual(await countJunk(), before, 'nothing happens before the user agrees');
      await confirm('cleaning.clean');
      await page.waitForSelector('.junk-outcome');

      const kept = await countJunk(1);
      const after = { ...kept, userTemp: 54_321, shaderCache: before.shaderCache };
      assert.deepEqual(await countJunk(), after);
      const left = app.text('cleaning.left', { size: inWords(54_321, 'cs') });
      assert.ok((await page.innerText('[data-junk=userTemp] .small')).includes(left));
      assert.equal(await page.innerText('[data-testid=junk-total]'), inWords(sum(before) - sum(after), 'cs'));

      holder.kill('SIGKILL');
    });
  }));

test('hibernation and automatic cleaning are switched by the service or not at all', async () => {
  const kPower = 'HKLM\\SYSTEM\\CurrentControlSet\\Control\\Power';
  const hiberfil = unixPath('C:\\hiberfil.sys');
  await writeFile(hiberfil, 'x'.repeat(5000));
  await withRegistry({ [kPower]: { HibernateEnabled: 'dword:00000001' } }, () =>
    withVarnel({ language: 'cs' }, async (app) => {
      const { page } = app;
      const advice = await app.request('getSystemFilesAdvisor');
      assert.deepEqual(advice.hiberfil, { enabled: true, exists: true, size: 5000 });
      const reason = app.text('service.refused');
      for (const [view, name, was, failed] of [
        ['cleaning', app.text('system.hibernation'), true, 'system.hibernationFailed'],
        ['settings', new RegExp(`^${app.text('settings.autoClean')}`), false, 'settings.autoCleanNotOn'],
      ]) {
        const toggle = page.getByRole('switch', { name });
        const is = (on) => toggle.and(page.locator(`[aria-checked=${on}]:enabled`)).waitFor();
        await openView(page, view);
        await is(was);
        await toggle.click();
        await closeServiceDialog(page);
        await toastOf(page, app.text(failed, { reason }), 'alert').waitFor();
        await is(was);
        assert.ok(!(await app.settingsFile()).autoClean);
        await app.startService({ '*': { reply: { success: true } } });
        await wine.writeRegistry({ [kPower]: { HibernateEnabled: 'dword:00000000' } });
        await toggle.click();
        await is(!was);
        await app.stopService();
      }
      await app.until(async () => (await app.settingsFile()).autoClean, 'the setting to be saved');
    }),
  );
  await rm(hiberfil);
});
