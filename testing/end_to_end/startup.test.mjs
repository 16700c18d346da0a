// What starts after sign-in: the registry's limits, and items switched through the page.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import {
  asked,
  closeServiceDialog,
  look,
  openView,
  press,
  rowsOf,
  tick,
  toastOf,
  withVarnel,
} from './harness.mjs';
import { readRegistry, registryText, withRegistry, writeRegistry } from './wine.mjs';

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

const hex = (bytes, type = '') =>
  `hex${type}:${Buffer.from(bytes)
    .toString('hex')
    .replace(/..(?!$)/g, '$&,')}`;
const utf16 = (text, type = '(1)') => hex(Buffer.from(text, 'utf16le'), type);

test('which values are items, and which approvals switch them off', () => {
  // [hive, name, data, the command: undefined if it is no item, approval, on]
  const rows = [
    ['HKLM', 'plain', registryText('C:\\Tools\\notes.exe'), 'C:\\Tools\\notes.exe'],
    ['HKLM', 'Žluť ďábel', 'expand:%windir%\\Příliš.exe', '%windir%\\Příliš.exe'],
    ['HKLM', 'no final NUL', utf16('x'), 'x'],
    ['HKLM', 'empty', '""'],
    ['HKLM', 'number', 'dword:00000001'],
    ['HKLM', 'list', utf16('a\0\0', '(7)')],
    ['HKLM', 'just fits', utf16(`${'x'.repeat(511)}\0`), 'x'.repeat(511)],
    ['HKLM', 'too long', utf16(`${'x'.repeat(512)}\0`)],
    ['HKLM', 'n'.repeat(255), '"longest name"', 'longest name'],
    ['HKLM', 'n'.repeat(256), '"name too long"'],
    ['HKLM', 'off for the machine', '"a.exe"', 'a.exe', hex([3]), false],
    ['HKCU', 'off for the machine', '"a.exe"', 'a.exe'],
    ['HKCU', 'off', '"b.exe"', 'b.exe', hex([3, 1, 2]), false],
    ['HKCU', 'on', '"c.exe"', 'c.exe', kOn],
    ['HKCU', 'no bytes', '"d.exe"', 'd.exe', '"\u0303"'],
    ['HKCU', 'approval just fits', '"e.exe"', 'e.exe', hex(Array(256).fill(3)), false],
    ['HKCU', 'approval too long', '"f.exe"', 'f.exe', hex(Array(257).fill(3))],
    ['HKCU', 'half a character \ud800', '"g.exe"', 'g.exe'],
  ];
  const both = (column) =>
    Object.fromEntries(
      ['HKCU', 'HKLM'].map((hive) => {
        const mine = rows.filter((row) => row[0] === hive && row[column]);
        return [hive, Object.fromEntries(mine.map((row) => [row[1], row[column]]))];
      }),
    );
  return withItems(both(2), both(4), () =>
    withVarnel({ page: false }, async (app) => {
      const { items } = await app.request('getStartupItems');
      const want = rows
        .filter(([, , , command]) => command !== undefined)
        .map(([scope, name, , command, , enabled = true]) =>
          [scope, name.replace('\ud800', '\ufffd'), command, enabled].join('|'),
        );
      const got = items.map((item) => [item.scope, item.name, item.command, item.enabled].join('|'));
      assert.deepEqual(got.toSorted(), want.toSorted());
      const scopes = items.map(({ scope }) => scope);
      assert.deepEqual(scopes, scopes.toSorted(), 'the items of the user come first');
      const toggle = { scope: 'hkcu', name: 'on', enabled: false };
      const [refused] = await app.posted('toggleStartupItem', toggle);
      assert.equal(refused.success, false, 'another scope is nobody, and the service is not even looked for');
      assert.equal((await readRegistry(approved('HKCU'))).on, kOn);
    }),
  );
});

