import { createStore } from '../lib/store.ts';
import type { ViewId } from '../views/views.ts';

export interface Place {
  view: ViewId;
  /** The drive that the disk view is to begin with, for example "C:". */
  drive?: string;
  /** The process that the processes view is to begin with. */
  pid?: number;
}

export const place = createStore<Place>({ view: 'dashboard' });
