import assert from 'node:assert/strict';
import { test } from 'node:test';
import { abandonRun, beginRun, endRun, exitWord, noRuns, withTarget } from './diagnostic_runs.ts';

test('the same exit code has different meanings for the two tools', () => {
  const codes = [0, 1, 259, -1, 9009, 0xc000013a, 7];
  const ping = 'replied silent early notStarted missing interrupted failed';
  const dns = 'asked failed early notStarted missing interrupted failed';
  for (const [tool, want] of Object.entries({ ping, dns }) as ['ping' | 'dns', string][])
    assert.equal(codes.map((code) => exitWord(tool, code)).join(' '), want, tool);
});

test('ends of unknown runs are counted, not credited', () => {
  const runs = (active: boolean, outstanding: number, ambiguous: boolean) => ({
    active,
    outstanding,
    ambiguous,
  });
  const second = beginRun(abandonRun(beginRun(noRuns)));
  const cases: [name: string, got: object, want: object][] = [
    ['alone', endRun(beginRun(noRuns)), runs(false, 0, false)],
    ['one put aside', second, runs(true, 1, true)],
    ['the first end may be of either', endRun(second), runs(true, 0, true)],
    ['the last end ends both', endRun(endRun(second)), runs(false, 0, true)],
    ['what has ended confuses nothing', beginRun(endRun(abandonRun(beginRun(noRuns)))), runs(true, 0, false)],
    ['nobody waits', endRun(noRuns), noRuns],
    ['nothing to put aside', abandonRun(noRuns), noRuns],
  ];
  for (const [name, got, want] of cases) assert.deepEqual(got, want, name);
});

test('the last targets are kept', () => {
  assert.equal([...'abcdefb'].reduce<string[]>(withTarget, []).join(''), 'bfedc');
});
