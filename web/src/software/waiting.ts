// Counts the updates that wait for the user.
import { useMemo } from 'preact/hooks';
import { useStore } from '../kit/hooks.ts';
import { settingsDocument } from '../shell/settings.ts';
import type { JobKind } from './exit_codes.ts';
import { ignoredNow } from './ignored.ts';
import type { Job } from './jobs.ts';
import { updates } from './lists.ts';
import { jobs } from './queue.ts';

/** Returns the IDs of such jobs. Changes only if a job comes or ends, not with every line of output. */
export function useIds(which: (job: Job) => boolean): ReadonlySet<string> {
  const ids = useStore(jobs, (all) =>
    all
      .filter(which)
      .map(({ id }) => id)
      .join('\n'),
  );
  return useMemo(() => new Set(ids.split('\n')), [ids]);
}

/**
 * Returns the IDs whose job is done. Updated packages stay listed until winget is asked again or Windows
 * restarts.
 */
export const useDone = (kind: JobKind) =>
  useIds((job) => job.kind === kind && (job.state === 'done' || job.state === 'restart'));

/** Returns the number of updates that are neither ignored nor done, if the list is known. */
export function useWaiting(): number | undefined {
  useStore(settingsDocument);
  const isIgnored = ignoredNow();
  const done = useDone('update');
  return useStore(updates).data?.filter((one) => !isIgnored(one) && !done.has(one.id)).length;
}
