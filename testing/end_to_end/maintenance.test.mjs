// Repairs and the update, with stand-in tools, the stand-in service and a server of the test's own.
import assert from 'node:assert/strict';
import { existsSync, readFileSync } from 'node:fs';
import { cp, mkdir, readFile, readdir, rm, writeFile } from 'node:fs/promises';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import { closeServiceDialog, dialogOf, look, openView, press, tick, withVarnel } from './harness.mjs';
import { cut, kErrorPage, kReleasePort, serve, withReleaseServer } from './release_server.mjs';
import { buildFolder, prepareWine, runInPrefix, standIn, unixPath, version, withAway } from './wine.mjs';

const kLoopback = standIn('Varnel_loopback.exe');
const [kMajor, kMinor] = version.split('.').map(Number);
const kNewer = `${kMajor}.${kMinor + 1}.0`;
const kMuchNewer = `${kMajor}.${kMinor + 10}.0`; // by number, not by text
const kExplorer = 'C:\\windows\\explorer.exe';
await prepareWine();
const kTemporary = (await runInPrefix('cmd', ['/c', 'echo %TEMP%'])).stdout.trim();
const temporary = (name) => unixPath(`${kTemporary}\\${name}`);

test('rebuilding icons ends Explorer, deletes its caches and nothing else, and starts it again', async () => {
  const cache = unixPath(`C:\\users\\${userInfo().username}\\AppData\\Local\\Microsoft\\Windows\\Explorer`);
  const stays = ['IconCache_1.db', 'desktop.ini', 'iconcache.db', 'inner', 'xthumbcache_1.db'];
  const goes = ['iconcache_16.db', 'iconcache_idx.db', 'thumbcache_256.db'];
  const running = { steps: [{ text: 'up' }, { delay_ms: 600_000 }] };
  const tools = {
    'Explorer.exe': { ...running, cases: [{ when: 'C:\\Windows\\explorer.exe', log_folder: true }] },
    'explorer2.exe': running,
  };
  await mkdir(join(cache, 'inner'), { recursive: true });
  for (const name of [...stays.filter((name) => name !== 'inner'), ...goes, 'inner/iconcache_32.db'])
    await writeFile(join(cache, name), name);
  try {
    await withVarnel({ page: false, tools }, async (app) => {
      const rebuild = async () => (await app.request('quickAction', { type: 'rebuild-icons' })).success;
      const [explorer, other] = [await app.startTool('Explorer'), await app.startTool('explorer2')];
      // Not earlier: Wine's own makes the desktop for the first window.
      await withAway([kExplorer], async () => {
        assert.equal(await rebuild(), false, 'what cannot be started again is said');
        await explorer.ended;
        await cp(standIn('console_tool.exe'), unixPath(kExplorer));
        assert.equal(await rebuild(), true);
        await app.until(async () => (await app.toolCalls('Explorer')).length === 3, 'the new Explorer');
      });
      const [command, folder] = (await app.toolCalls('Explorer')).slice(1);
      assert.deepEqual([command, folder.toLowerCase()], ['C:\\Windows\\explorer.exe', 'c:\\windows']);
      assert.equal(other.code, undefined, 'another program goes on');
      assert.deepEqual((await readdir(cache)).sort(), stays);
      assert.deepEqual(await readdir(join(cache, 'inner')), ['iconcache_32.db']);
      other.kill('SIGKILL');
    });
  } finally {
    await rm(cache, { recursive: true });
  }
});

