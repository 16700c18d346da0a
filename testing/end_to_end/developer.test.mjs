// The hosts file of the prefix, services of the stand-in service, and devices from a stand-in PowerShell.
import assert from 'node:assert/strict';
import { existsSync } from 'node:fs';
import { readFile, rm, writeFile } from 'node:fs/promises';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { prepareWine, unixPath } from './wine.mjs';

const { asked, closeServiceDialog, dialogOf, openView, press, rowsOf, toastOf, withVarnel } = harness;

// Runs `body` with a hosts file of these bytes, and puts the old one back.
async function withHosts(bytes, body) {
  await prepareWine();
  const path = unixPath('C:\\Windows\\System32\\drivers\\etc\\hosts');
  const before = existsSync(path) ? await readFile(path) : undefined;
  await writeFile(path, bytes);
  try {
    await body(path);
  } finally {
    await (before ? writeFile(path, before) : rm(path, { force: true }));
  }
}

// --- the host ----------------------------------------------------------------------------------------------

test('the hosts file is read byte for byte, in the code page of the system if it is no UTF-8', () =>
  withHosts('', (path) =>
    withVarnel({ page: false }, async (app) => {
      for (const [bytes, content] of [
        ['\ufeff#\ta\r\n192.0.2.1 žluť\nlast\r'],
        [''],
        [Buffer.from('# \xfe\xe1ba\r\n', 'latin1'), '# þába\r\n'],
        ['0'.repeat(3_000_000)],
      ]) {
        await writeFile(path, bytes);
        const reply = await app.request('getHostsFile');
        assert.deepEqual([reply.success, reply.content], [true, content ?? bytes]);
      }
    }),
  ));

// As PowerShell prints them: one line, HTML characters escaped, with a mark.
const kDevices = String.raw`[{"FriendlyName":"Port #1 \u0026 Bridge","Class":"SYSTEM","Status":"OK"},
  {"FriendlyName":"Karta ®","Class":"MEDIA","Status":"OK"},
  {"FriendlyName":"Filter","Class":null,"Status":"OK"},
  {"FriendlyName":null,"Class":"NET","Status":"OK"},{"FriendlyName":"Copse","Class":"NET"},
  {"FriendlyName":"Tarn","Class":"NET","Status":"Error"}]`.replaceAll(/\n */g, '');
const prints = (text, more) => ({ steps: [{ hex: 'efbbbf' }, { text }], ...more });

// --- the story ---------------------------------------------------------------------------------------------

// Line ends of all three kinds, a mark at the beginning, tabs, and no end of the last line.
const kMixed =
  '\ufeff# Copyright (c) Varnel\r\n#\t127.0.0.1       localhost\r\n\n127.0.0.1\tlocalhost # žluť\n' +
  '192.0.2.300 spatne.example\r\n# Added by Peat\r192.0.2.10 a.example b.example\r\n  ::1 localhost\n' +
  '192.0.2.11 A.EXAMPLE\r\n192.0.2.13 konec.example';

