import assert from 'node:assert/strict';
import { afterEach, beforeEach, mock, test } from 'node:test';
import { Bridge, BridgeError, type FailureKind } from './bridge.ts';

const specs = { cpu: 'c', gpu: 'g', ram: 'r', ramTooltip: 't', motherboard: 'm', os: 'o' };
const status = { type: 'status', success: true, isAdmin: false, serviceActive: true, specs };

// The clock stands still, so that open requests never time out.
beforeEach(() => mock.timers.enable({ apis: ['setTimeout'] }));
afterEach(() => mock.timers.reset());

/** Returns a browser control in which the test plays the host. */
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

test('requests are texts numbered from 1; three stream actions have no number', () => {
  const { bridge, sent } = connect();
  void bridge.openUrl('https://varnel.example/');
  assert.equal(bridge.start('startDiskAnalysis', { drive: 'C:\\' }), 2);
  assert.equal(bridge.start('installSoftware', { id: 'Brook.TarnSync' }), 0);
  assert.deepEqual(sent, [
    '{"action":"openUrl","requestId":1,"url":"https://varnel.example/","data":{}}',
    '{"action":"startDiskAnalysis","requestId":2,"data":{"drive":"C:\\\\"}}',
    '{"action":"installSoftware","data":{"id":"Brook.TarnSync"}}',
  ]);
});

test('replies settle their own request in any order; a push settles none', async () => {
  const { bridge, receive } = connect();
  const seen: boolean[] = [];
  bridge.on('status', (message) => seen.push(message.serviceActive));
  const first = bridge.request('getStatus');
  const second = bridge.request('getStatus');
  receive({ ...status, requestId: 0, serviceActive: false });
  receive({ ...status, requestId: 2, isAdmin: true });
  receive({ ...status, requestId: 1 });
  assert.deepEqual([(await first).isAdmin, (await second).isAdmin], [false, true]);
  assert.deepEqual(seen, [false, true, true], 'listeners hear both');
});

test('a failed reply rejects with its reason; a malformed one reaches no view', async () => {
  const { bridge, receive } = connect();
  const seen: unknown[] = [];
  bridge.on('status', (message) => seen.push(message));
  const cases: [reply: object, kind: FailureKind, reason: string][] = [
    [{ type: 'status', success: false, message: 'zpráva', error: 'text' }, 'refused', 'zpráva'],
    [{ type: 'status', message: 5 }, 'refused', ''],
    [{ ...status, specs: null }, 'malformed', 'status'],
    [{ type: 'reboot', success: true }, 'malformed', 'reboot'],
  ];
  for (const [i, [reply, kind, reason]] of cases.entries()) {
    const request = bridge.request('getStatus');
    receive({ ...reply, requestId: i + 1 });
    await assert.rejects(request, failsWith(kind, reason));
  }
  assert.deepEqual(seen, []);
  await assert.rejects(new Bridge(undefined).request('getStatus'), failsWith('absent', ''), 'no host');
});

test('an error message settles nothing; a reply after the time-out is ignored', async () => {
  const { bridge, receive } = connect();
  const request = bridge.request('getStatus');
  let settled = false;
  request.catch(() => undefined).finally(() => (settled = true));
  receive({ type: 'error', message: '[json.exception] bad' });
  mock.timers.tick(29_999);
  await Promise.resolve();
  assert.equal(settled, false);
  mock.timers.tick(1);
  await assert.rejects(request, failsWith('timeout', ''));
  receive({ ...status, requestId: 1 });
});

test('anything but a message of the protocol is ignored', () => {
  const { bridge, receive } = connect();
  const seen: unknown[] = [];
  for (const type of ['console_log', 'status', 'error'] as const) bridge.on(type, (it) => seen.push(it));
  const mistyped = { type: 'console_log', message: 5, style: '' };
  for (const junk of [null, 'text', 7, [], {}, { type: 'toString' }, { type: '__proto__' }, mistyped]) {
    receive(junk);
  }
  assert.deepEqual(seen, []);
});
