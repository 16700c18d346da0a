// The hosts file of the prefix, development services of the stand-in service, and devices from a stand-in PowerShell.
import assert from 'node:assert/strict';
import { existsSync } from 'node:fs';
import { readFile, rename, rm, writeFile } from 'node:fs/promises';
import { test } from 'node:test';

import { checkAccessibility, closeServiceDialog, openView, screenshot, withVarnel } from './harness.mjs';
import { prepareWine, unixPath } from './wine.mjs';

const kHostsPath = 'C:\\Windows\\System32\\drivers\\etc\\hosts';

const press = (scope, name) => scope.getByRole('button', { name, exact: true }).click();
const requests = async (app, action) =>
  (await app.serviceRequests()).filter((request) => request.action === action).map(({ data }) => data);
const rows = (page, label) =>
  page
    .getByRole('grid', { name: label })
    .locator('tbody tr')
    .evaluateAll((all) => all.map((row) => [...row.cells].map((cell) => cell.innerText.trim())));
const editor = (page) => page.getByRole('textbox', { name: /Obsah souboru hosts|Content of the hosts file/ });
const textOf = (page) => editor(page).inputValue();

async function dialogOf(page, name) {
  const dialog = page.getByRole('dialog', { name });
  await dialog.waitFor();
  return dialog;
}

async function openTab(page, id) {
  await openView(page, 'developer');
  await page.click(`[data-tab=${id}]`);
}

// Puts the caret behind `text` in the editor, as a click would.
const caretBehind = (page, text) =>
  editor(page).evaluate((area, wanted) => {
    area.focus();
    area.setSelectionRange(...Array(2).fill(area.value.indexOf(wanted) + wanted.length));
  }, text);

// Runs `body` with a hosts file of these bytes, and puts the old one back.
async function withHosts(bytes, body) {
  await prepareWine();
  const path = unixPath(kHostsPath);
  const before = existsSync(path) ? await readFile(path) : undefined;
  await writeFile(path, bytes);
  try {
    await body(path);
  } finally {
    await (before ? writeFile(path, before) : rm(path, { force: true }));
  }
}

// Line ends of all three kinds, a mark at the beginning, tabs, an IPv6 zone, and no end of the last line.
const kMixed =
  '\ufeff# Copyright (c) Varnel\r\n#\t127.0.0.1       localhost\r\n\n127.0.0.1\tlocalhost  Localhost.localdomain # žluť\n' +
  '192.0.2.300 spatne.example\r\nfe80::1%12 zona.example\r\n# Added by Peat\r192.0.2.10 a.example b.example\r\n  ::1 localhost\n' +
  '192.0.2.11 A.EXAMPLE\r\n192.0.2.12\n0.0.0.0 http://reklama.example/\r\n# End of section\r\n192.0.2.13 konec.example';

