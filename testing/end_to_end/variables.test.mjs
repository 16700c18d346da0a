// Changes environment variables and checks them in the registry.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { readRegistry, registryText, withRegistry, writeRegistry } from './wine.mjs';

const { closeServiceDialog, dialogOf, openView, press, toastOf, withVarnel } = harness;

const kUser = 'HKCU\\Environment';

// --- the host ---

test('every variable that fits is listed, whatever its type and name', () => {
  const longest = 'x'.repeat(16382); // 32,766 bytes with its NUL
  const values = {
    EXPAND: ['expand:%Path%;x', '%Path%;x'],
    NUMBER: ['dword:00000007', ''],
    LIST: ['hex(7):61,00,00,00,00,00', ''],
    ['N'.repeat(300)]: [registryText('long name'), 'long name'],
    FITS: [registryText(longest), longest],
    LONG: [registryText(`${longest}x`)], // left out
  };
  const of = (what) => Object.fromEntries(Object.entries(values).map(what));
  return withRegistry({ [kUser]: of(([name, [data]]) => [name, data]) }, () =>
    withVarnel({ page: false }, async (app) => {
      const listed = Object.entries((await app.request('getEnvVariables')).user).toSorted();
      const want = Object.entries(values).map(([name, [, value]]) => [name, value]);
      assert.deepEqual(listed, want.filter(([, value]) => value !== undefined).toSorted());
    }),
  );
});

// --- the story ---

test("the program changes the user's variables, and only the service the machine's", () =>
  withRegistry({ [kUser]: { TEMP: registryText('C:\\Old') } }, () =>
    withVarnel({ language: 'cs' }, async (app) => {
      const { page, text } = app;
      const [mine, everyone] = [text('variables.user'), text('variables.system')];
      const [save, cancel, remove] = ['hosts.save', 'app.cancel', 'variables.delete'].map((key) => text(key));
      const answer = async (question, verb) => press(await dialogOf(page, question), verb);
      const stored = async (name) => (await readRegistry(kUser))[name];
      const row = (name, scope) =>
        page
          .locator('tbody tr')
          .filter({ has: page.getByRole('gridcell', { name, exact: true }) })
          .filter({ hasText: scope });
      await openView(page, 'developer');
      await page.click('[data-tab=variables]');

      await press(page, text('variables.add'));
      const adding = await dialogOf(page, text('variables.add'));
      await adding.getByLabel(text('app.name')).fill('Kůň');
      for (const key of ['Tab', 'Tab']) await page.keyboard.press(key);
      await page.keyboard.type('%USERPROFILE%\\Ďábelské "ódy"');
      await press(adding, save);
      await toastOf(page, text('variables.saved', { name: 'Kůň' })).waitFor();
      assert.equal(await stored('Kůň'), 'expand:%USERPROFILE%\\Ďábelské "ódy"');

      // A change by another program since the value was shown is not overwritten silently.
      await row('TEMP', mine).dblclick();
      const changing = await dialogOf(page, `TEMP (${mine})`);
      const changed = text('variables.changed', { name: 'TEMP' });
      await writeRegistry({ [kUser]: { TEMP: registryText('C:\\Installed') } });
      await changing.getByLabel(text('variables.value')).fill('C:\\windows;C:\\gone;C:\\windows');
      await press(changing, text('variables.asList'));
      await press(changing, text('variables.removeUseless', { n: 2 }));
      await press(changing, save);
      await answer(changed, cancel);
      assert.equal(await stored('TEMP'), registryText('C:\\Installed'));
      await press(changing, save);
      await answer(changed, text('hosts.overwrite'));
      await changing.waitFor({ state: 'detached' });
      assert.equal(await stored('TEMP'), 'expand:C:\\windows');

      await row('Kůň', mine).click();
      const question = text('variables.deleteTitle', { n: 1 });
      await press(page, remove);
      await answer(question, cancel);
      assert.ok(await stored('Kůň'), 'nothing happens before the user agrees');
      await press(page, remove);
      await answer(question, remove);
      await row('Kůň', mine).waitFor({ state: 'detached' });
      assert.deepEqual(await readRegistry(kUser), { TEMP: 'expand:C:\\windows' });
      await press(page, text('app.undo'));
      await row('Kůň', mine).waitFor();
      assert.equal(await stored('Kůň'), 'expand:%USERPROFILE%\\Ďábelské "ódy"');

      await row('OS', everyone).dblclick();
      const machine = await dialogOf(page, `OS (${everyone})`);
      await machine.getByLabel(text('variables.value')).fill('Žádný %windir%');
      await press(machine, save);
      await closeServiceDialog(page);
      const failed = text('variables.failed', { name: 'OS', reason: text('variables.needsService') });
      await machine.getByRole('alert').getByText(failed).waitFor();
    }),
  ));
