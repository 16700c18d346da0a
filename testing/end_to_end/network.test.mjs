// Tests ports from a stand-in netstat, a real ping, and a stand-in nslookup.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { look, openView, press, rowsOf, toastOf, withVarnel } from './harness.mjs';
import { withAway } from './wine.mjs';

const hex = (latin1) => Buffer.from(latin1, 'latin1').toString('hex');
const kCmd = 'C:\\windows\\system32\\cmd.exe';

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

// --- the host ----------------------------------------------------------------------------------------------

test('a tool reports line by line and then its end', () => {
  // In the console's code page. Every code page that has these letters gives them the same bytes.
  const steps = [{ hex: hex('\r\nPing wird ausgef\x81hrt\r\n') }, { delay_ms: 3000, text: 'zuletzt\r\n' }];
  return withVarnel({ page: false, tools: { 'ping.exe': { steps, exit: 1 } } }, async (app) => {
    const isEnd = ({ streamType }) => streamType === 'exit';
    const ping = app.posted('runPingDiagnostic', { type: 'ping', target: '192.0.2.1' }, isEnd);
    await app.waitForMessage(({ message }) => message === 'Ping wird ausgeführt');
    assert.ok(!app.messages.some(isEnd), 'while the tool runs');
    const [, last, end] = await ping;
    assert.deepEqual([last.message, end.code], ['zuletzt', 1]);
    assert.deepEqual(await app.toolCalls('ping'), ['ping -n 4 192.0.2.1']);
  });
});

// --- the story ---------------------------------------------------------------------------------------------

// Wine's ping writes all its output at its end.
test('ports lead to their process; a ping runs, and a run can be set aside', () => {
  const tools = { 'netstat.exe': netstat(77), 'nslookup.exe': { steps: [{ text: 'Server:  UnKnown\r\n' }] } };
  const options = { settings: { theme: 'light', language: 'en' }, viewport: { width: 1250, height: 700 } };
  return withVarnel({ ...options, tools }, async (app) => {
    const { page, text } = app;
    const outcome = (key) => page.locator('.diagnostics [role=status]', { hasText: text(key) }).waitFor();
    const printed = () => page.locator('.diagnostics [role=log] > div').allInnerTexts();
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

    // The search leads to a port even if another process has taken it in the meantime.
    await app.scriptTool('netstat.exe', netstat(4));
    await page.keyboard.press('Control+k');
    for (const key of ['8', '0', '8', '0', 'Enter']) await page.keyboard.press(key);
    await page.locator('tr[aria-selected=true]', { hasText: /8080.* 4$/ }).waitFor();

    const many = Array.from({ length: 598 }, (_, i) => 1000 + i);
    await app.scriptTool('netstat.exe', netstat(pid, ...many));
    await openView(page, 'network');
    await page.keyboard.press('F5');
    await page.getByText(text('table.rows', { n: 601 })).waitFor();
    assert.ok((await ports()).length < 100, 'only what is in sight is drawn');
    const rest = await page.locator('main').evaluate((main) => main.scrollHeight - main.clientHeight);
    assert.equal(rest, 0, 'the table scrolls, not the view');

    await page.locator('.diagnostics input').fill('127.0.0.1');
    await page.keyboard.press('Enter');
    await outcome('exit.replied');
    const lines = await printed();
    assert.equal(lines.filter((line) => line.startsWith('Reply from 127.0.0.1: ')).length, 4);
    await look(app, 'network-ping-light-en');

    await press(page, text('diagnostics.ping'));
    await press(page, text('diagnostics.stop'));
    await outcome('diagnostics.stopped');
    await press(page, text('diagnostics.dns'));
    await outcome('diagnostics.mixed');
    assert.deepEqual(await printed(), ['Server:  UnKnown'], 'what the tool before has printed is nowhere');
    assert.deepEqual(await app.toolCalls('nslookup'), ['nslookup 127.0.0.1']);
    await withAway([kCmd], async () => {
      await press(page, text('diagnostics.ping'));
      await outcome('exit.notStarted');
    });
  });
});
