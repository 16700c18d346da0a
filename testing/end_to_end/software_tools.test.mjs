// What the program makes of winget and of the driver scripts, asked over its bridge without a page.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { asked, withVarnel } from './harness.mjs';
import { withAway } from './wine.mjs';

const kId = 'Brook.TarnSync';
const kTable =
  '\r   - \r   \\ \rName   Id  Version  Available  Source\r\n------------\r\n' +
  'Podzim Poznámky  Podzim.P  1.0  2.0  winget\r\n1 upgrades available.\r\n';
const kPowerShells = ['system32', 'syswow64'].map(
  (folder) => `C:\\windows\\${folder}\\WindowsPowerShell\\v1.0\\powershell.exe`,
);
const prints = (text, exit = 0) => ({ steps: [{ text }], exit });
const hex = (bytes) => Buffer.from(bytes, 'latin1').toString('hex');

// The lines of a stream action and its exit message.
async function streamOf(app, action, data) {
  const isStream = ({ type }) => /_stream$/.test(type);
  const posted = await app.posted(action, data, (one) => isStream(one) && one.streamType === 'exit');
  const lines = posted.filter((one) => isStream(one) && one.streamType === 'stdout');
  return [lines.map(({ message, isProgress }) => (isProgress ? `${message} ...` : message)), posted.at(-1)];
}

test('lines and ends of tools', () => {
  const closes = (exit) => ({
    windowed: true,
    steps: [{ text: 'Bye\n', close_output: true }, { delay_ms: 400 }],
    exit,
  });
  const tools = {
    'winget.exe': closes(0),
    'cmd.exe': closes(0),
    'powershell.exe': {
      windowed: true,
      steps: [{ text: '{"scannedDriversCount":5}', close_output: true }, { delay_ms: 60_000 }],
    },
  };
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

    // The same output for both line rules: a redraw whose CR LF is torn apart, blanks, an unfinished last line.
    const torn = {
      steps: [
        { text: 'first\rsecond\r' },
        { text: '\n \tthird \n\n   \r\n', delay_ms: 150 },
        { text: 'on stderr\n', stderr: true, delay_ms: 150 },
        { text: 'unfinished', delay_ms: 150 },
      ],
      exit: 0x8a15002b,
    };
    const everyByte = Array.from({ length: 256 }, (_, value) => `${String.fromCharCode(value)}\n`).join('');
    const bytes = { steps: [{ hex: hex(`${everyByte}${'x'.repeat(5000)}\n`) }] };
    const ping = { type: 'ping', target: '127.0.0.1 & "žluť"' };
    const split = { steps: [{ hex: '50c5' }, { hex: '990d', delay_ms: 60 }, { text: '\nb' }] };
    const zero = `${'x'.repeat(100)}\0${'x'.repeat(2899)}\n`; // what follows in a read of 1023 bytes is lost
    for (const [action, data, script, lines, code] of [
      ['installSoftware', { id: kId }, undefined, ['Bye'], 0],
      ['installSoftware', { id: kId }, torn, ['first ...', 'second ...', 'third', 'on stderr'], 0x8a15002b],
      ['uninstallApp', { id: kId }, torn, ['first\rsecond', ' \tthird ', '   ', 'on stderr'], 0x8a15002b],
      ['installSoftware', { id: kId }, bytes, undefined, 0],
      ['uninstallApp', { id: kId }, bytes, undefined, 0],
      ['runPingDiagnostic', ping, undefined, ['Bye'], 259], // not waited for: "still active"
      ['runPingDiagnostic', ping, { steps: [{ hex: hex(zero) }] }, ['x'.repeat(100 + 3000 - 1023)], 0],
      ['runPingDiagnostic', ping, split, ['Př'], 0],
    ]) {
      if (script) await app.scriptTool(action === 'runPingDiagnostic' ? 'cmd.exe' : 'winget.exe', script);
      const [got, exit] = await streamOf(app, action, data);
      assert.equal(exit.code, code, action);
      if (lines) assert.deepEqual(got, lines, action);
      else
        assert.deepEqual([got.length > 200, got.at(-1)], [true, 'x'.repeat(5000)], 'a line of several reads');
    }
    assert.equal((await app.toolCalls('cmd'))[0], 'cmd.exe /c ping -n 4 127.0.0.1 & "žluť"');

    const [{ scannedDriversCount }, took] = await hung;
    assert.equal(scannedDriversCount, 5, 'a tool that runs on after its output is ended');
    assert.ok(took > 9_900 && took < 30_000, `${took} ms`);
  });
});

