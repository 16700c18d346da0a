import assert from 'node:assert/strict';
import { test } from 'node:test';
import { percentOf } from '../base/lines.ts';
import type { JobKind } from './exit_codes.ts';
import type { Job, Jobs, Stream, Task } from './jobs.ts';
import * as queue from './jobs.ts';

const { addTasks, endUnknown, addLine, startNext, toolEnded, withoutService } = queue;
const update: Stream = 'update_stream';
const uninstall: Stream = 'uninstall_stream';

const task = (id: string, kind: JobKind = 'update'): Task => ({ kind, id, name: id });
/** Returns a queue of these tasks, of which the first has been running since time 1. */
const started = (...tasks: Task[]) => startNext(addTasks([], tasks), 1);
const hear = (jobs: Jobs, text: string, at = 2) => addLine(jobs, update, { text, isProgress: true }, at);
const end = (jobs: Jobs, code: number, restart = false) => toolEnded(jobs, update, code, restart);
const states = (jobs: Jobs) => jobs.map(({ id, state }) => `${id} ${state}`).join(', ');
const a = task('a');
const b = task('b');

test('a pending task is not added twice; an ended one starts again', () => {
  const running = started(a, b);
  assert.equal(startNext(running, 2), running, 'nothing starts beside the one that runs');
  assert.equal(states(addTasks(running, [a, b, task('c')])), 'a running, b waiting, c waiting');
  assert.equal(states(addTasks(running, [task('a', 'uninstall')])), 'a running, b waiting, a waiting');
  const [, again] = addTasks(end(hear(running, 'Downloading'), 1), [a]);
  assert.deepEqual(again, { ...a, state: 'waiting', lines: [] }, 'nothing of the first run stays');
});

test('the exit code and the restart marker decide how a run ends', () => {
  const cases: [name: string, code: number, marker: boolean, state: string, restart: boolean][] = [
    ['good, with the marker', 0, true, 'restart', true],
    ['restart to finish', 0x8a150109, false, 'restart', true],
    ['restart and try again', 0x8a15010a, false, 'failed', true],
    ['bad', 1603, false, 'failed', false],
  ];
  for (const [name, code, marker, state, restart] of cases) {
    const [job] = end(started(a), code, marker);
    assert.deepEqual([job!.state, job!.restart ?? false, job!.code], [state, restart, code], name);
  }
});

// The host's messages name no job, so the end of an abandoned tool must not become another job's result.
test('an end is credited only if it can belong to one tool alone', () => {
  const giveUp = (jobs: Jobs) => endUnknown(jobs, true);
  const hide = queue.pendingOnly;
  const ends = (stream: Stream, code: number) => (jobs: Jobs) => toolEnded(jobs, stream, code, false);
  const other = task('b', 'uninstall');
  const cases: [name: string, tasks: Task[], steps: ((jobs: Jobs) => Jobs)[], want: string][] = [
    ['given up', [a, b], [giveUp], 'a failed ?, b running'],
    ['nothing else runs: the late end is its own', [a], [giveUp, ends(update, 0)], 'a done 0'],
    ['it could be of either', [a, b], [giveUp, ends(update, 0)], 'a failed ?, b failed ?'],
    ['the late end is of the other', [a, other], [giveUp, ends(update, 7)], 'a failed 7, b running'],
    ['hidden while another runs', [a, b], [giveUp, hide, ends(update, 0)], 'a failed ?, b failed ?'],
    ['hidden when none runs, it is forgotten', [a], [giveUp, hide, ends(update, 0)], ''],
    ['an end without a tool', [task('a', 'uninstall')], [ends(update, 0)], 'a running'],
  ];
  const show = ({ id, state, code }: Job) => `${id} ${state}${state === 'running' ? '' : ` ${code ?? '?'}`}`;
  for (const [name, tasks, steps, want] of cases) {
    const jobs = steps.reduce((before, step) => startNext(step(before), 2), started(...tasks));
    assert.equal(jobs.map(show).join(', '), want, name);
  }
  const running = started(a);
  assert.equal(addLine(running, uninstall, { text: 'late' }, 9), running, 'a line of the other stream');
});

test('a missing helper service is noted for the driver that is just starting', () => {
  const driver = started(task('d', 'driver'));
  const unelevated = withoutService(hear(driver, 'status'));
  assert.equal(unelevated[0]!.unelevated, true);
  for (const same of [unelevated, started(a), hear(hear(driver, '1'), '2'), []])
    assert.equal(withoutService(same), same, 'what is missed is missed by something else');
});

test("the bar shows the progress of the tool's current step", () => {
  const cases: [line: string, want: number | undefined][] = [
    ['▒▒▒▒▒▒  512 KB / 2.00 MB', 25],
    ['[====  12,5 %  ]', 12.5],
    ['Downloading https://dl.brook.example/tarn-1.2.0.exe', undefined],
  ];
  for (const [line, want] of cases) assert.equal(percentOf(line), want, line);
  const [job] = hear(hear(hear(started(a), 'Downloading'), '10%'), '20%', 5);
  assert.deepEqual([job!.percent, job!.lines.length, job!.lastOutput], [20, 2, 5]);
  assert.equal(hear([job!], 'Starting package install...')[0]!.percent, undefined, 'the next step');
});
