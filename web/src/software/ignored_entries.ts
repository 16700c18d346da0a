// Entries of the ignore list that are about packages.
import type { Ignored } from '../shell/settings_document.ts';

const ignoredType = 'software';

/** What is left out of the offers: every version of a package, the one that is offered now, or nothing. */
export type Ignoring = 'always' | 'version' | 'never';

/** Identifier of a package, and the version that is offered. */
interface Offer {
  id: string;
  available: string;
}

const isAbout = (entry: Ignored, { id }: Offer) => entry.type === ignoredType && entry.id === id;

/** Says which offers are left out. An entry with a version is about that version alone. */
export const isIgnoredBy = (list: readonly Ignored[]) => (offer: Offer) =>
  list.some(
    (entry) => isAbout(entry, offer) && (entry.version === undefined || entry.version === offer.available),
  );

/** The list after a decision on these offers, which replaces what it said about their packages before. */
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