test('what is typed into the hosts file survives every failure, and the rest of the file keeps its bytes', () =>
  withHosts(kMixed, (path) =>
    withVarnel(
      {
        settings: { theme: 'amethyst', language: 'cs' },
      },
      async (app) => {
        const { page } = app;
        await openView(page, 'developer');
        await editor(page).waitFor();
        assert.equal(await textOf(page), kMixed.slice(1).replaceAll(/\r\n?/g, '\n'));
        assert.equal(
          app.messages.some(({ type }) => type === 'show_service_error_modal'),
          false,
          'what can be read needs no service',
        );
        const problems = page.locator('[data-problem]');
        await problems.first().waitFor();
        assert.deepEqual(await problems.allInnerTexts(), [
          'Řádek 5: 192.0.2.300 není adresa',
          'Řádek 10: A.EXAMPLE se opakuje, platí řádek 8',
          'Řádek 11: za adresou 192.0.2.12 chybí název',
          'Řádek 12: http://reklama.example/ není platný název',
        ]);
        const marks = (kind) => page.locator(`.gutter .${kind}`).allInnerTexts();
        assert.deepEqual(
          [
            await marks('bad'),
            await marks('twice'),
            await page.locator('.gutter div div').last().innerText(),
          ],
          [['5', '11', '12'], ['10'], '14'],
        );
        for (const name of ['Uložit', 'Zahodit změny'])
          assert.equal(await page.getByRole('button', { name, exact: true }).isDisabled(), true);
        await page.keyboard.press('Control+s');
        await checkAccessibility(page);

        // A problem leads to its line, and what is typed there replaces it.
        await problems.first().click();
        await page.keyboard.type('192.0.2.3 spravne.example');
        await caretBehind(page, 'konec.example');
        await page.keyboard.type('\n192.0.2.14 nový.example');
        await page.getByText('3 problémy').waitFor();
        await page.locator('[data-tab=hosts]', { hasText: 'neuloženo' }).waitFor();
        const want = `${kMixed.replace('192.0.2.300 spatne', '192.0.2.3 spravne')}\r\n192.0.2.14 nový.example`;
        const typed = await textOf(page);
        await checkAccessibility(page);
        await screenshot(page, 'developer-hosts-amethyst-cs');

        // No service, a service that refuses, one that breaks off.
        const fails = async (words) => {
          await page.getByRole('alert').getByText(words).waitFor();
          assert.equal(await textOf(page), typed);
          await page.getByText('Změny nejsou uložené (Ctrl+S)').waitFor();
          await page.getByRole('alert').getByRole('button', { name: 'Zavřít' }).click();
        };
        await press(page, 'Uložit');
        await closeServiceDialog(page);
        await fails('Soubor hosts se nepodařilo uložit. Zapisuje ho pomocná služba, a ta to neprovedla.');
        await app.startService({ save_hosts_file: { reply: { success: false } } });
        await page.keyboard.press('Control+s');
        await fails('Soubor hosts se nepodařilo uložit.');
        await app.scriptService({ save_hosts_file: {} });
        await press(page, 'Uložit');
        await fails('Soubor hosts se nepodařilo uložit.');

        // Neither another view nor loading anew takes it away unasked.
        await openView(page, 'network');
        await openView(page, 'developer');
        await page.keyboard.press('F5');
        await press(await dialogOf(page, 'Zahodit neuložené změny?'), 'Zrušit');
        assert.equal(await textOf(page), typed);

        // What another program has written meanwhile is not overwritten unasked.
        await writeFile(path, `${kMixed}\r\n# VPN`);
        await press(page, 'Uložit');
        const changed = await dialogOf(page, 'Soubor hosts mezitím někdo změnil');
        await checkAccessibility(page);
        await screenshot(page, 'developer-hosts-changed-amethyst-cs');
        await press(changed, 'Zrušit');
        assert.equal((await requests(app, 'save_hosts_file')).length, 2);
        assert.equal(await textOf(page), typed);
        await writeFile(path, kMixed);

        // What is typed while it is being saved is still to be saved.
        await app.scriptService({
          save_hosts_file: { chunks: [{ reply: { success: true }, delay_ms: 800 }] },
        });
        await page.keyboard.press('Control+s');
        await caretBehind(page, 'nový.example');
        await page.keyboard.type(' # a');
        await page.getByRole('status').getByText('Soubor hosts uložen').waitFor();
        assert.deepEqual((await requests(app, 'save_hosts_file')).at(-1), { content: want });
        assert.equal(await textOf(page), `${typed} # a`);
        await page.getByText('Změny nejsou uložené (Ctrl+S)').waitFor();
        await writeFile(path, want); // as the service does it
        await page.keyboard.press('Control+s');
        await page.getByText('Beze změn').waitFor();
        assert.deepEqual((await requests(app, 'save_hosts_file')).at(-1), { content: `${want} # a` });

        // And back from the disk, where the service has not written it this time.
        await page.keyboard.press('F5');
        await app.waitUntilShown(
          async () => (await textOf(page)) === want.slice(1).replaceAll(/\r\n?/g, '\n'),
          'the file as it is on the disk',
        );
      },
    ),
  ));

test('a hosts file in another encoding, one that only the service can read, and none', () =>
  withHosts(Buffer.from('127.0.0.1 a.example # \xfe\xe1ba\r\n192.0.2.1 b.example\n', 'latin1'), (path) =>
    withVarnel(
      { settings: { theme: 'light', language: 'en' }, viewport: { width: 1250, height: 700 } },
      async (app) => {
        const { page } = app;
        await openView(page, 'developer');
        await editor(page).waitFor();
        assert.equal(
          await textOf(page),
          '127.0.0.1 a.example # þába\n192.0.2.1 b.example\n',
          'in the code page of the system',
        );
        await app.startService({ save_hosts_file: { reply: { success: true } } });
        await caretBehind(page, 'b.example');
        await page.keyboard.type('s');
        await page.keyboard.press('Control+s');
        await page.getByText('No changes').waitFor();
        assert.deepEqual(await requests(app, 'save_hosts_file'), [
          { content: '127.0.0.1 a.example # þába\r\n192.0.2.1 b.examples\n' },
        ]);

        await rm(path);
        await app.scriptService({
          get_hosts_file: { reply: { success: true, content: '192.0.2.7 sluzba.example' } },
        });
        await page.keyboard.press('F5');
        await app.waitUntilShown(
          async () => (await textOf(page)) === '192.0.2.7 sluzba.example',
          'the text from the service',
        );
        assert.deepEqual(await requests(app, 'get_hosts_file'), [{}]);
        await app.scriptService({ get_hosts_file: { reply: { success: false } } });
        await page.keyboard.press('F5');
        await page
          .getByText('Varnel has no access to the file, and the helper service did not read it.')
          .waitFor();
        assert.equal(await textOf(page), '192.0.2.7 sluzba.example', 'what was there stays');
        await checkAccessibility(page);
        await screenshot(page, 'developer-hosts-unreadable-light-en');
        await app.stopService();
        await page.reload();
        await openView(page, 'developer');
        await closeServiceDialog(page);
        await page.getByText('The data could not be loaded').waitFor();
        await checkAccessibility(page);
        await writeFile(path, '');
        await press(page, 'Try again');
        await editor(page).waitFor();
        assert.equal(await textOf(page), '');
      },
    ),
  ));

