import { draft } from '../net/hosts.ts';
import { useStore } from '../kit/hooks.ts';
import { analysis } from '../disk/analysis.ts';
import { repairStates } from '../maint/repairs.ts';
import { update } from '../maint/update.ts';
import { queueBusy } from '../shell/busy.ts';
import type { ViewId } from '../shell/navigation.ts';
import { settingsDocument } from '../shell/settings.ts';
import { ignoredNow } from '../software/ignored.ts';
import { updates } from '../software/lists.ts';
import { scan } from '../software/scan.ts';

/** "busy", "unsaved", or the number of waiting things. */
export type Badge = 'busy' | 'unsaved' | number | undefined;

/** Returns the navigation's badges for views, including those that are not shown. */
export function useBadges(): Partial<Record<ViewId, Badge>> {
  useStore(settingsDocument);
  const isIgnored = ignoredNow();
  const waiting = useStore(updates).data?.filter((one) => !isIgnored(one)).length;
  const scanning = useStore(scan, ({ running }) => running !== undefined);
  const queued = useStore(queueBusy);
  const analysing = useStore(analysis, ({ running }) => running !== undefined);
  const unsaved = useStore(draft, (text) => text !== undefined);
  const repairing = useStore(repairStates, (all) => Object.values(all).some(({ since }) => since));
  const newer = useStore(update, ({ data }) => data?.hasUpdate === true);
  return {
    software: scanning || queued ? 'busy' : waiting || undefined,
    disk: analysing ? 'busy' : undefined,
    developer: unsaved ? 'unsaved' : undefined,
    maintenance: repairing ? 'busy' : newer ? 1 : undefined,
  };
}
