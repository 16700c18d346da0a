// What starts after sign-in, switched through the page, and the twelve bytes that Windows reads afterwards.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { checkAccessibility, closeServiceDialog, openView, screenshot, withVarnel } from './harness.mjs';
import { prepareWine, readRegistry, runInPrefix } from './wine.mjs';

const kRun = 'Software\\Microsoft\\Windows\\CurrentVersion\\Run';
const kApproved = 'Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run';
const kOn = '02,00,00,00,00,00,00,00,00,00,00,00';
const kOff = '03,00,00,00,00,00,00,00,00,00,00,00';

// [hive, name, command, type]
const kItems = [
  ['HKCU', 'Hvězdář', 'C:\\Program Files\\Hvězdář\\TeamsBridge.exe --quiet', 'REG_SZ'],
  ['HKCU', 'Kite Sync', '"%LOCALAPPDATA%\\Kite\\kite sync.exe" /tray', 'REG_EXPAND_SZ'],
  ['HKCU', 'Quiet notes', 'C:\\Tools\\notes.exe', 'REG_SZ'],
  ['HKCU', 'number', '7', 'REG_DWORD'],
  ['HKLM', 'Quiet notes', 'C:\\Tools\\notes.exe -everyone', 'REG_SZ'],
  ['HKLM', 'Žárovka', 'C:\\Tools\\lamp updater.exe', 'REG_SZ'],
];

async function reg(...args) {
  const { code, stdout } = await runInPrefix('reg', [...args, '/f']);
  assert.equal(code, 0, stdout);
}
const forget = (key) => runInPrefix('reg', ['delete', key, '/f']);
const approve = (hive, name, bytes) =>
  reg('add', `${hive}\\${kApproved}`, '/v', name, '/t', 'REG_BINARY', '/d', bytes.replaceAll(',', ''));
const approved = (hive) => readRegistry(`${hive}\\${kApproved}`);

async function withItems(body) {
  await prepareWine();
  const keys = ['HKCU', 'HKLM'].flatMap((hive) => [`${hive}\\${kRun}`, `${hive}\\${kApproved}`]);
  for (const key of keys) await forget(key);
  try {
    for (const [hive, name, command, type] of kItems)
      await reg('add', `${hive}\\${kRun}`, '/v', name, '/t', type, '/d', command);
    await body();
  } finally {
    for (const key of keys) await forget(key);
  }
}

const rows = (page) =>
  page
    .getByRole('grid')
    .locator('tbody tr')
    .evaluateAll((all) =>
      all.map((one) => {
        const [name, on, impact, scope, command] = one.cells;
        return [
          name.innerText,
          on.querySelector('[role=switch]').ariaChecked,
          impact.innerText,
          scope.innerText,
          command.innerText,
        ];
      }),
    );
const switchOf = (page, name, scope) =>
  page.locator('tbody tr', { hasText: scope }).getByRole('switch', { name });
const isOn = (app, one, want) =>
  app.waitUntilShown(
    async () => (await one.getAttribute('aria-checked')) === String(want) && (await one.isEnabled()),
    `the switch to be ${want}`,
  );
const toastOf = (page, text, role = 'status') =>
  page
    .getByRole('region', { name: /^(Oznámení|Messages|Notifications)$/ })
    .getByRole(role)
    .getByText(text);