test('development services: what the service reports, its commands, and their failure', () =>
  withVarnel(
    {
      settings: { theme: 'amethyst', language: 'cs' },
    },
    async (app) => {
      const { page } = app;
      const service = (display_name, service_type, status, ...commands) => ({
        display_name,
        service_type,
        status,
        commands,
      });
      const listed = [
        { ...service('MariaDB 11.4', 'mariadb', 'running', 'stop', 'restart'), port: 3306, autostart: true },
        service('Nginx', 'nginx', 'stopped', 'start'),
        { name: 'Žluť', status: 'unknown', commands: ['start'] },
        service('Redis', 'redis', 'running', 'stop', 'flush cache'),
      ];
      const list = { reply: { success: true, services: listed } };
      await openTab(page, 'services');
      await closeServiceDialog(page);
      await page.getByText('Vývojářské služby spravuje pomocná služba, a ta požadavek nesplnila.').waitFor();
      await checkAccessibility(page);
      await app.startService({
        get_dev_services: list,
        control_dev_service: { chunks: [{ reply: { success: true }, delay_ms: 2500 }] },
      });
      await openTab(page, 'hosts'); // what could not be loaded is asked for again on the way back
      await openTab(page, 'services');
      await page.getByRole('grid', { name: 'Služby' }).waitFor();
      assert.deepEqual(
        await rows(page, 'Služby'),
        [
          ['MariaDB 11.4', 'running', 'autostart: true, port: 3306', 'Zastavit\nRestartovat'],
          ['Nginx', 'stopped', '', 'Spustit'],
          ['Redis', 'running', '', 'Zastavit\nflush cache'],
          ['Žluť', 'unknown', '', ''],
        ].map(([title, status, facts, commands]) => [title, status, facts, commands.replace('\n', '')]),
      );
      await checkAccessibility(page);

      // Starting needs no question, and shows that it lives; one command at a time.
      const row = (name) => page.getByRole('row', { name: new RegExp(name) });
      await press(row('Nginx'), 'Spustit');
      await row('Nginx').getByRole('img', { name: 'Běží…' }).waitFor();
      await row('Redis').getByRole('button', { name: 'flush cache' }).click({ force: true });
      assert.equal(await page.getByRole('dialog').count(), 0);
      await checkAccessibility(page);
      await screenshot(page, 'developer-services-amethyst-cs');
      await page.getByRole('status').getByText('Spustit: Nginx, hotovo').waitFor();
      await row('Nginx').getByText('stopped').waitFor(); // listed anew
      listed[1] = service('Nginx', 'nginx', 'running', 'stop', 'restart');
      await app.scriptService({ get_dev_services: list, control_dev_service: { reply: { success: false } } });
      await page.keyboard.press('F5');
      await row('Nginx').getByRole('button', { name: 'Restartovat' }).waitFor();
      assert.deepEqual(await requests(app, 'control_dev_service'), [
        { service_type: 'nginx', command: 'start' },
      ]);
      assert.deepEqual(await requests(app, 'get_dev_services'), [{}, {}, {}]);

      // Whatever else is asked about first.
      await press(row('MariaDB'), 'Zastavit');
      await press(await dialogOf(page, 'Zastavit: MariaDB 11.4?'), 'Zrušit');
      await press(row('Redis'), 'flush cache');
      await press(await dialogOf(page, 'flush cache: Redis?'), 'flush cache');
      await page
        .getByRole('alert')
        .getByText('flush cache: Redis se nepovedlo. Vývojářské služby spravuje pomocná služba')
        .waitFor();
      assert.deepEqual((await requests(app, 'control_dev_service')).at(-1), {
        service_type: 'redis',
        command: 'flush cache',
      });
      await app.stopService();
      await press(row('MariaDB'), 'Restartovat');
      await press(await dialogOf(page, 'Restartovat: MariaDB 11.4?'), 'Restartovat');
      await closeServiceDialog(page);
      await page.getByRole('alert').getByText('Restartovat: MariaDB 11.4 se nepovedlo.').waitFor();
      await row('MariaDB').getByText('running').waitFor();
      assert.equal((await rows(page, 'Služby')).length, 4, 'what was known stays');
      assert.equal(
        app.messages.filter(({ type }) => type === 'show_service_error_modal').length,
        2,
        'the dialog does not come again',
      );
      await screenshot(page, 'developer-services-failed-amethyst-cs');
    },
  ));

