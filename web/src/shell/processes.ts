import { createSource, type Source } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { confirm } from '../kit/dialog.tsx';
import { errorText } from '../kit/error_text.ts';
import { leadToRow } from '../kit/table/memory.ts';
import { toast } from '../kit/toast.tsx';
import { showRunning } from './links.ts';
import { route } from './navigation.ts';
import {
  isOwn,
  isSameProcess,
  membersOf,
  shortestSpanSeconds,
  withShares,
  type ProcessRow,
} from './process_shares.ts';

// The host lists processes on its window's thread.
export const processesPeriodMs = 3000;
const endingMs = 500;

let compared: { rows: ProcessRow[]; atMs: number } | undefined;

export const processes: Source<ProcessRow[]> = createSource(async () => {
  const list = (await host.request('getProcesses')).processes;
  const atMs = performance.now();
  const elapsedSeconds = compared ? (atMs - compared.atMs) / 1000 : Infinity;
  const rows = withShares(compared?.rows ?? [], list, elapsedSeconds, navigator.hardwareConcurrency);
  if (elapsedSeconds >= shortestSpanSeconds) compared = { rows, atMs };
  return rows;
});

/** The user has paused the list. */
export const paused = createStore(false);

/** One row sums up all processes of a program. */
export const grouped = createStore(false);

export function togglePaused() {
  paused.set(!paused.get());
  pollProcesses();
}

export function pollProcesses() {
  if (!paused.get() || !processes.get().data) void processes.reload();
}

/** Shows a process in the processes view if it is still running. */
export async function showProcess(pid: number) {
  await processes.reload();
  const { data, error } = processes.get();
  if (data?.some((one) => one.pid === pid)) {
    if (grouped.get()) grouped.set(false);
    leadToRow('processes', pid);
    route.set({ view: 'processes' });
  } else
    toast(error ? errorText(error) : t('processes.gone', { name: t('network.process'), pid: String(pid) }), {
      error: true,
    });
}

/** Shows a process, or all processes of a program. */
export function showProgram({ name, pid, members }: ProcessRow) {
  if (!members) return showProcess(pid);
  grouped.set(true);
  showRunning(name);
}

const fullName = ({ name, pid }: ProcessRow) => `${name} (PID ${pid})`;

/** Asks, then ends the selected processes that are still the same ones. */
export async function endProcesses(rows: readonly ProcessRow[]) {
  const wanted = rows.flatMap(membersOf).filter(({ isSystem }) => !isSystem);
  if (wanted.length === 0) return;
  const n = wanted.length;
  const own = wanted.some(isOwn);
  const agreed = await confirm({
    title: own ? t('processes.endOwnTitle') : t('processes.endTitle', { n }),
    body: t(own ? 'processes.endOwnBody' : 'processes.endBody'),
    items: wanted.map(fullName),
    listAll: true,
    verb: t('processes.end'),
    danger: true,
  });
  if (!agreed) return;
  await processes.reload();
  const now = processes.get();
  // Varnel comes last, because nothing runs after it.
  for (const one of wanted.sort((a, b) => Number(isOwn(a)) - Number(isOwn(b)))) {
    const { name } = one;
    const pid = String(one.pid);
    if (!now.data?.some((other) => isSameProcess(one, other))) {
      toast(t('processes.gone', { name, pid }), { error: true });
      continue;
    }
    try {
      if (now.error !== undefined) throw now.error; // stale list: the PID may be reused
      await host.request('killProcess', { pid: one.pid });
      toast(t('processes.ended', { name, pid }));
    } catch (error) {
      toast(t('processes.endFailed', { name, pid, reason: errorText(error, t('processes.endRefused')) }), {
        error: true,
      });
    }
  }
  await processes.reload();
  // Windows takes its time to end a process, and a paused list does not reload.
  if (processes.get().data?.some((one) => wanted.some((other) => isSameProcess(other, one))))
    setTimeout(processes.reload, endingMs);
}
