import { createStore } from '../base/store.ts';

export type Part = 'hosts' | 'variables' | 'services' | 'devices';

/** The part of the developer view that is shown; outlives the view. */
export const openedPart = createStore<Part>('hosts');
