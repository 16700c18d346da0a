// Environment variables through the page, looked at in the registry.
import assert from 'node:assert/strict';
import { mkdir } from 'node:fs/promises';
import { join } from 'node:path';
import { test } from 'node:test';

import { checkAccessibility, closeServiceDialog, openView, screenshot, withVarnel } from './harness.mjs';
import { makeFolder, prepareWine, readRegistry, runInPrefix } from './wine.mjs';

const kUser = 'HKCU\\Environment';
const kMachine = 'HKLM\\System\\CurrentControlSet\\Control\\Session Manager\\Environment';

const reg = async (...args) =>
  assert.equal((await runInPrefix('reg', [...args, '/f'])).code, 0, args.join(' '));
const set = (key, name, data, type = 'REG_SZ') => reg('add', key, '/v', name, '/t', type, '/d', data);
const stored = async (key, name) => (await readRegistry(key))[name];

const grid = (page) => page.getByRole('grid', { name: /^(Environment variables|Proměnné prostředí)$/ });
const row = (page, name, scope) =>
  grid(page)
    .locator('tbody tr')
    .filter({ has: page.getByRole('gridcell', { name, exact: true }) })
    .filter({ hasText: scope });
const rows = (page) =>
  grid(page)
    .locator('tbody tr')
    .evaluateAll((all) => all.map((one) => [...one.cells].slice(1).map((cell) => cell.innerText)));
const press = (scope, name) => scope.getByRole('button', { name, exact: true }).click();
const toastOf = (page, text, role = 'status') => page.locator('.toasts').getByRole(role).getByText(text);
const saves = (app) =>
  app.messages.filter(({ type }) => type === 'saveEnvVariable').map(({ success }) => success);
const entries = (dialog) =>
  dialog
    .locator('.entries li')
    .evaluateAll((all) =>
      all.map((one) => [
        one.querySelector('input').value,
        ...[...one.querySelectorAll('.tag')].map((tag) => tag.innerText),
      ]),
    );

async function dialogOf(page, name) {
  const dialog = page.getByRole('dialog', { name, exact: true });
  await dialog.waitFor();
  return dialog;
}

async function openVariables(page) {
  await openView(page, 'developer');
  await page.getByRole('tab', { name: /^(Environment variables|Proměnné prostředí)$/ }).click();
  await grid(page).locator('tbody tr').first().waitFor();
}

// The keys as they were before, whatever the test does to them.
async function withVariables(body) {
  await prepareWine();
  const kept = await makeFolder('kept-');
  const files = [kUser, kMachine].map((key, i) => [key, `${kept.windows}\\${i}.reg`]);
  for (const [key, file] of files)
    assert.equal((await runInPrefix('reg', ['export', key, file, '/y'])).code, 0);
  try {
    await body();
  } finally {
    for (const [key, file] of files) {
      await reg('delete', key);
      assert.equal((await runInPrefix('reg', ['import', file])).code, 0);
    }
    await kept.remove();
  }
}

