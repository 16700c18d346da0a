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
  /** The drive that the disk view begins with, for example "C:". */
  drive?: string;
}

export const route = createStore<Route>({ view: 'dashboard' });

/** The search over everything is open. */
export const searching = createStore(false);

/** What F5 does in the view that is shown. */
export const refreshOfView = createStore<(() => void) | undefined>(undefined);
