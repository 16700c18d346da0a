// Tests ports from a stand-in netstat and a real ping.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { look, openView, rowsOf, toastOf, withVarnel } from './harness.mjs';

const hex = (latin1) => Buffer.from(latin1, 'latin1').toString('hex');

// In the format of netstat -ano.
const netstat = (pid, ...more) => {
  const line = (local, state, owner) =>
    `  TCP    ${local}            0.0.0.0:0      ${state}       ${owner}\r\n`;
  const lines = [
    'Aktivn\xa1 p\xfdipojen\xa1\r\n',
    line('0.0.0.0:135', 'LISTENING', 1016),
    line('127.0.0.1:5354', 'ESTABLISHED', 3644),
    line('127.0.0.1:8080', 'LISTENING', pid),
    line('192.0.2.17:139', 'LISTENING', 4),
    ...more.map((port) => line(`0.0.0.0:${port}`, 'LISTENING', port)),
  ];
  return { steps: [{ hex: hex(lines.join('')) }], exit: 1 };
};

// Wine's ping writes all its output at its end.
test('ports lead to their process, and a ping runs', () => {
  const options = { settings: { theme: 'light', language: 'en' }, viewport: { width: 1250, height: 700 } };
  return withVarnel({ ...options, tools: { 'netstat.exe': netstat(77) } }, async (app) => {
    const { page, text } = app;
    const ports = () => rowsOf(page, text('network.ports'));
    const { pid } = (await app.request('getProcesses')).processes.find(({ name }) => name === 'Varnel.exe');
    await app.scriptTool('netstat.exe', netstat(pid));
    await openView(page, 'network');
    await page.locator('.link', { hasText: 'Varnel.exe' }).waitFor();
    assert.deepEqual(await ports(), [
      ['135', text('reach.all'), '1016'],
      ['139', text('reach.address'), '4'],
      ['8080', text('reach.machine'), `Varnel.exe ${pid}`],
    ]);
    assert.equal((await app.toolCalls('netstat'))[0], 'netstat -ano');

    // A process that has ended is reported; a running one is shown in its place.
    await page.locator('.link', { hasText: '1016' }).click();
    const gone = { name: text('network.process'), pid: '1016' };
    await toastOf(page, text('processes.gone', gone), 'alert').waitFor();
    await page.locator('.link', { hasText: 'Varnel.exe' }).click();
    await page.waitForSelector('main[data-view=processes]');
    assert.ok((await page.innerText('tr[aria-selected=true]')).includes(String(pid)));

    const search = async () => {
      await page.keyboard.press('Control+k');
      await page.keyboard.type('8080');
      await page.locator('[role=option]', { hasText: '127.0.0.1:8080' }).waitFor();
      await page.keyboard.press('Enter');
      await page.waitForSelector('main[data-view=network] table:focus');
      assert.ok((await page.innerText('tr[aria-selected=true]')).includes('8080'));
    };
    await search();

    const many = Array.from({ length: 598 }, (_, i) => 1000 + i);
    await app.scriptTool('netstat.exe', netstat(pid, ...many));
    await page.keyboard.press('F5');
    await page.getByText(text('table.rows', { n: 601 })).waitFor();
    assert.ok((await ports()).length < 100, 'only what is in sight is drawn');
    const rest = await page.locator('main').evaluate((main) => main.scrollHeight - main.clientHeight);
    assert.equal(rest, 0, 'the table scrolls, not the view');
    await search(); // the row is in sight, and stays so

    await page.locator('.diagnostics input').fill('127.0.0.1');
    await page.keyboard.press('Enter');
    const status = page.locator('.diagnostics [role=status]', { hasText: text('exit.replied') });
    await status.waitFor();
    const lines = await page.locator('.diagnostics [role=log] > div').allInnerTexts();
    assert.equal(lines.filter((line) => line.startsWith('Reply from 127.0.0.1: ')).length, 4);
    await look(app, 'network-ping-light-en');
  });
});
