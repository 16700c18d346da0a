// Tests the parts that belong to no view: the badge, settings, the look of every view, and the keyboard.
import assert from 'node:assert/strict';
import { statfs } from 'node:fs/promises';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { driveC, makeFolder, prepareWine, writeRegistry } from './wine.mjs';

const { dialogOf, look, openView, press, withVarnel } = harness;

const kViews =
  'dashboard cleaning software disk startup processes network developer maintenance settings'.split(' ');

const badge = ({ page, text }, state) =>
  page.locator('[data-testid=badge-service]', { hasText: text(`badge.service.${state}`) }).waitFor();

// Waits for a second sample, because a load needs two.
async function secondSample(app) {
  await app.page.waitForSelector('[role=meter]');
  await app.page.keyboard.press('F5');
  const samples = () => app.messages.filter(({ type }) => type === 'telemetry').length;
  await app.until(() => samples() > 1, 'another telemetry sample');
}

// The system creates these keys at each start.
const kHardware = 'HKLM\\HARDWARE\\DESCRIPTION\\System';

test("the dashboard shows the machine's facts and measurements", async () => {
  await prepareWine();
  await writeRegistry({
    [`${kHardware}\\CentralProcessor\\0`]: { ProcessorNameString: '"  Peat(R) Core i7 "' },
    [`${kHardware}\\BIOS`]: { BaseBoardManufacturer: '"Peat Co."', BaseBoardProduct: '"B650"' },
  });
  await withVarnel({ language: 'en' }, async (app) => {
    const { page } = app;
    const last = (type) => app.messages.findLast((message) => message.type === type);
    await secondSample(app);
    await page.waitForSelector('.facts');
    // Reads the screen together with its sample, because a new one may arrive at any time.
    await app.until(async () => {
      const { cpu, ram, disks } = last('telemetry');
      const measured = [cpu, ram, ...disks.map(({ percent }) => percent)].map(Math.round);
      const shown = await page.evaluate(() => [
        ...[...document.querySelectorAll('[role=meter]')].slice(0, 2).map((meter) => meter.ariaValueNow),
        ...[...document.querySelectorAll('.disk-share')].map((share) => parseInt(share.textContent)),
      ]);
      return shown.length > 2 && String(shown) === String(measured);
    }, 'the gauges to show the last sample');
    const { gpu, ram, os } = last('status').specs;
    const shown = await page.locator('.facts dd').allTextContents();
    assert.deepEqual(shown, ['Peat(R) Core i7', gpu, ram, 'Peat Co. B650', os]);

    const { blocks, bsize } = await statfs(driveC);
    const { totalBytes } = last('telemetry').disks.find(({ drive }) => drive === 'C:');
    assert.equal(totalBytes, blocks * bsize);
    await app.until(() => last('telemetry').cpu > 0, 'a load since the sample before');
    await look(app, 'dashboard-amethyst-en');
  });
});

test('the badge and its dialog follow the service', () =>
  withVarnel({ language: 'en' }, async (app) => {
    const { page, text } = app;
    await badge(app, 'off');
    await page.click('[data-testid=badge-service]');
    const dialog = await dialogOf(page, text('service.title'));
    await look(app, 'service-dialog-en');
    await app.startService({});
    await press(dialog, text('app.retry'));
    await dialog.waitFor({ state: 'detached' });
    await badge(app, 'on');
    await app.stopService();
    await page.reload();
    await badge(app, 'off');
    await app.startService({});
    await openView(page, 'settings'); // changing the view notices it, too
    await badge(app, 'on');
    assert.deepEqual(await app.serviceRequests(), [], 'the probe writes nothing');
  }));

