// Tests repairs and the update with stand-in tools, the stand-in service and a server of its own.
import assert from 'node:assert/strict';
import { existsSync } from 'node:fs';
import { cp, mkdir, readFile, readdir, rm, writeFile } from 'node:fs/promises';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import { closeServiceDialog, dialogOf, look, openView, press, withVarnel } from './harness.mjs';
import { kReleasePort, serve, withReleaseServer } from './release_server.mjs';
import { buildFolder, prepareWine, runInPrefix, standIn, unixPath, version, withAway } from './wine.mjs';

const kLoopback = standIn('Varnel_loopback.exe');
const [kMajor, kMinor] = version.split('.').map(Number);
const kNewer = `${kMajor}.${kMinor + 1}.0`;
const kExplorer = 'C:\\Windows\\explorer.exe';
await prepareWine();
const kTemporary = (await runInPrefix('cmd', ['/c', 'echo %TEMP%'])).stdout.trim();
const [kLocalCopy, kInstaller] = ['varnel_version_online.json', 'VarnelUpdate.exe'].map((name) =>
  unixPath(`${kTemporary}\\${name}`),
);

test('rebuilding icons ends Explorer, deletes its caches and nothing else, and starts it again', async () => {
  const cache = unixPath(`C:\\users\\${userInfo().username}\\AppData\\Local\\Microsoft\\Windows\\Explorer`);
  const stays = ['desktop.ini', 'iconcache.db', 'inner', 'xthumbcache_1.db'];
  await mkdir(join(cache, 'inner'), { recursive: true });
  for (const name of ['desktop.ini', 'iconcache.db', 'xthumbcache_1.db', 'inner/iconcache_32.db'])
    await writeFile(join(cache, name), name);
  for (const name of ['iconcache_16.db', 'thumbcache_256.db']) await writeFile(join(cache, name), name);
  const running = { steps: [{ text: 'up' }, { delay_ms: 600_000 }] };
  const tools = {
    'Explorer.exe': { ...running, cases: [{ when: kExplorer, log_folder: true }] },
    'explorer2.exe': running,
  };
  await withVarnel({ page: false, tools }, async (app) => {
    const rebuild = async () => (await app.request('quickAction', { type: 'rebuild-icons' })).success;
    const [explorer, other] = [await app.startTool('Explorer'), await app.startTool('explorer2')];
    // Only now, because Wine's own Explorer creates the desktop for the first window.
    await withAway([kExplorer], async () => {
      assert.equal(await rebuild(), false, 'what cannot be started again is said');
      await explorer.ended;
      await cp(standIn('console_tool.exe'), unixPath(kExplorer));
      assert.equal(await rebuild(), true);
      await app.until(async () => (await app.toolCalls('Explorer')).length === 3, 'the new Explorer');
    });
    const [, command, folder] = await app.toolCalls('Explorer');
    assert.deepEqual([command, folder.toLowerCase()], [kExplorer, 'c:\\windows']);
    assert.equal(other.code, undefined, 'another program goes on');
    assert.deepEqual((await readdir(cache)).sort(), stays);
    assert.deepEqual(await readdir(join(cache, 'inner')), ['iconcache_32.db']);
    other.kill('SIGKILL');
  });
  await rm(cache, { recursive: true });
});

test('repairs run on request and show the answer of the tool or the service', () => {
  const oem = Buffer.from('\r\nDer DNS-Aufl\x94sungscache wurde geleert.\r\n', 'latin1').toString('hex');
  const tools = { 'ipconfig.exe': { steps: [{ hex: oem }] } };
  return withVarnel({ language: 'cs', tools }, async (app) => {
    const { page, text } = app;
    const repair = (type) => press(page.locator(`[data-repair=${type}]`), text(`repair.${type}.verb`));
    const resultOf = (type) => page.locator(`[data-result=${type}] > span`).first().innerText();
    const answer = async (key) =>
      press(await dialogOf(page, text('repair.safemode-reboot.confirm')), text(key));
    await openView(page, 'maintenance');
    await repair('flush-dns');
    assert.equal(await resultOf('flush-dns'), 'Der DNS-Auflösungscache wurde geleert.');
    assert.deepEqual(await app.toolCalls('ipconfig'), ['ipconfig /flushdns']);

    await repair('safemode-reboot');
    await answer('app.cancel');
    const isAway = app.messages.some(({ type }) => type === 'show_service_error_modal');
    assert.equal(isAway, false, 'nothing happens before the user agrees');
    await repair('safemode-reboot');
    await answer('repair.safemode-reboot.verb');
    await closeServiceDialog(page);
    const failed = await app.waitForMessage(({ type, success }) => type === 'quickAction' && !success);
    assert.equal(await resultOf('safemode-reboot'), failed.message);

    const line = { reply: { type: 'stdout', message: 'Ověření: 57 % dokončeno.' } };
    const exit = { text: '{"type":"exit","code":2}\n', delay_ms: 2500 };
    await app.startService({ sfcVerify: { chunks: [line, exit] } });
    await repair('sfc');
    await page.locator('[data-repair=sfc]').getByText('57').waitFor();
    const ended = await app.waitForMessage(({ type, code }) => type === 'sfc_stream' && code === 2);
    assert.equal(await resultOf('sfc'), ended.message);
  });
});

