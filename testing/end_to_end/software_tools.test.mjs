// Tests the host's handling of winget and the driver scripts over its bridge, without a page.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { withVarnel } from './harness.mjs';

const kId = 'Brook.TarnSync';
const kTable =
  '\r   - \r   \\ \rName   Id  Version  Available  Source\r\n------------\r\n' +
  'Podzim Poznámky  Podzim.P  1.0  2.0  winget\r\n1 upgrades available.\r\n';
const prints = (text, exit = 0) => ({ steps: [{ text }], exit });

// Returns the lines of a stream action and its exit code.
async function streamOf(app, action, data) {
  const posted = await app.posted(action, data, ({ streamType }) => streamType === 'exit');
  const lines = posted.filter(({ streamType }) => streamType === 'stdout');
  return [
    lines.map(({ message, isProgress }) => (isProgress ? `${message} ...` : message)),
    posted.at(-1).code,
  ];
}

test('tools deliver their lines and their ends', () => {
  const closing = (text, delay_ms) => ({
    windowed: true,
    steps: [{ text, close_output: true }, { delay_ms }],
  });
  const closes = closing('Bye\n', 400);
  const hangs = closing('{"scannedDriversCount":5}', 60_000);
  const tools = { 'winget.exe': closes, 'cmd.exe': closes, 'powershell.exe': hangs };
  return withVarnel({ page: false, tools }, async (app) => {
    const began = Date.now();
    const hung = app.request('getDriverUpdates').then((reply) => [reply, Date.now() - began]);

    for (const [action, data] of [
      ['installSoftware', { id: 'a" & calc "' }],
      ['installDriver', { title: 'Meadow, Inc.' }],
      ['uninstallApp', { id: 'Poznámky' }],
    ]) {
      assert.deepEqual(await streamOf(app, action, data), [[], 999], `${action} refuses what is syntax`);
    }
    assert.deepEqual(await app.toolCalls('winget'), []);

    // The same output for both line rules: a redraw with a split CR LF, spaces, an unfinished line.
    const torn = {
      steps: [
        { text: 'first\rsecond\r' },
        { text: '\n \tthird \n\n   \r\n', delay_ms: 150 },
        { text: 'on stderr\n', stderr: true, delay_ms: 150 },
        { text: 'unfinished', delay_ms: 150 },
      ],
      exit: 0x8a15002b,
    };
    // In the console's code page. A zero byte loses the rest of its read of 1023 bytes.
    const zero = { steps: [{ hex: `${'81'.repeat(100)}00${'78'.repeat(2899)}0a` }], exit: 1 };
    const ping = { type: 'ping', target: '127.0.0.1 & "žluť"' };
    for (const [action, data, script, lines, code] of [
      ['installSoftware', { id: kId }, closes, ['Bye'], 0],
      ['installSoftware', { id: kId }, torn, ['first ...', 'second ...', 'third', 'on stderr'], 0x8a15002b],
      ['uninstallApp', { id: kId }, torn, ['first\rsecond', ' \tthird ', '   ', 'on stderr'], 0x8a15002b],
      ['runPingDiagnostic', ping, closes, ['Bye'], 259], // not awaited: "still active"
      ['runPingDiagnostic', ping, zero, ['ü'.repeat(100) + 'x'.repeat(3000 - 1023)], 1],
    ]) {
      await app.scriptTool(action === 'runPingDiagnostic' ? 'cmd.exe' : 'winget.exe', script);
      assert.deepEqual(await streamOf(app, action, data), [lines, code], action);
    }
    assert.equal((await app.toolCalls('cmd'))[0], 'cmd.exe /c ping -n 4 127.0.0.1 & "žluť"');

    const [{ scannedDriversCount }, took] = await hung;
    assert.equal(scannedDriversCount, 5, 'a tool that runs on after its output is ended');
    assert.ok(took > 9_900 && took < 30_000, `${took} ms`);
  });
});

test('a scan ends whatever the tools do', () =>
  withVarnel({ page: false, tools: { 'winget.exe': {}, 'powershell.exe': {} } }, async (app) => {
    const codes = [/non-zero code: 2316632079$/, /returned exit code: 5$/];
    const noJson = [/^řeč$/, /parse_error\.101/]; // the error quotes the first byte of a character
    for (const [exit, powershell, want, wantErrors] of [
      [0x8a15000f, prints('[1,2]', 5), [true, 1, 0, 171], codes],
      [0, prints('řeč'), [false, ...Array(3)], noJson],
    ]) {
      await app.scriptTool('winget.exe', prints(kTable, exit));
      await app.scriptTool('powershell.exe', powershell);
      const posted = await app.posted('startSystemScan', {}, ({ status }) => status === 'done');
      const { success, software, drivers, scannedDriversCount } = posted.at(-1);
      assert.deepEqual([success, software?.length, drivers?.length, scannedDriversCount], want);
      const errors = posted.filter(({ style }) => style === 'stderr-line').map(({ message }) => message);
      assert.equal(errors.length, wantErrors.length, `${errors}`);
      wantErrors.forEach((error, i) => assert.match(errors[i], error));
    }
  }));

test('a missing winget is reported', () =>
  withVarnel({ page: false }, async (app) =>
    assert.deepEqual(await streamOf(app, 'installSoftware', { id: kId }), [[], 1]),
  ));
