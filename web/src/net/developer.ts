import type { Readable } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { onServiceMissing } from '../shell/service.tsx';

export type Part = 'hosts' | 'variables' | 'services' | 'devices';

/** The part of the developer view that is shown; outlives the view. */
export const openedPart = createStore<Part>('hosts');

let unasked = 0;

/** Loads for whoever comes to the view: that the service is missing is no news to somebody who has asked for nothing. */
export function loadUnasked(source: Readable<unknown>) {
  unasked++;
  void source.reload().then(() => unasked--);
}

export const startDeveloper = () => onServiceMissing(() => unasked === 0);
