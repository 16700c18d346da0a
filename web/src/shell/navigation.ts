import { createStore } from '../base/store.ts';

export type ViewId =
  | 'dashboard'
  | 'cleaning'
  | 'software'
  | 'disk'
  | 'startup'
  | 'processes'
  | 'network'
  | 'developer'
  | 'maintenance'
  | 'settings';

export interface Route {
  view: ViewId;
  /** The drive at which the disk view starts, for example "C:". */
  drive?: string;
}

export const route = createStore<Route>({ view: 'dashboard' });

/** Whether the search over everything is open. */
export const searching = createStore(false);

/** The action of F5 in the current view. */
export const refreshOfView = createStore<(() => void) | undefined>(undefined);
