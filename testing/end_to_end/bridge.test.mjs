// What the program does with requests, asked over its bridge without a page.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { withVarnel } from './harness.mjs';
import { copyInto, registryText, standIn, withRegistry } from './wine.mjs';

const kNoPage = { page: false };

// Sends a message and compares the exact texts that come back before the reply to a request sent after it.
async function expectReplies(app, message, want, name = message) {
  const from = app.texts.length;
  await app.send(message);
  await app.request('testBridge');
  const got = app.texts.slice(from, -1);
  assert.equal(got.length, want.length, `${name} gave ${got}`);
  got.forEach((text, i) =>
    want[i] instanceof RegExp ? assert.match(text, want[i]) : assert.equal(text, want[i], name),
  );
}

const testBridgeReply = (id) => `{"requestId":${id},"status":"ok","success":true,"type":"testBridge"}`;
const typeError = (want, got) =>
  `{"message":"[json.exception.type_error.302] type must be ${want}, but is ${got}","type":"error"}`;
const kParseError = /^\{"message":"\[json\.exception\.parse_error\.101\].*","type":"error"\}$/;

test('the envelope, through the real window', () =>
  withVarnel(kNoPage, async (app) => {
    const deep = (open, close) =>
      `{"action":"testBridge","requestId":9,"data":${open.repeat(10_000)}1${close.repeat(10_000)}}`;
    const long = `{"action":"testBridge","requestId":9,"data":"${'ž'.repeat(5 << 20)}"}`;
    // The settings file's indentation grows with the square of the depth: 36 MB here.
    const settings = `{"action":"saveSettings","data":${'{"a":'.repeat(3_000)}1${'}'.repeat(3_000)}}`;
    for (const [message, want, name] of [
      ['{"action":"testBridge","requestId":7,"data":{}}', [testBridgeReply(7)]],
      ['{"action":"testBridge","requestId":3.9}', [testBridgeReply(3)]],
      ['{"action":"testBridge","requestId":"7"}', [typeError('number', 'string')]],
      ['{"action":"openUrl","url":1}', [typeError('string', 'number')]],
      ['{"action":"downloadAndApplyUpdate","data":[]}', [/type_error\.305/]],
      ['{"action":"noSuchAction","requestId":1}', []],
      ['{"action":"quickAction","requestId":3,"data":{"type":"other"}}', []],
      ['[1,2]', []],
      [null, [], 'what is no string'],
      ['{"action":"testBridge","data":"\\ud800"}', [kParseError]],
      ['', [kParseError]],
      [long, [testBridgeReply(9)], '10 MB'],
      [deep('[', ']'), [testBridgeReply(9)], 'arrays in arrays'],
      [deep('{"a":', '}'), [testBridgeReply(9)], 'objects in objects'],
      ['['.repeat(1_000_000), [/"type":"error"/], 'a million brackets'],
      [settings, [/"type":"(saveSettings|error)"/], 'deep settings'],
    ])
      await expectReplies(app, message, want, name);
  }));

// Of several missing fields one is named. Nothing is started, ended, written or deleted.
test('a request without a required field is refused before any work begins', () =>
  withVarnel(kNoPage, async (app) => {
    const from = app.texts.length;
    const text =
      'saveEnvVariable saveHostsFile controlDevService runPingDiagnostic toggleStartupItem uninstallApp';
    const more =
      'findLeftovers startDiskAnalysis getFolderContents installSoftware installDriver quickAction';
    const rows = [
      ...`${text} ${more}`.split(' ').map((action) => [action, 'string']),
      ['killProcess', 'number'],
      ['toggleScheduleClean', 'boolean'],
      ['deleteSpecificFiles', 'array'],
      ['cleanLeftovers', 'array'],
    ];
    for (const [action, type] of rows)
      await expectReplies(app, `{"action":"${action}","requestId":3,"data":{}}`, [typeError(type, 'null')]);
    await new Promise((resolve) => setTimeout(resolve, 300));
    await app.request('testBridge');
    assert.equal(app.texts.length, from + 2 * rows.length + 1, 'nothing comes from a worker');
  }));

test('a thousand requests are answered in order', () =>
  withVarnel(kNoPage, async (app) => {
    const from = app.texts.length;
    const ids = Array.from({ length: 1000 }, (_, i) => i + 1);
    await Promise.all(ids.map((requestId) => app.send({ action: 'testBridge', requestId, data: {} })));
    await app.until(() => app.texts.length === from + 1000, 'a thousand replies');
    assert.deepEqual(app.texts.slice(from), ids.map(testBridgeReply));
  }));

test('an action started twice runs twice at the same time', () => {
  const steps = [{ text: 'begin\r\n' }, { text: 'end\r\n', delay_ms: 3000 }];
  return withVarnel({ ...kNoPage, tools: { 'ping.exe': { steps } } }, async (app) => {
    const data = { type: 'ping', target: 'localhost' };
    for (const requestId of [1, 2]) await app.send({ action: 'runPingDiagnostic', requestId, data });
    const stream = (wanted) =>
      app.messages.filter(
        ({ type, streamType }) => type === 'ping_diagnostic_stream' && streamType === wanted,
      );
    await app.until(() => stream('exit').length === 2, 'both runs to end');
    const lines = stream('stdout').map(({ message, requestId }) => `${message} ${requestId}`);
    assert.deepEqual(lines.slice(0, 2).toSorted(), ['begin 1', 'begin 2'], 'both have begun before one ends');
    assert.deepEqual(lines.slice(2).toSorted(), ['end 1', 'end 2']);
  });
});

