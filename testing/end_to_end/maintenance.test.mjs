// Repairs and the update, with stand-in tools, the stand-in service and a server of the test's own.
import assert from 'node:assert/strict';
import { once } from 'node:events';
import { existsSync } from 'node:fs';
import { cp, mkdir, readFile, readdir, rename, rm, writeFile } from 'node:fs/promises';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import { checkAccessibility, closeServiceDialog, openView, screenshot, withVarnel } from './harness.mjs';
import { cut, kErrorPage, kReleasePort, serve, startReleaseServer } from './release_server.mjs';
import { buildFolder, prepareWine, runInPrefix, standIn, unixPath, version } from './wine.mjs';

const repair = (page, type) => page.click(`[data-repair=${type}] button`);
const resultOf = (page, type) => page.locator(`[data-result=${type}] > span`).first().innerText();
const [kMajor, kMinor] = version.split('.').map(Number);
const kNewer = `${kMajor}.${kMinor + 1}.0`;
const kMuchNewer = `${kMajor}.${kMinor + 10}.0`; // by number, not by text
await prepareWine();
const kTemporary = (await runInPrefix('cmd', ['/c', 'echo %TEMP%'])).stdout.trim();
const temporary = (name) => unixPath(`${kTemporary}\\${name}`);
const putBack = (path) => rename(`${path}.away`, path).catch(() => {}); // a program that did not start has moved nothing
// What Explorer shows of an executable: the numbers of its fixed part (after their signature), and its texts.
async function versionBlock(path) {
  const bytes = await readFile(path);
  const at = bytes.indexOf(Buffer.from([0xbd, 0x04, 0xef, 0xfe]));
  assert.ok(at > 0, `${path} has a version block`);
  const words = [10, 8, 14, 12].map((offset) => bytes.readUInt16LE(at + offset));
  const texts = bytes.toString('utf16le', at, at + 2000);
  const value = (name) => new RegExp(`${name}\\0+([\\d.]+)\\0`).exec(texts)?.[1];
  return {
    numbers: words.join('.'),
    FileVersion: value('FileVersion'),
    ProductVersion: value('ProductVersion'),
  };
}
const serviceActions = async (app, action) =>
  (await app.serviceRequests()).filter((request) => request.action === action);

test('repairs say what the tool or the service has said', () =>
  withVarnel(
    {
      settings: { theme: 'amethyst', language: 'cs' },
      tools: {
        // In the code page of the console.
        'ipconfig.exe': {
          steps: [
            {
              hex: Buffer.from(
                '\r\nWindows-IP-Konfiguration\r\n\r\nDer DNS-Aufl\x94sungscache wurde geleert.\r\n',
                'latin1',
              ).toString('hex'),
            },
          ],
        },
      },
    },
    async (app) => {
      const { page } = app;
      await openView(page, 'maintenance');
      await repair(page, 'flush-dns');
      assert.equal(
        await resultOf(page, 'flush-dns'),
        'Windows-IP-Konfiguration\nDer DNS-Auflösungscache wurde geleert.',
      );
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

      const line = (record, delay_ms = 0) => ({
        text: `${JSON.stringify({ type: 'stdout', message: record })}\n`,
        delay_ms,
      });
      const exit = (code) => ({ text: `${JSON.stringify({ type: 'exit', code })}\n`, delay_ms: 2500 });
      const lines = [
        line('Zahajuje se prohledávání systému.'),
        line('Ověření: 1 % dokončeno.'),
        line('Ověření: 57 % dokončeno.', 50),
      ];
      await app.startService({
        sfcVerify: { chunks: [...lines, exit(0)] },
        safemodeReboot: { reply: { success: true } },
      });
      await repair(page, 'sfc');
      await page.locator('[data-repair=sfc]', { hasText: /57/ }).waitFor();
      assert.deepEqual(await page.locator('.repair [role=log] > div').allInnerTexts(), [
        'Spouštím test integrity systémových souborů a komponent Windows přes pomocnou službu...',
        'Zahajuje se prohledávání systému.',
        'Ověření: 57 % dokončeno.',
      ]);
      await checkAccessibility(page);
      await screenshot(page, 'maintenance-running-amethyst-cs');
      await openView(page, 'dashboard'); // the check goes on without its view
      await openView(page, 'maintenance');
      assert.match(await page.locator('[data-repair=sfc]').innerText(), /57/);
      await page.waitForSelector('[data-result=sfc]');
      assert.equal(
        await resultOf(page, 'sfc'),
        '[Success] Sken integrity systému byl úspěšně dokončen bez nalezení chyb.',
      );
      await app.scriptService({
        sfcVerify: { chunks: [exit(2)] },
        safemodeReboot: { reply: { success: true } },
      });
      await repair(page, 'sfc');
      await page.getByText('Test integrity systému dokončen s návratovým kódem 2.').waitFor();
      await repair(page, 'safemode-reboot');
      await agree();
      await page.getByText('Systém byl úspěšně nakonfigurován pro spuštění do nouzového režimu.').waitFor();
      assert.deepEqual(await serviceActions(app, 'safemodeReboot'), [{ action: 'safemodeReboot', data: {} }]);
      assert.deepEqual(
        await serviceActions(app, 'sfcVerify'),
        Array(2).fill({ action: 'sfcVerify', data: {} }),
      );
      await screenshot(page, 'maintenance-after-amethyst-cs');
    },
  ));

