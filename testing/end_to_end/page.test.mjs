// What belongs to no view: the badge, settings, the look of every view, and the keyboard.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { dialogOf, look, openView, press, text as textOf, withVarnel } from './harness.mjs';
import { makeFolder, prepareWine } from './wine.mjs';

const kViews =
  'dashboard cleaning software disk startup processes network developer maintenance settings'.split(' ');

const last = (app, type) => app.messages.findLast((message) => message.type === type);
const badge = (page, said) => page.locator('[data-testid=badge-service]', { hasText: said }).waitFor();

// Figures from a second sample: a load needs two.
async function secondSample(app) {
  await app.page.waitForSelector('[role=meter]');
  const samples = () => app.messages.filter(({ type }) => type === 'telemetry').length;
  const count = samples();
  await app.page.keyboard.press('F5');
  await app.until(() => samples() > Math.max(count, 1), 'another telemetry sample');
}

test('the dashboard shows what the program measured', () =>
  withVarnel({ language: 'en' }, async (app) => {
    const { page, text } = app;
    await secondSample(app);
    await app.waitForMessage(({ type }) => type === 'status');
    await page.waitForSelector('.facts');

    // Looked at in one piece with the sample that it shows: a new one may come at any time.
    const shown = await app.until(async () => {
      const sample = last(app, 'telemetry');
      const figures = await page.evaluate(() => {
        const all = (selector, read) => [...document.querySelectorAll(selector)].map(read);
        return {
          meters: all('[role=meter]', (meter) => Number(meter.getAttribute('aria-valuenow'))),
          disks: all('.disk', (disk) =>
            ['name', 'share'].map((part) => disk.querySelector(`.disk-${part}`).textContent),
          ),
          facts: all('.facts dd', (fact) => fact.textContent),
          memoryHint: document.querySelector('.facts dd[title]')?.getAttribute('title'),
          text: document.querySelector('main').innerText,
        };
      });
      const measured = [Math.round(sample.cpu), Math.round(sample.ram)];
      return measured.every((value, i) => value === figures.meters[i]) && { sample, ...figures };
    }, 'the gauges to show the last sample');

    const { cpu, gpu, ram, motherboard, os, ramTooltip } = last(app, 'status').specs;
    const facts = [cpu, gpu, ram, motherboard === 'Unknown' ? [] : motherboard, os].flat();
    const disks = shown.sample.disks.map(({ drive, percent }) => [drive, `${Math.round(percent)}%`]);
    assert.deepEqual(
      [shown.facts, shown.memoryHint, shown.disks],
      [facts.map((fact) => fact.trim()), ramTooltip, disks],
    );
    assert.ok(shown.disks.length >= 1, 'drive C is there');
    assert.equal(shown.text.includes(text('dashboard.battery')), shown.sample.battery.hasBattery);
    await look(app, 'dashboard-amethyst-en');

    // Who takes most memory leads; and all but the facts about the computer is in sight in a small window.
    const listed = last(app, 'processes').processes;
    const sums = {};
    for (const { name, memUsageMB } of listed) sums[name] = (sums[name] ?? 0) + memUsageMB;
    const [[name]] = Object.entries(sums).sort(([, a], [, b]) => b - a);
    const first = await page.locator('[data-who=memUsageMB] button').first().getAttribute('title');
    assert.equal(first, name);
    await page.setViewportSize({ width: 922, height: 574 });
    const hidden = await page.evaluate(() => {
      const { bottom } = document.querySelector('.content').getBoundingClientRect();
      return [...document.querySelectorAll('.dashboard > .card:not(.at-machine)')]
        .filter((card) => card.getBoundingClientRect().bottom > bottom)
        .map((card) => card.className);
    });
    assert.deepEqual(hidden, []);
  }));

test('the service badge follows the service', () =>
  withVarnel({ language: 'en' }, async (app) => {
    const { page, text } = app;
    await badge(page, text('badge.service.off'));
    await page.click('[data-testid=badge-service]');
    const dialog = await dialogOf(page, text('service.title'));
    await look(app, 'service-dialog-en');
    await app.startService({});
    await press(dialog, text('app.retry'));
    await dialog.waitFor({ state: 'detached' });
    await badge(page, text('badge.service.on'));
    assert.deepEqual(await app.serviceRequests(), [], 'the probe writes nothing');
  }));

test('a service that comes later is seen on the way to another view', () =>
  withVarnel({}, async (app) => {
    await badge(app.page, app.text('badge.service.off'));
    await app.startService({});
    await openView(app.page, 'settings');
    await badge(app.page, app.text('badge.service.on'));
  }));

