import { parentOf, rootOf } from '../base/paths.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { createWatchdog } from '../base/watchdog.ts';
import { host } from '../bridge/host.ts';
import { errorText } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';
import { route } from '../shell/navigation.ts';
import { recycle } from '../shell/recycle.ts';
import { telemetry } from '../shell/telemetry.ts';
import type { Kind } from './kinds.ts';
import { stillThere, sumOf, withoutGone, type Entry, type Sized } from './tree.ts';

interface Analysis {
  running?: {
    root: string;
    since: number; // ms since the epoch
    scanned: number;
    perSecond: number;
    folder: string;
  };
  result?: {
    root: string;
    at: number; // ms since the epoch
    total: number;
    files: Sized[];
    /** Everything moved to the recycle bin since then. */
    gone: Sized[];
  };
}

export type { Entry };

// An analysis reports every few thousand items, and a disk that was asleep wakes up sooner.
const silenceMs = 60_000;

/**
 * One analysis at a time, because the host keeps the sizes of one only. It continues while another view is
 * shown.
 */
export const analysis = createStore<Analysis>({});

interface Folder {
  path: string;
  items: Entry[];
  /** The contents of its largest folders, by path. */
  inside: ReadonlyMap<string, Entry[]>;
}

/** The folder that is shown. */
export const folder = createStore<Folder>({ path: '', items: [], inside: new Map() });

/** The only kind of entries shown in a folder; outlives the view. */
export const onlyKind = createStore<{ path: string; kind: Kind } | undefined>(undefined);

export function startAnalysis(drive: string) {
  if (analysis.get().running) return;
  const root = rootOf(drive);
  const since = Date.now();
  let startedId = -1;
  const watchdog = createWatchdog(silenceMs, () => {
    end();
    analysis.set({});
    toast(t('disk.silent', { drive }), { error: true });
  });
  const end = () => {
    watchdog.stop();
    stop();
  };
  const stop = host.on(
    'disk_analysis_progress',
    ({ requestId, status, success, scanned, currentFolder, folders, files }) => {
      const { running } = analysis.get();
      if (requestId !== startedId || !running) return;
      watchdog.reset();
      if (status === 'done') {
        end();
        const items = folders ?? [];
        analysis.set({
          result: { root, at: Date.now(), total: sumOf(items), files: files ?? [], gone: [] },
        });
        show(root, items);
        if (success === false) toast(t('disk.partial', { drive }), { error: true });
        else if (route.get().view !== 'disk') toast(t('disk.done', { drive }));
      } else if (scanned !== undefined && scanned > running.scanned) {
        // Branches are scanned in parallel, so a count may arrive after a higher one.
        const perSecond = scanned / Math.max(0.001, (Date.now() - since) / 1000);
        analysis.set({ running: { ...running, scanned, perSecond, folder: currentFolder ?? '' } });
      }
    },
  );
  try {
    startedId = host.start('startDiskAnalysis', { drive: root });
    analysis.set({ running: { root, since, scanned: 0, perSecond: 0, folder: '' } });
    watchdog.reset();
  } catch (error) {
    stop();
    toast(errorText(error), { error: true });
  }
}

const list = async (path: string) => {
  const { items } = await host.request('getFolderContents', { path });
  return withoutGone(items, analysis.get().result?.gone ?? []);
};

const aheadCount = 8;

/** Shows a folder immediately, and the contents of its largest folders once they are known. */
function show(path: string, items: Entry[]) {
  const before = folder.get();
  const shown = { path, items, inside: before.path === path ? before.inside : new Map() };
  folder.set(shown);
  const largest = items
    .filter(({ isDirectory, size }) => isDirectory && size > 0)
    .sort((a, b) => b.size - a.size)
    .slice(0, aheadCount);
  const listings = largest.map(async ({ path }) => [path, await list(path)] as const);
  void Promise.all(listings).then(
    (known) => folder.get() === shown && folder.set({ ...shown, inside: new Map(known) }),
    () => {}, // the map stays unchanged
  );
}

let lastOpened = 0;

/** Shows a folder once its contents are there; of several requests, only the last one counts. */
export async function openFolder(path: string) {
  const mine = ++lastOpened;
  try {
    const items = await list(path);
    if (mine === lastOpened && !analysis.get().running) show(path, items);
  } catch (error) {
    toast(t('explorer.failed', { path, reason: errorText(error) }), { error: true });
  }
}

/**
 * Asks, recycles, and subtracts everything moved from each sum. Only a new listing of the folders tells
 * what that is.
 */
export async function remove(entries: Sized[]) {
  if (!(await recycle(entries))) return;
  const parents = [...new Set(entries.map(({ path }) => parentOf(path) ?? path))];
  try {
    const listings = await Promise.all(parents.map(list));
    const left = new Set(listings.flat().map(({ path }) => path));
    const gone = entries.filter(({ path }) => !left.has(path));
    const { result } = analysis.get();
    if (result)
      analysis.set({
        result: {
          ...result,
          total: Math.max(0, result.total - sumOf(gone)),
          files: stillThere(result.files, gone),
          gone: [...result.gone, ...gone],
        },
      });
  } catch {
    // Unknown: the sums stay until the next analysis.
  }
  refreshDisk();
}

export function goUp() {
  const parent = parentOf(folder.get().path);
  if (parent !== undefined) void openFolder(parent);
}

/** Loads the drives and the folder that is shown. */
export function refreshDisk() {
  void telemetry.reload();
  const { result, running } = analysis.get();
  if (result && !running) void openFolder(folder.get().path);
}
