import { host } from '../bridge/host.ts';
import { isPending, percentOf } from '../lib/jobs.ts';
import { createSource } from '../lib/source.ts';
import { createStore } from '../lib/store.ts';
import { appendLines, type Line } from '../lib/terminal.ts';
import { t } from '../text/text.ts';
import { confirm, isDialogOpen } from '../ui/dialog.tsx';
import { errorText } from '../ui/error_text.ts';
import { toast } from '../ui/toast.tsx';
import { jobs } from './software.ts';

export const repairs = ['flush-dns', 'rebuild-icons', 'sfc', 'safemode-reboot'] as const;
export type Repair = (typeof repairs)[number];

/** Ends the safe mode; for the command prompt, because PowerShell reads the braces as its own. */
export const leaveSafeMode = 'bcdedit /deletevalue {current} safeboot';

const repairTimeoutMs = 120_000;
const checkTimeoutMs = 120_000;
const downloadTimeoutMs = 60 * 60_000;

export interface RepairState {
  /** When it began (ms since the epoch), while it runs. */
  since?: number;
  /** When something was last heard of it. */
  heard?: number;
  percent?: number;
  lines?: readonly Line[];
  /** Of the last run. */
  result?: { good: boolean; text: string; at: number };
}

/** Outlives the view: the file check takes many minutes. */
export const repairStates = createStore<Readonly<Partial<Record<Repair, RepairState>>>>({});

const put = (repair: Repair, state: RepairState) =>
  repairStates.set({ ...repairStates.get(), [repair]: state });

function end(repair: Repair, good: boolean, text: string) {
  const { lines } = repairStates.get()[repair] ?? {};
  put(repair, { ...(lines && { lines }), result: { good, text, at: Date.now() } });
}

export function startRepair(repair: Repair) {
  if (repairStates.get()[repair]?.since !== undefined) return;
  if (repair === 'sfc') startFileCheck();
  else void runRepair(repair);
}

async function runRepair(type: Exclude<Repair, 'sfc'>) {
  put(type, { since: Date.now() });
  try {
    const { message } = await host.request('quickAction', { type }, repairTimeoutMs);
    // Emptying the cache never reports a failure: a tool that has not run has said nothing.
    const text = message.trim().replace(/\s*\n\s*/g, '\n');
    end(type, text !== '', text || t('repair.silent'));
  } catch (error) {
    end(type, false, errorText(error) + (type === 'rebuild-icons' ? `\n${t('repair.noShell')}` : ''));
  }
}

let endFileCheck: (good: boolean, text: string) => void = () => {};

/** The service can go away without an end. */
export function abandonFileCheck() {
  endFileCheck(false, t('repair.noEnd'));
}

function startFileCheck() {
  const since = Date.now();
  let startedId = -1;
  const stop = host.on('sfc_stream', ({ requestId, streamType, message = '', code }) => {
    if (requestId !== startedId) return;
    if (streamType === 'exit') return endFileCheck(code === 0, message);
    const lines = appendLines(repairStates.get().sfc?.lines ?? [], [{ text: message, isProgress: true }]);
    const percent = percentOf(message);
    put('sfc', { since, heard: Date.now(), lines, ...(percent !== undefined && { percent }) });
  });
  endFileCheck = (good, text) => {
    stop();
    endFileCheck = () => {};
    end('sfc', good, text);
  };
  put('sfc', { since, heard: since });
  try {
    startedId = host.start('quickAction', { type: 'sfc' });
  } catch (error) {
    endFileCheck(false, errorText(error));
  }
}

export const update = createSource(async () => {
  const found = await host.request('checkForUpdates', undefined, checkTimeoutMs);
  // Not in the place of a question that the user is about to answer.
  if (found.hasUpdate && found.mandatory) setTimeout(() => isDialogOpen() || void applyUpdate());
  return found;
});

interface Download {
  /** When it began (ms since the epoch), while it runs. */
  since?: number;
  /** The program is about to end. */
  closing?: true;
  failed?: unknown;
}

export const download = createStore<Download>({});

export async function applyUpdate() {
  const { data } = update.get();
  const { since, closing } = download.get();
  if (!data || since !== undefined || closing || jobs.get().some(isPending)) return;
  const agreed = await confirm({
    title: data.mandatory ? t('update.mandatory') : t('update.confirm', { version: data.onlineVersion }),
    body: t('update.confirmBody', { version: data.onlineVersion }),
    verb: t('update.install'),
  });
  if (!agreed) return;
  download.set({ since: Date.now() });
  try {
    // Without an address the program takes the installer of its release endpoint.
    await host.request(
      'downloadAndApplyUpdate',
      data.downloadUrl ? { downloadUrl: data.downloadUrl } : {},
      downloadTimeoutMs,
    );
    download.set({ closing: true });
  } catch (error) {
    download.set({ failed: error });
  }
}

/** A question about what ends Varnel or Windows begins with what it would interrupt. */
export const withQueue = (body: string) =>
  jobs.get().some(isPending) ? `${t('update.busy')} ${body}` : body;

export async function uninstallVarnel() {
  const agreed = await confirm({
    title: t('remove.confirm'),
    body: withQueue(t('remove.confirmBody')),
    verb: t('remove.verb'),
    danger: true,
  });
  if (!agreed) return;
  try {
    host.start('uninstallAppSuite', {});
    toast(t('remove.started'));
  } catch (error) {
    toast(errorText(error), { error: true });
  }
}
