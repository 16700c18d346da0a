import assert from 'node:assert/strict';
import { test } from 'node:test';
import { beginRun, exitWord, hearEnd, noRuns, putAside, reachOf, withTarget } from '../src/lib/network.ts';

test('from where a port can be reached', () => {
  const cases: Record<string, string> = {
    '0.0.0.0:135': 'all',
    '[::]:445': 'all',
    '127.8.0.1:80': 'machine',
    '[::1]:8080': 'machine',
    '[::ffff:127.0.0.1]:80': 'machine',
    '[::ffff:0.0.0.0]:80': 'all',
    '[fe80::1c2d:3e4f:5a6b:7c8d%12]:5357': 'address',
    '[127::1]:80': 'address',
    '1270.0.0.1': 'address',
  };
  for (const [local, want] of Object.entries(cases)) assert.equal(reachOf(local), want, local);
});

test('exit codes: the same figure means different things to the two tools', () => {
  const codes = [0, 1, 259, -1, 9009, 0xc000013a, 7];
  const ping = 'replied silent early notStarted missing interrupted failed';
  const dns = 'asked failed early notStarted missing interrupted failed';
  for (const [tool, want] of Object.entries({ ping, dns }) as ['ping' | 'dns', string][])
    assert.equal(codes.map((code) => exitWord(tool, code)).join(' '), want, tool);
});

test('ends of tools that do not say whose they are', () => {
  const runs = (shown: boolean, owed: number, mixed: boolean) => ({ shown, owed, mixed });
  const second = beginRun(putAside(beginRun(noRuns)));
  const cases: [name: string, got: object, want: object][] = [
    ['alone', hearEnd(beginRun(noRuns)), runs(false, 0, false)],
    ['one put aside', second, runs(true, 1, true)],
    ['the first end may be of either', hearEnd(second), runs(true, 0, true)],
    ['the last end ends both', hearEnd(hearEnd(second)), runs(false, 0, true)],
    ['what has ended confuses nothing', beginRun(hearEnd(putAside(beginRun(noRuns)))), runs(true, 0, false)],
    ['nobody waits', hearEnd(noRuns), noRuns],
    ['nothing to put aside', putAside(noRuns), noRuns],
  ];
  for (const [name, got, want] of cases) assert.deepEqual(got, want, name);
});

test('last targets', () => {
  assert.equal([...'abcdefb'].reduce<string[]>(withTarget, []).join(''), 'bfedc');
});