test('a scan and a list of drivers, whatever the tools do', () =>
  withVarnel({ page: false, tools: { 'winget.exe': {}, 'powershell.exe': {} } }, async (app) => {
    const one = '{"scannedDriversCount":9,"updates":[{"Title":"Síť"}]}';
    const empty = '{"scannedDriversCount":88,"updates":[]}';
    const codes = [/non-zero code: 2316632079$/, /returned exit code: 5$/];
    const noJson = [/^řeč$/, /parse_error\.101/]; // the error quotes the first byte of a character
    // The closing message, what the scan said of errors, and the driver list alone.
    for (const [name, winget, powershell, scan, errors, drivers] of [
      ['both lists', prints(kTable), prints(one), [true, 1, 1, 9], [], [true, 1, 9]],
      ['nothing', prints(''), prints(empty), [true, 0, 0, 88], [], [true, 0, 88]],
      [
        'exit codes',
        prints(kTable, 0x8a15000f),
        prints('[1,2]', 5),
        [true, 1, 0, 171],
        codes,
        [true, 0, 171],
      ],
      ['no JSON', prints(kTable), prints('řeč'), [false, ...Array(3)], noJson, [false, 0, 171]],
    ]) {
      await app.scriptTool('winget.exe', winget);
      await app.scriptTool('powershell.exe', powershell);
      const posted = await app.posted('startSystemScan', {}, ({ status }) => status === 'done');
      const { success, software, drivers: found, scannedDriversCount } = posted.at(-1);
      assert.deepEqual([success, software?.length, found?.length, scannedDriversCount], scan, name);
      const said = posted.filter(({ style }) => style === 'stderr-line').map(({ message }) => message);
      assert.equal(said.length, errors.length, `${name}: ${said}`);
      errors.forEach((error, i) => assert.match(said[i], error, name));
      const list = await app.request('getDriverUpdates');
      assert.deepEqual([list.success, list.count, list.scannedDriversCount], drivers, name);
    }
    await app.scriptTool('powershell.exe', { steps: [{ delay_ms: 8200, text: '{}' }] });
    const posted = await app.posted('startSystemScan', {}, ({ status }) => status === 'done');
    const ticks = posted.map((message) => message.ticks).filter(Boolean);
    assert.deepEqual(ticks, [1, 2], 'a sign of life every four seconds');
  }));

test('without the tools', () =>
  withAway(kPowerShells, () =>
    withVarnel({ page: false }, async (app) => {
      const posted = await app.posted('startSystemScan', {}, ({ status }) => status === 'done');
      const { success, software, drivers, scannedDriversCount } = posted.at(-1);
      assert.deepEqual([success, software, drivers, scannedDriversCount], [true, [], [], 171]);
      assert.equal(posted.filter(({ message }) => /Win32 Error: 2$/.test(message)).length, 2);
      for (const [action, member] of Object.entries({
        getSoftwareUpdates: 'updates',
        getInstalledApps: 'apps',
      })) {
        const reply = await app.request(action);
        assert.deepEqual([reply.success, reply[member]], [true, []], action);
      }
      for (const action of ['installSoftware', 'uninstallApp', 'installDriver']) {
        const data = { id: kId, title: 'Peat - System' };
        const [lines, { code }] = await streamOf(app, action, data);
        assert.deepEqual([lines, code], [[], 1], action);
      }
    }),
  ));

test('what the service says while it installs a driver', () =>
  withVarnel({ page: false, service: {} }, async (app) => {
    const out = (message) => ({ type: 'stdout', message });
    const kReboot = 'x SYSTEM_REBOOT_REQUIRED';
    const exit = (code, more) => ({ type: 'exit', code, ...more });
    for (const [records, lines, code, rebootRequired] of [
      [[out(' a '), { type: 'note' }, exit(3)], [' a '], 3, false],
      [[out(kReboot), exit(0, { rebootRequired: false })], [kReboot], 0, true],
      [[exit(0, { rebootRequired: true })], [], 0, true],
      [['oops', exit(4)], [], 4, false],
    ]) {
      const text = records.map((one) => `${typeof one === 'string' ? one : JSON.stringify(one)}\n`).join('');
      await app.scriptService({ installDriver: { text } });
      const [got, end] = await streamOf(app, 'installDriver', { title: 'Peat - System' });
      assert.deepEqual([got, end.code, end.rebootRequired], [lines, code, rebootRequired], text);
    }
    const data = { title: 'Peat - System', scriptPath: `${app.folder.windows}\\bin\\update_driver.ps1` };
    assert.deepEqual((await asked(app, 'installDriver'))[0], { action: 'installDriver', data });
  }));
