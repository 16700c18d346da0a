import { useStore } from '../kit/hooks.ts';
import { analysis } from '../disk/analysis.ts';
import { repairStates } from '../maint/repairs.ts';
import { update } from '../maint/update.ts';
import { queueBusy, unsaved } from '../shell/busy.ts';
import type { ViewId } from '../shell/navigation.ts';
import { scan } from '../software/scan.ts';
import { useWaiting } from '../software/waiting.ts';

/** "busy", "unsaved", or the number of waiting things. */
export type Badge = 'busy' | 'unsaved' | number | undefined;

/** Returns the navigation's badges for views, including those that are not shown. */
export function useBadges(): Partial<Record<ViewId, Badge>> {
  const waiting = useWaiting();
  const scanning = useStore(scan, ({ running }) => running !== undefined);
  const queued = useStore(queueBusy);
  const analysing = useStore(analysis, ({ running }) => running !== undefined);
  const edited = useStore(unsaved);
  const repairing = useStore(repairStates, (all) => Object.values(all).some(({ since }) => since));
  // Known once the user has seen the offer: only the Maintenance view asks the server.
  const newer = useStore(update, ({ data }) => data?.hasUpdate === true);
  return {
    software: scanning || queued ? 'busy' : waiting || undefined,
    disk: analysing ? 'busy' : undefined,
    developer: edited ? 'unsaved' : undefined,
    maintenance: repairing ? 'busy' : newer ? 1 : undefined,
  };
}
