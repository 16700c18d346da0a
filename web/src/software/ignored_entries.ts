// Handles the entries of the ignore list that concern packages.
import type { Ignored } from '../shell/settings_document.ts';

const ignoredType = 'software';

/** Whether to ignore every version of a package, only the one offered now, or nothing. */
export type Ignoring = 'always' | 'version' | 'never';

/** ID of a package, and the offered version. */
interface Offer {
  id: string;
  available: string;
}

const isAbout = (entry: Ignored, { id }: Offer) => entry.type === ignoredType && entry.id === id;

/**
 * Returns a function that tells whether an offer is ignored. An entry with a version applies to that
 * version only.
 */
export const isIgnoredBy = (list: readonly Ignored[]) => (offer: Offer) =>
  list.some(
    (entry) => isAbout(entry, offer) && (entry.version === undefined || entry.version === offer.available),
  );

/** Returns the list after a decision on these offers, which replaces earlier entries for their packages. */
export function withIgnored(list: readonly Ignored[], offers: readonly Offer[], how: Ignoring): Ignored[] {
  const others = list.filter((entry) => !offers.some((offer) => isAbout(entry, offer)));
  if (how === 'never') return others;
  const added = offers.map(({ id, available }): Ignored => ({
    id,
    type: ignoredType,
    ...(how === 'version' && { version: available }),
  }));
  return [...others, ...added];
}
