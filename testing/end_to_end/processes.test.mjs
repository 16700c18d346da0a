// Real processes, found and ended through the page.
import assert from 'node:assert/strict';
import { once } from 'node:events';
import { test } from 'node:test';
import { isDeepStrictEqual } from 'node:util';

import { dialogOf, look, openView, press, rowsOf, toastOf, withVarnel } from './harness.mjs';

const kPeriodMs = 3000; // the page loads the list so often

const row = (page, text) => page.getByRole('grid').locator('tbody tr', { hasText: String(text) });
const lists = (app) => app.messages.filter(({ type }) => type === 'processes');
const kills = (app) =>
  app.messages.filter(({ type }) => type === 'killProcess').map(({ success }) => success);
const runs = (tool) => tool.code === undefined;

const stays = { steps: [{ text: 'up' }, { delay_ms: 600_000 }] };

// --- the host ----------------------------------------------------------------------------------------------

test('processes are listed with what the system says of them; one that is not there is not ended', () =>
  withVarnel({ page: false, tools: { 'Kresba žlutá.exe': stays } }, async (app) => {
    const tool = await app.startTool('Kresba žlutá');
    const { processes } = await app.request('getProcesses');
    for (const [name, isSystem, measured] of [
      ['Varnel.exe', false, true],
      ['Kresba žlutá.exe', false, true],
      ['winedevice.exe', true, true], // in the Windows directory
      ['services.exe', true, false], // known by its name, and not opened
    ]) {
      const found = processes.find((one) => one.name.toLowerCase() === name.toLowerCase());
      assert.deepEqual([found?.isSystem, found?.memUsageMB > 0], [isSystem, measured], name);
      assert.equal(found.cpuTimeSec, Math.round(found.cpuTimeSec * 1e7) / 1e7, 'whole ticks');
    }
    for (const pid of [0xfffffff0, 0])
      assert.equal((await app.request('killProcess', { pid })).success, false);
    tool.kill('SIGKILL');
  }));

// --- the story ---------------------------------------------------------------------------------------------

test('a process is found, ended after a question, and really gone', () =>
  withVarnel(
    { settings: { theme: 'amethyst', language: 'cs' }, tools: { 'Kresba žlutá.exe': stays } },
    async (app) => {
      const { page } = app;
      const tools = [await app.startTool('Kresba žlutá'), await app.startTool('Kresba žlutá')];
      const shown = () => rowsOf(page, app.text('view.processes'));
      const ask = (n) => dialogOf(page, app.text('processes.endTitle', { n }));
      const end = app.text('processes.end');
      try {
        await openView(page, 'processes');
        await row(page, 'Varnel.exe').waitFor();
        const words = ({ name, pid, mem, memUsageMB, cpuTimeSec, isSystem }) => [
          ...[name, String(pid)],
          memUsageMB + cpuTimeSec > 0 ? `${mem.toLocaleString('cs')}\u00a0MB` : '—',
          app.text(`processes.${name === 'Varnel.exe' ? 'own' : isSystem ? 'system' : 'user'}`),
        ];
        await app.until(async () => {
          const listed = lists(app)
            .at(-1)
            .processes.toSorted((a, b) => b.memUsageMB - a.memUsageMB);
          const seen = (await shown()).map(([name, pid, , mem, , kind]) => [name, pid, mem, kind]);
          return isDeepStrictEqual(seen, listed.map(words));
        }, 'the list of the program');
        const share = async () => (await shown()).find(([name]) => name === 'Varnel.exe')[2];
        await app.until(async () => /^\d+,\d\s%$/.test(await share()), 'a share');
        await look(app, 'processes-ready-amethyst-cs');

        // The system's own cannot be ended.
        await row(page, 'services.exe').click({ button: 'right' });
        await page.getByRole('menuitem', { name: app.text('processes.ports') }).waitFor();
        assert.equal(await page.getByRole('menuitem', { name: end }).count(), 0);
        await page.keyboard.press('Escape');
        await page.getByText(app.text('processes.systemHint')).waitFor();

        // One of two with the same name, by its number.
        await page.fill('[data-filter]', 'kresba zluta');
        await app.until(async () => (await shown()).length === 2, 'the two');
        const [[name, pid], [, other]] = await shown();
        await row(page, pid).click();
        await press(page, end);
        const question = await ask(1);
        await question.getByText(`${name} (PID ${pid})`).waitFor();
        await page.keyboard.press('Enter'); // the focus is on "Cancel"
        await question.waitFor({ state: 'detached' });
        assert.ok(tools.every(runs) && kills(app).length === 0, 'nothing happens before the user agrees');
        await press(page, end);
        await press(await ask(1), end);
        await toastOf(page, app.text('processes.ended', { name, pid })).waitFor();
        await page.mouse.move(10, 500);
        await row(page, pid).waitFor({ state: 'detached' });
        const [left, ...none] = await app.until(() => {
          const running = tools.filter(runs);
          return running.length < 2 && running;
        }, 'one to end');
        assert.deepEqual([(await shown()).map((cells) => cells[1]), none], [[other], []]);

        // A paused list, with the keyboard alone: what has ended meanwhile is said, not taken for done.
        await press(page, app.text('processes.pause'));
        await app.request('getProcesses'); // after a list that the page was still waiting for
        const before = lists(app).length;
        left.kill('SIGKILL');
        await once(left, 'exit');
        await page.waitForTimeout(kPeriodMs + 500);
        assert.equal(lists(app).length, before, 'the page has not asked');
        await page.keyboard.press('Control+f');
        for (const key of ['ArrowDown', 'ArrowDown', 'Shift+F10']) await page.keyboard.press(key);
        await page.getByRole('menuitem', { name: end }).and(page.locator(':focus')).waitFor();
        await page.keyboard.press('Enter');
        await press(await ask(1), end);
        await toastOf(page, app.text('processes.gone', { name, pid: other }), 'alert').waitFor();
        assert.equal(kills(app).length, 1, 'a number that may be another process by now is not ended');
      } finally {
        for (const tool of tools) tool.kill('SIGKILL');
      }
    },
  ));