test('variables of the user: added, changed, deleted, and stored as text that Windows expands', () =>
  withVariables(async () => {
    await set(kUser, 'Number', '7', 'REG_DWORD');
    await withVarnel({ settings: { theme: 'amethyst', language: 'cs' } }, async (app) => {
      const { page } = app;
      await openVariables(page);
      const before = await readRegistry(kUser);
      const listed = await rows(page);
      assert.deepEqual(
        listed
          .filter(([, scope]) => scope === 'jen pro vás')
          .map(([name]) => name)
          .sort(),
        Object.keys(before).sort(),
      );
      assert.deepEqual(
        listed.find(([name]) => name === 'Number'),
        ['Number', 'jen pro vás', ''],
        'what is no text has none',
      );
      assert.deepEqual(
        listed
          .filter(([, scope]) => scope === 'celý počítač')
          .map(([name]) => name)
          .sort(),
        Object.keys(await readRegistry(kMachine)).sort(),
      );
      await checkAccessibility(page);
      await screenshot(page, 'variables-ready-amethyst-cs');

      // A new one, by the keyboard; names that cannot be are refused as they are typed.
      await press(page, 'Přidat proměnnou');
      const adding = await dialogOf(page, 'Přidat proměnnou');
      const save = adding.getByRole('button', { name: 'Uložit' });
      assert.ok(await adding.getByLabel('Název').evaluate((one) => one === document.activeElement));
      for (const [name, fault] of [
        ['a=b', 'Název nesmí obsahovat znak =.'],
        ['temp', 'Taková proměnná už existuje.'],
      ]) {
        await adding.getByLabel('Název').fill(name);
        await adding.getByRole('alert').getByText(fault).waitFor();
        assert.ok(await save.isDisabled());
      }
      await checkAccessibility(page);
      await screenshot(page, 'variables-adding-amethyst-cs');
      await adding.getByLabel('Název').fill('Žluťoučký kůň');
      await page.keyboard.press('Tab');
      await page.keyboard.press('Tab');
      await page.keyboard.type('%USERPROFILE%\\Ďábelské "ódy"');
      await save.click();
      await toastOf(page, 'Proměnná Žluťoučký kůň uložena').waitFor();
      assert.equal(await stored(kUser, 'Žluťoučký kůň'), 'expand:%USERPROFILE%\\Ďábelské "ódy"');
      await row(page, 'Žluťoučký kůň', 'jen pro vás').waitFor();

      // Changed: one that was plain text is stored as the kind that Windows expands.
      assert.match(await stored(kUser, 'TEMP'), /^"C:/);
      await row(page, 'TEMP', 'jen pro vás').dblclick();
      const changing = await dialogOf(page, 'TEMP (jen pro vás)');
      assert.ok(await changing.getByRole('button', { name: 'Uložit' }).isDisabled(), 'nothing to save yet');
      await changing.getByLabel('Hodnota').fill('C:\\Dočasné');
      await press(changing, 'Uložit');
      await changing.waitFor({ state: 'detached' });
      assert.equal(await stored(kUser, 'TEMP'), 'expand:C:\\Dočasné');

      // What another program has written since it was shown is not lost without a word.
      await row(page, 'TEMP', 'jen pro vás').click();
      await page.keyboard.press('Enter');
      await set(kUser, 'TEMP', 'C:\\Installed');
      await changing.getByLabel('Hodnota').fill('C:\\Mine');
      await press(changing, 'Uložit');
      const asked = await dialogOf(page, 'Proměnnou TEMP mezitím někdo změnil');
      await asked.getByText('C:\\Installed').waitFor();
      await checkAccessibility(page);
      await screenshot(page, 'variables-changed-amethyst-cs');
      await press(asked, 'Zrušit');
      assert.equal(await stored(kUser, 'TEMP'), '"C:\\\\Installed"');
      await press(changing, 'Uložit');
      await press(await dialogOf(page, 'Proměnnou TEMP mezitím někdo změnil'), 'Přepsat');
      await changing.waitFor({ state: 'detached' });
      assert.equal(await stored(kUser, 'TEMP'), 'expand:C:\\Mine');

      // Deleted after a question, also one that is gone already.
      const saved = saves(app).length;
      for (const name of ['Žluťoučký kůň', 'TMP'])
        await row(page, name, 'jen pro vás').getByRole('checkbox').setChecked(true);
      await row(page, 'TEMP', 'jen pro vás').getByRole('checkbox').setChecked(false);
      await press(page, 'Smazat');
      const doomed = await dialogOf(page, 'Smazat 2 proměnné?');
      assert.deepEqual((await doomed.getByRole('listitem').allInnerTexts()).sort(), [
        'TMP (jen pro vás)',
        'Žluťoučký kůň (jen pro vás)',
      ]);
      await checkAccessibility(page);
      await page.keyboard.press('Escape');
      await doomed.waitFor({ state: 'detached' });
      assert.equal(saves(app).length, saved, 'nothing happens before the user agrees');
      await reg('delete', kUser, '/v', 'TMP');
      await press(page, 'Smazat');
      await press(doomed, 'Smazat');
      await row(page, 'Žluťoučký kůň', 'jen pro vás').waitFor({ state: 'detached' });
      await row(page, 'TMP', 'jen pro vás').waitFor({ state: 'detached' });
      assert.deepEqual(saves(app).slice(saved), [true, true]);
      assert.deepEqual(
        Object.keys(await readRegistry(kUser)).sort(),
        Object.keys(before)
          .filter((name) => name !== 'TMP')
          .sort(),
      );
    });
  }));

test('a list of folders: order, missing ones, its text; and the machine through the service', () =>
  withVariables(async () => {
    const folder = await makeFolder('Nástroje ž-');
    const name = folder.windows.slice(3);
    await mkdir(join(folder.unix, 'bin'));
    await mkdir(join(folder.unix, 'empty'));
    const path = [
      `%varnel_tools%\\bin`,
      `${folder.windows}\\gone`,
      `"C:\\${name.toUpperCase()}\\BIN\\"`,
      '',
      `${folder.windows}\\empty\\x`,
      '%NO_SUCH%\\bin',
      'Q:\\bin',
    ].join(';');
    await set(kUser, 'Path', path, 'REG_EXPAND_SZ');
    await set(kUser, 'VARNEL_TOOLS', folder.windows);
    try {
      await withVarnel(
        { settings: { theme: 'light', language: 'en' }, viewport: { width: 1250, height: 700 } },
        async (app) => {
          const { page } = app;
          await openVariables(page);
          await row(page, 'Path', 'only you').dblclick();
          const dialog = await dialogOf(page, 'Path (only you)');
          // An empty folder may as well be closed to the user, a name or a drive unknown: only what is certain is marked.
          const want = (...marks) =>
            path.split(';').map((entry, i) => (marks[i] ? [entry, marks[i]] : [entry]));
          await app.waitUntilShown(
            async () => (await entries(dialog))[1].length === 2,
            'the missing folder to be marked',
          );
          assert.deepEqual(
            await entries(dialog),
            want(undefined, 'not on the disk', undefined, undefined, undefined),
          );
          await checkAccessibility(page);
          await screenshot(page, 'variables-list-light-en');

          // Moved twice with the keyboard: the focus goes along.
          await dialog.getByRole('button', { name: 'Move entry 3 up' }).focus();
          await page.keyboard.press('Enter');
          await page.keyboard.press('Enter');
          const [first, gone, third, empty, ...rest] = path.split(';');
          assert.deepEqual(
            (await entries(dialog)).map(([entry]) => entry),
            [third, first, gone, empty, ...rest],
          );
          await press(dialog, 'Remove entry 4');
          await press(dialog, 'Add an entry');
          await page.keyboard.type('C:\\added; "one; field"');
          assert.deepEqual(
            (await entries(dialog)).slice(-2).map(([entry]) => entry),
            ['C:\\added', ' "one; field"'],
            'a semicolon divides',
          );
          const text = [third, first, gone, ...rest, 'C:\\added; "one; field"'].join(';');
          await press(dialog, 'Edit as text');
          assert.equal(await dialog.getByRole('textbox', { name: 'Value' }).inputValue(), text);
          await press(dialog, 'Edit as a list');
          await press(dialog, 'Save');
          await dialog.waitFor({ state: 'detached' });
          assert.equal(await stored(kUser, 'Path'), `expand:${text}`);

          // Variables of the machine: not without the service, and with it what it did is shown.
          await row(page, 'OS', 'this computer').dblclick();
          const machine = await dialogOf(page, 'OS (this computer)');
          await machine.getByLabel('Value').fill('Žádný %windir%');
          await press(machine, 'Save');
          await closeServiceDialog(page);
          await machine
            .getByRole('alert')
            .getByText(
              'The variable OS could not be changed. Variables of the whole computer are changed by the helper service',
            )
            .waitFor();
          await checkAccessibility(page);
          assert.equal(
            await machine.getByLabel('Value').inputValue(),
            'Žádný %windir%',
            'what was typed stays',
          );
          await screenshot(page, 'variables-no-service-light-en');
          await app.startService({
            save_system_env: { chunks: [{ delay_ms: 2500, reply: { success: true } }] },
          });
          await press(machine, 'Save');
          const asked = async () =>
            (await app.serviceRequests())
              .filter(({ action }) => action === 'save_system_env')
              .map(({ data }) => data);
          await app.waitUntilShown(async () => (await asked()).length === 1, 'the request to the service');
          await set(kMachine, 'OS', 'Žádný', 'REG_EXPAND_SZ');
          await machine.waitFor({ state: 'detached' });
          await row(page, 'OS', 'this computer').getByText('Žádný').waitFor();
          await app.scriptService({ save_system_env: { reply: { success: false } } });
          await row(page, 'OS', 'this computer').click({ button: 'right' });
          await page.getByRole('menuitem', { name: 'Delete' }).click();
          await press(await dialogOf(page, 'Delete 1 variable?'), 'Delete');
          await toastOf(
            page,
            'The variable OS could not be changed. Variables of the whole computer are changed by the helper service',
            'alert',
          ).waitFor();
          assert.deepEqual(await asked(), [
            { name: 'OS', value: 'Žádný %windir%', is_delete: false },
            { name: 'OS', value: '', is_delete: true },
          ]);
          await row(page, 'OS', 'this computer').waitFor();
          assert.equal(await stored(kUser, 'OS'), undefined);
        },
      );
    } finally {
      await folder.remove();
    }
  }));
