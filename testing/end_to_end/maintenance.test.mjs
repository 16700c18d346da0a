// Repairs and the update, with stand-in tools, the stand-in service and a server of the test's own.
import assert from 'node:assert/strict';
import { once } from 'node:events';
import { cp, mkdir, readFile, readdir, rename, rm, writeFile } from 'node:fs/promises';
import { createServer } from 'node:http';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import { checkAccessibility, closeServiceDialog, openView, screenshot, withVarnel } from './harness.mjs';
import { prepareWine, standIn, unixPath } from './wine.mjs';

const repair = (page, type) => page.click(`[data-repair=${type}] button`);
const resultOf = (page, type) => page.locator(`[data-result=${type}] > span`).first().innerText();
const serviceActions = async (app, action) => (await app.serviceRequests()).filter((request) => request.action === action);

test('repairs say what the tool or the service has said', () => withVarnel({
  settings: { theme: 'amethyst', language: 'cs' },
  tools: {
    // In the code page of the console.
    'ipconfig.exe': { steps: [{ hex: Buffer.from('\r\nWindows-IP-Konfiguration\r\n\r\nDer DNS-Aufl\x94sungscache wurde geleert.\r\n', 'latin1').toString('hex') }] },
  },
}, async (app) => {
  const { page } = app;
  await openView(page, 'maintenance');
  await repair(page, 'flush-dns');
  assert.equal(await resultOf(page, 'flush-dns'), 'Windows-IP-Konfiguration\nDer DNS-Auflösungscache wurde geleert.');
  assert.deepEqual(await app.toolCalls('ipconfig'), ['ipconfig /flushdns']);

  await repair(page, 'sfc');
  await closeServiceDialog(page);
  assert.equal(await resultOf(page, 'sfc'), 'Pomocná služba neběží.');
  await repair(page, 'safemode-reboot');
  const agree = async () => {
    const dialog = page.getByRole('dialog', { name: 'Restartovat do nouzového režimu?' });
    await dialog.getByText('bcdedit /deletevalue {current} safeboot').waitFor();
    await dialog.getByRole('button', { name: 'Restartovat do nouzového režimu' }).click();
  };
  await agree();
  await closeServiceDialog(page);
  assert.equal(await resultOf(page, 'safemode-reboot'), 'Nepodařilo se nastavit nouzový režim.');

  const line = (record, delay_ms = 0) => ({ text: `${JSON.stringify({ type: 'stdout', message: record })}\n`, delay_ms });
  const exit = (code) => ({ text: `${JSON.stringify({ type: 'exit', code })}\n`, delay_ms: 2500 });
  const lines = [line('Zahajuje se prohledávání systému.'), line('Ověření: 1 % dokončeno.'), line('Ověření: 57 % dokončeno.', 50)];
  await app.startService({ sfcVerify: { chunks: [...lines, exit(0)] }, safemodeReboot: { reply: { success: true } } });
  await repair(page, 'sfc');
  await page.locator('[data-repair=sfc]', { hasText: /57/ }).waitFor();
  assert.deepEqual(await page.locator('.repair [role=log] > div').allInnerTexts(),
    ['Spouštím test integrity systémových souborů a komponent Windows přes pomocnou službu...', 'Zahajuje se prohledávání systému.', 'Ověření: 57 % dokončeno.']);
  await checkAccessibility(page);
  await screenshot(page, 'maintenance-running-amethyst-cs');
  await page.waitForSelector('[data-result=sfc]');
  assert.equal(await resultOf(page, 'sfc'), '[Success] Sken integrity systému byl úspěšně dokončen bez nalezení chyb.');
  await app.scriptService({ sfcVerify: { chunks: [exit(2)] }, safemodeReboot: { reply: { success: true } } });
  await repair(page, 'sfc');
  await page.getByText('Test integrity systému dokončen s návratovým kódem 2.').waitFor();
  await repair(page, 'safemode-reboot');
  await agree();
  await page.getByText('Systém byl úspěšně nakonfigurován pro spuštění do nouzového režimu.').waitFor();
  assert.deepEqual(await serviceActions(app, 'safemodeReboot'), [{ action: 'safemodeReboot', data: {} }]);
  assert.deepEqual(await serviceActions(app, 'sfcVerify'), Array(2).fill({ action: 'sfcVerify', data: {} }));
  await screenshot(page, 'maintenance-after-amethyst-cs');
}));

