// The scan, the queue and drivers through the page, with tools and service that print what the real ones do.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { job, kAgreed, kSpinner, kUpdates, openList, pressSelected, prints, winget } from './winget.mjs';

const { asked, closeServiceDialog, dialogOf, look, openView, press, rowsOf, tick, withVarnel } = harness;

const bar = (done, sizes) => `\r  ${'█'.repeat(done)}${'▒'.repeat(30 - done)}  ${sizes}`;

const kDriver = 'Moor Semiconductor Corp. - MEDIA - 6.0.9239.1';
const kFirmware = 'Brook Firmware 1.14.0';
const offers = (...titles) => {
  const updates = titles.map((Title) => ({ Title, CurrentVersion: '6.0', AvailableVersion: '6.1' }));
  return { steps: [{ hex: 'efbbbf' }, { text: JSON.stringify({ scannedDriversCount: 214, updates }) }] };
};
test('the scan fills three lists, and a version that is skipped stays out of its list', () => {
  const tools = {
    ...winget({ when: 'upgrade --accept', steps: [{ text: kSpinner }, { delay_ms: 700, text: kUpdates }] }),
    'powershell.exe': { steps: [{ delay_ms: 2000 }, ...offers('Peat® & Co, Inc.', kDriver).steps] },
  };
  return withVarnel({ language: 'en', service: {}, tools }, async (app) => {
    const { page, text } = app;
    const updates = text('software.updates');
    const names = async () => (await rowsOf(page, updates)).map(([name]) => name);
    const tagged = (n) =>
      page.locator('[data-tab=updates] .tag', { hasText: new RegExp(`^${n}$`) }).waitFor();
    const stored = (list) => async () =>
      JSON.stringify((await app.settingsFile()).ignoreList) === JSON.stringify(list);
    await openView(page, 'software');
    await page.getByRole('grid', { name: updates }).waitFor(); // asked for by itself
    await page.click('[data-tab=drivers]');
    const scan = page.getByRole('button', { name: text('software.scan') });
    await scan.click();
    await page.getByText(text('software.scanning')).waitFor();
    assert.ok(await scan.isDisabled());
    const said = page.locator('[data-testid=scan] [role=status]');
    await said.filter({ hasText: text('scan.drivers', { n: 6 }) }).waitFor();
    await tagged(6);
    await said.waitFor({ state: 'detached' });
    await page.click('[data-tab=updates]');
    assert.deepEqual(await app.toolCalls('powershell'), [
      `powershell -NoProfile -ExecutionPolicy Bypass -File "${app.folder.windows}\\bin\\check_updates.ps1"`,
    ]);
    const isKept = async () => Date.now() - (await app.settingsFile()).lastScan < 60_000;
    await app.until(isKept, 'the time of the scan to be stored');
    assert.equal((await names()).length, 6);
    // What cannot be acted on cannot be ticked either.
    const boxes = page.getByRole('grid', { name: updates }).locator('tbody').getByRole('checkbox');
    assert.equal(await boxes.count(), 4);

    await page.getByRole('row', { name: /Copse/ }).click({ button: 'right' });
    await page.getByRole('menuitem', { name: text('software.skip', { version: '3.2.0.0' }) }).click();
    await tagged(5);
    const want = [{ id: '9QX2B4LMN0PR', type: 'software', version: '3.2.0.0' }];
    await app.until(stored(want), 'the ignored row to be stored');
    assert.ok(!(await names()).includes('Copse'));
    await page.getByRole('checkbox', { name: text('software.showIgnored', { n: 1 }) }).check();
    await page.getByRole('row', { name: /Copse/ }).click({ button: 'right' });
    await page.getByRole('menuitem', { name: text('software.unignore') }).click();
    await tagged(6);
    await app.until(stored([]), 'no row to be ignored');

    for (const [tab, want] of [
      ['installed', ['Heron Media Suite 2024 (x64)', 'Peat Audio Console', 'Tarn Sync']],
      ['drivers', [kDriver, 'Peat® & Co, Inc.']],
    ]) {
      await page.click(`[data-tab=${tab}]`);
      assert.deepEqual(
        (await rowsOf(page, text(`software.${tab}`))).map(([name]) => name),
        want,
      );
    }
    assert.equal(await page.innerText('[data-testid=drivers-checked]'), text('software.checked', { n: 214 }));
    const asks = ['upgrade', 'upgrade', 'list'].map((verb) => `winget ${verb} ${kAgreed}`);
    assert.deepEqual(await app.toolCalls('winget'), asks);
  });
});

