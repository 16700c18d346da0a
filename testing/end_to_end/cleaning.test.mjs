// Real junk on drive C of the prefix, cleaned through the page; what is on the disk is counted from outside Wine.
import assert from 'node:assert/strict';
import { mkdir, readFile, readdir, rename, rm, symlink, truncate, utimes, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import {
  checkAccessibility,
  closeServiceDialog,
  inWords,
  makeHome,
  openView,
  screenshot,
  withVarnel,
} from './harness.mjs';
import { filesBelow, makeFolder, prepareWine, runInPrefix, unixPath } from './wine.mjs';

const kUser = `C:\\users\\${userInfo().username}`;
const kLocal = `${kUser}\\AppData\\Local`;
const kBrowsers = ['Google\\Chrome', 'Microsoft\\Edge'].flatMap((name) =>
  ['Cache', 'Code Cache'].map((cache) => `${kLocal}\\${name}\\User Data\\Default\\${cache}`),
);
await prepareWine();
const kUserTemp = (await runInPrefix('cmd', ['/c', 'echo %TEMP%'])).stdout.trim();

// Typed by hand: what is emptied, and what is only counted.
const kCategories = {
  windowsTemp: { cleaned: ['C:\\Windows\\Temp'], kept: ['C:\\Windows\\SystemTemp'] },
  prefetch: { cleaned: ['C:\\Windows\\Prefetch'], kept: [] },
  userTemp: { cleaned: [kUserTemp], kept: [] },
  winUpdate: { cleaned: ['C:\\Windows\\SoftwareDistribution\\Download'], kept: [] },
  browserCache: {
    cleaned: [...kBrowsers, `${kLocal}\\BraveSoftware\\Brave-Browser\\User Data\\Default\\Cache`],
    kept: [`${kLocal}\\Mozilla\\Firefox\\Profiles`],
  },
  shaderCache: {
    cleaned: [`${kLocal}\\NVIDIA\\DXCache`, `${kLocal}\\NVIDIA\\GLCache`, `${kLocal}\\D3DSCache`],
    kept: [],
  },
  systemLogs: {
    cleaned: ['C:\\ProgramData\\Microsoft\\Windows\\WER', 'C:\\Windows\\Logs'],
    kept: ['C:\\Windows\\Minidump'],
  },
};
const kNames = Object.keys(kCategories);
const kFolders = Object.values(kCategories).flatMap(({ cleaned, kept }) => [...cleaned, ...kept]);
const kFilesAFolder = 200;
const kEverything = Object.fromEntries(kNames.map((name) => [name, true]));

// [number of files, bytes] of folders, links neither counted nor followed.
async function countFolders(folders) {
  const files = (await Promise.all(folders.map((folder) => filesBelow(unixPath(folder))))).flat();
  return [files.length, files.reduce((sum, { size }) => sum + size, 0)];
}

// Bytes of every category, as the disk has them.
async function countJunk() {
  const entries = kNames.map(async (name) => [
    name,
    (await countFolders([...kCategories[name].cleaned, ...kCategories[name].kept]))[1],
  ]);
  return Object.fromEntries(await Promise.all(entries));
}

const bytesOf = async (folders) => (await countFolders(folders))[1];
const sum = (sizes) => Object.values(sizes).reduce((total, size) => total + size, 0);

// Fills every folder anew, with links to canaries as a child and deep inside. `canaries` gives what lives behind the links.
async function fillJunk() {
  const outside = await makeFolder('varnel-canary-');
  await mkdir(join(outside.unix, 'deep'));
  for (const name of ['canary', 'deep/canary']) await writeFile(join(outside.unix, name), name.repeat(1000));
  const canaries = async () =>
    (await filesBelow(outside.unix))
      .map(({ path, size }) => `${path.slice(outside.unix.length + 1)} ${size}`)
      .sort();

  let seed = 0;
  for (const folder of kFolders) {
    const path = unixPath(folder);
    await rm(path, { recursive: true, force: true });
    const inner = [
      path,
      join(path, 'žluťoučký'),
      join(path, 'a b', '漢字'),
      join(path, 'x'.repeat(120), 'y'.repeat(120), 'z'.repeat(120)),
    ];
    for (const one of inner) await mkdir(one, { recursive: true });
    for (let i = 0; i < kFilesAFolder; ++i) {
      const mode = i % 50 === 0 ? 0o444 : 0o644;
      await writeFile(join(inner[i % inner.length], `${i}.tmp`), '', { mode });
      await truncate(join(inner[i % inner.length], `${i}.tmp`), 1 + ((seed += 7919) % 60_000));
    }
    await mkdir(join(path, 'empty'));
    await symlink(outside.unix, join(path, 'link'));
    await symlink(join(outside.unix, 'deep'), join(inner[2], 'link'));
  }
  const alive = await canaries();
  assert.equal(alive.length, 2);
  return { alive, canaries, remove: outside.remove };
}

async function emptyJunk() {
  for (const folder of kFolders) {
    await rm(unixPath(folder), { recursive: true, force: true });
    await mkdir(unixPath(folder), { recursive: true });
  }
}

// Runs `body` on a prefix full of junk and sees to it that nothing was deleted behind a link.
async function withJunk(body) {
  const junk = await fillJunk();
  try {
    await body();
    assert.deepEqual(await junk.canaries(), junk.alive, 'what links lead to is untouched');
  } finally {
    await emptyJunk();
    await junk.remove();
  }
}

const last = (app, type) => app.messages.findLast((message) => message.type === type);
const exactBytes = (title) => Number(title.replace(/[^0-9]/g, ''));

// {category: bytes} as the cards show them, and the total.
const shownSizes = async (page) =>
  Object.fromEntries(
    await Promise.all(
      kNames.map(async (name) => [
        name,
        exactBytes(await page.getAttribute(`[data-junk=${name}] .junk-size`, 'title')),
      ]),
    ),
  );
const shownTotal = async (page) => exactBytes(await page.getAttribute('[data-testid=junk-total]', 'title'));
const measured = (page) =>
  page.waitForSelector('.junk-total[aria-busy=false] [data-testid=junk-total][title]');
const cleaned = (page) => page.waitForSelector('.junk-outcome');
const tick = (page, name) => page.click(`[data-junk=${name}] input`);

async function confirmClean(page) {
  await page.click('.junk-total button');
  const dialog = page.getByRole('dialog', { name: /Clean the ticked|Vyčistit vybrané/ });
  await dialog.waitFor();
  return dialog;
}

test('junk is measured, cleaned by choice, and what the page says is what the disk has', () =>
  withJunk(() =>
    withVarnel(
      {
        settings: { theme: 'light', language: 'en' },
        viewport: { width: 1250, height: 700 },
        tools: {
          'holder.exe': {
            steps: [{ hold: `${kUserTemp}\\locked.tmp`, text: 'held' }, { delay_ms: 600_000 }],
          },
        },
      },
      async (app) => {
        const { page } = app;
        const locked = join(unixPath(kUserTemp), 'locked.tmp');
        await writeFile(locked, 'x'.repeat(54_321));
        const holder = await app.startTool('holder');
        const before = await countJunk();
        assert.ok((await countFolders(kFolders))[0] > 3000);

        await openView(page, 'cleaning');
        await closeServiceDialog(page);
        await measured(page);
        assert.deepEqual(await shownSizes(page), before);
        assert.equal(await shownTotal(page), sum(before));
        assert.deepEqual(last(app, 'junk').categories, before);
        assert.deepEqual([last(app, 'junk').total, last(app, 'junk').bytes], [sum(before), sum(before)]);
        await page.waitForSelector('.at-system .row');
        await checkAccessibility(page);
        await screenshot(page, 'cleaning-ready-light-en');

        // Ticks: the two folders of Windows go together, the total follows.
        await tick(page, 'prefetch');
        assert.equal(await page.isChecked('[data-junk=windowsTemp] input'), false);
        assert.equal(await shownTotal(page), sum(before) - before.prefetch - before.windowsTemp);
        await tick(page, 'windowsTemp');
        assert.equal(await page.isChecked('[data-junk=prefetch] input'), true);
        await tick(page, 'shaderCache');
        assert.equal(await shownTotal(page), sum(before) - before.shaderCache);

        const dialog = await confirmClean(page);
        assert.equal(await dialog.getByRole('listitem').count(), 6);
        assert.equal((await dialog.innerText()).includes('Graphics cache'), false);
        await checkAccessibility(page);
        await dialog.getByRole('button', { name: 'Cancel' }).click();
        assert.deepEqual(await countJunk(), before, 'nothing happens before the user agrees');
        await (await confirmClean(page)).getByRole('button', { name: 'Clean' }).click();
        await cleaned(page);

        const after = await countJunk();
        assert.deepEqual(after, {
          windowsTemp: await bytesOf(kCategories.windowsTemp.kept),
          prefetch: 0,
          userTemp: 54_321,
          winUpdate: 0,
          browserCache: await bytesOf(kCategories.browserCache.kept),
          shaderCache: before.shaderCache,
          systemLogs: await bytesOf(kCategories.systemLogs.kept),
        });
        for (const name of ['windowsTemp', 'browserCache', 'systemLogs']) {
          assert.equal(
            (await countFolders(kCategories[name].kept))[0],
            kFilesAFolder * kCategories[name].kept.length,
            `${name}: what is only measured stays`,
          );
        }
        for (const folder of kFolders) assert.ok(existsSync(unixPath(folder)), `${folder} itself stays`);
        const reply = last(app, 'cleanJunk');
        assert.deepEqual(reply.categories, after);
        assert.deepEqual([reply.success, reply.total, reply.bytes], [true, sum(after), sum(after)]);

        for (const name of kNames) {
          const said = await page.innerText(`[data-junk=${name}] .small`);
          if (name === 'shaderCache') {
            assert.doesNotMatch(said, /Freed/, 'what was not ticked has no outcome');
            continue;
          }
          assert.ok(said.includes(`Freed ${inWords(before[name] - after[name])}`), `${name}: ${said}`);
          assert.equal(said.includes(`${inWords(after[name])} stayed`), after[name] > 0, `${name}: ${said}`);
        }
        assert.match(
          await page.innerText('[data-junk=userTemp] .junk-outcome'),
          /some files are in use by another program/,
        );
        assert.match(
          await page.innerText('[data-junk=browserCache] .junk-outcome'),
          /only measures Firefox profiles/,
        );
        assert.equal(await page.innerText('[data-testid=junk-total]'), inWords(sum(before) - sum(after)));
        await checkAccessibility(page);
        await screenshot(page, 'cleaning-after-light-en');

        // Once nobody holds the file, it goes; measuring anew takes the last outcome off the cards.
        holder.kill('SIGKILL');
        await page.keyboard.press('F5');
        await closeServiceDialog(page);
        await measured(page);
        assert.equal(await page.locator('.junk-outcome').count(), 0);
        assert.deepEqual(await shownSizes(page), after);
        await (await confirmClean(page)).getByRole('button', { name: 'Clean' }).click();
        await cleaned(page);
        assert.equal(existsSync(locked), false);
      },
    ),
  ));

test('the service measures and cleans in the place of the program', () =>
  withJunk(() =>
    withVarnel(
      {
        settings: { theme: 'amethyst', language: 'cs' },
        service: {},
      },
      async (app) => {
        const { page } = app;
        const local = await countJunk();
        const sees = (windowsTempBytes, prefetchBytes) => ({
          reply: { success: true, windowsTempBytes, prefetchBytes },
        });
        await app.scriptService({ getJunkSizes: sees(local.windowsTemp + 5_000_000, 1) });
        await openView(page, 'cleaning');
        await measured(page);
        const before = { ...local, windowsTemp: local.windowsTemp + 5_000_000 };
        assert.deepEqual(await shownSizes(page), before, 'the larger figure counts');
        assert.equal(last(app, 'junk').bytes, sum(before));
        await page.waitForSelector('[data-testid=badge-service]:has-text("Služba běží")');
        await checkAccessibility(page);
        await screenshot(page, 'cleaning-ready-amethyst-cs');

        await app.scriptService({
          cleanJunk: { chunks: [{ reply: { success: true }, delay_ms: 1500 }] },
          getJunkSizes: sees(3_000, 0),
        });
        await tick(page, 'browserCache');
        await (await confirmClean(page)).getByRole('button', { name: 'Vyčistit' }).click();
        const requests = async (action) =>
          (await app.serviceRequests()).filter((request) => request.action === action);
        await app.waitUntilShown(
          async () => (await requests('cleanJunk')).length > 0,
          'the request to clean',
        );
        assert.deepEqual(await requests('cleanJunk'), [
          { action: 'cleanJunk', data: { ...kEverything, browserCache: false } },
        ]);
        assert.equal(await page.getAttribute('.junk-total', 'aria-busy'), 'true');
        // What the service does while the program waits.
        await rm(unixPath('C:\\Windows\\SoftwareDistribution\\Download'), { recursive: true });
        await rm(unixPath('C:\\Windows\\SystemTemp'), { recursive: true });
        const after = await countJunk();
        assert.equal(after.winUpdate, 0);
        await cleaned(page);

        assert.deepEqual(await countJunk(), after, 'the program deletes nothing itself');
        assert.deepEqual(last(app, 'cleanJunk').categories, after);
        assert.deepEqual(await shownSizes(page), after);
        for (const name of ['windowsTemp', 'winUpdate', 'userTemp']) {
          const said = await page.innerText(`[data-junk=${name}] .junk-outcome`);
          assert.ok(said.includes(inWords(before[name] - after[name], 'cs')), `${name}: ${said}`);
        }
        assert.equal(await page.locator('[data-junk=browserCache] .junk-outcome').count(), 0);
        await checkAccessibility(page);
        await screenshot(page, 'cleaning-after-amethyst-cs');
      },
    ),
  ));

test('old large downloads go to the recycle bin and come back', async () => {
  const folder = unixPath(`${kUser}\\Downloads`);
  const kMiB = 1_048_576;
  const kHour = 3_600_000;
  await rm(folder, { recursive: true, force: true });
  await mkdir(join(folder, 'inner'), { recursive: true });
  for (const [name, size, hours] of [
    ['Žluťoučký instalátor.ISO', 2 * kMiB, 31 * 24],
    ['above.zip', kMiB + 1, 720],
    ['archive.tar.gz', 3 * kMiB, 4000],
    ['third.msi', 5 * kMiB, 900],
    ['exactly.zip', kMiB, 4000],
    ['young.exe', 2 * kMiB, 719],
    ['tomorrow.exe', 2 * kMiB, -24],
    ['text.txt', 2 * kMiB, 4000],
    ['inner/deep.zip', 2 * kMiB, 4000],
  ]) {
    await writeFile(join(folder, name), `first bytes of ${name}`);
    await truncate(join(folder, name), size);
    const written = new Date(Date.now() - hours * kHour - 60_000);
    await utimes(join(folder, name), written, written);
  }
  const home = await makeHome();
  try {
    await withVarnel({ language: 'en', service: {}, env: { HOME: home.unix } }, async (app) => {
      const { page } = app;
      const grid = page.getByRole('grid', { name: 'Large old downloads' });
      const rows = async () =>
        (await grid.locator('tbody tr').allInnerTexts()).map((text) => text.trim().split(/\s*\t\s*/));
      const rowOf = (name) => grid.getByRole('row').filter({ hasText: name });
      await openView(page, 'cleaning');
      await grid.waitFor();
      assert.deepEqual(await rows(), [
        ['third.msi', inWords(5 * kMiB), '37 days'],
        ['archive.tar.gz', inWords(3 * kMiB), '166 days'],
        ['Žluťoučký instalátor.ISO', inWords(2 * kMiB), '31 days'],
        ['above.zip', inWords(kMiB + 1), '30 days'],
      ]);
      assert.ok((await page.innerText('.at-downloads')).includes(`${inWords(11 * kMiB + 1)} in total`));

      for (const name of ['Žluťoučký', 'above.zip']) await rowOf(name).getByRole('checkbox').click();
      await rm(join(folder, 'above.zip'));
      await page.getByRole('button', { name: `Move to recycle bin (${inWords(3 * kMiB + 1)})` }).click();
      const dialog = page.getByRole('dialog', { name: 'Move 2 files to the recycle bin?' });
      await dialog.waitFor();
      assert.ok((await dialog.innerText()).includes(`${kUser}\\Downloads\\Žluťoučký instalátor.ISO`));
      await checkAccessibility(page);
      await dialog.getByRole('button', { name: 'Move to recycle bin' }).click();
      const reply = await app.waitForMessage(({ type }) => type === 'deleteSpecificFiles');
      assert.deepEqual([reply.success, reply.deletedCount], [true, 1]);
      await page.getByRole('alert').filter({ hasText: 'Only 1 of 2 moved to the recycle bin' }).waitFor();
      await app.waitUntilShown(async () => (await rows()).length === 2, 'the rows to go');
      await checkAccessibility(page);

      // The bin knows where the file was, and has it whole.
      assert.equal(existsSync(join(folder, 'Žluťoučký instalátor.ISO')), false);
      const [note, ...others] = await readdir(join(home.trash, 'info'));
      assert.deepEqual(others, []);
      const [, origin] = /^Path=(.*)$/m.exec(await readFile(join(home.trash, 'info', note), 'utf8'));
      const path = decodeURIComponent(origin);
      assert.equal(path.endsWith('/Downloads/Žluťoučký instalátor.ISO'), true, path);
      await rename(
        join(home.trash, 'files', note.replace(/\.trashinfo$/, '')),
        join(folder, 'Žluťoučký instalátor.ISO'),
      );
      assert.match(
        await readFile(join(folder, 'Žluťoučký instalátor.ISO'), 'utf8'),
        /^first bytes of Žluťoučký/,
      );
      await page.keyboard.press('F5');
      await app.waitUntilShown(async () => (await rows()).length === 3, 'the restored file');
      assert.equal(
        (await app.request('deleteSpecificFiles', { paths: [`${kUser}\\Downloads\\above.zip`] })).success,
        false,
      );
    });
  } finally {
    await home.remove();
    await rm(folder, { recursive: true });
    await mkdir(folder);
  }
});

test('system files and the hibernation switch', async () => {
  const kPower = 'HKLM\\SYSTEM\\CurrentControlSet\\Control\\Power';
  const hibernation = (on) =>
    runInPrefix('reg', ['add', kPower, '/v', 'HibernateEnabled', '/t', 'REG_DWORD', '/d', String(on), '/f']);
  const files = { 'hiberfil.sys': 3_435_973_837, 'pagefile.sys': 17_179_869_184 };
  const remove = (name) => rm(unixPath(`C:\\${name}`), { force: true });
  for (const [name, size] of Object.entries(files)) {
    await writeFile(unixPath(`C:\\${name}`), '');
    await truncate(unixPath(`C:\\${name}`), size);
  }
  assert.equal((await hibernation(1)).code, 0);
  try {
    await withVarnel({ language: 'en' }, async (app) => {
      const { page } = app;
      await openView(page, 'cleaning');
      await closeServiceDialog(page);
      const toggle = page.getByRole('switch', { name: 'Hibernation' });
      const isOn = (want) =>
        app.waitUntilShown(
          async () =>
            (await toggle.isEnabled()) && (await toggle.getAttribute('aria-checked')) === String(want),
          `the switch to be ${want}`,
        );
      await isOn(true);
      const sizes = page.locator('.system-file');
      assert.deepEqual(await sizes.locator('.system-size').allInnerTexts(), [
        inWords(3_435_973_837),
        inWords(17_179_869_184),
        'does not exist',
      ]);
      assert.deepEqual(
        await sizes.locator('.system-size').evaluateAll((all) => all.map(({ title }) => title)),
        ['3,435,973,837 B', '17,179,869,184 B', '0 B'],
      );

      // Without the service: the dialog, and the switch goes back.
      await toggle.click();
      await closeServiceDialog(page);
      await page
        .getByRole('alert')
        .filter({
          hasText: 'Hibernation could not be switched. The helper service did not fulfil the request.',
        })
        .waitFor();
      await isOn(true);

      await app.startService({ set_hibernation: { reply: { success: true } } });
      await hibernation(0);
      await remove('hiberfil.sys');
      await toggle.click();
      await isOn(false);
      assert.deepEqual(
        (await app.serviceRequests()).filter(({ action }) => action === 'set_hibernation'),
        [{ action: 'set_hibernation', data: { enabled: false } }],
      );
      assert.equal(await sizes.first().locator('.system-size').innerText(), 'does not exist');
      await checkAccessibility(page);
    });
  } finally {
    for (const name of Object.keys(files)) await remove(name);
    await runInPrefix('reg', ['delete', kPower, '/v', 'HibernateEnabled', '/f']);
  }
});

test('automatic cleaning is switched by the service or not at all', () =>
  withVarnel({ language: 'en' }, async (app) => {
    const { page } = app;
    await openView(page, 'settings');
    const toggle = page.getByRole('switch', { name: /^Clean regularly/ });
    const isOn = (want) =>
      app.waitUntilShown(
        async () =>
          (await toggle.isEnabled()) && (await toggle.getAttribute('aria-checked')) === String(want),
        `the switch to be ${want}`,
      );
    const stored = async () => (await app.settingsFile()).autoClean === true;
    const saved = () => app.messages.filter(({ type }) => type === 'saveSettings').length;
    await isOn(false);
    await toggle.click();
    await closeServiceDialog(page);
    await page.getByRole('alert').filter({ hasText: 'Automatic cleaning stays off' }).waitFor();
    await isOn(false);
    assert.deepEqual([saved(), await stored()], [0, false]);

    await app.startService({ toggleScheduleClean: { reply: { success: true } } });
    for (const [clicks, enabled] of [
      [1, true],
      [2, false],
    ]) {
      await toggle.click();
      await app.waitUntil(() => saved() === clicks, 'the setting to be saved');
      await isOn(enabled);
      assert.equal(await stored(), enabled);
    }
    const exePath = `${app.folder.windows}\\bin\\Varnel.exe`;
    assert.deepEqual(
      (await app.serviceRequests()).filter(({ action }) => action === 'toggleScheduleClean'),
      [true, false].map((enabled) => ({ action: 'toggleScheduleClean', data: { enabled, exePath } })),
    );
    await app.scriptService({ toggleScheduleClean: { reply: { success: false } } });
    await toggle.click();
    await page.getByRole('alert').filter({ hasText: 'Automatic cleaning stays off' }).last().waitFor();
    await isOn(false);
    assert.equal(await stored(), false);
  }));

test('--silent-clean cleans all categories without a window, a browser or the service', () =>
  withJunk(async () => {
    const kept = Object.values(kCategories).flatMap((category) => category.kept);
    const before = await countFolders(kept);
    await withVarnel(
      { args: ['/x', '--silent-clean', 'more', 'words'], service: { '*': { reply: { success: true } } } },
      async (app) => {
        let looks = 0;
        while (app.process.exitCode === null && app.process.signalCode === null) {
          assert.equal((await app.window()).found, false);
          ++looks;
        }
        assert.ok(looks > 0);
        assert.equal(await app.exited, 0);
        assert.equal(app.recorded.environment, undefined);
        assert.deepEqual(await app.serviceRequests(), []);
      },
    );
    assert.deepEqual(
      await countFolders(Object.values(kCategories).flatMap((category) => category.cleaned)),
      [0, 0],
    );
    assert.deepEqual(await countFolders(kept), before);
    assert.equal(before[0], 3 * kFilesAFolder);
    for (const folder of kFolders) assert.ok(existsSync(unixPath(folder)), `${folder} itself stays`);
  }));

test('a temporary folder that holds more than junk is left alone, and says so', async () => {
  const setTemp = (path) => runInPrefix('reg', ['add', 'HKCU\\Environment', '/v', 'TMP', '/d', path, '/f']);
  await setTemp(kUser);
  try {
    await withVarnel({ language: 'en', service: {} }, async (app) => {
      const { page, text } = app;
      await openView(page, 'cleaning');
      const card = page.locator('[data-junk=userTemp]');
      await card.getByText(text('junk.kept')).waitFor();
      assert.equal(await card.locator('.junk-size').innerText(), '—');
      assert.ok(await card.getByRole('checkbox').isDisabled());
      await mkdir(unixPath(kUser), { recursive: true });
      const canary = join(unixPath(kUser), 'canary');
      await writeFile(canary, '');
      const only = Object.fromEntries(kNames.map((name) => [name, name === 'userTemp']));
      assert.deepEqual((await app.request('cleanJunk', only)).kept, ['userTemp']);
      assert.ok(existsSync(canary));
      await rm(canary);
    });
  } finally {
    await setTemp(kUserTemp);
  }
});
