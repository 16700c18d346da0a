import assert from 'node:assert/strict';
import { test } from 'node:test';
import { addTasks, codeText, endRunning, hearLine, percentOf, startNext, withoutWaiting, wordOf, type JobKind, type Jobs, type Task } from '../src/lib/jobs.ts';

const task = (id: string, kind: JobKind = 'update'): Task => ({ kind, id, name: id });
const states = (jobs: Jobs) => jobs.map(({ id, state }) => `${id} ${state}`).join(', ');

test('one job runs at a time, in order, and a failed one does not stop the others', () => {
  let jobs = startNext(addTasks([], [task('a'), task('b'), task('c')]), 1);
  assert.equal(states(jobs), 'a running, b waiting, c waiting');
  assert.equal(startNext(jobs, 2), jobs, 'nothing starts beside the one that runs');
  jobs = startNext(endRunning(jobs, 2316632070, false), 2);
  assert.equal(states(jobs), 'a failed, b running, c waiting');
  assert.equal(jobs[0]!.code, 2316632070);
  jobs = startNext(endRunning(jobs, 0, false), 3);
  assert.equal(states(jobs), 'a failed, b done, c running');
  assert.equal(jobs[2]!.heard, 3);
  assert.equal(states(startNext(endRunning(jobs, 0, false), 4)), 'a failed, b done, c done');
});

test('what is pending is not added twice; what has ended starts anew', () => {
  const running = startNext(addTasks([], [task('a'), task('b')]), 1);
  assert.equal(states(addTasks(running, [task('a'), task('b'), task('c')])), 'a running, b waiting, c waiting');
  assert.equal(states(addTasks(running, [task('a', 'uninstall')])), 'a running, b waiting, a waiting');
  const failed = hearLine(running, { text: 'Downloading' }, 2);
  const again = addTasks(endRunning(failed, 1, false), [task('a')]);
  assert.equal(states(again), 'b waiting, a waiting');
  assert.deepEqual(again[1], { ...task('a'), state: 'waiting', lines: [] }, 'nothing of the first run stays');
  assert.equal(states(withoutWaiting(running)), 'a running');
});

test('a run ends as its code and the restart marker say', () => {
  const cases: [name: string, code: number | undefined, marker: boolean, state: string, restart: boolean][] = [
    ['good', 0, false, 'done', false],
    ['good, with the marker', 0, true, 'restart', true],
    ['restart to finish', 0x8a150109, false, 'restart', true],
    ['restart and try again', 0x8a15010a, false, 'failed', true],
    ['bad, with the marker', 4, true, 'failed', true],
    ['bad', 1603, false, 'failed', false],
    ['end not reported', undefined, false, 'failed', false],
  ];
  for (const [name, code, marker, state, restart] of cases) {
    const [job] = endRunning(startNext(addTasks([], [task('a')]), 1), code, marker);
    assert.deepEqual([job!.state, job!.restart ?? false, job!.code], [state, restart, code], name);
  }
});

test('the bar shows the share of the step that the tool is at', () => {
  const cases: [line: string, want: number | undefined][] = [
    ['██████████████▒▒▒▒▒▒  30.0 MB / 60.0 MB', 50],
    ['▒▒▒▒▒▒  512 KB / 2.00 MB', 25],
    ['1024 KB / 1.00 GB', 0.09765625],
    ['█████▒▒▒▒▒  40%', 40],
    ['Verification 57% complete.', 57],
    ['[====  12,5 %  ]', 12.5],
    ['5.00 MB / 0 B', undefined],
    ['Downloading https://dl.brook.example/tarn-1.2.0.exe', undefined],
    ['-', undefined],
    ['Successfully installed', undefined],
  ];
  for (const [line, want] of cases) assert.equal(percentOf(line), want, line);

  let jobs = startNext(addTasks([], [task('a')]), 1);
  for (const text of ['Downloading', '10%', '20%']) jobs = hearLine(jobs, { text, is_progress: true }, 5);
  assert.deepEqual([jobs[0]!.percent, jobs[0]!.lines.map(({ text }) => text), jobs[0]!.heard], [20, ['Downloading', '20%'], 5]);
  assert.equal(hearLine(jobs, { text: 'Starting package install...' }, 6)[0]!.percent, undefined, 'the next step gives no share');
});

test('exit codes have words, by the tool that gave them', () => {
  const cases: [kind: JobKind, code: number, word: string | undefined, text: string][] = [
    ['update', 2316632107, 'noUpdate', '0x8A15002B'],
    ['update', 0x8a150006, 'installer', '0x8A150006'],
    ['uninstall', 0x8a150030, 'uninstaller', '0x8A150030'],
    ['update', 0x8a15010b, 'restart', '0x8A15010B'],
    ['update', 999, 'refused', '999'],
    ['driver', 999, 'refused', '999'],
    ['update', 1, 'notStarted', '1'],
    ['driver', 5, 'rights', '5'],
    ['update', 5, undefined, '5'],
    ['driver', 0x8a150006, undefined, '0x8A150006'],
    ['update', 0x8a15ffff, undefined, '0x8A15FFFF'],
  ];
  for (const [kind, code, word, text] of cases) {
    assert.equal(wordOf(kind, code), word, `${kind} ${text}`);
    assert.equal(codeText(code), text);
  }
});