// --- the helper service -----------------------------------------------------------------------------------------------

const kHosts = 'C:\\windows\\system32\\drivers\\etc\\hosts';
const kServices = [{ name: 'Peat DB', service_type: 'peatdb', status: 'stopped', commands: ['start'] }];
const kFolder = 'C:\\Program Files\\Varnel Žluť';
// [action, data, what the service is asked, with which data (no word: the same), what else it answers and the reply
// then has, what the reply has without the service]
const kServiceActions = (exePath) => [
  ['toggleScheduleClean', { enabled: true }, 0, { enabled: true, exePath }],
  ['toggleScheduleClean', { enabled: false }, 0, { enabled: false, exePath }],
  [
    ...['toggleStartupItem', { scope: 'HKLM', name: 'Žlutý "x"', enabled: false }],
    ...['toggleHKLMStartup', { name: 'Žlutý "x"', enable: false }],
  ],
  ['getHostsFile', {}, 'get_hosts_file', {}, { content: 'a\r\nž' }, { content: '' }],
  ['saveHostsFile', { content: 'a\r\nž'.repeat(20_000) }, 'save_hosts_file'],
  [
    ...['saveEnvVariable', { type: 'system', name: 'N', value: 'v', is_delete: true }],
    ...['save_system_env', { name: 'N', value: 'v', is_delete: true }],
  ],
  [
    ...['saveEnvVariable', { type: 'USER', name: 'N', value: '', is_delete: false }],
    ...['save_system_env', { name: 'N', value: '', is_delete: false }],
  ],
  ['getDevServices', {}, 'get_dev_services', {}, { services: kServices }, { services: [] }],
  ['controlDevService', { service_type: 'peatdb', command: 'start' }, 'control_dev_service'],
  ['setHibernation', { enabled: true }, 'set_hibernation'],
  ['quickAction', { type: 'safemode-reboot' }, 'safemodeReboot', {}],
  [
    'cleanLeftovers',
    { items: [{ type: 'directory', path: kFolder }] },
    'cleanLeftoverPath',
    { path: kFolder },
  ],
  [
    ...['cleanLeftovers', { items: [{ type: 'registry', path: 'HKLM\\Software\\Varnel Žluť' }] }],
    ...['cleanHKLMRegistry', { subKey: 'Software\\Varnel Žluť' }],
  ],
];

test('actions of the helper service: absent, willing, and saying nothing of success', () =>
  withVarnel(
    {
      ...kNoPage,
      tools: { 'holder.exe': { steps: [{ hold: kHosts, text: 'held' }, { delay_ms: 600_000 }] } },
    },
    async (app) => {
      const holder = await app.startTool('holder'); // so that only the service can read the hosts file
      const rows = kServiceActions(`${app.folder.windows}\\bin\\Varnel.exe`);
      // Each row's reply, and whether the page was told that the service is away.
      const run = async (service, success, more) => {
        if (service) await (app.service ? app.scriptService(service) : app.startService(service));
        for (const [row, [action, data]] of rows.entries()) {
          const posted = await app.posted(action, data);
          const { type, ...reply } = posted.pop();
          assert.deepEqual(
            [type, reply.success, posted],
            [action, success, service ? [] : [{ type: 'show_service_error_modal' }]],
            `${action} in row ${row}`,
          );
          assert.deepEqual({ ...reply, ...more(rows[row]) }, reply, `${action} in row ${row}`);
        }
      };
      await run(undefined, false, (row) => row[5]);
      const answers = rows.map(([action, , asked, , more]) => [
        asked || action,
        { reply: { success: true, ...more } },
      ]);
      await run(Object.fromEntries(answers), true, (row) => row[4]);
      assert.deepEqual(
        await app.serviceRequests(),
        rows.map(([action, given, asked, data = given]) => ({ action: asked || action, data })),
      );
      await run({ '*': { reply: { done: true } } }, false, (row) => row[5]);
      holder.kill('SIGKILL');
    },
  ));

