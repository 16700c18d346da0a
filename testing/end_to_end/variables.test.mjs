// Environment variables, looked at in the registry.
import assert from 'node:assert/strict';
import { existsSync, writeFileSync } from 'node:fs';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { readRegistry, registryText, unixPath, withRegistry, writeRegistry } from './wine.mjs';

const { asked, closeServiceDialog, dialogOf, openView, press, rowsOf, toastOf, withVarnel } = harness;

const kUser = 'HKCU\\Environment';
const kMachine = 'HKLM\\System\\CurrentControlSet\\Control\\Session Manager\\Environment';
const stored = async (key, name) => (await readRegistry(key))[name];

// --- the host ----------------------------------------------------------------------------------------------

test('every variable that fits is listed, whatever its type and name', () => {
  const longest = 'x'.repeat(16382); // with its NUL 32,766 bytes
  const values = {
    Čeština: [registryText('žluť'), 'žluť'],
    EXPAND: ['expand:%Path%;x', '%Path%;x'],
    EMPTY: [registryText(''), ''],
    NUMBER: ['dword:00000007', ''],
    LIST: ['hex(7):61,00,00,00,00,00', ''],
    'no final NUL': ['hex(1):61,00,62,00', 'ab'],
    ['N'.repeat(300)]: [registryText('long name'), 'long name'],
    FITS: [registryText(longest), longest],
    LONG: [registryText(`${longest}x`)], // left out
    'V\udc00': [registryText('after these'), 'after these', 'V\ufffd'],
  };
  const of = (what) => Object.fromEntries(Object.entries(values).map(what));
  return withRegistry({ [kUser]: of(([name, [data]]) => [name, data]) }, () =>
    withVarnel({ page: false }, async (app) => {
      const want = JSON.stringify(of(([name, [, value, shown = name]]) => [shown, value]));
      assert.deepEqual((await app.request('getEnvVariables')).user, JSON.parse(want)); // without what has no value
    }),
  );
});

// --- the story ---------------------------------------------------------------------------------------------

const row = (page, name, scope) =>
  page
    .locator('tbody tr')
    .filter({ has: page.getByRole('gridcell', { name, exact: true }) })
    .filter({ hasText: scope });
// Runs `body` with the tab of variables; `named` gives a dialog of the page by the key of its title.
const withVariables = (keys, body) => {
  // Without a hosts file, the first tab, the service would be asked for it.
  const hosts = unixPath('C:\\Windows\\System32\\drivers\\etc\\hosts');
  if (!existsSync(hosts)) writeFileSync(hosts, '127.0.0.1 localhost\r\n');
  return withRegistry(keys, () =>
    withVarnel({ language: 'cs' }, async (app) => {
      await openView(app.page, 'developer');
      await app.page.click('[data-tab=variables]');
      await app.page.locator('tbody tr').first().waitFor();
      await body(app, app.page, (key, values) => dialogOf(app.page, app.text(key, values)));
    }),
  );
};