test('a queue of three runs one by one, and a failure does not stop it', () => {
  const ends = { 'Brook.TarnSync': [0x8a150109, 'restart'], 'Heron.MediaSuite': [0x8a150006, 'failed'] };
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
    await openView(page, 'software');
    await openList(app, 'updates');
    await page.getByRole('grid').getByRole('checkbox').first().click();
    await tick(page, text('software.updates'), 'Rill SDK');
    for (const tab of ['drivers', 'updates']) await page.click(`[data-tab=${tab}]`);
    await pressSelected(app, 'update', 3); // what is ticked stays so
    await page.getByRole('button', { name: text('software.updateAll', { n: 1 }) }).waitFor();
    await page.locator('[data-job="9QX2B4LMN0PR"]', { hasText: '48%' }).waitFor();
    for (const id of Object.keys(ends)) await job(page, id, 'waiting');
    await look(app, 'software-queue-light-en');
    await job(page, '9QX2B4LMN0PR', 'done');
    for (const [id, [, state]] of Object.entries(ends)) await job(page, id, state);
    await page.locator('[data-job="Heron.MediaSuite"]', { hasText: '0x8A150006' }).waitFor();
    await press(page, text('restart.ask'));
    await press(await dialogOf(page, text('restart.title')), text('app.cancel'));
    await page.click('[data-job="9QX2B4LMN0PR"] summary');
    const lines = page.locator('[data-job="9QX2B4LMN0PR"] [role=log] > div');
    const last = ['Found Copse', `${'█'.repeat(30)}  63.0 MB / 63.0 MB`];
    assert.deepEqual((await lines.allInnerTexts()).slice(1), last);

    // One tool at a time, in the order of the screen, and what has changed is listed anew.
    const stream = app.messages.filter((one) => one.type === 'update_stream' && one.streamType !== 'stdout');
    const ended = stream.map(({ streamType, code }) => code ?? streamType);
    assert.deepEqual(ended, ['status', 0, 'status', 0x8a150006, 'status', 0x8a150109]);
    await app.until(async () => (await app.toolCalls('winget')).length === 5, 'the list to be loaded anew');
    await press(page.locator('[data-job="Heron.MediaSuite"]'), text('app.retry'));
    await app.until(async () => (await app.toolCalls('winget')).length === 6, 'the second try');
    const update = (id) => `winget upgrade --id "${id}" --silent --accept-package-agreements ${kAgreed}`;
    assert.deepEqual(await app.toolCalls('winget'), [
      `winget upgrade ${kAgreed}`,
      ...['9QX2B4LMN0PR', 'Heron.MediaSuite', 'Brook.TarnSync'].map(update),
      `winget upgrade ${kAgreed}`,
      update('Heron.MediaSuite'),
    ]);
  });
});

test('drivers are installed by the service, or else here; an end that is not told is not credited', () => {
  const marked = { steps: [{ delay_ms: 1000, text: 'Installed. SYSTEM_REBOOT_REQUIRED\r\n' }] };
  const tools = {
    'powershell.exe': {
      cases: [
        { when: 'check_updates', ...offers(kDriver, kFirmware) },
        { when: kDriver, ...marked },
        { when: kFirmware, ...prints('No such update\n', 2) },
      ],
    },
  };
  return withVarnel({ language: 'en', tools }, async (app) => {
    const { page, text } = app;
    const drivers = text('software.drivers');
    const script = `${app.folder.windows}\\bin\\update_driver.ps1`;
    const install = async (n) => {
      await pressSelected(app, 'driver', n);
      await press(await dialogOf(page, text('software.driver.title', { n })), text('software.driver'));
    };
    await openView(page, 'software');
    await openList(app, 'drivers');
    for (const name of [kDriver, kFirmware]) await tick(page, drivers, name);
    await page.getByRole('button', { name: text('software.name') }).click(); // the queue goes as the screen does
    await install(2);
    await closeServiceDialog(page); // both miss the service; one dialog is enough
    await job(page, kDriver, 'restart');
    await job(page, kFirmware, 'failed');
    assert.equal(await page.getByRole('dialog').count(), 0);
    assert.equal(await page.locator('[data-job]', { hasText: text('jobs.alone') }).count(), 2);
    const runs = (await app.toolCalls('powershell')).filter((line) => line.includes('update_driver'));
    const run = `powershell -NoProfile -ExecutionPolicy Bypass -File "${script}" -UpdateTitle`;
    assert.deepEqual(runs, [`${run} "${kDriver}"`, `${run} "${kFirmware}"`]);

    const abandon = page.getByRole('button', { name: text('jobs.abandon') });
    await page.clock.install();
    // The service closes the pipe before its exit record: nothing is said of an end.
    await app.startService({ installDriver: { stream: [{ type: 'stdout', message: 'Stahuji „Brook“' }] } });
    await openList(app, 'drivers');
    await tick(page, drivers, kFirmware);
    await install(1);
    await page.locator(`[data-job="${kFirmware}"]`, { hasText: 'Stahuji „Brook“' }).waitFor();
    await page.clock.fastForward(58_000);
    assert.equal(await abandon.count(), 0);
    await page.clock.fastForward(3_000);
    await abandon.click();
    await job(page, kFirmware, 'failed');
    await page.locator(`[data-job="${kFirmware}"]`).getByText(text('jobs.noEnd')).waitFor();
    const [{ data }, ...none] = await asked(app, 'installDriver');
    assert.deepEqual([data, none], [{ title: kFirmware, scriptPath: script }, []]);
  });
});

test('blocked scripts cost only the drivers', () => {
  const kReason = 'File C:\\check_updates.ps1 cannot be loaded because running scripts is disabled here.';
  const tools = { ...winget(), 'powershell.exe': prints(`${kReason}\nAt line 1\n`, 1) };
  return withVarnel({ language: 'en', service: {}, tools }, async (app) => {
    const { page, text } = app;
    const banner = page.locator('[data-testid=scan]');
    await openView(page, 'software');
    const scan = page.getByRole('button', { name: text('software.scan') });
    await scan.first().click();
    await banner.and(page.getByRole('alert')).getByText(text('scan.failed.drivers')).waitFor();
    await page.getByRole('grid', { name: text('software.updates') }).waitFor();
    assert.equal((await app.settingsFile()).lastScan, undefined, 'it has not been a whole scan');
    await press(banner, text('app.close'));
    await banner.waitFor({ state: 'detached' });
    await page.click('[data-tab=drivers]'); // the list alone says the same in its place
    await page.keyboard.press('F5');
    await page.getByText(kReason, { exact: true }).waitFor();
  });
});