// --- the update ---

test('the shipped program gets its updates from an https address', async () => {
  const cache = await readFile(join(buildFolder, 'CMakeCache.txt'), 'utf8');
  const [, address] = /^VARNEL_RELEASE_URL:STRING=(.*)$/m.exec(cache);
  assert.match(address, /^https:\/\/[^/]+.*[^/]$/);
  const programs = [join(buildFolder, 'bin/Varnel.exe'), kLoopback];
  const [shipped, forTests] = await Promise.all(programs.map((path) => readFile(path)));
  const has = (program) => [program.includes(`${address}\0`), program.includes(`127.0.0.1:${kReleasePort}`)];
  assert.deepEqual([...has(shipped), ...has(forTests)], [true, false, false, true]);
});

test('a failed download keeps the program running, a successful one ends it', async () => {
  const installer = await readFile(standIn('console_tool.exe'));
  const answers = {};
  const describe = (description) => (answers['/version.json'] = serve(JSON.stringify(description)));
  const options = { program: kLoopback, settings: { theme: 'light', language: 'en' } };
  await withVarnel({ ...options, viewport: { width: 1250, height: 700 } }, async (app) => {
    const { page, text } = app;
    const card = page.locator('.at-update');
    const install = card.getByRole('button', { name: text('update.install') });
    const refresh = () => press(page, text('app.refresh'));
    const answer = async (key) =>
      press(await dialogOf(page, text('update.confirm', { version: kNewer })), text(key));
    await app.scriptTool('VarnelUpdate.exe', { exit: 0 });
    await writeFile(kLocalCopy, '{"version":"99.9.9"}'); // from an interrupted check
    await openView(page, 'maintenance');
    await card.getByText(text('update.unreachable')).waitFor();

    await withReleaseServer(answers, async (requests) => {
      // A mandatory update asks on its own.
      describe({ version: '99.0.0', mandatory: true });
      await refresh();
      await dialogOf(page, text('update.mandatory'));
      await page.keyboard.press('Escape');

      const changes = 'The disk view is twice as fast.\nCzech names sort as they should.';
      await app.until(() => !existsSync(kLocalCopy), 'the local copy to go');
      describe({ version: kNewer, download_url: 'http://127.0.0.1:1/x.exe', changelog: changes });
      await refresh();
      await card.getByText(kNewer).waitFor();
      await look(app, 'maintenance-ready-light-en');
      await install.click();
      await answer('app.cancel');
      assert.deepEqual(requests, Array(2).fill('/version.json'), 'nothing is downloaded without consent');
      await install.click();
      await answer('update.install');
      await card.getByRole('alert').getByText(text('update.failed')).waitFor();
      assert.deepEqual([await install.isEnabled(), app.process.code], [true, undefined]);

      describe({ version: kNewer });
      answers['/VarnelSetup.exe'] = (response) => setTimeout(() => serve(installer)(response), 1500);
      await refresh();
      await app.until(() => requests.length === 3 && install.isEnabled(), 'the next check');
      await install.click();
      await answer('update.install');
      await card.getByText(text('update.downloading')).waitFor();
      assert.deepEqual([await install.isEnabled(), app.process.code], [false, undefined]);
      assert.equal(await app.exited, 0);
      const isStarted = async () => (await app.toolCalls('VarnelUpdate'))[0];
      const call = await app.until(isStarted, 'the installer');
      assert.match(call, /\\VarnelUpdate\.exe"? --update-restart$/);
      assert.deepEqual(await readFile(kInstaller), installer);
    });
  });
  await withVarnel({ page: false }, (app) =>
    app.until(() => !existsSync(kInstaller), 'the old installer to go'),
  );
});