test('repairs are asked for, run, and say what the tool or the service has said', () => {
  const oem = Buffer.from('\r\nDer DNS-Aufl\x94sungscache wurde geleert.\r\n', 'latin1').toString('hex');
  return withVarnel(
    { settings: { theme: 'amethyst', language: 'cs' }, tools: { 'ipconfig.exe': { steps: [{ hex: oem }] } } },
    async (app) => {
      const { page, text } = app;
      const card = (type) => page.locator(`[data-repair=${type}]`);
      const repair = (type) => press(card(type), text(`repair.${type}.verb`));
      const resultOf = (type) => page.locator(`[data-result=${type}] > span`).first().innerText();
      const agreed = async (type) => {
        await repair(type);
        const dialog = await dialogOf(page, text(`repair.${type}.confirm`));
        await press(dialog, text(`repair.${type}.verb`));
        await dialog.waitFor({ state: 'detached' });
      };
      const ends = async (type, action = 'quickAction') => {
        const from = app.messages.length;
        await agreed(type);
        return app.waitForMessage((message) => message.type === action, { from });
      };
      await openView(page, 'maintenance');
      await repair('flush-dns');
      assert.equal(await resultOf('flush-dns'), 'Der DNS-Auflösungscache wurde geleert.');
      assert.deepEqual(await app.toolCalls('ipconfig'), ['ipconfig /flushdns']);
      await withAway(['C:\\windows\\system32\\ipconfig.exe'], async () => {
        await rm(join(app.binFolder, 'ipconfig.exe'));
        await repair('flush-dns');
        await card('flush-dns').locator('..').getByText(text('repair.silent')).waitFor();
      });

      await repair('safemode-reboot');
      const question = await dialogOf(page, text('repair.safemode-reboot.confirm'));
      await question.getByText('bcdedit /deletevalue {current} safeboot').waitFor();
      await press(question, text('app.cancel'));
      const isAway = app.messages.some(({ type }) => type === 'show_service_error_modal');
      assert.equal(isAway, false, 'nothing happens before the user agrees');
      const failed = await ends('safemode-reboot');
      await closeServiceDialog(page);
      assert.deepEqual([failed.success, await resultOf('safemode-reboot')], [false, failed.message]);

      const said = ['Zahajuje se prohledávání systému.', 'Ověření: 57 % dokončeno.'];
      const lines = said.map((message) => ({ reply: { type: 'stdout', message }, delay_ms: 50 }));
      const exit = { text: '{"type":"exit","code":2}\n', delay_ms: 2500 };
      const yes = { reply: { success: true } };
      await app.startService({ sfcVerify: { chunks: [...lines, exit] }, safemodeReboot: yes });
      await repair('sfc');
      await card('sfc').getByText('57').waitFor();
      assert.deepEqual((await page.locator('.repair [role=log] > div').allInnerTexts()).slice(1), said);
      await look(app, 'maintenance-running-amethyst-cs');
      await openView(page, 'dashboard'); // the check goes on without its view
      await openView(page, 'maintenance');
      const ended = await app.waitForMessage(({ type, code }) => type === 'sfc_stream' && code === 2);
      assert.equal(await resultOf('sfc'), ended.message);
      const done = await ends('safemode-reboot');
      await page.getByText(done.message).waitFor();
      assert.equal(done.success, true);
      const asked = ['sfcVerify', 'safemodeReboot'].map((action) => ({ action, data: {} }));
      assert.deepEqual(await app.serviceRequests(), asked);

      // The service leaves in the middle: after a minute of silence the user may stop waiting.
      await app.scriptService({ sfcVerify: { chunks: lines } });
      await page.clock.install();
      await repair('sfc');
      await card('sfc').getByText('57').waitFor();
      const abandon = card('sfc').getByRole('button', { name: text('jobs.abandon') });
      await page.clock.fastForward(58_000);
      assert.equal(await abandon.count(), 0);
      await page.clock.fastForward(3_000);
      await abandon.click();
      assert.equal(await resultOf('sfc'), text('repair.noEnd'));
      await repair('sfc'); // it may be asked for again
    },
  );
});

// --- the update -------------------------------------------------------------------------------------------------------