// As PowerShell prints them: one line, HTML characters escaped, a mark or not.
const kDevices =
  String.raw`[{"FriendlyName":"Peat PCIe Root Port #1 \u0026 Bridge","Class":"SYSTEM","Status":"OK"},` +
  '{"FriendlyName":"Zvuková karta Peat®","Class":"MEDIA","Status":"OK"},{"FriendlyName":"Peat Filter","Class":null,"Status":"OK"},' +
  '{"FriendlyName":null,"Class":"NET","Status":"OK"},{"FriendlyName":"Copse Adapter","Class":"NET"},{"FriendlyName":"Tarn Wi-Fi","Class":"NET","Status":"Error"}]';
const prints = (text, more) => ({ steps: [{ text }], ...more });

test('devices: the ones with a problem first, one class, and what PowerShell may print besides', () =>
  withVarnel(
    {
      settings: { theme: 'light', language: 'en' },
      viewport: { width: 1250, height: 700 },
      tools: {
        'powershell.exe': { steps: [{ hex: 'efbbbf' }, { delay_ms: 3500, text: `${kDevices}\r\n` }] },
      },
    },
    async (app) => {
      const { page } = app;
      const reload = async (script) => {
        await app.scriptTool('powershell.exe', script);
        const from = app.messages.length;
        await page.keyboard.press('F5');
        await app.waitForMessage(({ type }) => type === 'getPnpDevices', { from });
      };
      await openTab(page, 'devices');
      await page.getByText('Loading for 3 seconds…').waitFor();
      await page.getByRole('grid', { name: 'Devices' }).waitFor();
      const shown = [
        ['Copse Adapter', 'NET', 'Unknown'],
        ['Tarn Wi-Fi', 'NET', 'Error'],
        ['Peat PCIe Root Port #1 & Bridge', 'SYSTEM', 'OK'],
        ['Zvuková karta Peat®', 'MEDIA', 'OK'],
        ['Peat Filter', 'SYSTEM', 'OK'],
      ];
      assert.deepEqual(await rows(page, 'Devices'), shown);
      const [call] = await app.toolCalls('powershell');
      assert.match(
        call,
        /^powershell -NoProfile -ExecutionPolicy Bypass -Command "\[Console\]::OutputEncoding = .* \| ConvertTo-Json -Compress"$/,
      );
      await checkAccessibility(page);
      await screenshot(page, 'developer-devices-light-en');
      const group = page.getByRole('combobox', { name: 'Class' });
      assert.deepEqual(await group.locator('option').allInnerTexts(), [
        'All classes',
        'MEDIA',
        'NET',
        'SYSTEM',
      ]);
      await group.selectOption('SYSTEM');
      assert.deepEqual(await rows(page, 'Devices'), [shown[2], shown[4]]);
      // The class that is chosen is gone with the next list: everything is shown again.
      await reload(prints('{"FriendlyName":"Zvukov\u00e1 karta","Class":"MEDIA","Status":"OK"}\r\n'));
      await app.waitUntilShown(async () => (await rows(page, 'Devices')).length === 1, 'the only device');
      assert.deepEqual(await rows(page, 'Devices'), [['Zvuková karta', 'MEDIA', 'OK']]);
      for (const output of [
        'WARNING: slow\r\n[{"FriendlyName":"Peat"}]',
        'File C:\\a.ps1 cannot be loaded because running scripts is disabled on this system.\r\n',
      ]) {
        await reload(prints(output, { exit: 1 }));
        await page.getByText('The list of devices from PowerShell could not be read.').waitFor();
        assert.equal((await rows(page, 'Devices')).length, 1);
      }
      await reload({ steps: [] });
      await page.getByText('The list of devices is empty').waitFor();
      await checkAccessibility(page);
    },
  ));