test('variables of the user: added, changed, deleted, and stored as text that Windows expands', () =>
  withVariables(
    { [kUser]: { TEMP: registryText('C:\\Old'), TMP: registryText('C:\\Old') } },
    async (app, page, named) => {
      const mine = app.text('variables.user');
      const save = app.text('variables.save');
      const listed = await rowsOf(page, app.text('developer.variables'));
      assert.equal(listed.length, Object.keys(await readRegistry(kMachine)).length + 2);

      // A new one; names that cannot be are refused as they are typed.
      await press(page, app.text('variables.add'));
      const adding = await named('variables.add');
      const name = adding.getByLabel(app.text('app.name'));
      await name.fill('temp');
      await adding.getByRole('alert').getByText(app.text('variables.exists')).waitFor();
      assert.ok(await adding.getByRole('button', { name: save }).isDisabled());
      await name.fill('Žluťoučký kůň');
      await page.keyboard.press('Tab');
      await page.keyboard.press('Tab');
      await page.keyboard.type('%USERPROFILE%\\Ďábelské "ódy"');
      await press(adding, save);
      await toastOf(page, app.text('variables.saved', { name: 'Žluťoučký kůň' })).waitFor();
      assert.equal(await stored(kUser, 'Žluťoučký kůň'), 'expand:%USERPROFILE%\\Ďábelské "ódy"');

      // What another program has written since it was shown is not lost without a word.
      await row(page, 'TEMP', mine).dblclick();
      const changing = await dialogOf(page, `TEMP (${mine})`);
      await writeRegistry({ [kUser]: { TEMP: registryText('C:\\Installed') } });
      await changing.getByLabel(app.text('variables.value')).fill('C:\\Mine');
      await page.keyboard.press('Escape');
      await press(await named('hosts.discardTitle'), app.text('app.cancel'));
      await press(changing, save);
      const overwrite = await named('variables.changed', { name: 'TEMP' });
      await overwrite.getByText('C:\\Installed').waitFor();
      await press(overwrite, app.text('app.cancel'));
      assert.equal(await stored(kUser, 'TEMP'), registryText('C:\\Installed'));
      await press(changing, save);
      await press(await named('variables.changed', { name: 'TEMP' }), app.text('hosts.overwrite'));
      await changing.waitFor({ state: 'detached' });
      assert.equal(await stored(kUser, 'TEMP'), 'expand:C:\\Mine');

      // Deleted after a question, also one that is gone already.
      for (const one of ['Žluťoučký kůň', 'TMP', 'TEMP']) {
        const box = row(page, one, mine).getByRole('checkbox');
        await box.setChecked(one !== 'TEMP');
      }
      const verb = app.text('variables.delete');
      await press(page, verb);
      await press(await named('variables.deleteTitle', { n: 2 }), app.text('app.cancel'));
      const names = Object.keys(await readRegistry(kUser));
      assert.equal(names.length, 3, 'nothing happens before the user agrees');
      await writeRegistry({ [kUser]: { TMP: undefined } });
      await press(page, verb);
      await press(await named('variables.deleteTitle', { n: 2 }), verb);
      for (const one of ['Žluťoučký kůň', 'TMP']) await row(page, one, mine).waitFor({ state: 'detached' });
      assert.deepEqual(await readRegistry(kUser), { TEMP: 'expand:C:\\Mine' });
      const deleted = app.text('variables.deleted', { name: '' }).trim();
      await press(page.locator('.toast', { hasText: deleted }), app.text('app.undo'));
      for (const one of ['Žluťoučký kůň', 'TMP']) await row(page, one, mine).waitFor();
      assert.equal(await stored(kUser, 'Žluťoučký kůň'), 'expand:%USERPROFILE%\\Ďábelské "ódy"');
    },
  ));

test('variables of the machine: not without the service, and with it what it did is shown', () =>
  withVariables({ [kMachine]: undefined }, async (app, page, named) => {
    const save = app.text('variables.save');
    const everyone = app.text('variables.system');
    await row(page, 'OS', everyone).dblclick();
    const machine = await dialogOf(page, `OS (${everyone})`);
    const text = machine.getByLabel(app.text('variables.value'));
    await text.fill('Žádný %windir%');
    await press(machine, save);
    await closeServiceDialog(page);
    const failed = app.text('variables.failed', { name: 'OS', reason: app.text('variables.needsService') });
    await machine.getByRole('alert').getByText(failed).waitFor();
    assert.equal(await text.inputValue(), 'Žádný %windir%', 'what was typed stays');
    await app.startService({ save_system_env: { chunks: [{ delay_ms: 2500, reply: { success: true } }] } });
    await press(machine, save);
    await app.until(async () => (await asked(app, 'save_system_env')).length, 'the request to the service');
    await writeRegistry({ [kMachine]: { OS: registryText('Žádný') } });
    await machine.waitFor({ state: 'detached' });
    await row(page, 'OS', everyone).getByText('Žádný').waitFor();
    await app.scriptService({ save_system_env: { reply: { success: false } } });
    await row(page, 'OS', everyone).click({ button: 'right' });
    await page.getByRole('menuitem', { name: app.text('variables.delete') }).click();
    await press(await named('variables.deleteTitle', { n: 1 }), app.text('variables.delete'));
    await toastOf(page, failed, 'alert').waitFor();
    assert.deepEqual(
      (await asked(app, 'save_system_env')).map(({ data }) => [data.name, data.value, data.is_delete]),
      [
        ['OS', 'Žádný %windir%', false],
        ['OS', '', true],
      ],
    );
  }));
