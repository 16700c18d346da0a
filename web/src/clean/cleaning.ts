import { formatBytes } from '../base/format.ts';
import { createSource } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { errorText } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';
import { onServiceMissing } from '../shell/service.tsx';
import { status } from '../shell/status.ts';
import { allTicked, outcomes, type Category, type Outcome, type Ticks } from './junk.ts';

export const junk = createSource(() => host.request('getJunk'));
export const downloads = createSource(() => host.request('getDownloadsJunk'));
export const systemFiles = createSource(() => host.request('getSystemFilesAdvisor'));

interface Cleaning {
  ticks: Ticks;
  /** When the running clean began (ms since the epoch). */
  since?: number;
  /** Results of the last clean, until the next measurement. */
  done?: Partial<Record<Category, Outcome>>;
}

/** Outlives the view: a clean continues while another view is shown. */
export const cleaning = createStore<Cleaning>({ ticks: allTicked });

/** The category whose folders are shown. */
export const unfolded = createStore<Category | undefined>(undefined);

export function measureJunk() {
  const { ticks, since } = cleaning.get();
  if (since !== undefined) return; // the clean measures at its end
  cleaning.set({ ticks });
  void junk.reload();
}

const freshMs = 600_000;

let quiet = false;

/**
 * Measures when the user opens the view, unless the last result is recent: measuring walks whole folder
 * trees.
 */
export function measureIfOld() {
  const { phase, at = 0 } = junk.get();
  const { since } = cleaning.get();
  if (phase === 'loading' || since !== undefined || Date.now() - at < freshMs) return;
  quiet = true;
  measureJunk();
  void junk.reload().then(() => (quiet = false));
}

/**
 * Suppresses the service dialog if the user has not asked for anything. The marks show that the service is
 * missing.
 */
export function startCleaning() {
  onServiceMissing(() => {
    const shows = !quiet;
    quiet = false; // measuring misses it once; the next time follows an action
    return shows;
  });
}

export function freedBytes(done: NonNullable<Cleaning['done']>): number {
  return Object.values(done).reduce((sum, { freed }) => sum + freed, 0);
}

export async function cleanJunk() {
  const before = junk.get().data;
  const { ticks } = cleaning.get();
  if (!before) return;
  cleaning.set({ ticks, since: Date.now() });
  try {
    let after = await host.request('cleanJunk', ticks);
    // This answer covers what the user may see. The service sees more, so its figures compare only with
    // its own.
    await status.reload();
    if (status.get().data?.serviceActive) after = await host.request('getJunk').catch(() => after);
    const done = outcomes(before.categories, after.categories, ticks);
    junk.put(after);
    cleaning.set({ ticks, done });
    toast(t('cleaning.freed', { size: formatBytes(freedBytes(done)) }));
  } catch (error) {
    cleaning.set({ ticks });
    toast(t('cleaning.failed', { reason: errorText(error) }), { error: true });
    void junk.reload();
  }
}
