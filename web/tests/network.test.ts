import assert from 'node:assert/strict';
import { test } from 'node:test';
import { beginRun, exitWord, hearEnd, kNoRuns, putAside, reachOf, withTarget } from '../src/lib/network.ts';

test('from where a port can be reached', () => {
  const cases: Record<string, string> = {
    '0.0.0.0:135': 'all',
    '[::]:445': 'all',
    '127.0.0.1:5354': 'machine',
    '127.8.0.1:80': 'machine',
    '[::1]:8080': 'machine',
    '[::ffff:127.0.0.1]:80': 'machine',
    '[::ffff:0.0.0.0]:80': 'all',
    '192.0.2.17:139': 'address',
    '[fe80::1c2d:3e4f:5a6b:7c8d%12]:5357': 'address',
    '[127::1]:80': 'address',
    '1270.0.0.1': 'address',
  };
  for (const [local, want] of Object.entries(cases)) assert.equal(reachOf(local), want, local);
});

test('exit codes: the same figure means different things to the two tools', () => {
  assert.deepEqual(
    [0, 1, 259, -1, 9009, 0xc000013a, 7].map((code) => [exitWord('ping', code), exitWord('dns', code)]),
    [
      ['replied', 'asked'],
      ['silent', 'failed'],
      ['early', 'early'],
      ['notStarted', 'notStarted'],
      ['missing', 'missing'],
      ['interrupted', 'interrupted'],
      ['failed', 'failed'],
    ],
  );
});

test('ends of tools that do not say whose they are', () => {
  const plain = hearEnd(beginRun(kNoRuns));
  assert.deepEqual(plain, { shown: false, owed: 0, mixed: false });
  const second = beginRun(putAside(beginRun(kNoRuns)));
  assert.equal(second.owed, 1);
  const first_end = hearEnd(second);
  assert.equal(first_end.shown, true, 'it may be the end of the one put aside');
  assert.deepEqual(hearEnd(first_end), { shown: false, owed: 0, mixed: true }, 'the last end ends both');
  const alone = beginRun(hearEnd(putAside(beginRun(kNoRuns))));
  assert.deepEqual(
    alone,
    { shown: true, owed: 0, mixed: false },
    'what has ended meanwhile confuses nothing',
  );
  assert.deepEqual(hearEnd(kNoRuns), kNoRuns, 'an end that nobody waits for');
  assert.deepEqual(putAside(kNoRuns), kNoRuns);
});

test('last targets', () => {
  const all = ['a', 'b', 'c', 'd', 'e', 'f', 'b'].reduce<string[]>(withTarget, []);
  assert.deepEqual(all, ['b', 'f', 'e', 'd', 'c']);
});
