import assert from 'node:assert/strict';
import { test } from 'node:test';
import {
  addTasks,
  codeText,
  endUnknown,
  hearLine,
  pendingOnly,
  percentOf,
  startNext,
  toolEnded,
  withoutService,
  withoutWaiting,
  wordOf,
  type Job,
  type JobKind,
  type Jobs,
  type Stream,
  type Task,
} from '../src/lib/jobs.ts';

const task = (id: string, kind: JobKind = 'update'): Task => ({ kind, id, name: id });
const endRunning = (jobs: Jobs, code: number, restart: boolean) =>
  toolEnded(jobs, 'update_stream', code, restart);
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
  assert.equal(
    states(addTasks(running, [task('a'), task('b'), task('c')])),
    'a running, b waiting, c waiting',
  );
  assert.equal(states(addTasks(running, [task('a', 'uninstall')])), 'a running, b waiting, a waiting');
  const failed = hearLine(running, 'update_stream', { text: 'Downloading' }, 2);
  const again = addTasks(endRunning(failed, 1, false), [task('a')]);
  assert.equal(states(again), 'b waiting, a waiting');
  assert.deepEqual(again[1], { ...task('a'), state: 'waiting', lines: [] }, 'nothing of the first run stays');
  assert.equal(states(withoutWaiting(running)), 'a running');
});

test('a run ends as its code and the restart marker say', () => {
  const cases: [name: string, code: number, marker: boolean, state: string, restart: boolean][] = [
    ['good', 0, false, 'done', false],
    ['good, with the marker', 0, true, 'restart', true],
    ['restart to finish', 0x8a150109, false, 'restart', true],
    ['restart and try again', 0x8a15010a, false, 'failed', true],
    ['bad, with the marker', 4, true, 'failed', true],
    ['bad', 1603, false, 'failed', false],
  ];
  for (const [name, code, marker, state, restart] of cases) {
    const [job] = endRunning(startNext(addTasks([], [task('a')]), 1), code, marker);
    assert.deepEqual([job!.state, job!.restart ?? false, job!.code], [state, restart, code], name);
  }
});

// The host's messages name no job: what is heard of a tool that was given up must not become the result of another one.
test('an end is credited only to the one tool that it can be of', () => {
  type Step = 'give up' | 'hide' | [Stream, code: number];
  const update: Stream = 'update_stream';
  const uninstall: Stream = 'uninstall_stream';
  const a = task('a');
  const cases: [name: string, tasks: Task[], steps: Step[], want: string][] = [
    ['given up', [a, task('b')], ['give up'], 'a failed ?, b running'],
    ['given up, then nothing else runs: the late end is its own', [a], ['give up', [update, 0]], 'a done 0'],
    [
      'given up, and the next one runs: it could be the end of either',
      [a, task('b')],
      ['give up', [update, 0]],
      'a failed ?, b failed ?',
    ],
    [
      'and so could the end that follows',
      [a, task('b')],
      ['give up', [update, 0], [update, 5]],
      'a failed ?, b failed ?',
    ],
    [
      'the next one has a stream of its own',
      [a, task('b', 'uninstall')],
      ['give up', [uninstall, 0]],
      'a failed ?, b done 0',
    ],
    [
      'the late end is of the other stream',
      [a, task('b', 'uninstall')],
      ['give up', [update, 7]],
      'a failed 7, b running',
    ],
    [
      'hidden while another one runs',
      [a, task('b')],
      ['give up', 'hide', [update, 0]],
      'a failed ?, b failed ?',
    ],
    ['hidden when none runs, it is forgotten', [a], ['give up', 'hide', [update, 0]], ''],
    ['an end without a tool', [task('a', 'uninstall')], [[update, 0]], 'a running'],
  ];
  const show = ({ id, state, code }: Job) => `${id} ${state}${state === 'running' ? '' : ` ${code ?? '?'}`}`;
  for (const [name, tasks, steps, want] of cases) {
    const end = steps.reduce<Jobs>(
      (jobs, step) => {
        const after =
          step === 'give up'
            ? endUnknown(jobs, true)
            : step === 'hide'
              ? pendingOnly(jobs)
              : toolEnded(jobs, step[0], step[1], false);
        return startNext(after, 2);
      },
      startNext(addTasks([], tasks), 1),
    );
    assert.equal(end.map(show).join(', '), want, name);
  }
  const given_up = endUnknown(startNext(addTasks([], [a]), 1), true);
  assert.equal(
    states(addTasks(given_up, [a])),
    'a failed, a waiting',
    'a second try does not make the first one forgotten',
  );
  const running = startNext(addTasks([], [a]), 1);
  assert.equal(
    hearLine(running, uninstall, { text: 'late' }, 9),
    running,
    'nor are lines of the other stream taken',
  );
});

test('without the helper service, the driver that is about to be installed says so', () => {
  const driver = startNext(addTasks([], [task('d', 'driver')]), 1);
  const alone = withoutService(hearLine(driver, 'update_stream', { text: 'status' }, 2));
  assert.equal(alone[0]!.alone, true);
  assert.equal(withoutService(alone), alone, 'what is missed afterwards is missed by something else');
  for (const other of [
    startNext(addTasks([], [task('a')]), 1),
    hearLine(hearLine(driver, 'update_stream', { text: '1' }, 2), 'update_stream', { text: '2' }, 3),
    [],
  ]) {
    assert.equal(withoutService(other), other);
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
  for (const text of ['Downloading', '10%', '20%'])
    jobs = hearLine(jobs, 'update_stream', { text, is_progress: true }, 5);
  assert.deepEqual(
    [jobs[0]!.percent, jobs[0]!.lines.map(({ text }) => text), jobs[0]!.heard],
    [20, ['Downloading', '20%'], 5],
  );
  assert.equal(
    hearLine(jobs, 'update_stream', { text: 'Starting package install...' }, 6)[0]!.percent,
    undefined,
    'the next step gives no share',
  );
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
    ['driver', 7, 'noAgent', '7'],
    ['update', 5, undefined, '5'],
    ['driver', 0x8a150006, undefined, '0x8A150006'],
    ['update', 0x8a15ffff, undefined, '0x8A15FFFF'],
  ];
  for (const [kind, code, word, text] of cases) {
    assert.equal(wordOf(kind, code), word, `${kind} ${text}`);
    assert.equal(codeText(code), text);
  }
});
