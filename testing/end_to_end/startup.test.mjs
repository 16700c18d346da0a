// What starts after sign-in: the registry's limits, and items switched through the page.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { readRegistry, registryText, withRegistry, writeRegistry } from './wine.mjs';

const { asked, closeServiceDialog, look, openView, press, rowsOf, tick, toastOf, withVarnel } = harness;

const kWindows = 'Software\\Microsoft\\Windows\\CurrentVersion';
const run = (hive) => `${hive}\\${kWindows}\\Run`;
const approved = (hive) => `${hive}\\${kWindows}\\Explorer\\StartupApproved\\Run`;
const kOn = 'hex:02,00,00,00,00,00,00,00,00,00,00,00';
const kOff = 'hex:03,00,00,00,00,00,00,00,00,00,00,00';

// Exactly these items and approvals, {HKCU: {name: data}, ...}; no approvals at all: no key.
const withItems = (items, approvals, body) =>
  withRegistry(
    Object.fromEntries(
      ['HKCU', 'HKLM'].flatMap((hive) => [
        [run(hive), items[hive] ?? null],
        [approved(hive), approvals[hive] ?? null],
      ]),
    ),
    body,
  );

test('which values are items, and which approvals switch them off', () => {
  const bytes = (count) => `hex:${Array(count).fill('03').join()}`;
  // [name, data, the command: undefined if it is no item, approval, on]
  const rows = [
    ['Žluť', 'expand:%windir%\\Příliš.exe', '%windir%\\Příliš.exe'],
    ['no final NUL', 'hex(1):78,00', 'x'],
    ['empty', '""'],
    ['number', 'dword:00000001'],
    ['just fits', registryText('x'.repeat(511)), 'x'.repeat(511)],
    ['too long', registryText('x'.repeat(512))],
    ['n'.repeat(255), '"longest name"', 'longest name'],
    ['n'.repeat(256), '"name too long"'],
    ['off', '"b.exe"', 'b.exe', 'hex:03,01,02', false],
    ['on', '"c.exe"', 'c.exe', kOn],
    ['approval just fits', '"e.exe"', 'e.exe', bytes(256), false],
    ['approval too long', '"f.exe"', 'f.exe', bytes(257)],
    ['half a character \ud800', '"g.exe"', 'g.exe'],
  ];
  const column = (i) => Object.fromEntries(rows.filter((row) => row[i]).map((row) => [row[0], row[i]]));
  const items = { HKCU: column(1), HKLM: { off: '"b.exe"' } };
  return withItems(items, { HKCU: column(3) }, () =>
    withVarnel({ page: false }, async (app) => {
      const read = async () => (await app.request('getStartupItems')).items;
      const shown = (await read()).map((item) =>
        [item.scope, item.name, item.command, item.enabled].join('|'),
      );
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

test('items are switched for the user, and for everybody by the service', () => {
  const star = registryText('C:\\Program Files\\Hvězdář\\TeamsBridge.exe --quiet');
  const kite = 'expand:"%LOCALAPPDATA%\\Kite\\kite sync.exe" /tray';
  const user = { Hvězdář: star, 'Kite Sync': kite, Notes: '"C:\\\\windows\\\\notepad.exe"' };
  return withItems({ HKCU: user, HKLM: { Žárovka: '"C:\\\\lamp updater.exe"' } }, {}, () =>
    withVarnel({ settings: { theme: 'amethyst', language: 'cs' } }, async (app) => {
      const { page, text } = app;
      const switchOf = (name) => page.getByRole('switch', { name: text('startup.switch', { name }) });
      const isOn = (name, on) =>
        switchOf(name)
          .and(page.locator(`[aria-checked=${on}]:enabled`))
          .waitFor();
      const says = (key, name, reason) => {
        const said = text(key, { name, reason: reason && text(reason) });
        return toastOf(page, said, reason ? 'alert' : 'status').waitFor();
      };
      const stored = (hive) => readRegistry(approved(hive));
      await openView(page, 'startup');
      await page.getByText(text('startup.missing')).nth(1).waitFor();
      const shown = (await rowsOf(page, /./)).map(([name, , impact, scope]) => [
        name.split(/\s\s|\n/)[0],
        impact,
        scope,
      ]);
      const [mine, everyone] = [text('startup.user'), text('startup.machine')];
      assert.deepEqual(shown, [
        ['Hvězdář', text('startup.high'), mine],
        ['Kite Sync', text('startup.medium'), mine],
        ['Žárovka', text('startup.medium'), everyone],
        ['Notes', text('startup.low'), mine],
      ]);

      // Without the list of approved items nothing can be stored, and none is made.
      await switchOf('Hvězdář').click();
      await says('startup.offFailed', 'Hvězdář', 'startup.noList');
      await isOn('Hvězdář', true);
      assert.equal(await stored('HKCU'), undefined);

      // Off, as another program has left it, and on again; by keyboard.
      await writeRegistry({ [approved('HKCU')]: { 'Kite Sync': 'hex:07,00,00,00,11,22,33,44,55,66,77,88' } });
      await page.keyboard.press('F5');
      await isOn('Kite Sync', false);
      await switchOf('Kite Sync').press('Space');
      await isOn('Kite Sync', true);
      await switchOf('Hvězdář').click();
      await isOn('Hvězdář', false);
      await look(app, 'startup-after-amethyst-cs');
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOn, Hvězdář: kOff });
      const toast = page.locator('.toast', { hasText: text('startup.off', { name: 'Hvězdář' }) });
      await press(toast, text('app.undo'));
      await isOn('Hvězdář', true);
      for (const name of ['Hvězdář', 'Kite Sync']) await tick(page, /./, name);
      await press(page, text('startup.turnOff', { n: 2 }));
      await toastOf(page, text('startup.offSome', { n: 2 })).waitFor();
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOff, Hvězdář: kOff });
      const kept = Object.keys(await readRegistry(run('HKCU')));
      assert.deepEqual(kept, Object.keys(user), 'switching deletes nothing');

      // The service switches what is everybody's, and what it did is looked at.
      await switchOf('Žárovka').click();
      await closeServiceDialog(page);
      await says('startup.offFailed', 'Žárovka', 'startup.needsService');
      await isOn('Žárovka', true);
      await app.startService({ '*': { reply: { success: true } } });
      await switchOf('Žárovka').click();
      await says('startup.offFailed', 'Žárovka', 'startup.notStored');
      await writeRegistry({ [approved('HKLM')]: { Žárovka: kOff } });
      await switchOf('Žárovka').click();
      await isOn('Žárovka', false);
      const data = { name: 'Žárovka', enable: false };
      const requests = await asked(app, 'toggleHKLMStartup');
      assert.deepEqual(requests, Array(2).fill({ action: 'toggleHKLMStartup', data }));
    }),
  );
});