test('settings take effect immediately and survive a restart; diagnostics arrive', async () => {
  const folder = await makeFolder();
  const theme = ({ page }) => page.evaluate(() => document.documentElement.dataset.theme);
  const settings = { autoScan: true, unknownKey: [1, null] };
  await withVarnel({ folder, settings }, async (app) => {
    const { page } = app;
    await openView(page, 'settings');
    await page.click('.theme[data-theme=light]');
    await page.getByRole('combobox', { name: harness.text('cs', 'settings.language') }).selectOption('en');
    await page.getByRole('heading', { level: 1, name: harness.text('en', 'view.settings') }).waitFor();
    const isSaved = async () => (await app.settingsFile()).language === 'en';
    await app.until(isSaved, 'both changes to be saved');
    assert.equal(await theme(app), 'light');
  });
  await withVarnel({ folder, language: 'en' }, async (app) => {
    const { page, text } = app;
    await page.getByRole('heading', { level: 1, name: text('view.dashboard') }).waitFor();
    assert.equal(await theme(app), 'light');
    const { autoScan, unknownKey } = await app.settingsFile();
    assert.deepEqual([autoScan, unknownKey], [true, [1, null]]);

    await openView(page, 'settings');
    await press(page, text('settings.diagnostics'));
    await app.waitForMessage(({ type }) => type === 'debugSystem');
    const { message } = app.messages.findLast(({ type }) => type === 'console_log');
    await page.locator('.terminal-output > div', { hasText: message }).waitFor();
  });
  await folder.remove();
});

// One run per look: every view exists, is accessible, and leaves a picture.
for (const [theme, language, width, height] of [
  ['amethyst', 'cs', 1400, 900],
  ['light', 'en', 1250, 700],
]) {
  test(`every view, ${theme} ${language} ${width} x ${height}`, () =>
    withVarnel({ settings: { theme, language }, viewport: { width, height }, service: {} }, async (app) => {
      const { page, text } = app;
      await badge(app, 'on');
      await secondSample(app);
      for (const id of kViews) {
        await openView(page, id);
        assert.equal(await page.textContent('h1'), text(`view.${id}`));
        const isWider = await page.evaluate(() => document.documentElement.scrollWidth > window.innerWidth);
        assert.equal(isWider, false, `${id} is wider than the window`);
        await look(app, `${id}-${theme}-${language}`);
      }
    }));
}

test('the keyboard alone reaches every control in the order of the page', () =>
  withVarnel({ language: 'en' }, async (app) => {
    const { page } = app;
    await badge(app, 'off'); // so that nothing appears between the controls later
    await openView(page, 'network');
    await page.waitForSelector('.network .card:first-child .notice:not([aria-busy])'); // no ports
    const count = await page.evaluate(() => {
      const kinds = 'button, select, input:not([type=radio]:not(:checked)), a[href], [tabindex="0"]';
      const controls = [...document.querySelectorAll(kinds)].filter((one) => one.checkVisibility());
      const enabled = controls.filter((one) => !one.disabled);
      for (const [i, control] of enabled.entries()) control.dataset.walk = i;
      enabled[0].focus();
      return enabled.length;
    });
    assert.ok(count > kViews.length);
    for (let i = 0; i < count; ++i) {
      assert.equal(await page.evaluate(() => document.activeElement.dataset.walk), String(i));
      await page.keyboard.press('Tab');
    }
  }));

test('small windows keep what matters in sight', () =>
  withVarnel({ viewport: { width: 922, height: 574 } }, async (app) => {
    const { page, text } = app;
    const ends = (shown) => shown.evaluateAll((all) => all.map((one) => one.getBoundingClientRect().bottom));
    const mainEnd = async () => (await ends(page.locator('main')))[0];
    await secondSample(app);
    const cards = await ends(page.locator('.card:not(.at-machine)'));
    assert.ok(cards.length >= 6 && Math.max(...cards) <= (await mainEnd()), `cards end at ${cards}`);
    await page.setViewportSize({ width: 690, height: 430 });
    await openView(page, 'cleaning');
    const [button] = await ends(page.getByRole('button', { name: text('cleaning.clean'), exact: true }));
    assert.ok(button <= (await mainEnd()), `the button ends at ${button}`);

    await openView(page, 'processes');
    const row = page.getByRole('row', { name: /Varnel\.exe/ });
    const { width } = await row.getByRole('gridcell').nth(1).boundingBox();
    assert.ok(width > 100, `${width} px`);
  }));
