// Tests the hosts file of the prefix, services of the stand-in service, and devices from a stand-in
// PowerShell.
import assert from 'node:assert/strict';
import { readFile, writeFile } from 'node:fs/promises';
import { afterEach, test } from 'node:test';

import * as harness from './harness.mjs';
import { kHosts, prepareWine } from './wine.mjs';

const { asked, closeServiceDialog, dialogOf, openView, press, toastOf, withVarnel } = harness;

await prepareWine();
const kBefore = await readFile(kHosts);
afterEach(() => writeFile(kHosts, kBefore));

// --- the host ---

test('a hosts file that is not UTF-8 is read in the code page of the system', async () => {
  const text = '# þába\r\n'.repeat(200_000);
  await writeFile(kHosts, text, 'latin1');
  await withVarnel({ page: false }, async (app) =>
    assert.equal((await app.request('getHostsFile')).content, text),
  );
});

// --- the stories ---

// All three kinds of line ends, a byte order mark, tabs, and no line end at the end.
const kMixed =
  '\ufeff# Copyright (c) Varnel\r\n#\t127.0.0.1       localhost\r\n\n127.0.0.1\tlocalhost # žluť\n' +
  '192.0.2.300 spatne.example\r\n# Added by Peat\r192.0.2.10 a.example b.example\r\n  ::1 localhost\n' +
  '192.0.2.11 A.EXAMPLE\r\n192.0.2.13 konec.example';

test('edits of the hosts file survive every failure, and the rest keeps its bytes', async () => {
  await writeFile(kHosts, kMixed);
  await withVarnel({ settings: { theme: 'amethyst', language: 'cs' } }, async (app) => {
    const { page, text } = app;
    const editor = page.getByRole('textbox', { name: text('hosts.text') });
    const seen = (bytes) => bytes.slice(1).replaceAll(/\r\n?/g, '\n');
    const typeAtEnd = async (words) => {
      await editor.focus();
      await page.keyboard.press('Control+End');
      await page.keyboard.type(words);
    };
    const saved = async () => (await asked(app, 'save_hosts_file')).map(({ data }) => data.content);
    await openView(page, 'developer');
    await editor.waitFor();
    assert.equal(await editor.inputValue(), seen(kMixed));

    // A problem leads to its line, and typing replaces it.
    await page.locator('[data-problem]', { hasText: '192.0.2.300' }).click();
    await page.keyboard.type('192.0.2.3 spravne.example');
    await typeAtEnd('\n192.0.2.14 nový.example');
    await page.getByText(text('hosts.problemCount', { n: 1 })).waitFor();
    const want = `${kMixed.replace('192.0.2.300 spatne', '192.0.2.3 spravne')}\r\n192.0.2.14 nový.example`;
    await harness.look(app, 'developer-hosts-amethyst-cs');

    await press(page, text('hosts.save'));
    await closeServiceDialog(page);
    const failed = text('hosts.saveFailed', { reason: text('hosts.refused') });
    await toastOf(page, failed, 'alert').waitFor();
    assert.equal(await editor.inputValue(), seen(want));

    // Neither reloading nor another program's changes may discard or overwrite anything without a
    // question.
    await page.keyboard.press('F5');
    await press(await dialogOf(page, text('hosts.discardTitle')), text('app.cancel'));
    const slowly = { chunks: [{ reply: { success: true }, delay_ms: 800 }] };
    await app.startService({ save_hosts_file: slowly });
    await writeFile(kHosts, `${kMixed}\r\n# VPN`);
    await press(page, text('hosts.save'));
    await press(await dialogOf(page, text('hosts.changedTitle')), text('app.cancel'));
    assert.deepEqual([await saved(), await editor.inputValue()], [[], seen(want)]);
    await writeFile(kHosts, kMixed);

    // Text typed during a save is still unsaved.
    await page.keyboard.press('Control+s');
    await typeAtEnd(' # a');
    await toastOf(page, text('hosts.saved')).waitFor();
    await writeFile(kHosts, want); // as the service would
    await page.getByText(text('hosts.dirty')).waitFor();
    await page.keyboard.press('Control+s');
    await page.getByText(text('hosts.clean')).waitFor();
    assert.deepEqual(await saved(), [want, `${want} # a`]);

    // A long file is edited in parts and saved as a whole.
    const long = Array.from({ length: 5000 }, (_, i) => `192.0.2.1 host${i}.example`);
    await writeFile(kHosts, long.join('\r\n'));
    await page.keyboard.press('F5');
    for (const [line, typed] of Object.entries({ 4500: '# a', 1: '# b' })) {
      await page.getByLabel(text('hosts.goTo')).fill(line);
      await page.keyboard.press('Enter');
      await page.keyboard.type(typed);
    }
    await page.keyboard.press('Control+s');
    await page.getByText(text('hosts.clean')).waitFor();
    assert.equal((await saved()).at(-1), long.with(4499, '# a').with(0, '# b').join('\r\n'));
  });
});

test('development services accept commands; devices with a problem come first', () => {
  const devices = ['OK', 'Error'].map((Status) => ({ FriendlyName: 'Tarn', Class: 'NET', Status }));
  const tools = { 'powershell.exe': { steps: [{ text: JSON.stringify(devices) }] } };
  return withVarnel({ language: 'cs', tools }, async (app) => {
    const { page, text } = app;
    const service = (service_type, status, command) => ({ service_type, status, commands: [command] });
    await openView(page, 'developer');
    await page.click('[data-tab=services]');
    await page.getByText(text('services.away')).waitFor(); // no dialog unless the user acts
    await app.startService({
      get_dev_services: {
        reply: {
          success: true,
          services: [service('db', 'running', 'stop'), service('web', 'stopped', 'start')],
        },
      },
      control_dev_service: { reply: { success: true } },
    });
    await press(page, text('app.retry'));
    const [start, stop] = ['start', 'stop'].map((verb) => text(`services.${verb}`));

    // Starting needs no question; everything else asks first.
    await press(page, start);
    await toastOf(page, text('services.start.done', { title: 'web' })).waitFor();
    await press(page, stop);
    await press(await dialogOf(page, text('services.stop.title', { title: 'db' })), text('app.cancel'));
    const commands = (await asked(app, 'control_dev_service')).map(({ data }) => data.command);
    assert.deepEqual(commands, ['start'], 'nothing happens before the user agrees');

    await page.click('[data-tab=devices]');
    const first = page
      .getByRole('grid', { name: text('developer.devices') })
      .getByRole('row')
      .nth(1);
    await first.getByText('Error').waitFor();
  });
});
