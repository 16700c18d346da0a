// Finds, offers and removes the leftovers of uninstalled programs.
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { errorText } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';
import { serviceDialogClosed } from '../shell/service.tsx';
import type { Task } from './jobs.ts';
import type { Leftover } from './leftover_ticks.ts';

export interface Found {
  job: Task;
  items: Leftover[];
}

/** The leftovers per uninstalled program, shown one after another. */
export const leftovers = createStore<readonly Found[]>([]);

const offer = (found: Found) => leftovers.set([...leftovers.get(), found]);

const findLeftovers = async ({ id, name }: Task) =>
  (await host.request('findLeftovers', { id, name })).leftovers;

export async function searchLeftovers(job: Task) {
  try {
    const items = await findLeftovers(job);
    if (items.length > 0) offer({ job, items });
    else toast(t('leftovers.none', { name: job.name }));
  } catch (error) {
    toast(t('leftovers.searchFailed', { reason: errorText(error) }), { error: true });
  }
}

export function closeLeftovers(found: Found) {
  leftovers.set(leftovers.get().filter((other) => other !== found));
}

// The running removal. The host asks the service once per item.
let removal: { serviceMissed?: boolean } | undefined;

/** Notes that the helper service is missing. Returns true unless the running removal has noted it already. */
export function noteServiceMissingInRemoval(): boolean {
  if (!removal) return true;
  const first = !removal.serviceMissed;
  removal.serviceMissed = true;
  return first;
}

/**
 * Removes items. The reply says only whether everything was removed, so the remaining items are looked up
 * and offered again.
 */
export async function cleanLeftovers(job: Task, items: Leftover[]) {
  let remaining: Leftover[] = [];
  const mine = (removal = {});
  try {
    await host.request('cleanLeftovers', { items }).finally(() => {
      if (removal === mine) removal = undefined;
    });
  } catch {
    const left = await findLeftovers(job).catch(() => items);
    remaining = left.filter(({ path }) => items.some((item) => item.path === path));
  }
  if (remaining.length === 0) return toast(t('leftovers.removed', { n: items.length }));
  toast(t('leftovers.stayed', { n: remaining.length }), { error: true });
  await serviceDialogClosed();
  offer({ job, items: remaining });
}
