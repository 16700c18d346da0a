import { host } from '../bridge/host.ts';
import type { Message, Reply } from '../bridge/protocol.ts';
import {
  addTasks,
  endUnknown,
  hearLine,
  isPending,
  startNext,
  stateWord,
  toolEnded,
  withoutService,
  type Job,
  type Jobs,
  type Stream,
  type Task,
} from '../lib/jobs.ts';
import type { Leftover } from '../lib/leftovers.ts';
import { realignApp, realignUpdate, type Package } from '../lib/realign.ts';
import { scanIsDue } from '../lib/settings.ts';
import type { Incoming } from '../lib/terminal.ts';
import { createSource } from '../lib/source.ts';
import { createStore } from '../lib/store.ts';
import { t } from '../text/text.ts';
import { errorText } from '../ui/error_text.ts';
import { serviceDialogClosed } from '../ui/service.tsx';
import { toast } from '../ui/toast.tsx';
import { place } from './navigation.ts';
import { currentSettings, saveSettings, settingsDocument } from './settings.ts';
import { openTerminal } from './terminal.ts';

// Both tools ask servers, and have no limit of their own.
const listTimeoutMs = 300_000;
const silenceMs = 240_000;
const dueCheckMs = 60_000;

/** A row can be printed twice. */
function distinct(packages: Package[]): Package[] {
  return [...new Map(packages.map((one) => [packageKey(one), one])).values()];
}

export const packageKey = ({ id, name, version }: Package) => `${id}\n${name}\n${version}`;

const asUpdates = (rows: Reply<'getSoftwareUpdates'>['updates']) => distinct(rows.map(realignUpdate));

export type Drivers = Pick<Reply<'getDriverUpdates'>, 'updates' | 'scannedDriversCount'>;

export const updates = createSource(async () =>
  asUpdates((await host.request('getSoftwareUpdates', undefined, listTimeoutMs)).updates),
);
export const drivers = createSource<Drivers>(() =>
  host.request('getDriverUpdates', undefined, listTimeoutMs),
);
export const apps = createSource(async () => {
  const { apps: rows } = await host.request('getInstalledApps', undefined, listTimeoutMs);
  return distinct(rows.map(realignApp));
});

interface Scan {
  running?: {
    since: number; // ms since the epoch
    /** Updates found, once the tool for drivers has its turn. */
    found?: number;
  };
  failed?: 'silent' | 'error' | 'drivers' | 'absent';
}

export const scan = createStore<Scan>({});

/** The view itself shows how things end; elsewhere a toast tells. */
function tell(text: string, error: boolean) {
  if (place.get().view !== 'software') toast(text, { error });
}

/** Fills all three lists. It ends with its message, or when nothing has been heard for long. */
export function startScan() {
  if (scan.get().running) return;
  let startedId = -1;
  let timer: ReturnType<typeof setTimeout>;
  const heard = () => {
    clearTimeout(timer);
    timer = setTimeout(() => end('silent'), silenceMs);
  };
  const stops = [host.on('console_log', heard), host.on('scan_progress', progress)];
  function end(failed?: NonNullable<Scan['failed']>) {
    clearTimeout(timer);
    for (const stop of stops) stop();
    scan.set(failed ? { failed } : {});
    tell(t(failed ? 'scan.failed' : 'scan.done'), failed !== undefined);
  }
  function progress(message: Message<'scan_progress'>) {
    if (message.requestId !== startedId) return;
    heard();
    const { running } = scan.get();
    if (message.softwareCount !== undefined && running) {
      scan.set({ running: { ...running, found: message.softwareCount } });
      void apps.reload(); // the tool for packages has time now
    }
    if (message.status !== 'done') return;
    const onlyDrivers = running?.found !== undefined;
    end(message.success ? undefined : onlyDrivers ? 'drivers' : 'error');
    if (!message.success) {
      if (onlyDrivers) void updates.reload(); // they are lost with the drivers
      return;
    }
    updates.put(asUpdates(message.software ?? []));
    drivers.put({ updates: message.drivers ?? [], scannedDriversCount: message.scannedDriversCount ?? 0 });
    saveSettings({ lastScan: Date.now() }, null);
  }
  try {
    startedId = host.start('startSystemScan', {});
    scan.set({ running: { since: Date.now() } });
    heard();
    if (currentSettings().autoOpen) openTerminal(true);
  } catch {
    end('absent');
  }
}

