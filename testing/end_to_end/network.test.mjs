// Ports from a stand-in netstat, a real ping, and nslookup by a stand-in.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { look, openView, press, rowsOf, toastOf, withVarnel } from './harness.mjs';
import { withAway } from './wine.mjs';

const crlf = (text) => text.replaceAll('\n', '\r\n');
const hex = (latin1) => Buffer.from(latin1, 'latin1').toString('hex');
const kSystem = 'C:\\windows\\system32';

// As netstat -ano prints it; "%" is the process of the program itself.
const kSockets = `
Aktivn\xa1 p\xfdipojen\xa1
  Proto  Local Address          Foreign Address        State           PID
  TCP    0.0.0.0:135            0.0.0.0:0              LISTENING       1016
  TCP    127.0.0.1:5354         127.0.0.1:49670        ESTABLISHED     3644
  TCP    127.0.0.1:8080         0.0.0.0:0              LISTENING       %
  TCP    192.0.2.17:139         0.0.0.0:0              LISTENING       4
  TCP    [::]:135               [::]:0                 LISTENING       1016
  TCP    0.0.0.0:135            0.0.0.0:0              LISTENING       1016
  TCP    0.0.0.0:9998           0.0.0.0:0              ABH\x99REN         77
  UDP    0.0.0.0:500            *:*                                    1104
`;
const netstat = (pid, ...more) => ({
  steps: [{ hex: hex(crlf(kSockets.replaceAll('%', pid))) }, ...more],
  exit: 1,
});
const manySockets = Array.from({ length: 597 }, (_, i) => ({
  text: `  TCP    0.0.0.0:${1000 + i}           0.0.0.0:0              LISTENING       ${i}\r\n`,
}));

// --- the host ----------------------------------------------------------------------------------------------

const kAnswer = 'Server:  dns.brod.example\nAddress:  192.0.2.53\n\n';
const kTools = {
  'netstat.exe': netstat(77),
  // In the code page of the console; the letters have the same byte in each that holds them.
  'ping.exe': {
    steps: [
      { hex: hex(crlf('\nPing wird ausgef\x81hrt\nAntwort')) },
      { delay_ms: 300, text: '\r\n' },
      { delay_ms: 3000, text: 'zuletzt\r\n' },
    ],
    exit: 1,
  },
  'nslookup.exe': {
    steps: [
      { text: crlf(kAnswer) },
      { text: 'Non-authoritative answer:\r\n', stderr: true },
      { text: '\t  192.0.2.10\r\n' },
    ],
    cases: [{ when: 'nic.', steps: [{ hex: hex('*** Neexistuj\xa1c\xa1\n') }], exit: 1 }],
  },
};

test('what tools print comes line by line, and how they ended', () =>
  withVarnel({ page: false, tools: kTools }, async (app) => {
    const run = async (type, target) => {
      const isEnd = ({ streamType }) => streamType === 'exit';
      const posted = await app.posted('runPingDiagnostic', { type, target }, isEnd);
      return posted.map(({ message, code }) => message ?? code);
    };
    const { ports } = await app.request('getOpenPorts');
    assert.equal(ports.map(({ pid }) => pid).join(' '), '1016 77 4 1016 1016');
    const ping = run('ping', '192.0.2.1');
    await app.waitForMessage(({ message }) => message === 'Antwort');
    assert.ok(!app.messages.some(({ streamType }) => streamType === 'exit'), 'while the tool runs');
    assert.deepEqual(await ping, ['Ping wird ausgeführt', 'Antwort', 'zuletzt', 1]);
    const lines = [...kAnswer.trim().split('\n'), 'Non-authoritative answer:', '\t  192.0.2.10'];
    assert.deepEqual(await run('dns', '-type=mx brod.example'), [...lines, 0]);
    assert.deepEqual(await run('dns', 'nic.example'), ['*** Neexistující', 1]);
    const calls = ['netstat', 'ping', 'nslookup'].map((name) => app.toolCalls(name));
    const lookups = ['nslookup -type=mx brod.example', 'nslookup nic.example'];
    const want = ['netstat -ano', 'ping -n 4 192.0.2.1', ...lookups];
    assert.deepEqual((await Promise.all(calls)).flat(), want);
    await withAway([`${kSystem}\\cmd.exe`], async () => {
      assert.deepEqual((await app.request('getOpenPorts')).ports, []);
      assert.deepEqual(await run('ping', '127.0.0.1'), [-1]);
    });
  }));