test('the shipped program asks an https address for its updates, and its version block has the version', async () => {
  const cache = await readFile(join(buildFolder, 'CMakeCache.txt'), 'utf8');
  const [, address] = /^VARNEL_RELEASE_URL:STRING=(.*)$/m.exec(cache);
  assert.match(address, /^https:\/\/[^/]+.*[^/]$/);
  const [shipped, forTests] = [join(buildFolder, 'bin/Varnel.exe'), kLoopback].map((path) =>
    readFileSync(path),
  );
  const has = (program) => [program.includes(`${address}\0`), program.includes(`127.0.0.1:${kReleasePort}`)];
  assert.deepEqual([...has(shipped), ...has(forTests)], [true, false, false, true]);

  // What Explorer shows: the numbers of the fixed part (after their signature), and the texts.
  const at = shipped.indexOf(Buffer.from([0xbd, 0x04, 0xef, 0xfe]));
  const numbers = [10, 8, 14, 12].map((offset) => shipped.readUInt16LE(at + offset));
  const block = shipped.toString('utf16le', at, at + 2000);
  const texts = [...block.matchAll(/(?:File|Product)Version\0+([\d.]+)\0/g)].map(([, text]) => text);
  assert.deepEqual([numbers.join('.'), ...texts], [`${version}.0`, version, version]);
});

test('what the server of releases may answer', async () => {
  const answers = {};
  const currentVersion = version;
  const none = { downloadUrl: '', changelog: '', mandatory: false };
  const found = (onlineVersion, hasUpdate, more) => ({
    ...{ success: true, currentVersion, onlineVersion, hasUpdate, ...none, ...more },
  });
  const failed = (error) => ({ success: false, error });
  const unreadable = failed('Invalid version file');
  await withVarnel({ page: false, program: kLoopback }, async (app) => {
    const check = async () => {
      const { type, requestId, ...reply } = await app.request('checkForUpdates');
      return reply;
    };
    await writeFile(temporary('varnel_version_online.json'), '{"version":"9.9.9"}'); // of a check that was cut off
    assert.deepEqual(await check(), failed('Download failed from update server'));
    await withReleaseServer(answers, async () => {
      for (const [answer, want] of [
        [serve(`{"version":"${version}","changelog":"x"}`), found(version, false, { changelog: 'x' })],
        [
          serve(`{"version":"${kMuchNewer}","changelog":"<b>ž</b>","mandatory":true,"download_url":"u"}`),
          found(kMuchNewer, true, { changelog: '<b>ž</b>', mandatory: true, downloadUrl: 'u' }),
        ],
        [serve(kErrorPage, 404, 'text/html'), unreadable],
        [serve('{"version":"2.0.0","mandatory":"yes"}'), unreadable],
        [cut('{"version":"2.0.0","changelog":"aaaa'), unreadable],
        [cut('{"version":"99.5"}'), found('99.5', true)],
      ]) {
        answers['/version.json'] = answer;
        assert.deepEqual(await check(), want);
      }
    });
    await app.until(() => !existsSync(temporary('varnel_version_online.json')), 'the local copy to go');
  });
});

