// Tests how the program handles requests over its bridge, without a page.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { asked, withVarnel } from './harness.mjs';
import { registryText, withRegistry } from './wine.mjs';

const kNoPage = { page: false };

// Sends a message and compares the exact texts that arrive before the reply to a later request.
async function expectReplies(app, message, want, name = message) {
  const from = app.texts.length;
  await app.send(message);
  await app.request('testBridge');
  const got = app.texts.slice(from, -1);
  assert.equal(got.length, want.length, `${name} gave ${got}`);
  for (const [i, text] of got.entries())
    if (want[i] instanceof RegExp) assert.match(text, want[i]);
    else assert.equal(text, want[i], name);
}

const testBridgeReply = (id) => `{"requestId":${id},"status":"ok","success":true,"type":"testBridge"}`;
const typeError = (want, got) =>
  `{"message":"[json.exception.type_error.302] type must be ${want}, but is ${got}","type":"error"}`;

test('the window decodes every request envelope', () =>
  withVarnel(kNoPage, async (app) => {
    const request = (data) => `{"action":"testBridge","requestId":9,"data":${data}}`;
    // The settings file's indentation grows with the square of the depth, to 36 MB here.
    const settings = `{"action":"saveSettings","data":${'{"a":'.repeat(3_000)}1${'}'.repeat(3_000)}}`;
    for (const [message, want, name] of [
      ['{"action":"openUrl","url":1}', [typeError('string', 'number')]],
      [null, [], 'what is no string'],
      [request(`"${'ž'.repeat(5 << 20)}"`), [testBridgeReply(9)], '10 MB'],
      [request('{"a":'.repeat(10_000) + 1 + '}'.repeat(10_000)), [testBridgeReply(9)], 'objects in objects'],
      ['['.repeat(1_000_000), [/"type":"error"/], 'a million brackets'],
      [settings, [/"type":"(saveSettings|error)"/], 'deep settings'],
    ])
      await expectReplies(app, message, want, name);
  }));

// Names one of several missing fields. Nothing is started, ended, written or deleted.
test('a request without a required field is refused before any work begins', () =>
  withVarnel(kNoPage, async (app) => {
    const from = app.texts.length;
    const actions = {
      string: `saveEnvVariable saveHostsFile controlDevService runPingDiagnostic toggleStartupItem
        uninstallApp findLeftovers startDiskAnalysis getFolderContents installSoftware installDriver quickAction`,
      number: 'killProcess',
      boolean: 'toggleScheduleClean',
      array: 'deleteSpecificFiles cleanLeftovers',
    };
    const rows = Object.entries(actions).flatMap(([type, names]) =>
      names.split(/\s+/).map((action) => [action, type]),
    );
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

// --- the helper service ---

const kFolder = 'C:\\Program Files\\Varnel Žluť';
const cleaning = (type, path) => ['cleanLeftovers', { items: [{ type, path }] }];
const saving = (type, is_delete) => ['saveEnvVariable', { type, name: 'N', value: 'v', is_delete }];
const startup = { name: 'Žlutý "x"', enable: false };

// [action, data, the service's action (same if 0 or absent), its data (same if absent)]
const kServiceActions = (exePath) => [
  ['toggleScheduleClean', { enabled: true }, 'toggleScheduleClean', { enabled: true, exePath }],
  ['toggleStartupItem', { scope: 'HKLM', name: startup.name, enabled: false }, 'toggleHKLMStartup', startup],
  ['saveHostsFile', { content: 'a\r\nž' }, 'save_hosts_file'],
  [...saving('system', true), 'save_system_env', { name: 'N', value: 'v', is_delete: true }],
  [...saving('USER', false), 'save_system_env', { name: 'N', value: 'v', is_delete: false }],
  ['getDevServices', {}, 'get_dev_services'],
  ['controlDevService', { service_type: 'x', command: 'y' }, 'control_dev_service'],
  ['setHibernation', { enabled: true }, 'set_hibernation'],
  ['quickAction', { type: 'safemode-reboot' }, 'safemodeReboot', {}],
  [...cleaning('directory', kFolder), 'cleanLeftoverPath', { path: kFolder }],
  [...cleaning('registry', 'HKLM\\Software\\Žluť'), 'cleanHKLMRegistry', { subKey: 'Software\\Žluť' }],
];

test('actions with the helper service absent, successful, and answering without success', () =>
  withVarnel(kNoPage, async (app) => {
    const rows = kServiceActions(`${app.folder.windows}\\bin\\Varnel.exe`);
    const run = async (success, notice = []) => {
      for (const [action, data] of rows) {
        const posted = await app.posted(action, data);
        const reply = posted.pop();
        assert.deepEqual(
          [reply.type, reply.success, posted],
          [action, success, notice],
          JSON.stringify(data),
        );
      }
    };
    await run(false, [{ type: 'show_service_error_modal' }]);
    await app.startService({ '*': { reply: { success: true, services: [] } } });
    await run(true);
    assert.deepEqual(
      await app.serviceRequests(),
      rows.map(([, given, action, data = given]) => ({ action, data })),
    );
    app.scriptService({ '*': { reply: { done: true } } });
    await run(false);
  }));

test('every answer of the helper service is handled; a busy one counts as not running', () =>
  withVarnel({ ...kNoPage, service: {} }, async (app) => {
    const ask = async () => (await app.request('toggleScheduleClean', { enabled: true })).success;
    const stays = { delay_ms: 60_000 };
    for (const [name, ...chunks] of [
      ['no line feed at the end', { text: '{"success":true}' }],
      ['in pieces', { text: '{"succ' }, { text: 'ess":true}\n', delay_ms: 50 }],
      ['10 kB', { reply: { content: 'x'.repeat(10_000), success: true } }],
      ['two lines, left open', { text: '{"success":true}\n{"success":false}\n' }, stays],
    ]) {
      app.scriptService({ '*': { chunks } });
      assert.equal(await ask(), true, name);
    }
    await app.stopService();
    // More requests than it accepts at a time: each waits its turn.
    await app.startService({ '*': { chunks: [{ reply: { success: true }, delay_ms: 150 }] } });
    assert.deepEqual(await Promise.all(Array.from({ length: 4 }, ask)), Array(4).fill(true));

    app.scriptService({ '*': { chunks: [stays] } });
    const busy = app.service.map(() => app.send({ action: 'setHibernation', data: { enabled: true } }));
    await Promise.all(busy);
    await app.until(
      async () => (await asked(app, 'set_hibernation')).length === busy.length,
      'all to be taken',
    );
    const started = Date.now();
    assert.equal((await app.request('getStatus')).serviceActive, false);
    assert.ok(Date.now() - started >= 2000, 'the probe waits for a busy pipe');
  }));

// --- other actions ---

test('openUrl opens only the address in the envelope; reboot starts its tool', () =>
  withVarnel({ ...kNoPage, tools: { 'opener.exe': {}, 'shutdown.exe': { exit: 5 } } }, async (app) => {
    const kScheme = 'HKLM\\Software\\Classes\\varneltest'; // Wine finds no scheme of the user
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
    assert.equal((await app.request('reboot')).success, true);
    assert.deepEqual(await app.toolCalls('shutdown'), ['shutdown /r /t 0']);
  }));