test('rebuilding icons ends Explorer, deletes its caches and nothing else, and starts it again', async () => {
  await prepareWine();
  const explorer = unixPath('C:\\windows\\explorer.exe');
  const cache = unixPath(`C:\\users\\${userInfo().username}\\AppData\\Local\\Microsoft\\Windows\\Explorer`);
  const stays = ['IconCache_1.db', 'desktop.ini', 'iconcache.db', 'xthumbcache_1.db', 'inner'];
  const running = { steps: [{ text: 'up' }, { delay_ms: 600_000 }] };
  await mkdir(join(cache, 'inner'), { recursive: true });
  for (const name of [...stays.slice(0, -1), 'iconcache_16.db', 'iconcache_idx.db', 'thumbcache_256.db', 'inner/iconcache_32.db']) await writeFile(join(cache, name), name);
  await rename(explorer, `${explorer}.away`);
  await cp(standIn('console_tool.exe'), explorer);
  try {
    await withVarnel({
      language: 'en',
      tools: { 'Explorer.exe': { ...running, cases: [{ when: 'C:\\Windows\\explorer.exe', steps: [] }] }, 'explorer2.exe': running },
    }, async (app) => {
      const [ended, other] = [await app.startTool('Explorer'), await app.startTool('explorer2')];
      const end = once(ended, 'exit');
      await openView(app.page, 'maintenance');
      await repair(app.page, 'rebuild-icons');
      const dialog = app.page.getByRole('dialog', { name: 'End Explorer and rebuild the icons?' });
      await dialog.getByRole('button', { name: 'Cancel' }).click();
      assert.equal((await readdir(cache)).length, 8, 'nothing happens before the user agrees');
      await repair(app.page, 'rebuild-icons');
      await dialog.getByRole('button', { name: 'Rebuild icons' }).click();
      assert.equal(await resultOf(app.page, 'rebuild-icons'), 'Mezipaměť ikon na ploše byla úspěšně obnovena a Windows Explorer byl restartován.');
      await end;
      assert.equal(other.exitCode, null, 'another program goes on');
      assert.deepEqual((await readdir(cache)).sort(), [...stays].sort());
      assert.deepEqual(await readdir(join(cache, 'inner')), ['iconcache_32.db']);
      await app.waitUntilShown(async () => (await app.toolCalls('Explorer')).length === 2, 'the new Explorer');
      assert.equal((await app.toolCalls('Explorer'))[1], 'C:\\Windows\\explorer.exe');
      other.kill('SIGKILL');
    });
  } finally {
    await rename(`${explorer}.away`, explorer);
    await rm(cache, { recursive: true });
  }
});

test('the update: no server, a download that fails, and one that ends the program', async () => {
  const installer = await readFile(standIn('console_tool.exe'));
  const server = createServer((_, response) => response.end(installer)).listen(0, '127.0.0.1');
  await once(server, 'listening');
  const downloadUrl = `http://127.0.0.1:${server.address().port}/VarnelSetup.exe`;
  try {
    await withVarnel({ settings: { theme: 'light', language: 'en' }, viewport: { width: 1250, height: 700 } }, async (app) => {
      const { page } = app;
      await app.scriptTool('VarnelUpdate.exe', { exit: 0 });
      await openView(page, 'maintenance');
      const answer = await app.waitForMessage(({ type }) => type === 'checkForUpdates');
      assert.deepEqual([answer.success, answer.error], [false, 'Download failed from update server']);
      await page.locator('.at-update [role=alert], .at-update .notice').first().waitFor();
      await checkAccessibility(page);
      await screenshot(page, 'maintenance-ready-light-en');

      const failed = await app.request('downloadAndApplyUpdate', { downloadUrl: 'http://127.0.0.1:1/VarnelSetup.exe' });
      assert.deepEqual([failed.success, failed.error], [false, 'Failed to download update executable']);
      assert.equal(app.process.exitCode, null, 'the program stays');

      assert.equal((await app.request('downloadAndApplyUpdate', { downloadUrl })).success, true);
      assert.equal(await app.exited, 0);
      const [call] = await app.waitUntilShown(async () => {
        const calls = await app.toolCalls('VarnelUpdate');
        return calls.length > 0 && calls;
      }, 'the installer');
      assert.match(call, /\\VarnelUpdate\.exe"? --update-restart$/);
    });
  } finally {
    server.close();
  }
});
