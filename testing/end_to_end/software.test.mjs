// Tests the scan, the queue and drivers through the page. Tools and service print the output of the real
// ones.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { job, kAgreed, kSpinner, openList, pressSelected, prints, winget } from './winget.mjs';

const { closeServiceDialog, dialogOf, look, openView, press, rowsOf, tick, withVarnel } = harness;

const bar = (done, sizes) => `\r  ${'█'.repeat(done)}${'▒'.repeat(30 - done)}  ${sizes}`;

const kDriver = 'Moor Semiconductor Corp. - MEDIA - 6.0.9239.1';
const kFirmware = 'Brook Firmware 1.14.0';
const offers = (...titles) => {
  const updates = titles.map((Title) => ({ Title, CurrentVersion: '6.0', AvailableVersion: '6.1' }));
  return { steps: [{ hex: 'efbbbf' }, { text: JSON.stringify({ scannedDriversCount: 214, updates }) }] };
};

test('the scan fills three lists, and a skipped version stays out', () => {
  const tools = { ...winget(), 'powershell.exe': offers('Peat® & Co, Inc.', kDriver) };
  return withVarnel({ language: 'en', service: {}, tools }, async (app) => {
    const { page, text } = app;
    const names = async (tab) => (await rowsOf(page, text(`software.${tab}`))).map(([name]) => name);
    await openView(page, 'software');
    await page.getByRole('grid', { name: text('software.updates') }).waitFor(); // requested automatically
    await page.click('[data-tab=drivers]');
    await press(page, text('software.scan'));
    await app.until(async () => (await app.settingsFile()).lastScan > 0, 'the time of the scan');
    assert.deepEqual(await names('drivers'), [kDriver, 'Peat® & Co, Inc.']);
    await page.click('[data-tab=installed]');
    const installed = 'Heron Media Suite 2024 (x64), Peat Audio Console, Tarn Sync';
    assert.equal((await names('installed')).join(', '), installed);
    await page.click('[data-tab=updates]');
    assert.equal((await names('updates')).length, 6);
    // A row that cannot be acted on cannot be ticked either.
    const grid = page.getByRole('grid', { name: text('software.updates') });
    assert.equal(await grid.locator('tbody').getByRole('checkbox').count(), 4);

    await page.getByRole('row', { name: /Copse/ }).click({ button: 'right' });
    await page.getByRole('menuitem', { name: text('software.skip', { version: '3.2.0.0' }) }).click();
    await app.until(async () => (await app.settingsFile()).ignoreList?.length === 1, 'what is skipped');
    assert.ok(!(await names('updates')).includes('Copse'));

    // Another list and another view change neither ticks nor filter nor order.
    for (const name of ['Tarn', 'Heron']) await tick(page, text('software.updates'), name);
    await grid.getByRole('button', { name: text('software.available') }).click();
    await page.locator('[data-filter]').fill('2');
    const kept = ['Tarn Sync', 'Peat Notes', 'Heron Media Suite 2024 (x64)'];
    assert.deepEqual(await names('updates'), kept);
    await page.click('[data-tab=installed]');
    await openView(page, 'dashboard');
    await openView(page, 'software');
    await page.click('[data-tab=updates]');
    assert.deepEqual(await names('updates'), kept);
    const selected = text('software.selected', { verb: text('software.update'), n: 2 });
    await page.getByRole('button', { name: selected }).waitFor();
  });
});

test('a queue of three runs one at a time, and a failure does not stop it', () => {
  const ends = { 'Heron.MediaSuite': [0x8a150006, 'failed'], 'Brook.TarnSync': [0x8a150109, 'restart'] };
  const tools = winget(
    ...Object.entries(ends).map(([id, [exit]]) => ({ when: `"${id}"`, ...prints('Installing\n', exit) })),
    {
      when: '"9QX2B4LMN0PR"',
      steps: [
        { text: `${kSpinner}Found Copse\r\n${bar(0, '1024 KB / 63.0 MB')}` },
        { text: `${bar(14, '30.1 MB / 63.0 MB')}\r` },
        { delay_ms: 4000, text: `${bar(30, '63.0 MB / 63.0 MB')}\r\n` },
      ],
    },
  );
  const options = { settings: { theme: 'light', language: 'en' }, viewport: { width: 1250, height: 700 } };
  return withVarnel({ ...options, service: {}, tools }, async (app) => {
    const { page, text } = app;
    const copse = page.locator('[data-job="9QX2B4LMN0PR"]');
    await openView(page, 'software');
    await openList(app, 'updates');
    await page.getByRole('grid').getByRole('checkbox').first().click();
    await tick(page, text('software.updates'), 'Rill SDK');
    await pressSelected(app, 'update', 3);
    await copse.filter({ hasText: '48%' }).waitFor();
    for (const id of Object.keys(ends)) await job(page, id, 'waiting');
    await look(app, 'software-queue-light-en');
    for (const [id, [, state]] of Object.entries(ends)) await job(page, id, state);
    await job(page, '9QX2B4LMN0PR', 'done');
    await page.locator('[data-job="Heron.MediaSuite"]', { hasText: '0x8A150006' }).waitFor();
    await press(page, text('restart.ask'));
    await press(await dialogOf(page, text('restart.title')), text('app.cancel'));

    // Tools run one at a time in the order of the screen, and changed lists are loaded again.
    const update = (id) => `winget upgrade --id "${id}" --silent --accept-package-agreements ${kAgreed}`;
    const list = `winget upgrade ${kAgreed}`;
    await app.until(async () => (await app.toolCalls('winget')).length === 5, 'the list to be loaded anew');
    const updates = ['9QX2B4LMN0PR', ...Object.keys(ends)].map(update);
    assert.deepEqual(await app.toolCalls('winget'), [list, ...updates, list]);
    assert.equal(await page.innerText('[data-nav=software] .nav-badge'), '4', 'two of six are done');
  });
});

test('without the service, the program installs drivers', () => {
  const marked = { steps: [{ delay_ms: 1000, text: 'Installed. SYSTEM_REBOOT_REQUIRED\r\n' }] };
  const cases = [
    { when: 'check_updates', ...offers(kDriver, kFirmware) },
    { when: kDriver, ...marked },
    { when: kFirmware, ...prints('No such update\n', 2) },
  ];
  return withVarnel({ language: 'en', tools: { 'powershell.exe': { cases } } }, async (app) => {
    const { page, text } = app;
    const script = `${app.folder.windows}\\bin\\update_driver.ps1`;
    const install = async (...names) => {
      for (const name of names) await tick(page, text('software.drivers'), name);
      await pressSelected(app, 'driver', names.length);
      const question = await dialogOf(page, text('software.driver.title', { n: names.length }));
      await press(question, text('software.driver'));
    };
    await openView(page, 'software');
    await openList(app, 'drivers');
    await install(kDriver, kFirmware);
    await closeServiceDialog(page); // both find the service missing; one dialog is enough
    await job(page, kDriver, 'restart');
    await job(page, kFirmware, 'failed');
    assert.equal(await page.getByRole('dialog').count(), 0);
    assert.equal(await page.locator('[data-job]', { hasText: text('jobs.alone') }).count(), 2);
    const runs = (await app.toolCalls('powershell')).filter((line) => line.includes('update_driver'));
    const run = `powershell -NoProfile -ExecutionPolicy Bypass -File "${script}" -UpdateTitle`;
    assert.deepEqual(runs.toSorted(), [`${run} "${kFirmware}"`, `${run} "${kDriver}"`]);
  });
});