test('rebuilding icons ends Explorer, deletes its caches and nothing else, and starts it again', async () => {
  await prepareWine();
  const explorer = unixPath('C:\\windows\\explorer.exe');
  const cache = unixPath(`C:\\users\\${userInfo().username}\\AppData\\Local\\Microsoft\\Windows\\Explorer`);
  const stays = ['IconCache_1.db', 'desktop.ini', 'iconcache.db', 'xthumbcache_1.db', 'inner'];
  const running = { steps: [{ text: 'up' }, { delay_ms: 600_000 }] };
  await mkdir(join(cache, 'inner'), { recursive: true });
  for (const name of [
    ...stays.slice(0, -1),
    'iconcache_16.db',
    'iconcache_idx.db',
    'thumbcache_256.db',
    'inner/iconcache_32.db',
  ])
    await writeFile(join(cache, name), name);
  try {
    await withVarnel(
      {
        language: 'en',
        tools: {
          'Explorer.exe': { ...running, cases: [{ when: 'C:\\Windows\\explorer.exe', log_folder: true }] },
          'explorer2.exe': running,
        },
      },
      async (app) => {
        await rename(explorer, `${explorer}.away`); // not earlier: Wine's own makes the desktop for the first window
        await cp(standIn('console_tool.exe'), explorer);
        const [ended, other] = [await app.startTool('Explorer'), await app.startTool('explorer2')];
        const end = once(ended, 'exit');
        await openView(app.page, 'maintenance');
        await repair(app.page, 'rebuild-icons');
        const dialog = app.page.getByRole('dialog', { name: 'End Explorer and rebuild the icons?' });
        await dialog.getByRole('button', { name: 'Cancel' }).click();
        assert.equal((await readdir(cache)).length, 8, 'nothing happens before the user agrees');
        await repair(app.page, 'rebuild-icons');
        await dialog.getByRole('button', { name: 'Rebuild icons' }).click();
        assert.equal(
          await resultOf(app.page, 'rebuild-icons'),
          'Mezipaměť ikon na ploše byla úspěšně obnovena a Windows Explorer byl restartován.',
        );
        await end;
        assert.equal(other.exitCode, null, 'another program goes on');
        assert.deepEqual((await readdir(cache)).sort(), [...stays].sort());
        assert.deepEqual(await readdir(join(cache, 'inner')), ['iconcache_32.db']);
        await app.waitUntilShown(
          async () => (await app.toolCalls('Explorer')).length === 3,
          'the new Explorer',
        );
        const [command, folder] = (await app.toolCalls('Explorer')).slice(1);
        assert.deepEqual([command, folder.toLowerCase()], ['C:\\Windows\\explorer.exe', 'c:\\windows']);
        other.kill('SIGKILL');
      },
    );
  } finally {
    await putBack(explorer);
    await rm(cache, { recursive: true });
  }
});

