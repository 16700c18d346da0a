// Work that must not be interrupted. The rooms that do it write these stores.
import { createStore } from '../base/store.ts';

/** Something is being installed or removed, or is waiting for its turn. */
export const queueBusy = createStore(false);

/** An update of Varnel is being downloaded or is about to be installed, which ends the program. */
export const updateBusy = createStore(false);
