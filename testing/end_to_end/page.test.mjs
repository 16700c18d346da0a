import assert from 'node:assert/strict';
import { test } from 'node:test';

import { startVarnel } from './driver.mjs';
import { checkAccessibility, openView, screenshot, withVarnel } from './harness.mjs';

const kViews = [
  'dashboard',
  'cleaning',
  'software',
  'disk',
  'startup',
  'processes',
  'network',
  'developer',
  'maintenance',
  'settings',
];

const last = (app, type) => app.messages.findLast((message) => message.type === type);
const badge = (page, text) => page.waitForSelector(`[data-testid=badge-service]:has-text("${text}")`);

// Figures from a second sample: a load needs two.
async function secondSample(app) {
  await app.page.waitForSelector('[role=meter]');
  const samples = () => app.messages.filter(({ type }) => type === 'telemetry').length;
  const count = samples();
  await app.page.keyboard.press('F5');
  await app.waitUntil(() => samples() > Math.max(count, 1), 'another telemetry sample');
}

test('the dashboard shows what the program measured', () =>
  withVarnel({ language: 'en' }, async (app) => {
    const { page } = app;
    await secondSample(app);
    await app.waitForMessage(({ type }) => type === 'status');
    await page.waitForSelector('.facts');

    // Looked at in one piece with the sample that it shows: a new one may come at any time.
    const shown = await app.waitUntilShown(async () => {
      const sample = last(app, 'telemetry');
      const figures = await page.evaluate(() => ({
        meters: [...document.querySelectorAll('[role=meter]')].map((meter) =>
          Number(meter.getAttribute('aria-valuenow')),
        ),
        disks: [...document.querySelectorAll('.disk')].map((disk) => [
          disk.querySelector('.disk-name').textContent,
          disk.querySelector('.disk-share').textContent,
        ]),
        facts: [...document.querySelectorAll('.facts dd')].map((fact) => fact.textContent),
        memoryHint: document.querySelector('.facts dd[title]')?.getAttribute('title'),
        text: document.querySelector('main').innerText,
      }));
      return (
        figures.meters[1] === Math.round(sample.ram) &&
        figures.meters[0] === Math.round(sample.cpu) && { sample, ...figures }
      );
    }, 'the gauges to show the last sample');

    const { specs } = last(app, 'status');
    const facts = [
      specs.cpu,
      specs.gpu,
      specs.ram,
      specs.motherboard === 'Unknown' ? [] : specs.motherboard,
      specs.os,
    ].flat();
    assert.deepEqual(
      shown.facts,
      facts.map((fact) => fact.trim()),
    );
    assert.equal(shown.memoryHint, specs.ramTooltip);
    assert.deepEqual(
      shown.disks,
      shown.sample.disks.map(({ drive, percent }) => [drive, `${Math.round(percent)}%`]),
    );
    assert.ok(shown.disks.length >= 1, 'drive C is there');
    assert.equal(shown.text.includes('Battery'), shown.sample.battery.hasBattery);
    await screenshot(page, 'dashboard-amethyst-en');
  }));

test('the service badge follows the service', () =>
  withVarnel({ language: 'en' }, async (app) => {
    const { page } = app;
    await badge(page, 'Service not running');
    await page.click('[data-testid=badge-service]');
    const dialog = page.getByRole('dialog', { name: 'The helper service is not running' });
    await dialog.waitFor();
    await checkAccessibility(page);
    await screenshot(page, 'service-dialog-en');

    await app.startService({});
    await dialog.getByRole('button', { name: 'Try again' }).click();
    await dialog.waitFor({ state: 'detached' });
    await badge(page, 'Service running');
    assert.equal(last(app, 'status').serviceActive, true);
    assert.deepEqual(await app.serviceRequests(), [], 'the probe writes nothing');
  }));

test('a service that comes later is seen on the way to another view', () =>
  withVarnel({}, async (app) => {
    await badge(app.page, 'Služba neběží');
    await app.startService({});
    await openView(app.page, 'settings');
    await badge(app.page, 'Služba běží');
  }));

test('a running service is seen at the start', () =>
  withVarnel({ service: {} }, async (app) => {
    await badge(app.page, 'Služba běží');
    assert.equal(last(app, 'status').serviceActive, true);
  }));

test('a service that is always busy counts as not running', () =>
  withVarnel({ service: 'busy', page: false }, async (app) => {
    const started = Date.now();
    assert.equal((await app.request('getStatus')).serviceActive, false);
    assert.ok(Date.now() - started >= 2000, 'the probe waits for a busy pipe');
  }));

test('settings take effect at once and survive a restart', async () => {
  const first = await startVarnel({ settings: { theme: 'ember', autoScan: true, unknownKey: [1, null] } });
  const attributes = (page) =>
    page.evaluate(() => ({ ...document.documentElement.dataset, lang: document.documentElement.lang }));
  try {
    const { page } = first;
    await openView(page, 'settings');
    assert.deepEqual(await attributes(page), { theme: 'ember', lang: 'cs' });
    const from = first.messages.length;
    await page.click('.theme[data-theme=light]');
    await page.selectOption('select >> nth=0', 'en');
    await page.waitForSelector('h1:has-text("Settings")');
    await first.waitUntil(
      () => first.messages.slice(from).filter(({ type }) => type === 'saveSettings').length === 2,
      'both changes to be saved',
    );
    assert.deepEqual(await attributes(page), { theme: 'light', lang: 'en' });
  } catch (error) {
    await first.kill();
    throw error;
  }
  await first.stop({ keepFolder: true });
  await withVarnel({ folder: first.folder }, async (app) => {
    await app.page.waitForSelector('h1:has-text("Dashboard")');
    assert.deepEqual(await attributes(app.page), { theme: 'light', lang: 'en' });
    const stored = await app.settingsFile();
    assert.deepEqual(
      [stored.theme, stored.language, stored.autoScan, stored.unknownKey],
      ['light', 'en', true, [1, null]],
    );
  });
});

