// Real processes, found and ended through the page; what a long list does to the page, with a list that the test makes.
import assert from 'node:assert/strict';
import { once } from 'node:events';
import { test } from 'node:test';

import { checkAccessibility, openView, screenshot, withVarnel } from './harness.mjs';

const kPeriodMs = 3000; // the page loads the list so often

const grid = (page) => page.getByRole('grid', { name: /^(Processes|Procesy)$/ });
const row = (page, text) => grid(page).locator('tbody tr', { hasText: text });
const rows = (page) =>
  grid(page)
    .locator('tbody tr:not(.spacer)')
    .evaluateAll((all) => all.map((one) => [...one.cells].slice(1).map((cell) => cell.innerText)));
const filter = (page, text) => page.fill('[data-filter]', text);
const counted = (page, text) => page.locator('.table-bar [role=status]', { hasText: text }).waitFor();
const press = (scope, name) => scope.getByRole('button', { name, exact: true }).click();
const lists = (app) => app.messages.filter(({ type }) => type === 'processes');
const kills = (app) =>
  app.messages.filter(({ type }) => type === 'killProcess').map(({ success }) => success);
const runs = (tool) => tool.exitCode === null && tool.signalCode === null;

async function dialogOf(page, name) {
  const dialog = page.getByRole('dialog', { name });
  await dialog.waitFor();
  return dialog;
}

const stays = { steps: [{ text: 'up' }, { delay_ms: 600_000 }] };

