import type { Readable } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { onServiceMissing } from '../shell/service.tsx';

export type Part = 'hosts' | 'variables' | 'services' | 'devices';

/** The part of the developer view that is shown; outlives the view. */
export const openedPart = createStore<Part>('hosts');

let unasked = 0;

/**
 * Loads when the user opens the view. Does not open the service dialog, because the user has not asked for
 * anything.
 */
export function loadUnasked(source: Readable<unknown>) {
  unasked++;
  void source.reload().then(() => unasked--);
}

export const startDeveloper = () => onServiceMissing(() => unasked === 0);
