import assert from 'node:assert/strict';
import { afterEach, beforeEach, mock, test } from 'node:test';
import { Bridge, BridgeError, type FailureKind } from '../src/bridge/bridge.ts';

const kStatus = {
  type: 'status',
  success: true,
  isAdmin: false,
  serviceActive: true,
  specs: { cpu: 'c', gpu: 'g', ram: 'r', ramTooltip: 't', motherboard: 'm', os: 'o' },
};

// The clock stands still: a test's open requests never run into their time-out.
beforeEach(() => mock.timers.enable({ apis: ['setTimeout'] }));
afterEach(() => mock.timers.reset());

/** A browser control in which the test plays the host. */
function connect() {
  const sent: string[] = [];
  let deliver!: (event: { data: unknown }) => void;
  const bridge = new Bridge({
    postMessage: (text) => sent.push(text),
    addEventListener: (_type, listener) => (deliver = listener),
  });
  return { bridge, sent, receive: (data: unknown) => deliver({ data }) };
}

function failsWith(kind: FailureKind, reason: string) {
  return (error: unknown) => error instanceof BridgeError && error.kind === kind && error.reason === reason;
}

test('requests are texts that count up from 1 and always carry data', () => {
  const { bridge, sent } = connect();
  void bridge.request('getStatus');
  void bridge.request('saveSettings', { theme: 'ember' });
  void bridge.openUrl('https://varnel.example/');
  assert.deepEqual(sent, [
    '{"action":"getStatus","requestId":1,"data":{}}',
    '{"action":"saveSettings","requestId":2,"data":{"theme":"ember"}}',
    '{"action":"openUrl","requestId":3,"url":"https://varnel.example/","data":{}}',
  ]);
});

test('stream actions are numbered, except the three that go without a number', () => {
  const { bridge, sent } = connect();
  assert.equal(bridge.start('startDiskAnalysis', { drive: 'C:\\' }), 1);
  assert.equal(bridge.start('installSoftware', { id: 'Brook.TarnSync' }), 0);
  assert.deepEqual(sent, [
    '{"action":"startDiskAnalysis","requestId":1,"data":{"drive":"C:\\\\"}}',
    '{"action":"installSoftware","data":{"id":"Brook.TarnSync"}}',
  ]);
});

test('replies settle their own request, in whatever order they come', async () => {
  const { bridge, receive } = connect();
  const first = bridge.request('getSettings');
  const second = bridge.request('getSettings');
  receive({ type: 'settings', success: true, requestId: 2, settings: 'two' });
  receive({ type: 'settings', success: true, requestId: 1, settings: 'one' });
  assert.equal((await first).settings, 'one');
  assert.equal((await second).settings, 'two');
});

test('a failed reply rejects with message, else error, else no reason', async () => {
  const { bridge, receive } = connect();
  const cases = [
    [{ success: false, message: 'zpráva', error: 'text' }, 'zpráva'],
    [{ success: false, message: '', error: 'text' }, 'text'],
    [{ success: false, message: 5 }, ''],
    [{}, ''],
  ] as const;
  for (const [i, [reply, reason]] of cases.entries()) {
    const request = bridge.request('reboot');
    receive({ type: 'reboot', requestId: i + 1, ...reply });
    await assert.rejects(request, failsWith('refused', reason));
  }
});

test('a successful reply of another shape or type rejects instead of reaching a view', async () => {
  const { bridge, receive } = connect();
  const seen: unknown[] = [];
  bridge.on('status', (message) => seen.push(message));
  const wrong_shape = bridge.request('getStatus');
  receive({ ...kStatus, requestId: 1, specs: null });
  await assert.rejects(wrong_shape, failsWith('malformed', 'status'));
  const wrong_type = bridge.request('getStatus');
  receive({ type: 'reboot', success: true, requestId: 2 });
  await assert.rejects(wrong_type, failsWith('malformed', 'reboot'));
  assert.deepEqual(seen, []);
});

test('an error message settles nothing; the request runs into its time-out, and a late reply is ignored', async () => {
  const { bridge, receive } = connect();
  const errors: string[] = [];
  bridge.on('error', ({ message }) => errors.push(message));
  const request = bridge.request('getStatus', undefined, 5000);
  let settled = false;
  request.catch(() => undefined).finally(() => (settled = true));

  receive({ type: 'error', message: '[json.exception] bad' });
  mock.timers.tick(4999);
  await Promise.resolve();
  assert.equal(settled, false);
  assert.deepEqual(errors, ['[json.exception] bad']);

  mock.timers.tick(1);
  await assert.rejects(request, failsWith('timeout', ''));
  receive({ ...kStatus, requestId: 1 });
});

test('a push reaches the listeners of its type without settling anything, until they stop listening', async () => {
  const { bridge, receive } = connect();
  const seen: boolean[] = [];
  const stop = bridge.on('status', (message) => seen.push(message.serviceActive));
  const request = bridge.request('getStatus');
  receive({ ...kStatus, requestId: 0, serviceActive: false });
  receive({ ...kStatus, requestId: 1 });
  await request;
  stop();
  receive({ ...kStatus, requestId: 0 });
  assert.deepEqual(seen, [false, true]);
});

test('what is no message of the protocol is ignored', () => {
  const { bridge, receive } = connect();
  const seen: unknown[] = [];
  for (const type of ['console_log', 'status', 'error'] as const)
    bridge.on(type, (message) => seen.push(message));
  for (const junk of [
    null,
    'text',
    7,
    [],
    {},
    { type: 'toString' },
    { type: '__proto__' },
    { type: 'navigateTab', tab: 'settings' },
  ]) {
    receive(junk);
  }
  receive({ type: 'console_log', message: 5, style: '' });
  assert.deepEqual(seen, []);
});

test('without a host every request fails at once', async () => {
  await assert.rejects(new Bridge(undefined).request('getStatus'), failsWith('absent', ''));
});