test('a process is found, ended after a question, and really gone', () =>
  withVarnel(
    {
      settings: { theme: 'amethyst', language: 'cs' },
      tools: { 'Kresba žlutá.exe': stays, 'Poznámky.exe': stays },
    },
    async (app) => {
      const { page } = app;
      const tools = [];
      const start = async (name) => {
        const known = new Set((await app.request('getProcesses')).processes.map(({ pid }) => pid));
        const tool = await app.startTool(name);
        const mine = (await app.request('getProcesses')).processes.find(
          (one) => one.name === `${name}.exe` && !known.has(one.pid),
        );
        assert.equal(mine.isSystem, false);
        tool.windowsPid = mine.pid;
        tools.push(tool);
        return tool;
      };
      try {
        const first = await start('Kresba žlutá');
        const second = await start('Kresba žlutá');
        const third = await start('Poznámky');

        await openView(page, 'processes');
        await row(page, 'Varnel.exe').waitFor();
        // What the program measures, in the page's words, with a share from the second list on.
        const listed = lists(app).at(-1).processes;
        assert.deepEqual(
          (await rows(page)).map(([name, pid]) => `${name} ${pid}`).sort(),
          listed.map(({ name, pid }) => `${name} ${pid}`).sort(),
        );
        assert.deepEqual(
          (await rows(page)).map(([, , share]) => share),
          listed.map(() => '—'),
        );
        const words = (one) => [
          one.name,
          String(one.pid),
          one.memUsageMB + one.cpuTimeSec > 0 ? `${one.mem.toLocaleString('cs')}\u00a0MB` : '—',
          one.isSystem ? 'systémový' : 'program',
        ];
        assert.deepEqual(
          (await rows(page)).map(([name, pid, , mem, , kind]) => [name, pid, mem, kind]),
          [...listed]
            .sort((a, b) => b.memUsageMB - a.memUsageMB || listed.indexOf(a) - listed.indexOf(b))
            .map(words),
        );
        await app.waitUntilShown(
          async () =>
            /^\d+,\d %$/.test(
              (await rows(page)).find(([name]) => name === 'Varnel.exe')[2].replace('\u00a0', ' '),
            ),
          'a share',
        );
        await checkAccessibility(page);
        await screenshot(page, 'processes-ready-amethyst-cs');

        // The system's own cannot be ended.
        const end = page.locator('.head').getByRole('button', { name: 'Ukončit' });
        assert.equal(await end.isDisabled(), true);
        await row(page, 'services.exe').click();
        assert.equal(await end.isDisabled(), true);
        await page.getByText('Systémové procesy Varnel neukončuje.').waitFor();
        await row(page, 'services.exe').click({ button: 'right' });
        assert.deepEqual(await page.getByRole('menuitem').allInnerTexts(), ['Kopírovat řádky']);
        await page.keyboard.press('Escape');

        // One of two with the same name, by its number.
        await filter(page, 'kresba zluta');
        await counted(page, `2 z ${lists(app).at(-1).processes.length}`);
        await row(page, String(first.windowsPid)).click();
        await end.click();
        const named = await dialogOf(page, 'Ukončit 1 proces?');
        await named.getByText(`Kresba žlutá.exe (PID ${first.windowsPid})`).waitFor();
        await named.getByText('Neuložená práce se ztratí.').waitFor();
        await named.getByRole('button', { name: 'Zrušit' }).and(page.locator(':focus')).waitFor();
        await checkAccessibility(page);
        await screenshot(page, 'processes-question-amethyst-cs');
        await page.keyboard.press('Escape');
        await named.waitFor({ state: 'detached' });
        assert.ok(runs(first) && kills(app).length === 0, 'nothing happens before the user agrees');
        await end.click();
        await press(await dialogOf(page, 'Ukončit 1 proces?'), 'Ukončit');
        await page.getByText(`Kresba žlutá.exe (PID ${first.windowsPid}) ukončen`).waitFor();
        if (runs(first)) await once(first, 'exit');
        assert.equal(first.exitCode, 0);
        await page.mouse.move(10, 500);
        await row(page, String(first.windowsPid)).waitFor({ state: 'detached' });
        assert.deepEqual(
          (await rows(page)).map(([, pid]) => pid),
          [String(second.windowsPid)],
        );
        assert.ok(runs(second) && runs(third));

        // A list that stands still, with the keyboard alone: what has ended meanwhile is said, not taken for done.
        await press(page, 'Pozastavit');
        await page.getByText('Seznam je pozastavený.').waitFor();
        await app.request('getProcesses'); // a list that the page was still waiting for has come before this one
        const before = lists(app).length;
        second.kill('SIGKILL');
        await once(second, 'exit');
        const fourth = await start('Kresba žlutá');
        await page.waitForTimeout(kPeriodMs + 500);
        assert.equal(lists(app).length, before + 2, 'only the lists that this test has asked for');
        assert.deepEqual(
          (await rows(page)).map(([, pid]) => pid),
          [String(second.windowsPid)],
        );
        await page.keyboard.press('Control+f');
        await page.keyboard.press('ArrowDown');
        await page.keyboard.press('ArrowDown');
        await page.keyboard.press('Shift+F10');
        await page.getByRole('menuitem', { name: 'Ukončit' }).and(page.locator(':focus')).waitFor();
        await page.keyboard.press('Enter');
        await dialogOf(page, 'Ukončit 1 proces?');
        await page.keyboard.press('Tab');
        await page.keyboard.press('Enter');
        await page
          .getByRole('alert')
          .getByText(`Kresba žlutá.exe (PID ${second.windowsPid}) už neběží`)
          .waitFor();
        assert.equal(kills(app).length, 1, 'a number that may be another process by now is not ended');
        await row(page, String(second.windowsPid)).waitFor({ state: 'detached' });
        await screenshot(page, 'processes-gone-amethyst-cs');
        await press(page, 'Pokračovat');
        await row(page, String(fourth.windowsPid)).waitFor();

        // Several at once.
        await filter(page, '.exe program');
        for (const tool of [third, fourth])
          await row(page, String(tool.windowsPid)).getByRole('checkbox').click();
        await press(page, 'Ukončit');
        const both = await dialogOf(page, 'Ukončit 2 procesy?');
        assert.deepEqual(
          (await both.getByRole('listitem').allInnerTexts()).sort(),
          [fourth, third]
            .map((tool) => `${tool === third ? 'Poznámky' : 'Kresba žlutá'}.exe (PID ${tool.windowsPid})`)
            .sort(),
        );
        await press(both, 'Ukončit');
        for (const tool of [third, fourth]) {
          await row(page, String(tool.windowsPid)).waitFor({ state: 'detached' });
          if (runs(tool)) await once(tool, 'exit');
        }
      } finally {
        for (const tool of tools) tool.kill('SIGKILL');
      }
    },
  ));

// From now on the page's requests for the list are answered with `list`; `window.took` has how long each drawing took.
const answerWith = (page, list) =>
  page.evaluate((processes) => {
    window.processes = processes;
    if (window.took) return;
    window.took = [];
    const { webview } = window.chrome;
    const post = webview.postMessage;
    webview.postMessage = (text) => {
      const { action, requestId } = JSON.parse(text);
      if (action !== 'getProcesses') return void post(text);
      setTimeout(() => {
        const answer = JSON.stringify({
          processes: window.processes,
          requestId,
          success: true,
          type: 'processes',
        });
        const start = performance.now();
        window.varnelDeliver(answer);
        requestAnimationFrame(() => setTimeout(() => window.took.push(performance.now() - start)));
      });
    };
  }, list);

const kMany = 2000;
const many = (memory) =>
  Array.from({ length: kMany }, (_, i) => ({
    name: `program ${String(i).padStart(4, '0')}.exe`,
    pid: 4_000_000_000 + 4 * i,
    memUsageMB: memory(i),
    mem: Math.round(memory(i)),
    cpuTimeSec: i,
    isSystem: i % 10 === 0,
  }));