test('tools that are missing, and a service that leaves in the middle', async () => {
  const missing = ['C:\\windows\\explorer.exe', 'C:\\windows\\system32\\ipconfig.exe'].map(unixPath);
  try {
    await withVarnel(
      {
        language: 'cs',
        service: {
          sfcVerify: { stream: [{ type: 'stdout', message: 'Ověření: 3 % dokončeno.' }] },
          safemodeReboot: { reply: { success: false, error: 'denied' } },
        },
      },
      async (app) => {
        const { page } = app;
        for (const path of missing) await rename(path, `${path}.away`);
        await openView(page, 'maintenance');
        await repair(page, 'flush-dns');
        assert.equal(await resultOf(page, 'flush-dns'), 'Nástroj nic nevypsal, nejspíš se nespustil.');
        await repair(page, 'rebuild-icons');
        await page.getByRole('dialog').getByRole('button', { name: 'Obnovit ikony' }).click();
        assert.equal(
          await resultOf(page, 'rebuild-icons'),
          'Nepodařilo se obnovit mezipaměť ikon.\nChybí-li hlavní panel, stiskněte Ctrl+Shift+Esc a spusťte novou úlohu explorer.exe.',
        );
        await repair(page, 'safemode-reboot');
        await page
          .getByRole('dialog')
          .getByRole('button', { name: 'Restartovat do nouzového režimu' })
          .click();
        assert.equal(await resultOf(page, 'safemode-reboot'), 'Nepodařilo se nastavit nouzový režim.');
        await page.clock.install();
        await repair(page, 'sfc');
        const check = page.locator('[data-repair=sfc]');
        await check.getByText('3 %').waitFor();
        await page.clock.fastForward(59_000);
        assert.equal(await check.getByRole('button', { name: 'Nečekat dál' }).count(), 0);
        await page.clock.fastForward(2_000);
        await check.getByRole('button', { name: 'Nečekat dál' }).click();
        assert.equal(
          await resultOf(page, 'sfc'),
          'Služba neoznámila konec kontroly, její výsledek není známý.',
        );
        await screenshot(page, 'maintenance-failed-cs');
        assert.equal(await check.getByRole('button', { name: 'Ověřit' }).isEnabled(), true);
      },
    );
  } finally {
    for (const path of missing) await putBack(path);
  }
});

// --- the update -------------------------------------------------------------------------------------------------------

const loopback = standIn('Varnel_loopback.exe');

test('the shipped program asks an https address for its updates', async () => {
  const [, address] = /^VARNEL_RELEASE_URL:STRING=(.*)$/m.exec(
    await readFile(join(buildFolder, 'CMakeCache.txt'), 'utf8'),
  );
  assert.match(address, /^https:\/\/[^/]+.*[^/]$/);
  const [shipped, forTests] = await Promise.all(
    [join(buildFolder, 'bin/Varnel.exe'), loopback].map((path) => readFile(path)),
  );
  assert.deepEqual(
    [shipped.includes(`${address}\0`), shipped.includes(`127.0.0.1:${kReleasePort}`)],
    [true, false],
  );
  assert.deepEqual(
    [forTests.includes(`${address}\0`), forTests.includes(`http://127.0.0.1:${kReleasePort}\0`)],
    [false, true],
  );
});

