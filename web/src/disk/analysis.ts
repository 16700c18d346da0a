import { parentOf, rootOf } from '../base/paths.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { createWatchdog } from '../base/watchdog.ts';
import { host } from '../bridge/host.ts';
import type { Reply } from '../bridge/protocol.ts';
import { errorText } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';
import { telemetry } from '../shell/telemetry.ts';

export type Entry = Reply<'getFolderContents'>['items'][number];
export type BigFile = { path: string; size: number };

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
    files: BigFile[];
  };
}

// An analysis reports every few thousand items; a disk that only sleeps wakes sooner.
const silenceMs = 60_000;

/** One analysis at a time: the host keeps the sizes of one, and does not guard them. It goes on while another view is shown. */
export const analysis = createStore<Analysis>({});

/** The folder that is shown. */
export const folder = createStore<{ path: string; items: Entry[] }>({ path: '', items: [] });

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
        folder.set({ path: root, items });
        analysis.set({
          result: {
            root,
            at: Date.now(),
            total: items.reduce((sum, { size }) => sum + size, 0),
            files: files ?? [],
          },
        });
        if (success === false) toast(t('disk.partial', { drive }), { error: true });
        else toast(t('disk.done', { drive }));
      } else if (scanned !== undefined && scanned > running.scanned) {
        // Branches are scanned side by side, so a count may arrive after a higher one.
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

const list = async (path: string) => (await host.request('getFolderContents', { path })).items;

let lastOpened = 0;

/** Shows a folder once its contents are there; of several asked for, the last. */
export async function openFolder(path: string) {
  const mine = ++lastOpened;
  try {
    const items = await list(path);
    if (mine === lastOpened && !analysis.get().running) folder.set({ path, items });
  } catch (error) {
    toast(t('disk.openFailed', { path, reason: errorText(error) }), { error: true });
  }
}

/** Takes those of the largest files off the list that their folders do not hold any more. */
export async function forgetGone(files: BigFile[]) {
  const paths = new Set(files.map(({ path }) => path));
  const parents = [...new Set([...paths].map((path) => parentOf(path) ?? path))];
  try {
    const listings = await Promise.all(parents.map(list));
    for (const { path } of listings.flat()) paths.delete(path);
  } catch {
    return; // not known: they stay
  }
  const { result } = analysis.get();
  if (result)
    analysis.set({ result: { ...result, files: result.files.filter(({ path }) => !paths.has(path)) } });
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
