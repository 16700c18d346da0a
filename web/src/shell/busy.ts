// Work that must not be interrupted. The rooms that do it write these stores.
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';

/** Something is being installed or removed, or is waiting for its turn. */
export const queueBusy = createStore(false);

/** An update of Varnel is being downloaded or is about to be installed, which ends the program. */
export const updateBusy = createStore(false);

/** The hosts file has been edited and not saved. */
export const unsaved = createStore(false);

/** Puts what would be interrupted or lost first in a question about something that ends Varnel or Windows. */
export const withLosses = (body: string) =>
  [queueBusy.get() ? t('update.busy') : '', unsaved.get() ? t('hosts.lost') : '', body]
    .filter(Boolean)
    .join(' ');