test('what the helper service may answer', () =>
  withVarnel({ ...kNoPage, service: {} }, async (app) => {
    const ask = async () => (await app.request('toggleScheduleClean', { enabled: true })).success;
    const pieces = ['{"succ', 'ess":tr', 'ue}\n'].map((text) => ({ text, delay_ms: 50 }));
    const hex = Buffer.from('{"success":true,"x":"\xf8"}\n', 'latin1').toString('hex');
    for (const [name, answer, want] of [
      ['no line feed at the end', { text: '{"success":true}' }, true],
      ['in pieces', { chunks: pieces }, true],
      ['two lines, left open', { text: '{"success":true}\n{"success":false}\n', hold_open: true }, true],
      ['10 kB', { reply: { content: 'x'.repeat(10_000), success: true } }, true],
      ['a text for success', { reply: { success: 'true' } }, false],
      ['no object', { text: '[true]\n' }, false],
      ['cut', { text: '{"success":tr' }, false],
      ['bytes that are no UTF-8', { hex }, false],
      ['closed at once', {}, false],
    ]) {
      await app.scriptService({ '*': answer });
      assert.equal(await ask(), want, name);
    }

    // More requests than it takes at a time: each waits its turn.
    await app.scriptService({ '*': { chunks: [{ reply: { success: true }, delay_ms: 150 }] } });
    assert.deepEqual(await Promise.all(Array.from({ length: 5 }, ask)), Array(5).fill(true));

    const line = (record) => ({ text: `${typeof record === 'string' ? record : JSON.stringify(record)}\n` });
    const [a, exit] = [
      { type: 'stdout', message: 'a' },
      { type: 'exit', code: 3010 },
    ];
    for (const [name, records, lines, code] of [
      ['what is no record', [{ type: 'progress' }, 'noise', '', a, exit], ['a'], 3010],
      ['after the exit', [exit, a], [], 3010],
      ['a mistyped record ends it', [a, { type: 5 }, exit], ['a']],
      ['closed before the exit', [a], ['a']],
    ]) {
      await app.scriptService({ sfcVerify: { chunks: records.map(line) }, '*': {} });
      const from = app.messages.length;
      await app.send({ action: 'quickAction', data: { type: 'sfc' } });
      const stream = () => app.messages.slice(from).filter(({ type }) => type === 'sfc_stream');
      // Without an exit record nothing tells the end; a request sent later tells that nothing more comes.
      await app.until(() => stream().length === 1 + lines.length + (code === undefined ? 0 : 1), name);
      await ask();
      const [status, ...rest] = stream();
      assert.equal(status.streamType, 'status', name);
      assert.deepEqual(
        rest.map((message) => (message.streamType === 'exit' ? message.code : message.message)),
        code === undefined ? lines : [...lines, code],
        name,
      );
    }
  }));

test('a service that is always busy counts as not running', () =>
  withVarnel({ ...kNoPage, service: 'busy' }, async (app) => {
    const started = Date.now();
    assert.equal((await app.request('getStatus')).serviceActive, false);
    assert.ok(Date.now() - started >= 2000, 'the probe waits for a busy pipe');
  }));

// --- other actions ----------------------------------------------------------------------------------------------------

test('openUrl opens the url of the envelope and never that of the data', () =>
  withVarnel({ ...kNoPage, tools: { 'opener.exe': {} } }, async (app) => {
    const kScheme = 'HKLM\\Software\\Classes\\varneltest'; // of the machine: Wine finds no scheme of the user
    const command = registryText(`${app.folder.windows}\\bin\\opener.exe "%1"`);
    const keys = {
      [kScheme]: { 'URL Protocol': '""' },
      [`${kScheme}\\shell\\open\\command`]: { '': command },
    };
    await withRegistry(keys, async () => {
      for (const action of ['openUrl', 'openMailto'])
        for (const place of [[{ url: `varneltest:data${action}` }], [{}, { url: `varneltest:${action}` }]])
          assert.equal((await app.request(action, ...place)).success, true);
      const opened = async () =>
        (await app.toolCalls('opener')).map((line) => /varneltest:\w+/.exec(line)?.[0]);
      await app.until(async () => (await opened()).length >= 2, 'both to be opened');
      assert.deepEqual((await opened()).toSorted(), ['varneltest:openMailto', 'varneltest:openUrl']);
    });
  }));

test('the first telemetry has nothing to compare with; debugSystem goes on from it', () =>
  withVarnel(kNoPage, async (app) => {
    const first = await app.request('getTelemetry');
    const want = { cpu: 0, download: 0, upload: 0, cpuTemp: 34, gpuTemp: 36 };
    assert.deepEqual({ ...first, ...want }, first);
    for (const end = Date.now() + 300; Date.now() < end;);
    const lines = (await app.posted('debugSystem')).map(
      ({ message }) => /CPU Load: ([\d.]+)%/.exec(message)?.[1],
    );
    assert.ok(Number(lines.find(Boolean)) > 0, 'the load since the first sample');
  }));

test('reboot and uninstallAppSuite start their tools with exact words', () =>
  withVarnel({ ...kNoPage, tools: { 'shutdown.exe': { exit: 5 } } }, async (app) => {
    assert.equal((await app.request('reboot')).success, true);
    assert.deepEqual(await app.toolCalls('shutdown'), ['shutdown /r /t 0']);

    await copyInto(app.binFolder, { 'VarnelSetup.exe': standIn('console_tool.exe') });
    await app.scriptTool('VarnelSetup.exe', {});
    app.send({ action: 'uninstallAppSuite', requestId: 1 }).catch(() => {}); // the program ends before it can confirm
    assert.equal(await app.exited, 0);
    const installer = () => app.toolCalls('VarnelSetup');
    await app.until(async () => (await installer()).length > 0, 'the installer');
    assert.match((await installer())[0], /VarnelSetup\.exe"? --uninstall$/);
  }));
