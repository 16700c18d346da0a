// Tests the programs that start after sign-in: the registry's limits, and switching items through the
// page.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { readRegistry, registryText, withRegistry, writeRegistry } from './wine.mjs';

const { closeServiceDialog, look, openView, rowsOf, toastOf, withVarnel } = harness;

const kWindows = 'Software\\Microsoft\\Windows\\CurrentVersion';
const run = (hive) => `${hive}\\${kWindows}\\Run`;
const approved = (hive) => `${hive}\\${kWindows}\\Explorer\\StartupApproved\\Run`;
const kOn = 'hex:02,00,00,00,00,00,00,00,00,00,00,00';
const kOff = 'hex:03,00,00,00,00,00,00,00,00,00,00,00';

// Runs `body` with exactly these items, {name: data}, and the user's approvals; null for no key.
const withItems = (user, machine, approvals, body) =>
  withRegistry(
    {
      ...{ [run('HKCU')]: user, [run('HKLM')]: machine },
      ...{ [approved('HKCU')]: approvals, [approved('HKLM')]: null },
    },
    body,
  );

test('values become items, and approvals disable them', () => {
  const bytes = (count) => `hex:${Array(count).fill('03').join()}`;
  // [name, data, the command: undefined if it is no item, approval, on]
  const rows = [
    ['Žluť', 'expand:%windir%\\Příliš.exe', '%windir%\\Příliš.exe'],
    ['number', 'dword:00000001'],
    ['just fits', registryText('x'.repeat(511)), 'x'.repeat(511)],
    ['too long', registryText('x'.repeat(512))],
    ['off', '"b.exe"', 'b.exe', 'hex:03,01,02', false],
    ['on', '"c.exe"', 'c.exe', kOn],
    ['approval just fits', '"e.exe"', 'e.exe', bytes(256), false],
    ['approval too long', '"f.exe"', 'f.exe', bytes(257)],
    ['half a character \ud800', '"g.exe"', 'g.exe'],
  ];
  const column = (i) => Object.fromEntries(rows.filter((row) => row[i]).map((row) => [row[0], row[i]]));
  return withItems(column(1), { off: '"b.exe"' }, column(3), () =>
    withVarnel({ page: false }, async (app) => {
      const { items } = await app.request('getStartupItems');
      const shown = items.map((item) => [item.scope, item.name, item.command, item.enabled].join('|'));
      const want = rows
        .filter(([, , command]) => command !== undefined)
        .map(([name, , command, , on = true]) =>
          ['HKCU', name.replace('\ud800', '\ufffd'), command, on].join('|'),
        );
      assert.equal(shown.pop(), 'HKLM|off|b.exe|true', 'the items of the user come first');
      assert.deepEqual(shown.toSorted(), want.toSorted());
      const toggle = { scope: 'hkcu', name: 'on', enabled: false };
      const [refused] = await app.posted('toggleStartupItem', toggle);
      assert.equal(refused.success, false, 'another scope is nobody, and the service is not even looked for');
      assert.equal((await readRegistry(approved('HKCU'))).on, kOn);
    }),
  );
});

test("the user's items are switched directly, everyone's only by the service", () => {
  const star = registryText('C:\\Program Files\\Hvězdář\\TeamsBridge.exe --quiet');
  const kite = 'expand:"%LOCALAPPDATA%\\Kite\\kite sync.exe" /tray';
  const user = { Hvězdář: star, 'Kite Sync': kite, Notes: '"C:\\\\windows\\\\notepad.exe"' };
  return withItems(user, { Žárovka: '"C:\\\\lamp updater.exe"' }, null, () =>
    withVarnel({ settings: { theme: 'amethyst', language: 'cs' } }, async (app) => {
      const { page, text } = app;
      const switchOf = (name) => page.getByRole('switch', { name: text('startup.switch', { name }) });
      const isOn = (name, on) =>
        switchOf(name)
          .and(page.locator(`[aria-checked=${on}][aria-disabled=false]`))
          .waitFor();
      const fails = (name, reason) =>
        toastOf(page, text('startup.offFailed', { name, reason: text(reason) }), 'alert').waitFor();
      const stored = (hive) => readRegistry(approved(hive));
      await openView(page, 'startup');
      await page.getByText(text('startup.missing')).nth(1).waitFor();
      const impacts = (await rowsOf(page, /./)).map((cells) => cells[2]);
      const want = ['high', 'medium', 'medium', 'low'].map((impact) => text(`startup.${impact}`));
      assert.deepEqual(impacts, want);

      // Without the list of approved items, nothing can be stored, and none is created.
      await switchOf('Hvězdář').click();
      await fails('Hvězdář', 'startup.noList');
      await isOn('Hvězdář', true);
      assert.equal(await stored('HKCU'), undefined);

      // Off, as another program has left it, then on again by keyboard.
      await writeRegistry({ [approved('HKCU')]: { 'Kite Sync': 'hex:07,00,00,00,11,22,33,44,55,66,77,88' } });
      await page.keyboard.press('F5');
      await isOn('Kite Sync', false);
      await switchOf('Kite Sync').press('Space');
      await isOn('Kite Sync', true);
      await switchOf('Hvězdář').click();
      await isOn('Hvězdář', false);
      await look(app, 'startup-after-amethyst-cs');
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOn, Hvězdář: kOff });
      const kept = Object.keys(await readRegistry(run('HKCU')));
      assert.deepEqual(kept, Object.keys(user), 'switching deletes nothing');

      // Only the service switches everyone's items, and the page checks the result.
      await switchOf('Žárovka').click();
      await closeServiceDialog(page);
      await fails('Žárovka', 'startup.needsService');
      await isOn('Žárovka', true);
      await app.startService({ '*': { reply: { success: true } } });
      await switchOf('Žárovka').click();
      await fails('Žárovka', 'startup.notStored');
    }),
  );
});
