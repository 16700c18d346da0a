// Tests the host's handling of winget and the driver scripts over its bridge, without a page.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { withVarnel } from './harness.mjs';
import { withAway } from './wine.mjs';

const kId = 'Brook.TarnSync';
const kTable =
  '\r   - \r   \\ \rName   Id  Version  Available  Source\r\n------------\r\n' +
  'Podzim Poznámky  Podzim.P  1.0  2.0  winget\r\n1 upgrades available.\r\n';
const kPowerShells = ['system32', 'syswow64'].map(
  (folder) => `C:\\windows\\${folder}\\WindowsPowerShell\\v1.0\\powershell.exe`,
);
const prints = (text, exit = 0) => ({ steps: [{ text }], exit });

// Returns the lines of a stream action and its exit message.
async function streamOf(app, action, data) {
  const isExit = ({ streamType }) => streamType === 'exit';
  const posted = await app.posted(action, data, isExit);
  const lines = posted.filter(({ streamType }) => streamType === 'stdout');
  return [lines.map(({ message, isProgress }) => (isProgress ? `${message} ...` : message)), posted.at(-1)];
}

// Returns the closing message of a scan and its error lines.
async function scan(app) {
  const posted = await app.posted('startSystemScan', {}, ({ status }) => status === 'done');
  const errors = posted.filter(({ style }) => style === 'stderr-line').map(({ message }) => message);
  const { success, software, drivers, scannedDriversCount } = posted.at(-1);
  return { result: [success, software?.length, drivers?.length, scannedDriversCount], errors, posted };
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
      const [lines, { code }] = await streamOf(app, action, data);
      assert.deepEqual([lines, code], [[], 999], `${action} refuses what is syntax`);
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
    const zero = {
      steps: [{ hex: Buffer.from(`${'x'.repeat(100)}\0${'x'.repeat(2899)}\n`).toString('hex') }],
    };
    const ping = { type: 'ping', target: '127.0.0.1 & "žluť"' };
    for (const [action, data, script, lines, code] of [
      ['installSoftware', { id: kId }, closes, ['Bye'], 0],
      ['installSoftware', { id: kId }, torn, ['first ...', 'second ...', 'third', 'on stderr'], 0x8a15002b],
      ['uninstallApp', { id: kId }, torn, ['first\rsecond', ' \tthird ', '   ', 'on stderr'], 0x8a15002b],
      ['runPingDiagnostic', ping, closes, ['Bye'], 259], // not awaited: "still active"
      // Loses whatever follows a zero byte in a read of 1023 bytes.
      ['runPingDiagnostic', ping, zero, ['x'.repeat(100 + 3000 - 1023)], 0],
    ]) {
      await app.scriptTool(action === 'runPingDiagnostic' ? 'cmd.exe' : 'winget.exe', script);
      const [got, exit] = await streamOf(app, action, data);
      assert.deepEqual([got, exit.code], [lines, code], action);
    }
    assert.equal((await app.toolCalls('cmd'))[0], 'cmd.exe /c ping -n 4 127.0.0.1 & "žluť"');

    const [{ scannedDriversCount }, took] = await hung;
    assert.equal(scannedDriversCount, 5, 'a tool that runs on after its output is ended');
    assert.ok(took > 9_900 && took < 30_000, `${took} ms`);
  });
});

test('a scan ends whatever the tools do', () =>
  withVarnel({ page: false, tools: { 'winget.exe': {}, 'powershell.exe': {} } }, async (app) => {
    const slow = {
      steps: [{ delay_ms: 8200, text: '{"scannedDriversCount":9,"updates":[{"Title":"Síť"}]}' }],
    };
    const codes = [/non-zero code: 2316632079$/, /returned exit code: 5$/];
    const noJson = [/^řeč$/, /parse_error\.101/]; // the error quotes the first byte of a character
    for (const [name, winget, powershell, want, wantErrors] of [
      ['exit codes', prints(kTable, 0x8a15000f), prints('[1,2]', 5), [true, 1, 0, 171], codes],
      ['no JSON', prints(kTable), prints('řeč'), [false, ...Array(3)], noJson],
      ['both lists', prints(kTable), slow, [true, 1, 1, 9], []],
    ]) {
      await app.scriptTool('winget.exe', winget);
      await app.scriptTool('powershell.exe', powershell);
      const { result, errors, posted } = await scan(app);
      assert.deepEqual(result, want, name);
      assert.equal(errors.length, wantErrors.length, `${name}: ${errors}`);
      wantErrors.forEach((error, i) => assert.match(errors[i], error, name));
      const ticks = posted.map((message) => message.ticks).filter(Boolean);
      assert.deepEqual(ticks, powershell === slow ? [1, 2] : [], 'a sign of life every four seconds');
    }
  }));

test('missing tools are reported', () =>
  withAway(kPowerShells, () =>
    withVarnel({ page: false }, async (app) => {
      const { result, errors } = await scan(app);
      assert.deepEqual([result, errors.length], [[true, 0, 0, 171], 2]);
      assert.equal((await streamOf(app, 'installSoftware', { id: kId }))[1].code, 1);
    }),
  ));
