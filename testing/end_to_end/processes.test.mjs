// Finds and ends real processes through the page.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { dialogOf, look, openView, press, rowsOf, toastOf, withVarnel } from './harness.mjs';

const runs = (tool) => tool.code === undefined;

const stays = { steps: [{ text: 'up' }, { delay_ms: 600_000 }] };

test('processes are listed, and one is found and ended after a question', () => {
  const options = { settings: { theme: 'amethyst', language: 'cs' }, tools: { 'Kresba žlutá.exe': stays } };
  return withVarnel(options, async (app) => {
    const { page, text } = app;
    const tools = [await app.startTool('Kresba žlutá'), await app.startTool('Kresba žlutá')];
    const row = (words) => page.getByRole('grid').locator('tbody tr', { hasText: words });
    const shown = () => rowsOf(page, text('view.processes'));
    const end = text('processes.end');
    const ask = () => dialogOf(page, text('processes.endTitle', { n: 1 }));
    const { processes } = await app.request('getProcesses');
    for (const [name, isSystem, isMeasured] of [
      ['Varnel.exe', false, true],
      ['Kresba žlutá.exe', false, true],
      ['winedevice.exe', true, true], // in the Windows directory
      ['services.exe', true, false], // known by name, and not opened
    ]) {
      const found = processes.find((one) => one.name.toLowerCase() === name.toLowerCase());
      assert.deepEqual([found?.isSystem, found?.memUsageMB > 0], [isSystem, isMeasured], name);
    }
    for (const pid of [0xfffffff0, 0])
      assert.equal((await app.request('killProcess', { pid })).success, false);
    const from = app.messages.length;
    const kills = () => app.messages.slice(from).filter(({ type }) => type === 'killProcess').length;
    await openView(page, 'processes');
    const share = async () => (await shown()).find(([name]) => name === 'Varnel.exe')?.[2];
    await app.until(async () => /^\d+,\d\s%$/.test(await share()), 'a share');
    await look(app, 'processes-ready-amethyst-cs');

    // System processes cannot be ended.
    await row('services.exe').click({ button: 'right' });
    await page.getByRole('menuitem', { name: text('processes.ports') }).waitFor();
    assert.equal(await page.getByRole('menuitem', { name: end }).count(), 0);
    await page.keyboard.press('Escape');

    // One of two processes with the same name, by its number.
    await page.fill('[data-filter]', 'kresba zluta');
    await app.until(async () => (await shown()).length === 2, 'the two');
    const [[name, pid], [, other]] = await shown();
    await row(pid).click();
    await press(page, end);
    const question = await ask();
    await question.getByText(`${name} (PID ${pid})`).waitFor();
    await page.keyboard.press('Enter'); // "Cancel" has the focus
    await question.waitFor({ state: 'detached' });
    assert.ok(tools.every(runs) && kills() === 0, 'nothing happens before the user agrees');
    await press(page, end);
    await press(await ask(), end);
    await toastOf(page, text('processes.ended', { name, pid })).waitFor();
    await page.mouse.move(10, 500);
    await row(pid).waitFor({ state: 'detached' });
    await app.until(() => tools.filter(runs).length < 2, 'one to end');
    const [left, ...none] = tools.filter(runs);
    assert.deepEqual([(await shown()).map((cells) => cells[1]), none], [[other], []]);

    // A paused list, by keyboard only: a process that has ended in the meantime is reported as such, not
    // as ended by Varnel.
    await press(page, text('processes.pause'));
    await app.request('getProcesses'); // after any list that the page was still waiting for
    left.kill('SIGKILL');
    await left.ended;
    await page.keyboard.press('Control+f');
    for (const key of ['ArrowDown', 'ArrowDown', 'Shift+F10']) await page.keyboard.press(key);
    await page.getByRole('menuitem', { name: end }).and(page.locator(':focus')).waitFor();
    await page.keyboard.press('Enter');
    await press(await ask(), end);
    await toastOf(page, text('processes.gone', { name, pid: other }), 'alert').waitFor();
    assert.equal(kills(), 1, 'a number that may be another process by now is not ended');
  });
});