test('settings take effect at once and survive a restart', async () => {
  await prepareWine();
  const folder = await makeFolder();
  const attributes = ({ page }) =>
    page.evaluate(() => ({ ...document.documentElement.dataset, lang: document.documentElement.lang }));
  await withVarnel(
    { folder, settings: { theme: 'ember', autoScan: true, unknownKey: [1, null] } },
    async (app) => {
      const { page } = app;
      await openView(page, 'settings');
      assert.deepEqual(await attributes(app), { theme: 'ember', lang: 'cs' });
      const from = app.messages.length;
      await page.click('.theme[data-theme=light]');
      await page.getByRole('combobox', { name: textOf('cs', 'settings.language') }).selectOption('en');
      await page.getByRole('heading', { level: 1, name: textOf('en', 'view.settings') }).waitFor();
      const saved = () => app.messages.slice(from).filter(({ type }) => type === 'saveSettings').length;
      await app.until(() => saved() === 2, 'both changes to be saved');
      assert.deepEqual(await attributes(app), { theme: 'light', lang: 'en' });
    },
  );
  await withVarnel({ folder, language: 'en' }, async (app) => {
    await app.page.getByRole('heading', { level: 1, name: app.text('view.dashboard') }).waitFor();
    assert.deepEqual(await attributes(app), { theme: 'light', lang: 'en' });
    const { theme, language, autoScan, unknownKey } = await app.settingsFile();
    assert.deepEqual([theme, language, autoScan, unknownKey], ['light', 'en', true, [1, null]]);
  });
  await folder.remove();
});

test('diagnostics come into the terminal as they were sent; a broken settings file gives defaults', () => {
  const settings = '{"theme":7,"language":null,"autoScan":false,"ignoreList":{"a":1}}';
  return withVarnel({ settings }, async (app) => {
    const { page, text } = app;
    await openView(page, 'settings');
    assert.equal(await page.evaluate(() => document.documentElement.dataset.theme), 'amethyst');
    await press(page, text('settings.diagnostics'));
    await app.waitForMessage(({ type }) => type === 'debugSystem');
    const sent = app.messages.filter(({ type }) => type === 'console_log').map(({ message }) => message);
    assert.ok(sent.length >= 10, `${sent.length} lines`);
    const lines = page.locator('.terminal-output > div');
    await lines.nth(sent.length - 1).waitFor();
    assert.deepEqual(await lines.allTextContents(), sent);
  });
});

// One run a look: every view is there, is accessible, and leaves a picture.
for (const [theme, language, width, height] of [
  ['amethyst', 'cs', 1400, 900],
  ['light', 'en', 1250, 700],
]) {
  test(`every view, ${theme} ${language} ${width} x ${height}`, () =>
    withVarnel({ settings: { theme, language }, viewport: { width, height }, service: {} }, async (app) => {
      const { page, text } = app;
      await badge(page, text('badge.service.on'));
      await secondSample(app);
      const titles = [];
      for (const id of kViews) {
        await openView(page, id);
        titles.push(await page.textContent('h1'));
        const isWider = await page.evaluate(() => document.documentElement.scrollWidth > window.innerWidth);
        assert.equal(isWider, false, `${id} is wider than the window`);
        await look(app, `${id}-${theme}-${language}`);
      }
      assert.deepEqual(
        titles,
        kViews.map((id) => text(`view.${id}`)),
      );
    }));
}

test('the keyboard alone reaches every control in the order of the page', () =>
  withVarnel({ language: 'en' }, async ({ page, text }) => {
    await badge(page, text('badge.service.off')); // nothing comes between the controls later
    const network = '.network .card:first-child .notice:not([aria-busy])'; // no netstat, no ports
    for (const [id, ready] of Object.entries({ network, settings: '.themes' })) {
      await page.waitForSelector(`[data-nav=${id}]`);
      await openView(page, id);
      await page.waitForSelector(ready);
      const count = await page.evaluate(() => {
        const all = [...document.querySelectorAll('button, select, input, a[href], [tabindex="0"]')];
        const controls = all.filter(
          (one) => !one.disabled && one.checkVisibility() && !(one.type === 'radio' && !one.checked),
        );
        controls.forEach((control, i) => {
          control.dataset.walk = String(i);
        });
        controls[0].focus();
        return controls.length;
      });
      assert.ok(count > kViews.length);
      for (let i = 0; i < count; ++i) {
        const reached = await page.evaluate(
          () => document.activeElement.dataset.walk ?? document.activeElement.outerHTML.slice(0, 100),
        );
        assert.equal(reached, String(i), id);
        await page.keyboard.press('Tab');
      }
    }
  }));

test('in a window of half the size, as at 200 %, rows have their names; a page that is loaded again is told', () =>
  withVarnel({ viewport: { width: 700, height: 450 } }, async (app) => {
    const { page } = app;
    const pushed = () => app.messages.filter(({ type, requestId }) => type === 'status' && requestId === 0);
    await app.until(() => pushed().length === 1, 'the first status push');
    await page.reload();
    await app.until(() => pushed().length === 2, 'the second status push');
    await openView(page, 'processes');
    const row = page.getByRole('row', { name: /Varnel\.exe/ });
    const { width } = await row.getByRole('gridcell').nth(1).boundingBox();
    assert.ok(width > 100, `${width} px`);
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
