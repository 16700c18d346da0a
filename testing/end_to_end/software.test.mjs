// Lists, scan, queue and leftovers through the page, with tools and service that print what the real ones do.
import assert from 'node:assert/strict';
import { mkdir, rename, rm, symlink, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import {
  checkAccessibility,
  closeServiceDialog,
  inWords,
  openView,
  screenshot,
  withVarnel,
} from './harness.mjs';
import { filesBelow, makeFolder, prepareWine, runInPrefix, unixPath } from './wine.mjs';

const kAskUpdates = 'winget upgrade --accept-source-agreements --disable-interactivity';
const kAskInstalled = 'winget list --accept-source-agreements --disable-interactivity';

const crlf = (text) => text.replace(/^\n/, '').replaceAll('\n', '\r\n');
const hex = (text) => Buffer.from(text, 'latin1').toString('hex');
const kBlanks = ' '.repeat(120);
const kSpinner = `\r   - \r   \\ \r   | \r${kBlanks}\r`;
const bar = (done, sizes) => `\r  ${'█'.repeat(done)}${'▒'.repeat(30 - done)}  ${sizes}`;

// What the tool leaves between columns is one blank where a cell is the widest; the second table is not read.
const kUpdates = crlf(`
Name                         Id                Version Available Source
------------------------------------------------------------------------
Tarn Sync                    Brook.TarnSync    1.0.2   1.2.0     winget
Heron Media Suite 2024 (x64) Heron.MediaSuite  24.1    24.3.1    winget
Copse                        9QX2B4LMN0PR      3.1.0.0 3.2.0.0   msstore
Rill SDK                     Rill.SDK          < 6.0.8 6.0.8     winget
Peat Notes                   Peat.NotesWithAc… 2.0     2.1       winget
Fen Poznámky                 Fen.C++           1.0     1.1       winget
6 upgrades available.

The following packages have an upgrade available, but require explicit targeting for upgrade:
Name        Id           Version Available Source
-------------------------------------------------
Moor Studio Moor.Studio  1.0     2.0       winget
`);
const kUpdateRows = [
  ['Copse', '9QX2B4LMN0PR', '3.1.0.0', '3.2.0.0', 'msstore', ''],
  ['Fen Poznámky', 'Fen.C++', '1.0', '1.1', 'winget', 'Nepovolené znaky'],
  ['Heron Media Suite 2024 (x64)', 'Heron.MediaSuite', '24.1', '24.3.1', 'winget', ''],
  ['Peat Notes', 'Peat.NotesWithAc…', '2.0', '2.1', 'winget', 'Zkrácený identifikátor'],
  ['Rill SDK', 'Rill.SDK', '< 6.0.8', '6.0.8', 'winget', ''],
  ['Tarn Sync', 'Brook.TarnSync', '1.0.2', '1.2.0', 'winget', ''],
];
const kInstalled = crlf(`
Name                         Id                                     Version    Available Source
-----------------------------------------------------------------------------------------------
Heron Media Suite 2024 (x64) Heron.MediaSuite                       24.1       24.3.1    winget
Tarn Sync                    Brook.TarnSync                         1.2.0                winget
Peat Audio Console           ARP\\Machine\\X64\\{0F3C11AA-9B1D-22AA}   6.0.1.8731           
Podzim Poznámky              MSIX\\Podzim.Poznamky_2.1.0.0_x64__h4k9 2.1.0.0              
竹林メモ                     Chikurin.Memo                          4.0                  winget
`);
// The row with the widest identifier and no source comes as two cells, and the list takes three.
const kInstalledRows = [
  ['Heron Media Suite 2024 (x64)', 'Heron.MediaSuite', '24.1', ''],
  ['Peat Audio Console', 'ARP\\Machine\\X64\\{0F3C11AA-9B1D-22AA}', '6.0.1.8731', 'Jen v Nastavení Windows'],
  ['Tarn Sync', 'Brook.TarnSync', '1.2.0', ''],
  ['竹林メモ', 'Chikurin.Memo', '4.0', ''],
];

const kDriver = 'Moor Semiconductor Corp. - MEDIA - 6.0.9239.1';
const kFirmware = 'Brook Firmware 1.14.0';
const offers = (...updates) => ({
  steps: [{ hex: 'efbbbf' }, { text: `${JSON.stringify({ scannedDriversCount: 214, updates })}\r\n` }],
});
const offer = (Title, more) => ({
  Title,
  Description: 'Moor  driver',
  Categories: ['Drivers'],
  KBArticles: 'None',
  CurrentVersion: '6.0.9100.1',
  AvailableVersion: '6.0.9239.1',
  ReleaseDate: '2024-07-03',
  Severity: 'Important',
  HardwareId: 'PCI\\VEN_1D17',
  IsSkipped: false,
  ...more,
});

const prints = (text, more) => ({ steps: [{ text: crlf(text) }], ...more });
const winget = (...cases) => ({
  'winget.exe': {
    cases: [
      ...cases,
      { when: 'upgrade --accept', steps: [{ text: kSpinner + kUpdates }] },
      { when: 'list', steps: [{ text: kSpinner + kInstalled }] },
    ],
  },
});

// Cells of a grid's rows, without the column of tick boxes.
const rowsOf = (page, label) =>
  page
    .getByRole('grid', { name: label })
    .locator('tbody tr')
    .evaluateAll((rows) =>
      rows.map((row) => [...row.querySelectorAll('td, th')].slice(1).map((cell) => cell.innerText.trim())),
    );
const tick = (page, label, name) =>
  page
    .getByRole('grid', { name: label })
    .getByRole('row')
    .filter({ hasText: name })
    .getByRole('checkbox')
    .click();
const job = (page, id, state) => page.waitForSelector(`[data-job="${id}"][data-state=${state}]`);
const linesOf = (page, selector) => page.locator(`${selector} > div`).allInnerTexts();
const press = (scope, name) => scope.getByRole('button', { name, exact: true }).click();

async function dialogOf(page, name) {
  const dialog = page.getByRole('dialog', { name });
  await dialog.waitFor();
  return dialog;
}

test('the scan fills three lists and tells what it does', () =>
  withVarnel(
    {
      settings: { theme: 'amethyst', language: 'cs' },
      service: {},
      tools: {
        ...winget({
          when: 'upgrade --accept',
          steps: [{ text: kSpinner }, { delay_ms: 700, text: kUpdates }],
          exit: 2316632107,
        }),
        'powershell.exe': {
          steps: [
            { delay_ms: 4500 },
            ...offers(offer(`Peat® & Co, Inc. - System - 10.1`), offer(kFirmware, { IsSkipped: true }), {
              ...offer(),
              Title: undefined,
              title: kDriver,
              Severity: null,
            }).steps,
          ],
        },
      },
    },
    async (app) => {
      const { page } = app;
      await openView(page, 'software');
      await page.getByRole('button', { name: 'Zkontrolovat systém' }).first().click();
      await page.getByText('Seznam se ukáže, až kontrola skončí').waitFor();
      const said = page.locator('[data-testid=scan] [role=status]');
      await said.filter({ hasText: 'Hledají se aktualizace programů' }).waitFor();
      assert.equal(await page.getByRole('button', { name: 'Zkontrolovat systém' }).isDisabled(), true);
      await press(page, 'Průběh v terminálu');
      await said.filter({ hasText: 'Nalezeno 6 aktualizací, hledají se ovladače' }).waitFor();
      await page.locator('[data-tab=updates] .tag', { hasText: /^6$/ }).waitFor();
      await checkAccessibility(page);
      await screenshot(page, 'software-scanning-amethyst-cs');
      await said.waitFor({ state: 'detached' });

      const scanned = app.messages.filter(({ type }) => type === 'scan_progress');
      assert.deepEqual(
        scanned.map(({ status, ticks, softwareCount }) => [status, ticks ?? softwareCount]),
        [
          ['scanning_apps', undefined],
          ['scanning_drivers', 6],
          ['scanning_drivers_heartbeat', 1],
          ['done', undefined],
        ],
      );
      assert.deepEqual(await linesOf(page, '.terminal-output'), [
        'Thread started: System Scan initiated.',
        'Scanning software updates via winget...',
        'Winget process returned non-zero code: 2316632107',
        'Software scan finished. Found 6 packages.',
        'Querying driver updates via Windows Update COM Agent...',
        'Driver scan finished. Found 3 updates.',
        'Scan completed successfully, dispatching JSON to JS.',
      ]);
      assert.deepEqual(await app.toolCalls('powershell'), [
        `powershell -NoProfile -ExecutionPolicy Bypass -File "${app.folder.windows}\\bin\\check_updates.ps1"`,
      ]);
      await app.waitUntilShown(
        async () => Date.now() - (await app.settingsFile()).lastScan < 60_000,
        'the time of the scan to be stored',
      );

      assert.deepEqual(await rowsOf(page, 'Aktualizace'), kUpdateRows);
      await page.locator('.obstacles summary', { hasText: '2' }).click();
      await checkAccessibility(page);
      await page.click('.terminal-toggle');
      await screenshot(page, 'software-updates-amethyst-cs');

      // An ignored row is out of the list and of its number, and stays so by its identifier.
      await page.getByRole('row', { name: /Copse/ }).click({ button: 'right' });
      await page.getByRole('menuitem', { name: 'Ignorovat', exact: true }).click();
      await page.locator('[data-tab=updates] .tag', { hasText: /^5$/ }).waitFor();
      assert.deepEqual(
        (await rowsOf(page, 'Aktualizace')).map(([name]) => name),
        ['Fen Poznámky', 'Heron Media Suite 2024 (x64)', 'Peat Notes', 'Rill SDK', 'Tarn Sync'],
      );
      await app.waitUntilShown(
        async () => (await app.settingsFile()).ignoreList?.length === 1,
        'the ignored row to be stored',
      );
      assert.deepEqual((await app.settingsFile()).ignoreList, [{ id: '9QX2B4LMN0PR', type: 'software' }]);
      await page.getByRole('checkbox', { name: 'Zobrazit ignorované (1)' }).check();
      const ignored = page.getByRole('row', { name: /Copse/ });
      assert.deepEqual(
        [await ignored.getByRole('checkbox').count(), (await rowsOf(page, 'Aktualizace'))[0].at(-1)],
        [0, 'ignorováno'],
      );
      await ignored.click({ button: 'right' });
      await page.getByRole('menuitem', { name: 'Přestat ignorovat' }).click();
      await page.locator('[data-tab=updates] .tag', { hasText: /^6$/ }).waitFor();
      await app.waitUntilShown(
        async () => (await app.settingsFile()).ignoreList.length === 0,
        'the row to be forgotten',
      );

      await page.click('[data-tab=installed]');
      assert.deepEqual(await rowsOf(page, 'Nainstalované'), kInstalledRows);
      await screenshot(page, 'software-installed-amethyst-cs');
      await page.click('[data-tab=drivers]');
      assert.deepEqual(await rowsOf(page, 'Ovladače'), [
        [kFirmware, '6.0.9100.1', '6.0.9239.1', '3. 7. 2024', 'Important', 'Skryto ve Windows'],
        [kDriver, '6.0.9100.1', '6.0.9239.1', '3. 7. 2024', '—', ''],
        [
          'Peat® & Co, Inc. - System - 10.1',
          '6.0.9100.1',
          '6.0.9239.1',
          '3. 7. 2024',
          'Important',
          'Nepovolené znaky',
        ],
      ]);
      assert.equal(await page.innerText('[data-testid=drivers-checked]'), 'Zkontrolováno 214 ovladačů');
      await checkAccessibility(page);
      await screenshot(page, 'software-drivers-amethyst-cs');
      await openView(page, 'dashboard');
      await openView(page, 'software');
      await page.getByRole('grid', { name: 'Ovladače' }).waitFor(); // the list that was looked at
      assert.deepEqual(await app.toolCalls('winget'), [kAskUpdates, kAskInstalled]);
    },
  ));

test('a queue of three runs one by one, and a failure does not stop it', () =>
  withVarnel(
    {
      settings: { theme: 'light', language: 'en' },
      viewport: { width: 1250, height: 700 },
      service: {},
      tools: winget(
        {
          when: '--id "Brook.TarnSync"',
          ...prints(
            'Found Tarn Sync [Brook.TarnSync] Version 1.2.0\nStarting package install...\nSuccessfully installed\n',
            { exit: 0x8a150109 },
          ),
        },
        {
          // The package's own installer writes in the console's code page and ends its lines as it likes.
          when: '--id "Heron.MediaSuite"',
          steps: [
            { text: `${kSpinner}Found Heron Media Suite [Heron.MediaSuite] Version 24.3.1\r\n` },
            { hex: hex('Kann B\x81ro nicht schlie\xe1en\r\r\nInstaller failed with exit code: 1603\r\n') },
          ],
          exit: 0x8a150006,
        },
        {
          when: '--id "9QX2B4LMN0PR"',
          steps: [
            {
              text: `${kSpinner}Found Copse [9QX2B4LMN0PR] Version 3.2.0.0\r\n${bar(0, '1024 KB / 63.0 MB')}`,
            },
            { text: `${bar(14, '30.1 MB / 63.0 MB')}\r` },
            { delay_ms: 4000, text: `${bar(30, '63.0 MB / 63.0 MB')}\r\n` },
            {
              text: crlf(
                'Successfully verified installer hash\nStarting package install...\nSuccessfully installed\n',
              ),
            },
          ],
        },
      ),
    },
    async (app) => {
      const { page } = app;
      await openView(page, 'software');
      await page.keyboard.press('F5');
      await page.getByRole('grid', { name: 'Updates' }).waitFor();
      // What cannot be acted on cannot be ticked either, one by one or together.
      const boxes = page.getByRole('grid', { name: 'Updates' }).getByRole('checkbox');
      assert.deepEqual(
        await boxes.evaluateAll((all) => all.map((one) => one.getAttribute('aria-label'))),
        ['all rows', 'row Copse', 'row Heron Media Suite 2024 (x64)', 'row Rill SDK', 'row Tarn Sync'].map(
          (name) => `Select ${name}`,
        ),
      );
      const counted = page.locator('.table-bar [role=status]');
      await boxes.first().click();
      await counted.filter({ hasText: '6 rows, 4 selected' }).waitFor();
      await tick(page, 'Updates', 'Rill SDK');
      await counted.filter({ hasText: '6 rows, 3 selected' }).waitFor();
      await press(page, 'Update selected (3)');
      await job(page, '9QX2B4LMN0PR', 'running');
      await page.locator('[data-job="9QX2B4LMN0PR"]', { hasText: '48%' }).waitFor();
      for (const id of ['Heron.MediaSuite', 'Brook.TarnSync']) await job(page, id, 'waiting');
      assert.equal(
        await counted.innerText(),
        '6 rows',
        'what the queue has taken over is not ticked any more',
      );
      assert.equal(await page.getByRole('button', { name: 'Update', exact: true }).isDisabled(), true);
      await screenshot(page, 'software-queue-light-en');
      await checkAccessibility(page);
      await job(page, '9QX2B4LMN0PR', 'done');
      await job(page, 'Brook.TarnSync', 'restart');
      await job(page, 'Heron.MediaSuite', 'failed');
      assert.match(
        await page.innerText('[data-job="Heron.MediaSuite"]'),
        /The program’s installer failed; its own code is in the output\. \(code 0x8A150006\)/,
      );
      assert.match(await page.innerText('.jobs'), /Windows has to be restarted to finish/);
      await screenshot(page, 'software-queue-ended-light-en');
      for (const id of ['Heron.MediaSuite', '9QX2B4LMN0PR']) await page.click(`[data-job="${id}"] summary`);
      assert.deepEqual(await linesOf(page, '[data-job="Heron.MediaSuite"] [role=log]'), [
        'Inicializuji instalaci pro balíček: Heron.MediaSuite...',
        'Found Heron Media Suite [Heron.MediaSuite] Version 24.3.1',
        'Kann Büro nicht schließen',
        'Installer failed with exit code: 1603',
      ]);
      assert.deepEqual((await linesOf(page, '[data-job="9QX2B4LMN0PR"] [role=log]')).slice(-5), [
        'Found Copse [9QX2B4LMN0PR] Version 3.2.0.0',
        `${'█'.repeat(30)}  63.0 MB / 63.0 MB`,
        'Successfully verified installer hash',
        'Starting package install...',
        'Successfully installed',
      ]);
      await checkAccessibility(page);
      await press(page, 'Fold the queue');
      await page.locator('.jobs li').first().waitFor({ state: 'detached' });
      assert.match(await page.innerText('.jobs'), /3 of 3 ended/);

      // One tool at a time, in the order of the screen, and what has changed is listed anew.
      const ends = app.messages.filter(
        ({ type, streamType }) => type === 'update_stream' && streamType !== 'stdout',
      );
      assert.deepEqual(
        ends.map(({ streamType, code }) => code ?? streamType),
        ['status', 0, 'status', 0x8a150006, 'status', 0x8a150109],
      );
      const update = (id) =>
        `winget upgrade --id "${id}" --silent --accept-package-agreements --accept-source-agreements --disable-interactivity`;
      await app.waitUntilShown(
        async () => (await app.toolCalls('winget')).length === 5,
        'the list to be loaded anew',
      );
      assert.deepEqual(await app.toolCalls('winget'), [
        kAskUpdates,
        ...['9QX2B4LMN0PR', 'Heron.MediaSuite', 'Brook.TarnSync'].map(update),
        kAskUpdates,
      ]);
    },
  ));

test('a program is uninstalled and what is left of it goes by choice', async () => {
  await prepareWine();
  const user = `C:\\users\\${userInfo().username}\\AppData`;
  const folders = {
    local: `${user}\\Local\\Brook\\TarnSync`,
    roaming: `${user}\\Roaming\\Tarn Sync`,
    machine: 'C:\\Program Files\\Brook\\Tarn Sync',
  };
  const others = [`${user}\\Local\\Brook\\Other`, 'C:\\Program Files\\Brook\\Other'];
  const keys = {
    user: 'HKCU\\Software\\Brook\\TarnSync',
    short: 'HKCU\\Software\\TarnSync',
    machine: 'HKLM\\Software\\Brook\\TarnSync',
  };
  const kOtherKey = 'HKCU\\Software\\Brook\\Other';
  const keyExists = async (key) => (await runInPrefix('reg', ['query', key])).code === 0;
  const outside = await makeFolder('varnel-canary-');
  await writeFile(join(outside.unix, 'canary'), 'alive');
  for (const folder of [...Object.values(folders), ...others]) {
    const path = unixPath(folder);
    await mkdir(join(path, 'žluť'), { recursive: true });
    await writeFile(join(path, 'žluť', 'cache.bin'), 'x'.repeat(1500), { mode: 0o444 });
    await symlink(outside.unix, join(path, 'link'));
  }
  for (const key of [...Object.values(keys), kOtherKey])
    await runInPrefix('reg', ['add', `${key}\\Inner`, '/v', 'a', '/d', 'b', '/f']);
  const shown = [folders.local, folders.roaming, folders.machine, keys.user, keys.machine, keys.short];
  const byPublisher = [folders.local, folders.machine, keys.user, keys.machine];
  try {
    await withVarnel(
      {
        language: 'en',
        tools: winget({
          when: 'uninstall',
          steps: [
            { text: `${kSpinner}Found Tarn Sync [Brook.TarnSync]\r\nStarting package uninstall...\r\n` },
            { delay_ms: 300, text: 'Successfully uninstalled\r\n' },
          ],
        }),
      },
      async (app) => {
        const { page } = app;
        const leftovers = () =>
          page.locator('[data-leftover]').evaluateAll((all) => all.map((one) => one.dataset.leftover));
        const ticked = () =>
          page
            .locator('[data-leftover]:has(:checked)')
            .evaluateAll((all) => all.map((one) => one.dataset.leftover));
        await openView(page, 'software');
        await page.click('[data-tab=installed]');
        await page.getByRole('grid', { name: 'Installed' }).waitFor();
        await tick(page, 'Installed', 'Tarn Sync');
        await press(page, 'Uninstall selected (1)');
        await press(await dialogOf(page, 'Uninstall 1 program?'), 'Uninstall');
        const dialog = await dialogOf(page, 'What Tarn Sync has left behind');
        await page.waitForSelector('[data-job="Brook.TarnSync"][data-state=done]', { state: 'attached' });
        assert.deepEqual(
          (await app.toolCalls('winget')).filter((line) => line.includes('uninstall')),
          [
            'winget uninstall --id "Brook.TarnSync" --silent --accept-source-agreements --disable-interactivity',
          ],
        );
        assert.deepEqual(await leftovers(), shown);
        assert.deepEqual(await ticked(), byPublisher, 'what may be shared is not ticked');
        assert.ok((await dialog.innerText()).includes(`folder, ${inWords(1500)}`));
        await checkAccessibility(page);
        await screenshot(page, 'software-leftovers-en');

        const remove = async (n) => {
          await press(page, `Remove selected (${n})`);
          const confirm = await dialogOf(page, `Remove ${n} ${n === 1 ? 'item' : 'items'} for good?`);
          await checkAccessibility(page);
          const text = await confirm.innerText();
          await press(confirm, 'Remove for good');
          return text;
        };
        const agreed = await remove(4);
        for (const path of byPublisher) assert.ok(agreed.includes(path));
        // Without the service only what is the user's own goes; the rest is offered again.
        await closeServiceDialog(page);
        await app.waitUntilShown(async () => (await leftovers()).length === 2, 'what has stayed');
        assert.equal(
          await page.getByRole('dialog', { name: /helper service/ }).count(),
          0,
          'two items miss it, one dialog says so',
        );
        assert.deepEqual(await leftovers(), [folders.machine, keys.machine]);
        assert.deepEqual([existsSync(unixPath(folders.local)), await keyExists(keys.user)], [false, false]);
        assert.deepEqual(
          [existsSync(unixPath(folders.machine)), await keyExists(keys.machine)],
          [true, true],
        );

        await app.startService({
          cleanLeftoverPath: { chunks: [{ reply: { success: true }, delay_ms: 300 }] },
          cleanHKLMRegistry: { reply: { success: true } },
        });
        await remove(2);
        await page.getByRole('status').filter({ hasText: '2 items removed' }).waitFor();
        assert.deepEqual(
          (await app.serviceRequests()).filter(({ action }) => action.startsWith('clean')),
          [
            { action: 'cleanLeftoverPath', data: { path: folders.machine } },
            { action: 'cleanHKLMRegistry', data: { subKey: keys.machine.slice(5) } },
          ],
        );
        assert.equal(
          existsSync(unixPath(folders.machine)),
          true,
          "the program leaves to the service what is the service's",
        );
      },
    );
    assert.deepEqual(
      [existsSync(unixPath(folders.roaming)), await keyExists(`${keys.short}\\Inner`)],
      [true, true],
      'what was not ticked stays',
    );
    assert.deepEqual(
      [...others.map((folder) => existsSync(unixPath(folder))), await keyExists(kOtherKey)],
      [true, true, true],
    );
    assert.equal((await filesBelow(outside.unix)).length, 1, 'what a link leads to is untouched');
  } finally {
    for (const folder of [`${user}\\Local\\Brook`, folders.roaming, 'C:\\Program Files\\Brook'])
      await rm(unixPath(folder), { recursive: true, force: true });
    for (const key of ['HKCU\\Software\\Brook', keys.short, 'HKLM\\Software\\Brook'])
      await runInPrefix('reg', ['delete', key, '/f']);
    await outside.remove();
  }
});

test('drivers are installed by the service, or else here, and say that a restart is due', () =>
  withVarnel(
    {
      language: 'cs',
      tools: {
        'powershell.exe': {
          cases: [
            { when: 'check_updates', ...offers(offer(kDriver), offer(kFirmware)) },
            {
              when: kDriver,
              steps: [
                { text: 'Searching Windows Update\r\n' },
                { delay_ms: 1000, text: 'Installed. SYSTEM_REBOOT_REQUIRED\r\n' },
              ],
            },
            { when: kFirmware, ...prints('No such update\n', { exit: 2 }) },
          ],
        },
      },
    },
    async (app) => {
      const { page } = app;
      const script = `${app.folder.windows}\\bin\\update_driver.ps1`;
      const installed = async () =>
        (await app.toolCalls('powershell')).filter((line) => line.includes('update_driver'));
      const install = async (button, question) => {
        await press(page, button);
        await press(await dialogOf(page, question), 'Nainstalovat');
      };
      await openView(page, 'software');
      await page.click('[data-tab=drivers]');
      await page.keyboard.press('F5');
      await page.getByRole('grid', { name: 'Ovladače' }).waitFor();
      for (const name of [kDriver, kFirmware]) await tick(page, 'Ovladače', name);
      await page.getByRole('button', { name: 'Název' }).click(); // the other way round: the queue goes as the screen does
      await install('Nainstalovat vybrané (2)', 'Nainstalovat 2 ovladače?');
      // Both miss the service; one dialog is enough, and each row says it.
      await closeServiceDialog(page);
      await job(page, kDriver, 'running');
      await job(page, kDriver, 'restart');
      await job(page, kFirmware, 'failed');
      assert.equal(app.messages.filter(({ type }) => type === 'show_service_error_modal').length, 2);
      assert.equal(await page.getByRole('dialog').count(), 0);
      assert.equal(
        await page
          .locator('[data-job]', { hasText: 'Pomocná služba neběží, instaluje se s vašimi právy.' })
          .count(),
        2,
      );
      assert.match(
        await page.innerText(`[data-job="${kFirmware}"]`),
        /Windows Update ho už nenabízí\. \(kód 2\)/,
      );
      assert.match(await page.innerText('.jobs'), /K dokončení je potřeba restartovat Windows/);
      assert.deepEqual(
        await installed(),
        [kDriver, kFirmware].map(
          (title) =>
            `powershell -NoProfile -ExecutionPolicy Bypass -File "${script}" -UpdateTitle "${title}"`,
        ),
      );

      // A later "false" does not take the mark back, and what is no record is passed over.
      const line = (record) => ({
        text: `${typeof record === 'string' ? record : JSON.stringify(record)}\n`,
      });
      await app.startService({
        installDriver: {
          chunks: [
            { type: 'stdout', message: 'Stahuji „Brook“' },
            'not JSON',
            { type: 'stdout', message: 'Hotovo SYSTEM_REBOOT_REQUIRED' },
            { type: 'exit', code: 0, rebootRequired: false },
          ].map(line),
        },
      });
      await press(page, 'Skrýt dokončené');
      await app.waitUntilShown(
        async () =>
          (await app.toolCalls('powershell')).filter((one) => one.includes('check_updates')).length === 2,
        'the list to be loaded anew',
      );
      await page.locator('main [aria-busy=true]').waitFor({ state: 'detached' });
      await tick(page, 'Ovladače', kFirmware);
      await install('Nainstalovat vybrané (1)', 'Nainstalovat 1 ovladač?');
      await job(page, kFirmware, 'restart');
      await page.click(`[data-job="${kFirmware}"] summary`);
      assert.deepEqual(await linesOf(page, `[data-job="${kFirmware}"] [role=log]`), [
        `Spouštím instalaci ovladače přes Windows Update: ${kFirmware}...`,
        'Stahuji „Brook“',
        'Hotovo SYSTEM_REBOOT_REQUIRED',
      ]);
      assert.deepEqual(
        (await app.serviceRequests()).filter(({ action }) => action === 'installDriver'),
        [{ action: 'installDriver', data: { title: kFirmware, scriptPath: script } }],
      );
      assert.equal((await installed()).length, 2);
      await checkAccessibility(page);
    },
  ));

test('without the tools the scan comes to its end, and the page says what is missing', async () => {
  await prepareWine();
  // Wine brings a PowerShell that does nothing.
  const own = ['system32', 'syswow64']
    .map((folder) => unixPath(`C:\\windows\\${folder}\\WindowsPowerShell\\v1.0\\powershell.exe`))
    .filter((path) => existsSync(path));
  assert.ok(own.length > 0);
  for (const path of own) await rename(path, `${path}.away`);
  try {
    await withVarnel({ language: 'en', service: {} }, async (app) => {
      const { page } = app;
      await openView(page, 'software');
      await page.getByRole('button', { name: 'Scan the system' }).first().click();
      await page
        .getByText('The winget package manager offered none. Where it is missing, the list is empty too.')
        .waitFor();
      const { software, drivers, success, scannedDriversCount } = await app.waitForMessage(
        ({ status }) => status === 'done',
      );
      assert.deepEqual([success, software, drivers, scannedDriversCount], [true, [], [], 171]);
      await page.click('.terminal-toggle');
      assert.deepEqual(await page.locator('.terminal-output > .stderr-line').allInnerTexts(), [
        '[Error] Failed to execute winget. Win32 Error: 2',
        '[Error] Failed to execute PowerShell driver check. Win32 Error: 2',
      ]);
      await page.click('[data-tab=installed]');
      await page.getByText('It is probably missing here, or your account cannot run it.').waitFor();
      await page.click('[data-tab=drivers]');
      await page.getByText('171 drivers checked').waitFor();
      await checkAccessibility(page);
    });
  } finally {
    for (const path of own) await rename(`${path}.away`, path);
  }
});

// The page's clock runs ahead, so that minutes without a word pass in a moment.
async function pass(page, seconds) {
  await page.clock.fastForward(seconds * 1000);
}

test('tools of which nothing is heard: the page gives up, says so, and credits a late end to nobody else', () =>
  withVarnel(
    {
      language: 'cs',
      service: { installDriver: { stream: [{ type: 'stdout', message: 'Stahuji' }] } },
      tools: {
        ...winget(
          { when: '--id "Brook.TarnSync"', steps: [{ text: 'Found Tarn Sync\r\n' }, { delay_ms: 3000 }] },
          { when: '--accept', steps: [{ text: kUpdates }] },
        ),
        'powershell.exe': offers(offer(kDriver)),
      },
    },
    async (app) => {
      const { page } = app;
      const give_up = page.getByRole('button', { name: 'Nečekat dál' });
      await openView(page, 'software');
      await page.keyboard.press('F5');
      await page.getByRole('grid', { name: 'Aktualizace' }).waitFor();
      await page.clock.install();

      // The program's end comes late, but no other tool runs that it could belong to.
      await tick(page, 'Aktualizace', 'Tarn Sync');
      await press(page, 'Aktualizovat vybrané (1)');
      await page.locator('[data-job="Brook.TarnSync"]', { hasText: 'Found Tarn Sync' }).waitFor();
      await pass(page, 58);
      assert.equal(await give_up.count(), 0);
      await pass(page, 3);
      await give_up.click();
      await job(page, 'Brook.TarnSync', 'failed');
      assert.match(await page.innerText('[data-job="Brook.TarnSync"]'), /výsledek neznámý/);
      await job(page, 'Brook.TarnSync', 'done');

      // The service closes the pipe before its exit record: nothing is said of an end.
      await page.click('[data-tab=drivers]');
      await page.keyboard.press('F5');
      await page.getByRole('grid', { name: 'Ovladače' }).waitFor();
      await tick(page, 'Ovladače', kDriver);
      await press(page, 'Nainstalovat vybrané (1)');
      await press(await dialogOf(page, 'Nainstalovat 1 ovladač?'), 'Nainstalovat');
      await page.locator(`[data-job="${kDriver}"]`, { hasText: 'Stahuji' }).waitFor();
      await pass(page, 61);
      await give_up.click();
      await job(page, kDriver, 'failed');
      assert.match(await page.innerText(`[data-job="${kDriver}"]`), /Konec nástroje nebyl ohlášen/);
      await checkAccessibility(page);
    },
  ));

test('a scan is given up after four minutes of silence, and any line of the host counts as a word', () =>
  withVarnel(
    {
      language: 'en',
      service: {},
      tools: { 'winget.exe': { steps: [{ delay_ms: 6000, text: kUpdates }] }, 'powershell.exe': offers() },
    },
    async (app) => {
      const { page } = app;
      await openView(page, 'software');
      await page.clock.install();
      await page.getByRole('button', { name: 'Scan the system' }).first().click();
      const banner = page.locator('[data-testid=scan]');
      await banner.getByRole('status').waitFor();
      await app.waitForMessage(({ message }) => message === 'Scanning software updates via winget...');
      await pass(page, 238);
      await app.request('debugSystem');
      const lines = app.messages.filter(({ type }) => type === 'console_log').length;
      await page.locator('.terminal-toggle', { hasText: `${lines} new lines` }).waitFor(); // the page has taken them all
      await pass(page, 238);
      assert.equal(
        await banner.getByRole('status').isVisible(),
        true,
        'a line of the host is a sign of life',
      );
      await pass(page, 3);
      await page
        .getByRole('alert')
        .filter({ hasText: 'Nothing has been heard of the scan for four minutes' })
        .waitFor();
      assert.equal(await page.getByRole('button', { name: 'Scan the system' }).first().isDisabled(), false);
      await screenshot(page, 'software-given-up-amethyst-en');
      await checkAccessibility(page);
      // What the host still sends is no longer the page's scan.
      await app.waitForMessage(({ status }) => status === 'done');
      assert.equal(await page.getByRole('grid').count(), 0);
      assert.equal(await banner.isVisible(), true);
    },
  ));

test('a script for drivers that Windows blocks costs only the drivers', () => {
  const kReason = 'File C:\\check_updates.ps1 cannot be loaded because running scripts is disabled here.';
  return withVarnel(
    {
      language: 'en',
      service: {},
      tools: {
        ...winget(),
        'powershell.exe': prints(`${kReason}\nAt line 1\n`, { exit: 1 }),
      },
    },
    async (app) => {
      const { page } = app;
      await openView(page, 'software');
      await page.getByRole('button', { name: 'Scan the system' }).first().click();
      const banner = page.locator('[data-testid=scan][role=alert]', {
        hasText: 'Drivers could not be looked for.',
      });
      await banner.waitFor();
      await page.getByRole('grid', { name: 'Updates' }).waitFor();
      assert.equal((await rowsOf(page, 'Updates')).length, kUpdateRows.length);
      await page.locator('[data-tab=installed] .tag', { hasText: /^4$/ }).waitFor();
      assert.equal((await app.settingsFile()).lastScan, undefined, 'it has not been a whole scan');
      await press(banner, 'Close');
      await banner.waitFor({ state: 'detached' });
      // The list of drivers alone says the same in its place.
      await page.click('[data-tab=drivers]');
      await page.keyboard.press('F5');
      await page.getByRole('button', { name: 'Try again' }).waitFor();
      await page.getByText(kReason, { exact: true }).waitFor();
      assert.ok(app.messages.some(({ type, message }) => type === 'console_log' && message === kReason));
    },
  );
});

test('thousands of programs, one of which the tool is no longer there to uninstall', () => {
  const kCount = 4000;
  const names = [
    'Žluťoučký kůň',
    'Heron Media Suite Professional Edition 2024 with everything that a long name can hold (x64)',
    'Tarn',
  ];
  const ids = [
    (n) => `Brook.Tarn${n}`,
    (n) => `ARP\\Machine\\X64\\{0F3C11AA-9B1D-22AA-0000-${String(n).padStart(12, '0')}}`,
    (n) => `Heron.MediaSuite.Professional${n}…`,
  ];
  const row = (n) =>
    `${`${names[n % 3]} ${n}`.padEnd(120)}  ${ids[(n % 4) % 3](n).padEnd(70)}  1.${n}  ${(n % 4) % 3 === 1 ? '' : '                winget'}\r\n`;
  return withVarnel(
    {
      settings: { theme: 'light', language: 'cs' },
      viewport: { width: 1250, height: 700 },
      service: {},
      tools: {
        'opener.exe': {},
        'winget.exe': {
          steps: [
            {
              text: `Name\r\n${'-'.repeat(60)}\r\n${Array.from({ length: kCount }, (_, n) => row(n)).join('')}`,
            },
          ],
        },
      },
    },
    async (app) => {
      const { page } = app;
      await openView(page, 'software');
      await page.click('[data-tab=installed]');
      const grid = page.getByRole('grid', { name: 'Nainstalované' });
      await grid.waitFor();
      await page.locator('[data-tab=installed] .tag', { hasText: '4 000' }).waitFor();
      assert.ok((await grid.locator('tbody tr').count()) < 60, 'only what is seen is drawn');
      await screenshot(page, 'software-thousands-light-cs');
      // All that can be acted on: every fourth has an identifier of Windows, and every fourth a cut one.
      await grid.getByRole('checkbox').first().click();
      await page.locator('.table-bar [role=status]', { hasText: '2 000' }).waitFor();
      await grid.getByRole('checkbox').first().click();
      await page.locator('.obstacles summary', { hasText: '2 000' }).click();
      await checkAccessibility(page);
      const kScheme = 'HKLM\\Software\\Classes\\ms-settings';
      try {
        await runInPrefix('reg', ['add', kScheme, '/v', 'URL Protocol', '/d', '', '/f']);
        await runInPrefix('reg', [
          'add',
          `${kScheme}\\shell\\open\\command`,
          '/ve',
          '/d',
          `${app.folder.windows}\\bin\\opener.exe "%1"`,
          '/f',
        ]);
        await press(page, 'Otevřít Nastavení Windows');
        await app.waitUntilShown(
          async () => (await app.toolCalls('opener'))[0]?.includes('ms-settings:appsfeatures'),
          'the settings to be opened',
        );
      } finally {
        await runInPrefix('reg', ['delete', kScheme, '/f']);
      }

      await page.locator('[data-filter]').fill('zlutoucky 3996');
      await grid.getByRole('row', { name: 'Žluťoučký kůň 3996' }).waitFor();
      assert.deepEqual(await rowsOf(page, 'Nainstalované'), [
        ['Žluťoučký kůň 3996', 'Brook.Tarn3996', '1.3996', ''],
      ]);
      await rm(join(app.binFolder, 'winget.exe'));
      await tick(page, 'Nainstalované', 'Žluťoučký kůň 3996');
      await press(page, 'Odinstalovat vybrané (1)');
      await press(await dialogOf(page, 'Odinstalovat 1 program?'), 'Odinstalovat');
      await job(page, 'Brook.Tarn3996', 'failed');
      assert.match(
        await page.innerText('[data-job="Brook.Tarn3996"]'),
        /Nástroj se nepodařilo spustit, nebo hned skončil chybou\. \(kód 1\)/,
      );
      await screenshot(page, 'software-uninstall-failed-light-cs');
      assert.equal(
        app.messages.some(({ type }) => type === 'findLeftovers'),
        false,
        'nothing is looked for after a program that is still there',
      );
    },
  );
});