test('an update that cannot be downloaded leaves the program, one that can ends it', async () => {
  const installer = await readFile(standIn('console_tool.exe'));
  let finishDownload;
  const answers = {};
  const rule = '-'.repeat(30);
  const table = `Name  Id     Version  Available  Source\r\n${rule}\r\nTarn  B.Tarn  1.0      1.2        winget\r\n`;
  const cases = [
    { when: '--id', steps: [{ delay_ms: 3000, text: 'Done\r\n' }] },
    { when: 'upgrade', steps: [{ text: table }] },
  ];
  const tools = { 'winget.exe': { cases } };
  const options = { program: kLoopback, settings: { theme: 'light', language: 'en' }, tools };
  await withVarnel({ ...options, viewport: { width: 1250, height: 700 } }, async (app) => {
    const { page, text } = app;
    const card = page.locator('.at-update');
    const install = card.getByRole('button', { name: text('update.install') });
    const refresh = () => press(page, text('app.refresh'));
    const queueUpdate = async () => {
      await openView(page, 'software');
      await tick(page, text('software.updates'), 'Tarn');
      await press(page, text('software.selected', { verb: text('software.update'), n: 1 }));
    };
    const agree = async (title) => press(await dialogOf(page, title), text('update.install'));
    const title = text('update.confirm', { version: kNewer });
    await app.scriptTool('VarnelUpdate.exe', { exit: 0 });
    await openView(page, 'maintenance');
    await card.getByText(text('update.unreachable')).waitFor();

    await withReleaseServer(answers, async (requests) => {
      // One that has to be asks by itself, but not in the place of another question.
      const changelog = '<b>x</b>\n<img src=x onerror="document.title=1">';
      answers['/version.json'] = serve(JSON.stringify({ version: '99.0.0', mandatory: true, changelog }));
      await refresh();
      const insists = await dialogOf(page, text('update.mandatory'));
      await page.keyboard.press('Escape');
      await insists.waitFor({ state: 'detached' });
      assert.equal(await card.locator('.changelog').textContent(), changelog);
      let answerNow;
      const held = new Promise((resolve) => {
        answers['/version.json'] = (response) =>
          resolve((answerNow = () => serve('{"version":"99.1.0","mandatory":true}')(response)));
      });
      await refresh();
      await held;
      await press(page, text('remove.verb'));
      const other = await dialogOf(page, text('remove.confirm'));
      answerNow();
      await card.getByText('99.1.0').waitFor();
      await page.evaluate(() => new Promise((done) => setTimeout(done)));
      assert.deepEqual([await other.count(), await insists.count()], [1, 0]);
      await page.keyboard.press('Escape');

      const changes = 'The disk view is twice as fast.\nCzech names sort as they should.';
      const update = { version: kNewer, download_url: 'http://127.0.0.1:1/x.exe', changelog: changes };
      answers['/version.json'] = serve(JSON.stringify(update));
      await refresh();
      await card.getByText(kNewer).waitFor();
      await look(app, 'maintenance-ready-light-en');
      await install.click();
      await press(await dialogOf(page, title), text('app.cancel'));
      assert.deepEqual(requests, Array(3).fill('/version.json'), 'nothing is downloaded without consent');
      await install.click();
      await agree(title);
      await card.getByRole('alert').getByText(text('update.failed')).waitFor();
      assert.deepEqual([await install.isEnabled(), app.process.code], [true, undefined]);

      // What would end the program while something is installed says so, and nothing is installed while it is about to end.
      await queueUpdate();
      await openView(page, 'maintenance');
      await press(page, text('remove.verb'));
      await other.getByText(text('update.busy')).waitFor();
      await page.keyboard.press('Escape');
      await app.waitForMessage(({ type, streamType }) => type === 'update_stream' && streamType === 'exit');

      answers['/version.json'] = serve(`{"version":"${kNewer}"}`);
      answers['/VarnelSetup.exe'] = (response) => {
        response.write(installer.subarray(0, 100_000));
        finishDownload = () => response.end(installer.subarray(100_000));
      };
      const { length } = requests;
      await refresh();
      await app.until(() => requests.length > length && install.isEnabled(), 'the next check');
      await install.click();
      await agree(title);
      await card.getByText(text('update.downloading')).waitFor();
      assert.deepEqual([await install.isEnabled(), app.process.code], [false, undefined]);
      await app.until(() => finishDownload, 'the request of the installer');
      await queueUpdate();
      await page.getByRole('status').getByText(text('jobs.notNow')).waitFor();
      assert.equal((await app.toolCalls('winget')).filter((call) => call.includes('--id')).length, 1);
      await openView(page, 'maintenance');
      finishDownload();
      await card.getByText(text('update.closing')).waitFor();
      assert.equal(await app.exited, 0);
      const [call] = await app.until(async () => {
        const calls = await app.toolCalls('VarnelUpdate');
        return calls.length > 0 && calls;
      }, 'the installer');
      assert.match(call, /\\VarnelUpdate\.exe"? --update-restart$/);
      assert.equal(requests.at(-1), '/VarnelSetup.exe');
      assert.deepEqual(await readFile(temporary('VarnelUpdate.exe')), installer);
    });
  });
  await withVarnel({ page: false }, (app) =>
    app.until(() => !existsSync(temporary('VarnelUpdate.exe')), 'the old installer to go'),
  );
});