test('two thousand processes: drawn in part, steady under the pointer, selection by number', (t) =>
  withVarnel(
    {
      settings: { theme: 'light', language: 'en' },
      viewport: { width: 1250, height: 700 },
    },
    async (app) => {
      const { page } = app;
      await openView(page, 'processes');
      await row(page, 'Varnel.exe').waitFor();
      await answerWith(
        page,
        many((i) => i + 1),
      );
      const refresh = async () => {
        const from = await page.evaluate(() => window.took.length);
        await page.keyboard.press('F5');
        await page.waitForFunction((length) => window.took.length > length, from);
      };
      await refresh();
      await counted(page, '2,000 rows');
      const drawn = await rows(page);
      assert.deepEqual(drawn[0].slice(0, 2), ['program 1999.exe', '4000007996']);
      assert.ok(drawn.length > 10 && drawn.length < 60, `${drawn.length} rows`);
      assert.equal(await grid(page).getAttribute('aria-rowcount'), String(kMany + 1));

      await page.evaluate(() => {
        window.took = [];
      });
      for (let round = 0; round < 11; ++round) {
        await answerWith(
          page,
          many((i) => ((i * 7919 + round * 1009) % kMany) + 1),
        );
        await refresh();
      }
      const took = (await page.evaluate(() => window.took)).sort((a, b) => a - b);
      t.diagnostic(`a list of ${kMany} drawn in ms: ${took.map((ms) => ms.toFixed(0)).join(' ')}`);
      assert.ok(took[5] < 100, `median ${took[5]} ms`);

      // Under the pointer nothing moves, its figures follow, and what is gone stays, struck through.
      await answerWith(
        page,
        many((i) => i + 1),
      );
      await refresh();
      await page.locator('.table-scroll').evaluate((box) => {
        box.scrollTop = 20_000;
      });
      const { x, y } = await page.locator('.table-scroll').boundingBox();
      const under = () =>
        page.evaluate(
          ([left, top]) => {
            const one = document.elementFromPoint(left, top).closest('tr');
            return [one.cells[1].innerText, one.cells[4].innerText, one.className];
          },
          [x + 200, y + 200],
        );
      await page.mouse.move(x + 200, y + 200);
      const [name, mem] = await app.waitUntilShown(
        () => under().catch(() => undefined),
        'rows at the new place',
      );
      const index = Number(/\d+/.exec(name)[0]);
      assert.equal(mem, `${(index + 1).toLocaleString('en')}\u00a0MB`);
      await page.mouse.down();
      await page.mouse.up();
      await answerWith(
        page,
        many((i) => kMany - i + 3),
      );
      await refresh();
      assert.deepEqual(await under(), [
        name,
        `${(kMany - index + 3).toLocaleString('en')}\u00a0MB`,
        'active',
      ]);
      await counted(page, '1 selected');
      await answerWith(
        page,
        many((i) => kMany - i).filter((_, i) => i !== index - 1),
      );
      await page.mouse.move(x + 200, y + 236);
      await refresh();
      assert.deepEqual(
        (await rows(page)).filter(([one]) => one === `program ${String(index - 1).padStart(4, '0')}.exe`)
          .length,
        1,
      );
      await counted(page, '1,999 rows');
      await checkAccessibility(page);
      await screenshot(page, 'processes-many-light-en');

      // Away from it the order is that of the figures again, and the selected one is still the same and in sight, wherever it goes.
      const selected = grid(page).locator('tbody tr[aria-selected=true]');
      const inSight = async () => {
        const box = await page.locator('.table-scroll').boundingBox();
        const one = await selected.boundingBox();
        return (
          one.y >= box.y &&
          one.y + one.height <= box.y + box.height &&
          (await selected.innerText()).includes(name)
        );
      };
      await page.mouse.move(10, 690);
      await app.waitUntilShown(
        async () => (await grid(page).locator('tbody tr.gone').count()) === 0,
        'the order of the figures',
      );
      await counted(page, '1 selected');
      assert.ok(await inSight());
      for (const memory of [(i) => (i === index ? 5000 : i), (i) => (i === index ? 0.5 : i + 1)]) {
        await answerWith(page, many(memory));
        await refresh();
        assert.ok(await inSight());
      }
      // Unless the user has looked away from it.
      await page.locator('.table-scroll').evaluate((box) => {
        box.scrollTop = 0;
      });
      await row(page, 'program 1999.exe').waitFor();
      await answerWith(
        page,
        many((i) => i + 1),
      );
      await refresh();
      assert.equal(await page.locator('.table-scroll').evaluate((box) => box.scrollTop), 0);

      // None of them is there for the program.
      await press(page, 'End');
      await press(await dialogOf(page, 'End 1 process?'), 'End');
      await page
        .getByRole('alert')
        .getByText(
          `${name} (PID ${4_000_000_000 + 4 * index}) could not be ended. Either it has ended already`,
        )
        .waitFor();
      assert.deepEqual(kills(app), [false]);
      await screenshot(page, 'processes-refused-light-en');
    },
  ));