test('what is typed into the hosts file survives every failure, and the rest keeps its bytes', () =>
  withHosts(kMixed, (path) =>
    withVarnel({ settings: { theme: 'amethyst', language: 'cs' } }, async (app) => {
      const { page } = app;
      const editor = page.getByRole('textbox', { name: app.text('hosts.text') });
      const seen = (text) => text.slice(1).replaceAll(/\r\n?/g, '\n');
      const typeBehind = async (place, text) => {
        await editor.evaluate((area, wanted) => {
          area.focus();
          area.setSelectionRange(...Array(2).fill(area.value.indexOf(wanted) + wanted.length));
        }, place);
        await page.keyboard.type(text);
      };
      const saved = () => asked(app, 'save_hosts_file');
      await openView(page, 'developer');
      await editor.waitFor();
      assert.equal(await editor.inputValue(), seen(kMixed));
      assert.ok(!app.messages.some(({ type }) => type === 'show_service_error_modal'), 'reading needs none');
      const problems = page.locator('[data-problem]');
      await problems.first().waitFor();
      const [line] = await problems.allInnerTexts();
      const fault = app.text('hosts.address', { word: '192.0.2.300' });
      assert.equal(line, `${app.text('hosts.line', { line: 5 })} ${fault}`);

      // Commented out and back the text is the same; finding counts.
      const problemCount = (n) => page.getByText(app.text('hosts.problemCount', { n })).waitFor();
      await press(page, app.text('hosts.commentLine', { line: 5 }));
      await problemCount(1);
      assert.ok((await editor.inputValue()).includes('\n#192.0.2.300 '));
      await page.keyboard.press('Control+/');
      await problemCount(2);
      assert.equal(await editor.inputValue(), seen(kMixed));
      await page.keyboard.press('Control+f');
      await page.keyboard.type('EXAMPLE');
      await page.keyboard.press('F3');
      await page.getByText(app.text('table.count', { shown: 2, total: 5 })).waitFor();

      // A problem leads to its line, and what is typed there replaces it.
      await problems.first().click();
      await page.keyboard.type('192.0.2.3 spravne.example');
      await typeBehind('konec.example', '\n192.0.2.14 nový.example');
      await problemCount(1);
      const want = `${kMixed.replace('192.0.2.300 spatne', '192.0.2.3 spravne')}\r\n192.0.2.14 nový.example`;
      await harness.look(app, 'developer-hosts-amethyst-cs');

      // No service, and a service that refuses.
      const fails = async () => {
        const reason = app.text('hosts.refused');
        await toastOf(page, app.text('hosts.saveFailed', { reason }), 'alert').waitFor();
        assert.equal(await editor.inputValue(), seen(want));
        await page.getByText(app.text('hosts.dirty')).waitFor();
        await press(page.getByRole('alert'), app.text('app.close'));
      };
      await press(page, app.text('hosts.save'));
      await closeServiceDialog(page);
      await fails();
      await app.startService({ save_hosts_file: { reply: { success: false } } });
      await page.keyboard.press('Control+s');
      await fails();

      // Neither another view nor loading anew takes it away unasked, and what another program has written
      // meanwhile is not overwritten unasked.
      await openView(page, 'network');
      await openView(page, 'developer');
      await page.keyboard.press('F5');
      await press(await dialogOf(page, app.text('hosts.discardTitle')), app.text('app.cancel'));
      await writeFile(path, `${kMixed}\r\n# VPN`);
      await press(page, app.text('hosts.save'));
      await press(await dialogOf(page, app.text('hosts.changedTitle')), app.text('app.cancel'));
      assert.equal((await saved()).length, 1);
      assert.equal(await editor.inputValue(), seen(want));
      await writeFile(path, kMixed);

      // What is typed while it is being saved is still to be saved.
      const slowly = { chunks: [{ reply: { success: true }, delay_ms: 800 }] };
      await app.scriptService({ save_hosts_file: slowly });
      await page.keyboard.press('Control+s');
      await typeBehind('nový.example', ' # a');
      await toastOf(page, app.text('hosts.saved')).waitFor();
      await writeFile(path, want); // as the service does it
      await page.getByText(app.text('hosts.dirty')).waitFor();
      await page.keyboard.press('Control+s');
      await page.getByText(app.text('hosts.clean')).waitFor();
      const [, first, second] = (await saved()).map(({ data }) => data.content);
      assert.deepEqual([first, second], [want, `${want} # a`]);
      await page.keyboard.press('F5'); // the service has not written the last one
      await app.until(async () => (await editor.inputValue()) === seen(want), 'the file of the disk');
    }),
  ));