test('items of the user: switched, stored, and back by the toast', () =>
  withItems(() =>
    withVarnel(
      {
        settings: { theme: 'amethyst', language: 'cs' },
      },
      async (app) => {
        const { page } = app;
        await openView(page, 'startup');
        await page.getByRole('grid').waitFor();
        assert.deepEqual(await rows(page), [
          ['Hvězdář', 'true', 'vysoký', 'jen pro vás', kItems[0][2]],
          ['Kite Sync', 'true', 'střední', 'jen pro vás', kItems[1][2]],
          ['Žárovka', 'true', 'střední', 'všichni uživatelé', kItems[5][2]],
          ['Quiet notes', 'true', 'nízký', 'jen pro vás', kItems[2][2]],
          ['Quiet notes', 'true', 'nízký', 'všichni uživatelé', kItems[4][2]],
        ]);
        assert.deepEqual(
          await page
            .locator('tbody .tag')
            .evaluateAll((tags) => tags.map((tag) => tag.className.split('-')[1])),
          ['danger', 'warn', 'warn', 'good', 'good'],
        );

        // Without the list of approved items nothing can be stored, and none is made.
        const star = switchOf(page, 'Spouštět Hvězdář po přihlášení', 'jen pro vás');
        await star.click();
        await toastOf(
          page,
          'Hvězdář se nepodařilo vypnout. Windows pro tento účet ještě nevedou seznam',
          'alert',
        ).waitFor();
        await isOn(app, star, true);
        assert.equal(await approved('HKCU'), undefined);
        await screenshot(page, 'startup-refused-amethyst-cs');

        // Off, as another program has left it, and on again; by keyboard.
        await approve('HKCU', 'Kite Sync', '07,00,00,00,11,22,33,44,55,66,77,88');
        await page.keyboard.press('F5');
        const kite = switchOf(page, 'Spouštět Kite Sync po přihlášení', 'jen pro vás');
        await isOn(app, kite, false);
        await kite.focus();
        await page.keyboard.press('Space');
        await isOn(app, kite, true);
        await toastOf(page, 'Kite Sync se zase bude spouštět po přihlášení').waitFor();
        assert.deepEqual(await approved('HKCU'), { 'Kite Sync': `hex:${kOn}` });
        assert.ok(await kite.evaluate((one) => one === document.activeElement), 'the focus stays');

        await star.click();
        await toastOf(page, 'Hvězdář se už po přihlášení nespustí').waitFor();
        assert.deepEqual(await approved('HKCU'), { 'Kite Sync': `hex:${kOn}`, Hvězdář: `hex:${kOff}` });
        await isOn(app, star, false);
        await checkAccessibility(page);
        await screenshot(page, 'startup-after-amethyst-cs');
        await page
          .locator('.toast', { hasText: 'Hvězdář se už' })
          .getByRole('button', { name: 'Vrátit zpět' })
          .click();
        await isOn(app, star, true);
        assert.deepEqual(await approved('HKCU'), { 'Kite Sync': `hex:${kOn}`, Hvězdář: `hex:${kOn}` });
        assert.deepEqual(
          Object.keys(await readRegistry(`HKCU\\${kRun}`)).sort(),
          kItems
            .filter(([hive]) => hive === 'HKCU')
            .map(([, name]) => name)
            .sort(),
          'switching deletes nothing',
        );

        await page.context().grantPermissions(['clipboard-read', 'clipboard-write']);
        await page.getByRole('button', { name: 'Kopírovat příkaz položky Kite Sync' }).click();
        await toastOf(page, 'Zkopírováno do schránky').waitFor();
        assert.equal(await page.evaluate(() => navigator.clipboard.readText()), kItems[1][2]);
      },
    ),
  ));

test('items of the machine: the service switches them, and what it did is looked at', () =>
  withItems(() =>
    withVarnel(
      {
        settings: { theme: 'light', language: 'en' },
        viewport: { width: 1250, height: 700 },
      },
      async (app) => {
        const { page } = app;
        await openView(page, 'startup');
        const lamp = switchOf(page, 'Start Žárovka after sign-in', 'all users');
        await lamp.click();
        await closeServiceDialog(page);
        await toastOf(page, /^Žárovka could not be switched off\./, 'alert').waitFor();
        await isOn(app, lamp, true);
        await screenshot(page, 'startup-no-service-light-en');

        // The service writes in its own time; the switch waits for it.
        const answer = (reply, delay_ms = 0) => ({ toggleHKLMStartup: { chunks: [{ delay_ms, reply }] } });
        await app.startService(answer({ success: true }, 3000));
        const request = (name, enable) => ({ action: 'toggleHKLMStartup', data: { name, enable } });
        const asked = async () =>
          (await app.serviceRequests()).filter(({ action }) => action === 'toggleHKLMStartup');
        await lamp.click();
        await app.waitUntilShown(async () => (await asked()).length === 1, 'the request to the service');
        assert.deepEqual(await asked(), [request('Žárovka', false)]);
        assert.deepEqual([await lamp.getAttribute('aria-checked'), await lamp.isDisabled()], ['false', true]);
        await approve('HKLM', 'Žárovka', kOff);
        await toastOf(page, 'Žárovka will not start after sign-in any more').waitFor();
        await isOn(app, lamp, false);
        assert.deepEqual(await approved('HKLM'), { Žárovka: `hex:${kOff}` });

        // It says yes and has not done it; it says no. The item of the user with the same name is not meant.
        await app.scriptService(answer({ success: true }));
        const shared = switchOf(page, 'Start Quiet notes after sign-in', 'all users');
        await shared.click();
        await toastOf(
          page,
          'Quiet notes could not be switched off. Windows did not store the change.',
          'alert',
        ).waitFor();
        await isOn(app, shared, true);
        await app.scriptService(answer({ success: false }));
        await lamp.click();
        await toastOf(page, 'Žárovka could not be switched on.', 'alert').waitFor();
        await isOn(app, lamp, false);
        assert.deepEqual((await asked()).slice(1), [request('Quiet notes', false), request('Žárovka', true)]);
        assert.equal(await approved('HKCU'), undefined);
        await checkAccessibility(page);
        await screenshot(page, 'startup-after-light-en');
      },
    ),
  ));
