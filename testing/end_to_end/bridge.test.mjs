import assert from 'node:assert/strict';
import { join } from 'node:path';
import { test } from 'node:test';

import { withVarnel } from './harness.mjs';
import { copyInto, runInPrefix, standIn } from './wine.mjs';

// Sends `message` and gives the exact texts that come back before the reply to a request sent after it.
async function repliesTo(app, message) {
  const from = app.texts.length;
  await app.send(message);
  await app.request('testBridge');
  return app.texts.slice(from, -1);
}

const testBridgeReply = (id) => `{"requestId":${id},"status":"ok","success":true,"type":"testBridge"}`;
const typeError = (text) =>
  `{"message":"[json.exception.type_error.302] type must be ${text}","type":"error"}`;

test('the envelope, through the real window', () =>
  withVarnel({ page: false }, async (app) => {
    for (const [message, want] of [
      ['{"action":"testBridge","requestId":7,"data":{}}', [testBridgeReply(7)]],
      ['{"action":"testBridge"}', [testBridgeReply(0)]],
      ['{"action":"testBridge","requestId":-2147483648}', [testBridgeReply(-2147483648)]],
      ['{"action":"testBridge","requestId":3.9}', [testBridgeReply(3)]],
      ['{"action":"testBridge","requestId":true}', [testBridgeReply(1)]],
      ['{"action":"testBridge","requestId":"7"}', [typeError('number, but is string')]],
      ['{"action":"testBridge","requestId":null}', [typeError('number, but is null')]],
      ['{"action":7,"requestId":7}', [typeError('string, but is number')]],
      ['{"action":"TestBridge","requestId":7}', []],
      ['{"action":"noSuchAction","requestId":1}', []],
      ['{"requestId":1}', []],
      ['[1,2]', []],
      ['{}', []],
      ['"testBridge"', []],
      [
        '{"action":"openMailto","requestId":5,"data":{"url":"mailto:x@example.com"}}',
        ['{"requestId":5,"success":true,"type":"openMailto"}'],
      ],
      // A lone surrogate becomes U+FFFD on its way to UTF-8; the same surrogate as an escape is not JSON.
      ['{"action":"testBridge","requestId":8,"data":"\ud800"}', [testBridgeReply(8)]],
      ['\udc00', [/^\{"message":"\[json\.exception\.parse_error\.101\].*","type":"error"\}$/]],
      [
        '{"action":"testBridge","data":"\\ud800"}',
        [/^\{"message":"\[json\.exception\.parse_error\.101\].*","type":"error"\}$/],
      ],
      ['not json', [/^\{"message":"\[json\.exception\.parse_error\.101\].*","type":"error"\}$/]],
      [
        '{"action":"testBridge"} {}',
        [/^\{"message":"\[json\.exception\.parse_error\.101\].*","type":"error"\}$/],
      ],
      [
        '{"action":"testBridge"} // why',
        [/^\{"message":"\[json\.exception\.parse_error\.101\].*","type":"error"\}$/],
      ],
      ['', [/parse_error\.101/]],
    ]) {
      const got = await repliesTo(app, message);
      assert.equal(got.length, want.length, `${message} gave ${got}`);
      got.forEach((text, i) =>
        want[i] instanceof RegExp ? assert.match(text, want[i]) : assert.equal(text, want[i], message),
      );
    }
  }));

test('large, deep and broken requests are answered', () =>
  withVarnel({ page: false }, async (app) => {
    const deep = (open, close) =>
      `{"action":"testBridge","requestId":9,"data":${open.repeat(10_000)}1${close.repeat(10_000)}}`;
    for (const [name, message, want] of [
      [
        '5 MB',
        { action: 'testBridge', requestId: 9, data: { text: 'ž'.repeat(5 << 20) } },
        [testBridgeReply(9)],
      ],
      ['arrays in arrays', deep('[', ']'), [testBridgeReply(9)]],
      ['objects in objects', deep('{"a":', '}'), [testBridgeReply(9)]],
      ['open brackets', '['.repeat(10_000), [/parse_error\.101/]],
      ['closed brackets', '['.repeat(10_000) + ']'.repeat(10_000), []],
      ['open brackets in a request', deep('[', ''), [/parse_error\.101/]],
      ['a million brackets', '['.repeat(1_000_000), [/"type":"error"/]],
    ]) {
      const got = await repliesTo(app, message);
      assert.equal(got.length, want.length, `${name}: ${got}`);
      got.forEach((text, i) =>
        want[i] instanceof RegExp ? assert.match(text, want[i]) : assert.equal(text, want[i], name),
      );
    }
  }));

test('deeply nested settings are kept or refused, never fatal', () =>
  withVarnel({ page: false }, async (app) => {
    // The file's indentation grows with the square of the depth: 36 MB here.
    const data = `${'{"a":'.repeat(3_000)}1${'}'.repeat(3_000)}`;
    const got = await repliesTo(app, `{"action":"saveSettings","requestId":4,"data":${data}}`);
    assert.equal(got.length, 1);
    assert.match(got[0], /"type":"(saveSettings|error)"/);
  }));