test('development services and their commands; devices, the ones with a problem first', () => {
  const tools = { 'powershell.exe': prints(`${kDevices}\r\n`) };
  // Without a hosts file the service would be asked for it.
  const run = (story) => withHosts('', () => withVarnel({ language: 'cs', tools }, story));
  return run(async (app) => {
    const { page } = app;
    const openTab = (id) => page.click(`[data-tab=${id}]`);
    const service = (display_name, status, commands, more) => {
      const service_type = display_name.toLowerCase();
      return { display_name, service_type, status, commands, ...more };
    };
    const services = [
      service('MariaDB', 'running', ['stop', 'restart'], { port: 3306 }),
      service('Nginx', 'stopped', ['start']),
      service('Redis', 'running', ['flush cache']),
    ];
    await openView(page, 'developer');
    await openTab('services');
    await page.getByText(app.text('services.away')).waitFor(); // no dialog but after an act of the user
    await press(page, app.text('app.retry'));
    await closeServiceDialog(page);
    const refused = app.text('services.refused');
    await page.getByText(refused).waitFor();
    await app.startService({
      get_dev_services: { reply: { success: true, services } },
      control_dev_service: { chunks: [{ reply: { success: true }, delay_ms: 1500 }] },
    });
    await press(page, app.text('app.retry'));
    const label = app.text('developer.services');
    await page.getByRole('grid', { name: label }).waitFor();
    const [start, stop, restart] = ['start', 'stop', 'restart'].map((verb) => app.text(`services.${verb}`));
    const shownServices = (await rowsOf(page, label)).map((cells) => cells.join('|').replaceAll('\n', ''));
    const [running, stopped] = ['running', 'stopped'].map((state) => app.text(`services.state.${state}`));
    assert.deepEqual(shownServices, [
      `MariaDB|${running}|port: 3306|${stop}${restart}`,
      `Nginx|${stopped}||${start}`,
      `Redis|${running}||flush cache`,
    ]);

    // Starting needs no question; one command at a time. Whatever else is asked about first.
    const row = (name) => page.getByRole('row', { name: new RegExp(name) });
    const commands = async () => (await asked(app, 'control_dev_service')).map(({ data }) => data.command);
    await press(row('Nginx'), start);
    await row('Redis').getByRole('button').click({ force: true });
    await toastOf(page, app.text('services.start.done', { title: 'Nginx' })).waitFor();
    await press(row('MariaDB'), stop);
    const title = 'MariaDB';
    const question = app.text('services.stop.title', { title });
    await press(await dialogOf(page, question), app.text('app.cancel'));
    assert.deepEqual(await commands(), ['start'], 'nothing happens before the user agrees');
    await app.scriptService({ control_dev_service: { reply: { success: false } } });
    await press(row('MariaDB'), stop);
    await press(await dialogOf(page, question), stop);
    const failed = app.text('services.stop.failed', { title, reason: refused });
    await toastOf(page, failed, 'alert').waitFor();
    assert.deepEqual(await commands(), ['start', 'stop']);
    assert.equal((await rowsOf(page, label)).length, 3, 'what was known stays');

    const devices = () => rowsOf(page, app.text('developer.devices'));
    await openTab('devices');
    await page.getByRole('grid', { name: app.text('developer.devices') }).waitFor();
    const shown = await devices();
    assert.deepEqual(shown, [
      ['Copse', 'NET', 'Unknown'],
      ['Tarn', 'NET', 'Error'],
      ['Port #1 & Bridge', 'SYSTEM', 'OK'],
      ['Karta ®', 'MEDIA', 'OK'],
      ['Filter', 'SYSTEM', 'OK'],
    ]);
    await page.getByRole('combobox', { name: app.text('devices.class') }).selectOption('SYSTEM');
    assert.deepEqual(await devices(), [shown[2], shown[4]]);
    await app.scriptTool('powershell.exe', prints('running scripts is disabled.\r\n', { exit: 1 }));
    await page.keyboard.press('F5');
    await page.getByText(app.text('devices.refused')).waitFor();
    assert.equal((await devices()).length, 2, 'what was known stays');
  });
});