test('broken settings files give the defaults', async (t) => {
  for (const settings of [
    '',
    'not json',
    '[]',
    'null',
    '{"theme":7,"language":null,"ignoreList":{"a":1}}',
    '\ufeff{',
  ]) {
    await t.test(JSON.stringify(settings), () =>
      withVarnel({ settings }, async ({ page }) => {
        await page.waitForSelector('h1:has-text("Přehled")');
        assert.equal(await page.evaluate(() => document.documentElement.dataset.theme), 'amethyst');
      }),
    );
  }
});

test('diagnostics come into the terminal as the program sent them', () =>
  withVarnel({ language: 'en' }, async (app) => {
    const { page } = app;
    await openView(page, 'settings');
    await page.getByRole('button', { name: 'Print diagnostics to the terminal' }).click();
    await app.waitForMessage(({ type }) => type === 'debugSystem');
    const sent = app.messages.filter(({ type }) => type === 'console_log').map(({ message }) => message);
    assert.ok(sent.length >= 10, `${sent.length} lines`);
    assert.equal(sent[0], '[DebugSystem] Gathering system debug information...');
    const lines = page.locator('.terminal-output > div');
    await lines.nth(sent.length - 1).waitFor();
    assert.deepEqual(await lines.allTextContents(), sent);
  }));

// One run a look: every view is there, is accessible, and leaves a picture.
for (const [theme, language, width, height] of [
  ['amethyst', 'cs', 1400, 900],
  ['light', 'en', 1250, 700],
]) {
  test(`every view, ${theme} ${language} ${width} x ${height}`, () =>
    withVarnel(
      {
        settings: { theme, language },
        viewport: { width, height },
        service: {},
      },
      async (app) => {
        const { page } = app;
        await badge(page, language === 'cs' ? 'Služba běží' : 'Service running');
        await secondSample(app);
        const titles = new Set();
        for (const id of kViews) {
          await openView(page, id);
          titles.add(await page.textContent('h1'));
          assert.equal(
            await page.evaluate(() => document.documentElement.scrollWidth > window.innerWidth),
            false,
            `${id} is wider than the window`,
          );
          await checkAccessibility(page);
          await screenshot(page, `${id}-${theme}-${language}`);
        }
        assert.equal(titles.size, kViews.length);
      },
    ));
}

test('the keyboard alone reaches every control in the order of the page', () =>
  withVarnel({ language: 'en' }, async ({ page }) => {
    for (const id of ['dashboard', 'settings']) {
      await page.waitForSelector(`[data-nav=${id}]`);
      await openView(page, id);
      await page.waitForSelector(id === 'dashboard' ? '.facts' : '.themes');
      const count = await page.evaluate(() => {
        const controls = [
          ...document.querySelectorAll('button, select, input, a[href], [tabindex="0"]'),
        ].filter(
          (control) =>
            !control.disabled && control.checkVisibility() && !(control.type === 'radio' && !control.checked),
        );
        controls.forEach((control, i) => {
          control.dataset.walk = String(i);
        });
        controls[0].focus();
        return controls.length;
      });
      assert.ok(count > kViews.length);
      const reached = [];
      for (let i = 0; i < count; ++i) {
        reached.push(
          await page.evaluate(
            () => document.activeElement.dataset.walk ?? document.activeElement.outerHTML.slice(0, 100),
          ),
        );
        await page.keyboard.press('Tab');
      }
      assert.deepEqual(
        reached,
        Array.from({ length: count }, (_, i) => String(i)),
        id,
      );
    }
  }));

test('in a window of half the size, as at 200 %, rows still have their names', () =>
  withVarnel({ viewport: { width: 700, height: 450 } }, async ({ page }) => {
    await openView(page, 'processes');
    const name = await page
      .getByRole('row', { name: /Varnel\.exe/ })
      .getByRole('gridcell')
      .nth(1)
      .boundingBox();
    assert.ok(name.width > 100, `${name.width} px`);
    await screenshot(page, 'processes-half-amethyst-cs');
  }));

test('what would put another page into the window does not: the key for reloading, a dropped file', () =>
  withVarnel({}, async ({ page }) => {
    await page.waitForSelector('.facts');
    const refused = await page.evaluate(() => {
      const holding = (...what) => {
        const dataTransfer = new DataTransfer();
        dataTransfer.items.add(...what);
        return dataTransfer;
      };
      const file = holding(new File(['x'], 'x.txt'));
      const init = { bubbles: true, cancelable: true };
      return [
        new KeyboardEvent('keydown', { ...init, key: 'R', code: 'KeyR', ctrlKey: true, shiftKey: true }),
        new DragEvent('dragover', { ...init, dataTransfer: file }),
        new DragEvent('drop', { ...init, dataTransfer: file }),
        new DragEvent('drop', { ...init, dataTransfer: holding('some text', 'text/plain') }),
      ].map((event) => !document.body.dispatchEvent(event));
    });
    assert.deepEqual(refused, [true, true, true, false]);
  }));