test('what the check for an update finds and shows', () =>
  withVarnel(
    {
      program: loopback,
      settings: { theme: 'amethyst', language: 'cs' },
    },
    async (app) => {
      const { page } = app;
      const card = page.locator('.at-update');
      const answers = {};
      const kNone = 'Máte nejnovější verzi.',
        kUnreadable =
          'Aktualizační server poslal nesrozumitelnou odpověď. Zkuste to později.\nInvalid version file';
      const kUnreachable =
        'Aktualizační server neodpovídá. Zkontrolujte připojení k internetu.\nDownload failed from update server';
      const install = card.getByRole('button', { name: 'Stáhnout a nainstalovat' });
      // The next answer, and what the card then says: the two versions, its sentence, whether it offers the update.
      const checked = async (start) => {
        const from = app.messages.length;
        await start();
        const reply = await app.waitForMessage(({ type }) => type === 'checkForUpdates', { from });
        await app.waitUntilShown(
          async () =>
            !(await card.locator('.spinner').count()) &&
            !(await card.locator('.outcome .button[disabled]').count()),
          'the end of the check',
        );
        const sentences = await card.locator('.outcome > span, .outcome.good').allInnerTexts();
        return [
          ...(await card.locator('dd').allInnerTexts()),
          sentences.join('|').trim(),
          (await install.count()) === 1,
          reply,
        ];
      };

      await writeFile(temporary('varnel_version_online.json'), '{"version":"9.9.9"}'); // of an earlier check that was cut off
      const [, , ...absent] = await checked(() => openView(page, 'maintenance'));
      assert.deepEqual(absent.slice(0, 2), [kUnreachable, false]);
      await checkAccessibility(page);
      await screenshot(page, 'maintenance-unreachable-amethyst-cs');

      const server = await startReleaseServer(answers);
      const changes = 'Rychlejší <b>analýza</b> disku\n<img src=x onerror="document.title=1">\n- opravy';
      const cases = [
        ['the same version', serve(`{"version":"${version}","changelog":"x"}`), version, kNone, false],
        ['an older one', serve('{"version":"0.9.99"}'), '0.9.99', kNone, false],
        [
          'a newer one',
          serve(JSON.stringify({ version: kMuchNewer, changelog: changes })),
          kMuchNewer,
          '',
          true,
        ],
        ['an error page', serve(kErrorPage, 404, 'text/html'), kMuchNewer, kUnreadable, true], // what was known before stays
        ['no keys', serve('{}'), version, kNone, false],
        ['a server error', serve(kErrorPage, 500, 'text/html'), version, kUnreadable, false],
        ['broken JSON', serve('{"version":"1.5.0",'), version, kUnreadable, false],
        ['nothing', serve(''), version, kUnreadable, false],
        ['a number for a version', serve('{"version":2}'), version, kUnreadable, false],
        ['a text for mandatory', serve('{"version":"2.0.0","mandatory":"yes"}'), version, kUnreadable, false],
        ['not an object', serve('["2.0.0"]'), version, kUnreadable, false],
        [
          'a connection cut in the middle',
          cut('{"version":"2.0.0","changelog":"aaaa'),
          version,
          kUnreadable,
          false,
        ],
        ['a connection cut behind the description', cut('{"version":"99.5"}'), '99.5', '', true],
      ];
      try {
        for (const [name, answer, online, sentence, offered] of cases) {
          answers['/version.json'] = answer;
          const again =
            name === 'the same version'
              ? card.getByRole('button', { name: 'Zkusit znovu' })
              : page.getByRole('button', { name: 'Obnovit', exact: true });
          const [installed, shown, said, offers, reply] = await checked(() => again.click());
          assert.deepEqual([installed, shown, said, offers], [version, online, sentence, offered], name);
          if (name === 'a newer one') {
            assert.deepEqual(
              { ...reply, requestId: 0 },
              {
                type: 'checkForUpdates',
                requestId: 0,
                success: true,
                onlineVersion: kMuchNewer,
                currentVersion: version,
                hasUpdate: true,
                downloadUrl: '',
                changelog: changes,
                mandatory: false,
              },
            );
            assert.deepEqual(await versionBlock(join(buildFolder, 'bin/Varnel.exe')), {
              numbers: `${reply.currentVersion}.0`,
              FileVersion: reply.currentVersion,
              ProductVersion: reply.currentVersion,
            });
            assert.equal(await card.locator('.changelog').textContent(), changes);
            await checkAccessibility(page);
          }
          if (['a newer one', 'no keys', 'an error page'].includes(name))
            await screenshot(page, `maintenance-${name.replaceAll(' ', '-')}-amethyst-cs`);
        }
        assert.deepEqual(server.requests, Array(cases.length).fill('/version.json'));

        answers['/version.json'] = serve(
          JSON.stringify({ version: '99.0.0', mandatory: true, changelog: `${changes}\n`.repeat(12) }),
        );
        await page.getByRole('button', { name: 'Obnovit', exact: true }).click();
        const dialog = page.getByRole('dialog', { name: 'Tuto aktualizaci je potřeba nainstalovat' });
        await dialog.waitFor();
        await screenshot(page, 'maintenance-mandatory-dialog-amethyst-cs');
        await page.keyboard.press('Escape');
        await dialog.waitFor({ state: 'detached' });
        assert.match(await card.innerText(), /Tuto aktualizaci je potřeba nainstalovat/);
        await checkAccessibility(page); // a log that scrolls can be reached
        await screenshot(page, 'maintenance-mandatory-amethyst-cs');
        await page.getByRole('button', { name: 'Obnovit', exact: true }).click();
        await dialog.waitFor(); // it insists
        await page.keyboard.press('Escape');
        await dialog.waitFor({ state: 'detached' });

        // But it does not put itself in the place of another question.
        let answerNow;
        const asked = new Promise((resolve) => {
          answers['/version.json'] = (response) =>
            resolve((answerNow = () => serve('{"version":"99.1.0","mandatory":true}')(response)));
        });
        await page.getByRole('button', { name: 'Obnovit', exact: true }).click();
        await asked;
        await page.getByRole('button', { name: 'Odinstalovat Varnel' }).click();
        const other = page.getByRole('dialog', { name: 'Odinstalovat Varnel?' });
        await other.waitFor();
        answerNow();
        await card.getByText('99.1.0').waitFor();
        await page.evaluate(
          () =>
            new Promise((done) => {
              setTimeout(done);
            }),
        );
        assert.deepEqual([await other.count(), await dialog.count()], [1, 0]);
        await page.keyboard.press('Escape');
        assert.deepEqual(
          server.requests.slice(cases.length),
          Array(3).fill('/version.json'),
          'nothing is downloaded without consent',
        );
        assert.equal(existsSync(temporary('varnel_version_online.json')), false, 'no local copy stays');
      } finally {
        await server.close();
      }
    },
  ));

