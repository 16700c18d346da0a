import assert from 'node:assert/strict';
import { readdirSync, readFileSync } from 'node:fs';
import { test } from 'node:test';
import { messages, type MessageType } from '../src/bridge/protocol.ts';

const folder = '../testing/messages';

/** One message per file, written and checked by the host's own tests. */
const recorded = readdirSync(folder)
  .filter((name) => name.endsWith('.json'))
  .map((name) => ({ name, message: JSON.parse(readFileSync(`${folder}/${name}`, 'utf8')) }));

test('every recorded message of the host is understood', () => {
  assert.ok(recorded.length > 0, `no message is recorded in ${folder}`);
  for (const { name, message } of recorded) {
    assert.ok(
      Object.hasOwn(messages, message.type),
      `${name}: the page does not know the type "${message.type}"`,
    );
    // A failed reply carries a reason or nothing; what it would have carried is not promised.
    if (message.success !== false)
      assert.ok(messages[message.type as MessageType](message), `${name} does not have the expected shape`);
  }
});

test('the messages that the page lives on are recorded', () => {
  const types = new Set(recorded.map(({ message }) => message.type));
  for (const type of [
    'status',
    'telemetry',
    'settings',
    'saveSettings',
    'console_log',
    'error',
    'show_service_error_modal',
  ]) {
    assert.ok(types.has(type), `no recorded message of type "${type}"`);
  }
});

test('a member that is missing or of another type is noticed', () => {
  const telemetry = recorded.find(({ name }) => name === 'telemetry.json')!.message;
  const broken: [name: string, changes: object][] = [
    ['text for a number', { cpu: '12.5' }],
    ['null for a number', { upload: null }],
    ['missing text', { networkAdapter: undefined }],
    ['missing object', { battery: undefined }],
    ['array for an object', { battery: [] }],
    ['object for an array', { disks: {} }],
    ['one bad item in an array', { disks: [...telemetry.disks, { drive: 'E:' }] }],
  ];
  assert.ok(messages.telemetry(telemetry));
  assert.ok(messages.telemetry({ ...telemetry, something_new: 1 }), 'a further member does no harm');
  for (const [name, changes] of broken) assert.ok(!messages.telemetry({ ...telemetry, ...changes }), name);
});