// --- the story ---------------------------------------------------------------------------------------------

// Wine's ping writes everything when it ends.
test('open ports and the process behind one, a real ping, and a run that is put aside', () =>
  withVarnel(
    {
      settings: { theme: 'light', language: 'en' },
      viewport: { width: 1250, height: 700 },
      tools: { 'netstat.exe': netstat(77), 'nslookup.exe': { steps: [{ text: 'Server:  UnKnown\r\n' }] } },
    },
    async (app) => {
      const { page } = app;
      const outcome = (key) =>
        page.locator('.diagnostics [role=status]', { hasText: app.text(key) }).waitFor();
      const printed = () => page.locator('.diagnostics [role=log] > div').allInnerTexts();
      const aim = (target) => page.locator('.diagnostics input').fill(target);
      const { pid } = (await app.request('getProcesses')).processes.find(({ name }) => name === 'Varnel.exe');
      await app.scriptTool('netstat.exe', netstat(pid));
      await openView(page, 'network');
      await page.locator('.link', { hasText: 'Varnel.exe' }).first().waitFor();
      assert.deepEqual(await rowsOf(page, app.text('network.ports')), [
        ...Array(2).fill(['135', app.text('reach.all'), '1016']),
        ['139', app.text('reach.address'), '4'],
        ['8080', app.text('reach.machine'), `Varnel.exe ${pid}`],
      ]);

      // Whose process has ended meanwhile is told so; another one is shown where it is.
      await page.locator('.link', { hasText: '1016' }).first().click();
      const name = app.text('network.process');
      await toastOf(page, app.text('processes.gone', { name, pid: '1016' }), 'alert').waitFor();
      await page.locator('.link', { hasText: 'Varnel.exe' }).click();
      await page.waitForSelector('main[data-view=processes]');
      assert.ok((await page.innerText('tr[aria-selected=true]')).includes(String(pid)));

      const slow = { delay_ms: 2500, text: '' };
      await app.scriptTool('netstat.exe', netstat(pid, ...manySockets, slow));
      await openView(page, 'network');
      await page.keyboard.press('F5');
      await page.locator('.refresh[aria-busy=true]').waitFor();
      await page.getByText(app.text('table.rows', { n: 601 })).waitFor();
      const drawn = (await rowsOf(page, app.text('network.ports'))).length;
      assert.ok(drawn < 100, 'only what is in sight is drawn');
      const rest = await page.locator('main').evaluate((main) => main.scrollHeight - main.clientHeight);
      assert.equal(rest, 0, 'the table scrolls, not the view');

      await aim('127.0.0.1');
      await page.keyboard.press('Enter');
      await outcome('diagnostics.running');
      await outcome('exit.replied');
      const lines = await printed();
      assert.match(lines[0], /^Pinging 127\.0\.0\.1/);
      assert.equal(lines.filter((line) => line.startsWith('Reply from 127.0.0.1: ')).length, 4);
      await look(app, 'network-ping-light-en');

      await press(page, app.text('diagnostics.ping'));
      await press(page, app.text('diagnostics.stop'));
      await outcome('diagnostics.stopped');
      await press(page, app.text('diagnostics.dns'));
      await outcome('diagnostics.owed');
      await outcome('diagnostics.mixed');
      assert.deepEqual(await printed(), ['Server:  UnKnown'], 'what the tool before has printed is nowhere');

      await withAway([`${kSystem}\\cmd.exe`], async () => {
        await press(page, app.text('diagnostics.ping'));
        await outcome('exit.notStarted');
      });
    },
  ));