test('an update that cannot be downloaded leaves the program, one that can ends it', async () => {
  const installer = await readFile(standIn('console_tool.exe'));
  let finishDownload;
  const answers = {
    '/version.json': serve(
      JSON.stringify({
        version: kNewer,
        download_url: 'http://127.0.0.1:1/VarnelSetup.exe',
        changelog: 'The disk view is twice as fast.\nCzech names sort as they should.',
      }),
    ),
    '/VarnelSetup.exe': (response) => {
      response.write(installer.subarray(0, 100_000));
      finishDownload = () => response.end(installer.subarray(100_000));
    },
  };
  const server = await startReleaseServer(answers);
  try {
    const kUpdate =
      'Name  Id     Version  Available  Source\r\n---------------------------------------\r\nTarn  B.Tarn  1.0      1.2        winget\r\n';
    await withVarnel(
      {
        program: loopback,
        settings: { theme: 'light', language: 'en' },
        viewport: { width: 1250, height: 700 },
        tools: {
          'winget.exe': {
            cases: [
              { when: '--id', steps: [{ delay_ms: 3000, text: 'Done\r\n' }] },
              { when: 'upgrade', steps: [{ text: kUpdate }] },
            ],
          },
        },
      },
      async (app) => {
        const { page } = app;
        const card = page.locator('.at-update');
        const install = card.getByRole('button', { name: 'Download and install' });
        const agree = async () => {
          await install.click();
          await page
            .getByRole('dialog', { name: `Update Varnel to version ${kNewer}?` })
            .getByRole('button', { name: 'Download and install' })
            .click();
        };
        await app.scriptTool('VarnelUpdate.exe', { exit: 0 });
        await openView(page, 'maintenance');
        await install.waitFor();
        await page.waitForSelector('[data-testid=badge-service]');
        await screenshot(page, 'maintenance-ready-light-en');
        await agree();
        await card.getByText('The installer could not be downloaded').waitFor();
        assert.match(await card.getByRole('alert').innerText(), /Failed to download update executable$/);
        assert.deepEqual([await install.isEnabled(), app.process.exitCode], [true, null]);
        await checkAccessibility(page);
        await screenshot(page, 'maintenance-download-failed-light-en');

        // What would end the program while something is installed says so, and nothing is installed while it is about to end.
        const queueUpdate = async () => {
          await openView(page, 'software');
          await page.getByRole('row', { name: /Tarn/ }).getByRole('checkbox').click();
          await page.getByRole('button', { name: 'Update selected (1)' }).click();
        };
        await openView(page, 'software');
        await page.keyboard.press('F5');
        await queueUpdate();
        await openView(page, 'maintenance');
        for (const name of ['Uninstall Varnel', 'Restart into safe mode']) {
          await page.getByRole('button', { name }).click();
          await page
            .getByRole('dialog', { name: `${name}?` })
            .getByText(/^Let the queue in Software finish first\. /)
            .waitFor();
          await page.keyboard.press('Escape');
        }
        await page.getByText('Tarn: done').waitFor();

        answers['/version.json'] = serve(
          JSON.stringify({ version: kNewer, downloadUrl: 'http://127.0.0.1:1/', changelog: 'Faster' }),
        );
        await page.keyboard.press('F5');
        await app.waitUntilShown(
          () => server.requests.length === 2 && install.isEnabled(),
          'the second check',
        );
        await agree();
        await card.getByText('Downloading the installer…').waitFor();
        assert.deepEqual([await install.isEnabled(), app.process.exitCode], [false, null]);
        await screenshot(page, 'maintenance-downloading-light-en');
        await app.waitUntilShown(() => finishDownload !== undefined, 'the request of the installer');
        await queueUpdate();
        await page
          .getByRole('alert')
          .getByText('Downloading the installer… After the download Varnel closes')
          .waitFor();
        assert.equal((await app.toolCalls('winget')).filter((call) => call.includes('--id')).length, 1);
        await openView(page, 'maintenance');
        finishDownload();
        await card.getByText('Downloaded. Varnel closes now and the installation begins.').waitFor();
        await screenshot(page, 'maintenance-closing-light-en');
        assert.equal(await app.exited, 0);
        const [call] = await app.waitUntilShown(async () => {
          const calls = await app.toolCalls('VarnelUpdate');
          return calls.length > 0 && calls;
        }, 'the installer');
        assert.match(call, /\\VarnelUpdate\.exe"? --update-restart$/);
        assert.deepEqual(server.requests, ['/version.json', '/version.json', '/VarnelSetup.exe']);
        assert.deepEqual(await readFile(temporary('VarnelUpdate.exe')), installer);
      },
    );
    await withVarnel({}, (app) =>
      app.waitUntilShown(() => !existsSync(temporary('VarnelUpdate.exe')), 'the old installer to go'),
    );
  } finally {
    await server.close();
  }
});