/** Scans by itself at the start and from time to time, where the settings ask for it. */
export function startAutoScan() {
  let tried = 0; // one that failed is not repeated at every check
  const check = () => {
    const settings = currentSettings();
    if (
      !settingsDocument.get().data ||
      !scanIsDue({ ...settings, lastScan: tried || settings.lastScan }, Date.now())
    )
      return;
    tried = Date.now();
    startScan();
  };
  const stop = settingsDocument.subscribe(() => {
    if (!settingsDocument.get().data) return;
    stop();
    check();
  });
  setInterval(check, dueCheckMs);
}

export const jobs = createStore<Jobs>([]);

/** Of uninstalled programs, shown one after another. */
export const leftovers = createStore<readonly { job: Task; items: Leftover[] }[]>([]);

export function enqueue(tasks: readonly Task[]) {
  jobs.set(addTasks(jobs.get(), tasks));
  runNext();
}

/** Goes on without the end of the tool that runs: it may have been lost. */
export function abandonRunning() {
  settle(endUnknown(jobs.get(), true));
}

/** Hears of the tools that install and remove. They print in bursts: what comes within one frame is taken together. */
export function startQueue() {
  let heard: [Stream, Incoming][] = [];
  const take = () => {
    jobs.set(heard.reduce((all, [stream, line]) => hearLine(all, stream, line, Date.now()), jobs.get()));
    heard = [];
  };
  for (const stream of ['update_stream', 'uninstall_stream'] satisfies Stream[]) {
    host.on(
      stream,
      ({ streamType, message: text = '', isProgress: isProgress = false, code, rebootRequired = false }) => {
        if (streamType === 'exit') {
          take();
          settle(toolEnded(jobs.get(), stream, code, rebootRequired));
        } else if (heard.push([stream, { text, isProgress }]) === 1) {
          setTimeout(take, 16);
        }
      },
    );
  }
}

// The removal of leftovers that runs: the host asks the service anew for each of them.
let removal: { missed?: boolean } | undefined;

/**
 * The host has missed the helper service; true when that is news. Of a queue of drivers only the first asks for the dialog, the
 * others say so themselves; of a removal, too, only the first item does.
 */
export function serviceIsMissing(): boolean {
  if (removal?.missed) return false;
  if (removal) removal.missed = true;
  const before = jobs.get();
  jobs.set(withoutService(before));
  return jobs.get() === before || !before.some(({ alone }) => alone);
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

/** Takes what has become of the queue, tells of what has ended, and goes on. */
function settle(after: Jobs) {
  const before = jobs.get();
  jobs.set(after);
  for (const [i, job] of after.entries()) {
    if (job === before[i] || isPending(job)) continue;
    tellEnd(job);
    if (job.kind === 'uninstall' && job.state !== 'failed') void searchLeftovers(job);
  }
  if (after.some(({ state }) => state === 'waiting')) runNext();
  else if (after !== before && !after.some(isPending)) reloadChanged();
}

function tellEnd(job: Job) {
  tell(`${job.name}: ${t(`jobs.${stateWord(job)}`)}`, job.state === 'failed');
}

/** What has been changed is listed anew, once nothing runs any more. */
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

const listLeftovers = async ({ id, name }: Task) =>
  (await host.request('findLeftovers', { id, name }, listTimeoutMs)).leftovers;

async function searchLeftovers(job: Task) {
  try {
    const items = await listLeftovers(job);
    if (items.length > 0) leftovers.set([...leftovers.get(), { job, items }]);
    else toast(t('leftovers.none', { name: job.name }));
  } catch (error) {
    toast(t('leftovers.searchFailed', { reason: errorText(error) }), { error: true });
  }
}

/** The dialog that is open goes away. */
export function closeLeftovers() {
  leftovers.set(leftovers.get().slice(1));
}

/** The answer says only whether all went well, so what has stayed is looked up and shown again. */
export async function cleanLeftovers(job: Task, items: Leftover[]) {
  let stayed: Leftover[] = [];
  const mine = (removal = {});
  try {
    await host.request('cleanLeftovers', { items }, listTimeoutMs).finally(() => {
      if (removal === mine) removal = undefined;
    });
  } catch {
    const left = await listLeftovers(job).catch(() => items);
    stayed = left.filter(({ path }) => items.some((item) => item.path === path));
  }
  if (stayed.length === 0) return toast(t('leftovers.removed', { n: items.length }));
  toast(t('leftovers.stayed', { n: stayed.length }), { error: true });
  await serviceDialogClosed();
  leftovers.set([{ job, items: stayed }, ...leftovers.get()]);
}
