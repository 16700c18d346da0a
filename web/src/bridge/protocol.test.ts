import assert from 'node:assert/strict';
import { readdirSync, readFileSync } from 'node:fs';
import { test } from 'node:test';
import { messages, type MessageType } from './protocol.ts';

const folder = '../testing/messages';
const read = (name: string) => JSON.parse(readFileSync(`${folder}/${name}`, 'utf8'));

test('every recorded message of the host is understood', () => {
  const names = readdirSync(folder).filter((name) => name.endsWith('.json'));
  assert.ok(names.length > 0, `no message is recorded in ${folder}`);
  for (const name of names) {
    const message = read(name);
    assert.ok(Object.hasOwn(messages, message.type), `${name}: no type "${message.type}"`);
    // A failed reply carries a reason or nothing; its other members are not guaranteed.
    const understood = message.success === false || messages[message.type as MessageType](message);
    assert.ok(understood, `${name} does not have the expected shape`);
  }
});

test('a missing or mistyped member is detected', () => {
  const telemetry = read('telemetry.json');
  const broken: Record<string, object> = {
    'text for a number': { cpu: '12.5' },
    'missing text': { networkAdapter: undefined },
    'object for an array': { disks: {} },
    'one bad item in an array': { disks: [...telemetry.disks, { drive: 'E:' }] },
  };
  assert.ok(messages.telemetry({ ...telemetry, somethingNew: 1 }), 'a further member does no harm');
  for (const name in broken) assert.ok(!messages.telemetry({ ...telemetry, ...broken[name] }), name);
});
