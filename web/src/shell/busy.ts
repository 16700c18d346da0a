// What must not be interrupted; written by the rooms that do it.
import { createStore } from '../base/store.ts';

/** Something is installed or removed, or waits for its turn. */
export const queueBusy = createStore(false);

/** An update of Varnel is downloaded or about to be installed, which ends the program. */
export const updateBusy = createStore(false);
