// The queue of installations and removals.
import type { Incoming } from '../base/lines.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { confirm } from '../kit/dialog.tsx';
import { errorText } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';
import { queueBusy, updateBusy, withLosses } from '../shell/busy.ts';
import { onServiceMissing } from '../shell/service.tsx';
import {
  addLine,
  addTasks,
  endUnknown,
  isPending,
  startNext,
  stateWord,
  toolEnded,
  withoutService,
  type Jobs,
  type Stream,
  type Task,
} from './jobs.ts';
import { noteServiceMissingInRemoval, searchLeftovers } from './leftovers.ts';
import { apps, drivers, updates } from './lists.ts';
import { notifyElsewhere } from './notify.ts';

export const jobs = createStore<Jobs>([]);

export function enqueue(tasks: readonly Task[]) {
  if (!mayStart()) return;
  jobs.set(addTasks(jobs.get(), tasks));
  runNext();
}

/** Returns false and says so if nothing may start, because Varnel ends as soon as its own update is ready. */
export function mayStart(): boolean {
  if (updateBusy.get()) toast(t('jobs.notNow'));
  return !updateBusy.get();
}

/** Restarts Windows if the user agrees. */
export async function restartWindows() {
  const agreed = await confirm({
    title: t('restart.title'),
    body: withLosses(t('restart.body')),
    verb: t('restart.verb'),
    danger: true,
  });
  if (!agreed) return;
  try {
    await host.request('reboot');
  } catch (error) {
    toast(t('restart.failed', { reason: errorText(error) }), { error: true });
  }
}

/** Continues without waiting for the end of the running tool, which may have been lost. */
export function abandonRunning() {
  settle(endUnknown(jobs.get(), true));
}

/**
 * Follows the tools that install and remove. They print in bursts, so the lines of one frame are handled
 * together.
 */
export function startQueue() {
  jobs.subscribe(() => queueBusy.set(jobs.get().some(isPending)));
  onServiceMissing(noteServiceMissingInRemoval);
  onServiceMissing(noteServiceMissing);
  let printed: [Stream, Incoming][] = [];
  const take = () => {
    jobs.set(printed.reduce((all, [stream, line]) => addLine(all, stream, line, Date.now()), jobs.get()));
    printed = [];
  };
  for (const stream of ['update_stream', 'uninstall_stream'] satisfies Stream[]) {
    host.on(
      stream,
      ({ streamType, message: text = '', isProgress = false, code, rebootRequired = false }) => {
        if (streamType === 'exit') {
          take();
          settle(toolEnded(jobs.get(), stream, code, rebootRequired));
        } else if (printed.push([stream, { text, isProgress }]) === 1) {
          setTimeout(take, 16);
        }
      },
    );
  }
}

/** Notes that the service is missing. Returns true if the dialog should open: once per queue of drivers. */
function noteServiceMissing(): boolean {
  const before = jobs.get();
  jobs.set(withoutService(before));
  return jobs.get() === before || !before.some(({ unelevated }) => unelevated);
}

function runNext() {
  const before = jobs.get();
  const after = startNext(before, Date.now());
  const job = after.find(({ state }) => state === 'running');
  if (after === before || !job) return;
  jobs.set(after);
  try {
    if (job.kind === 'driver') host.start('installDriver', { title: job.id });
    else host.start(job.kind === 'update' ? 'installSoftware' : 'uninstallApp', { id: job.id });
  } catch {
    settle(endUnknown(jobs.get()));
  }
}

/** Stores the new state of the queue, reports what has ended, and continues. */
function settle(after: Jobs) {
  const before = jobs.get();
  jobs.set(after);
  for (const [i, job] of after.entries()) {
    if (job === before[i] || isPending(job)) continue;
    notifyElsewhere(`${job.name}: ${t(`jobs.${stateWord(job)}`)}`, job.state === 'failed');
    if (job.kind === 'uninstall' && job.state !== 'failed') void searchLeftovers(job);
  }
  if (after.some(({ state }) => state === 'waiting')) runNext();
  else if (after !== before && !after.some(isPending)) reloadChanged();
}

/** Reloads the changed lists once nothing is pending. */
function reloadChanged() {
  const changed = new Set(
    jobs
      .get()
      .filter(({ state, code }) => state !== 'failed' || code === undefined)
      .map(({ kind }) => kind),
  );
  if (changed.has('update') || changed.has('uninstall')) {
    for (const list of [updates, apps]) if (list.get().data) void list.reload();
  }
  if (changed.has('driver')) void drivers.reload();
}
