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
  const of = (hive, column) =>
    Object.fromEntries(
      rows.filter((row) => row[0] === hive && row[column]).map((row) => [row[1], row[column]]),
    );
  const both = (column) => ({ HKCU: of('HKCU', column), HKLM: of('HKLM', column) });
  return withItems(both(2), both(4), () =>
    withVarnel({ page: false }, async (app) => {
      const { items } = await app.request('getStartupItems');
      assert.deepEqual(
        items.map(({ scope, name, command, enabled }) => `${scope}|${name}|${command}|${enabled}`).toSorted(),
        rows
          .filter((row) => row[3] !== undefined)
          .map(
            ([hive, name, , command, , on = true]) =>
              `${hive}|${name.replace('\ud800', '\ufffd')}|${command}|${on}`,
          )
          .toSorted(),
      );
      assert.deepEqual(
        items.map(({ scope }) => scope),
        items.map(({ scope }) => scope).toSorted(),
        'the items of the user come first',
      );
      const toggle = (scope) => app.posted('toggleStartupItem', { scope, name: 'on', enabled: false });
      const [refused] = await toggle('hkcu');
      assert.equal(refused.success, false, 'another scope is nobody, and the service is not even looked for');
      assert.equal((await readRegistry(approved('HKCU'))).on, kOn);
    }),
  );
});

test('items are switched for the user, and for everybody by the service', () => {
  const kStar = 'C:\\Program Files\\Hvězdář\\TeamsBridge.exe --quiet';
  const kKite = '"%LOCALAPPDATA%\\Kite\\kite sync.exe" /tray';
  const user = {
    Hvězdář: registryText(kStar),
    'Kite Sync': `expand:${kKite}`,
    Notes: '"C:\\\\windows\\\\notepad.exe"',
  };
  const machine = {
    Notes: '"C:\\\\Tools\\\\notes.exe -everyone"',
    Žárovka: '"C:\\\\Tools\\\\lamp updater.exe"',
  };
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
      const says = (key, name, reason) =>
        toastOf(
          page,
          text(key, { name, reason: reason && text(reason) }),
          reason ? 'alert' : 'status',
        ).waitFor();
      const stored = (hive) => readRegistry(approved(hive));
      await openView(page, 'startup');
      const gone = text('startup.missing');
      await page.getByText(gone).nth(2).waitFor();
      assert.deepEqual(
        (await rowsOf(page, /./)).map(([name, on, impact, scope, command]) => [
          name.replace(/\s*\n\s*/, ', '),
          on,
          impact,
          scope,
          command,
        ]),
        [
          [`Hvězdář, ${gone}`, 'high', 'user', kStar],
          ['Kite Sync', 'medium', 'user', kKite],
          [`Žárovka, ${gone}`, 'medium', 'machine', 'C:\\Tools\\lamp updater.exe'],
          ['Notes', 'low', 'user', 'C:\\windows\\notepad.exe'],
          [`Notes, ${gone}`, 'low', 'machine', 'C:\\Tools\\notes.exe -everyone'],
        ].map(([name, impact, scope, command]) => [
          name,
          'true',
          text(`startup.${impact}`),
          text(`startup.${scope}`),
          command,
        ]),
      );

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
      assert.ok(
        await switchOf('Kite Sync').evaluate((one) => one === document.activeElement),
        'the focus stays',
      );
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOn });

      await switchOf('Hvězdář').click();
      await says('startup.off', 'Hvězdář');
      await isOn('Hvězdář', false);
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOn, Hvězdář: kOff });
      await look(app, 'startup-after-amethyst-cs');
      await press(
        page.locator('.toast', { hasText: text('startup.off', { name: 'Hvězdář' }) }),
        text('app.undo'),
      );
      await isOn('Hvězdář', true);
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOn, Hvězdář: kOn });
      assert.deepEqual(
        Object.keys(await readRegistry(run('HKCU'))),
        Object.keys(user),
        'switching deletes nothing',
      );

      // Several at once.
      for (const name of ['Hvězdář', 'Kite Sync']) await tick(page, /./, name);
      await press(page, text('startup.turnOff', { n: 2 }));
      await toastOf(page, text('startup.offSome', { n: 2 })).waitFor();
      assert.deepEqual(await stored('HKCU'), { 'Kite Sync': kOff, Hvězdář: kOff });

      // The service switches what is everybody's, in its own time, and what it did is looked at.
      const [lamp, notes] = ['Žárovka', 'Notes'].map((name) => [name, 'startup.machine']);
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
      await switchOf(...notes).click();
      await says('startup.offFailed', 'Notes', 'startup.notStored');
      await isOn('Notes', true, 'startup.machine');
      assert.deepEqual(
        (await requests()).map(({ data }) => data),
        [
          { name: 'Žárovka', enable: false },
          { name: 'Notes', enable: false },
        ],
      );
      assert.equal(
        (await stored('HKCU')).Notes,
        undefined,
        'the item of the user with the same name is not meant',
      );
    }),
  );
});