test('items are switched for the user, and for everybody by the service', () => {
  const kStar = registryText('C:\\Program Files\\Hvězdář\\TeamsBridge.exe --quiet');
  const kKite = 'expand:"%LOCALAPPDATA%\\Kite\\kite sync.exe" /tray';
  const user = { Hvězdář: kStar, 'Kite Sync': kKite, Notes: '"C:\\\\windows\\\\notepad.exe"' };
  const machine = { Notes: '"C:\\\\notes.exe -everyone"', Žárovka: '"C:\\\\lamp updater.exe"' };
  return withItems({ HKCU: user, HKLM: machine }, {}, () =>
    withVarnel({ settings: { theme: 'amethyst', language: 'cs' } }, async (app) => {
      const { page, text } = app;
      const switchOf = (name, scope = 'startup.user') =>
        page
          .locator('tbody tr', { hasText: text(scope) })
          .getByRole('switch', { name: text('startup.switch', { name }) });
      const isOn = (name, want, scope) =>
        app.until(async () => {
          const one = switchOf(name, scope);
          return (await one.getAttribute('aria-checked')) === String(want) && (await one.isEnabled());
        }, `${name} to be ${want}`);
      const says = (key, name, reason) => {
        const said = text(key, { name, reason: reason && text(reason) });
        return toastOf(page, said, reason ? 'alert' : 'status').waitFor();
      };
      const stored = (hive) => readRegistry(approved(hive));
      await openView(page, 'startup');
      const gone = text('startup.missing');
      await page.getByText(gone).nth(2).waitFor();
      const shown = (await rowsOf(page, /./)).map(([name, , impact, scope]) => `${name} ${impact} ${scope}`);
      const row = (name, impact, scope, missing) =>
        [name, missing, text(`startup.${impact}`), text(`startup.${scope}`)].filter(Boolean).join(' ');
      const want = [
        row('Hvězdář', 'high', 'user', gone),
        row('Kite Sync', 'medium', 'user'),
        row('Žárovka', 'medium', 'machine', gone),
        row('Notes', 'low', 'user'),
        row('Notes', 'low', 'machine', gone),
      ];
      const plain = (texts) => texts.map((words) => words.replaceAll(/\s+/g, ' '));
      assert.deepEqual(plain(shown), plain(want));

      // Without the list of approved items nothing can be stored, and none is made.
      await switchOf('Hvězdář').click();
      await says('startup.offFailed', 'Hvězdář', 'startup.noList');
      await isOn('Hvězdář', true);
      assert.equal(await stored('HKCU'), undefined);

      // Off, as another program has left it, and on again; by keyboard.
      await writeRegistry({ [approved('HKCU')]: { 'Kite Sync': 'hex:07,00,00,00,11,22,33,44,55,66,77,88' } });
      await page.keyboard.press('F5');
      await isOn('Kite Sync', false);
      await switchOf('Kite Sync').focus();
      await page.keyboard.press('Space');
      await says('startup.on', 'Kite Sync');
      await isOn('Kite Sync', true);
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOn });

      await switchOf('Hvězdář').click();
      await says('startup.off', 'Hvězdář');
      await isOn('Hvězdář', false);
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOn, Hvězdář: kOff });
      await look(app, 'startup-after-amethyst-cs');
      const off = text('startup.off', { name: 'Hvězdář' });
      await press(page.locator('.toast', { hasText: off }), text('app.undo'));
      await isOn('Hvězdář', true);
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOn, Hvězdář: kOn });
      const kept = Object.keys(await readRegistry(run('HKCU')));
      assert.deepEqual(kept, Object.keys(user), 'switching deletes nothing');

      // Several at once.
      for (const name of ['Hvězdář', 'Kite Sync']) await tick(page, /./, name);
      await press(page, text('startup.turnOff', { n: 2 }));
      await toastOf(page, text('startup.offSome', { n: 2 })).waitFor();
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOff, Hvězdář: kOff });

      // The service switches what is everybody's, in its own time, and what it did is looked at.
      const lamp = ['Žárovka', 'startup.machine'];
      await switchOf(...lamp).click();
      await closeServiceDialog(page);
      await says('startup.offFailed', 'Žárovka', 'startup.needsService');
      await isOn('Žárovka', true, 'startup.machine');
      await app.startService({ '*': { chunks: [{ delay_ms: 3000, reply: { success: true } }] } });
      await switchOf(...lamp).click();
      const requests = () => asked(app, 'toggleHKLMStartup');
      await app.until(async () => (await requests()).length === 1, 'the request to the service');
      assert.ok(await switchOf(...lamp).isDisabled());
      await writeRegistry({ [approved('HKLM')]: { Žárovka: kOff } });
      await says('startup.off', 'Žárovka');
      await isOn('Žárovka', false, 'startup.machine');
      await app.scriptService({ '*': { reply: { success: true } } });
      await switchOf(...lamp).click();
      await says('startup.onFailed', 'Žárovka', 'startup.notStored');
      await isOn('Žárovka', false, 'startup.machine');
      const enable = (await requests()).map(({ data }) => data.enable);
      assert.deepEqual([enable, (await requests())[0].data.name], [[false, true], 'Žárovka']);
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOff, Hvězdář: kOff });
    }),
  );
});