test('a message that is not a string is ignored', () =>
  withVarnel({}, async (app) => {
    const from = app.texts.length;
    await app.page.evaluate(() => window.chrome.webview.postMessage({ action: 'testBridge', requestId: 77 }));
    await app.request('testBridge');
    assert.deepEqual(
      app.messages.slice(from).filter(({ requestId }) => requestId === 77),
      [],
    );
  }));

test('a thousand requests are answered in order', () =>
  withVarnel({ page: false }, async (app) => {
    const from = app.texts.length;
    const sent = Array.from({ length: 1000 }, (_, i) =>
      app.send({ action: 'testBridge', requestId: i + 1, data: {} }),
    );
    await Promise.all(sent);
    await app.waitUntil(() => app.texts.length === from + 1000, 'a thousand replies');
    assert.deepEqual(
      app.texts.slice(from),
      sent.map((_, i) => testBridgeReply(i + 1)),
    );
  }));

test('openUrl opens the url of the envelope and never that of the data', () =>
  withVarnel({ page: false, tools: { 'opener.exe': {} } }, async (app) => {
    // Of the prefix's machine: Wine finds no scheme of the user.
    const kScheme = 'HKLM\\Software\\Classes\\varneltest';
    const add = (key, ...words) => runInPrefix('reg', ['add', key, ...words, '/f']);
    try {
      await add(kScheme, '/v', 'URL Protocol', '/d', '');
      await add(
        `${kScheme}\\shell\\open\\command`,
        '/ve',
        '/d',
        `${app.folder.windows}\\bin\\opener.exe "%1"`,
      );
      const opened = async () =>
        (await app.toolCalls('opener')).map((line) => /varneltest:\w+/.exec(line)?.[0]);
      for (const action of ['openUrl', 'openMailto']) {
        assert.equal((await app.request(action, { url: `varneltest:data${action}` })).success, true);
        assert.equal((await app.request(action, {}, { url: `varneltest:envelope${action}` })).success, true);
      }
      const late = Date.now() + 20_000;
      while ((await opened()).length < 2 && Date.now() < late)
        await new Promise((resolve) => {
          setTimeout(resolve, 100);
        });
      assert.deepEqual((await opened()).toSorted(), [
        'varneltest:envelopeopenMailto',
        'varneltest:envelopeopenUrl',
      ]);
    } finally {
      await runInPrefix('reg', ['delete', kScheme, '/f']);
    }
  }));

test('an action started twice runs twice at the same time', () => {
  const steps = [{ text: 'begin\r\n' }, { text: 'end\r\n', delay_ms: 3000 }];
  return withVarnel({ page: false, tools: { 'ping.exe': { steps } } }, async (app) => {
    const data = { type: 'ping', target: 'localhost' };
    await app.send({ action: 'runPingDiagnostic', requestId: 1, data });
    await app.send({ action: 'runPingDiagnostic', requestId: 2, data });
    const stream = () => app.messages.filter(({ type }) => type === 'ping_diagnostic_stream');
    await app.waitUntil(
      () => stream().filter(({ streamType }) => streamType === 'exit').length === 2,
      'both runs to end',
    );
    const lines = stream()
      .filter(({ streamType }) => streamType === 'stdout')
      .map(({ message, requestId }) => `${message} ${requestId}`);
    assert.deepEqual(lines.slice(0, 2).toSorted(), ['begin 1', 'begin 2'], 'both have begun before one ends');
    assert.deepEqual(lines.slice(2).toSorted(), ['end 1', 'end 2']);
  });
});

test('the first telemetry has nothing to compare with; debugSystem goes on from it', () =>
  withVarnel({ page: false }, async (app) => {
    const { cpu, download, upload, cpuTemp, gpuTemp } = await app.request('getTelemetry');
    assert.deepEqual(
      { cpu, download, upload, cpuTemp, gpuTemp },
      { cpu: 0, download: 0, upload: 0, cpuTemp: 34, gpuTemp: 36 },
    );
    for (const end = Date.now() + 300; Date.now() < end;);
    await app.request('debugSystem');
    const load = app.messages.map(({ message }) => /CPU Load: ([\d.]+)%/.exec(message)?.[1]).find(Boolean);
    assert.ok(Number(load) > 0, `load ${load} since the first sample`);
  }));

test('uninstallAppSuite starts the installer and ends the program', () =>
  withVarnel({ page: false }, async (app) => {
    await copyInto(app.binFolder, { 'VarnelSetup.exe': standIn('console_tool.exe') });
    await app.scriptTool('VarnelSetup.exe', {});
    app.send({ action: 'uninstallAppSuite', requestId: 1 }).catch(() => {}); // the program ends before it can confirm
    assert.equal(await app.exited, 0);
    const late = Date.now() + 20_000;
    while ((await app.toolCalls('VarnelSetup')).length === 0 && Date.now() < late)
      await new Promise((resolve) => {
        setTimeout(resolve, 100);
      });
    const calls = await app.toolCalls('VarnelSetup');
    assert.equal(calls.length, 1);
    assert.match(calls[0], /VarnelSetup\.exe"? --uninstall$/);
  }));
