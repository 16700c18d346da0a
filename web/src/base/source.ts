// A data source: something that is loaded, may fail, and keeps showing what it had while it loads anew.
import { createStore, type Store } from './store.ts';

export interface SourceState<T> {
  phase: 'idle' | 'loading' | 'ready' | 'failed';
  /** The last data that arrived; kept while loading again and after a failure. */
  data?: T;
  /** Why the last finished load failed; kept while loading again. */
  error?: unknown;
  /** When the data arrived (ms since the epoch). */
  at?: number;
  /** When the running load began (ms since the epoch). */
  since?: number;
}

/** A source as its readers see it. */
export interface Readable<T> extends Pick<Store<SourceState<T>>, 'get' | 'subscribe'> {
  /** Loads; while a load runs, a second call joins it. Never rejects: a failure becomes the state. */
  reload(): Promise<void>;
}

export interface Source<T> extends Readable<T> {
  /** Takes data that came by another way, for example unasked from the host; a running load's result is then dropped. */
  put(data: T): void;
}

export function createSource<T>(load: () => Promise<T>): Source<T> {
  const store = createStore<SourceState<T>>({ phase: 'idle' });
  let running: Promise<void> | undefined;

  function put(data: T) {
    running = undefined;
    store.set({ phase: 'ready', data, at: Date.now() });
  }

  function reload() {
    if (running) return running;
    const before = store.get();
    store.set({ ...before, phase: 'loading', since: Date.now() });
    const mine: Promise<void> = load().then(
      (fresh) => {
        if (running === mine) put(fresh);
      },
      (error: unknown) => {
        if (running !== mine) return;
        running = undefined;
        store.set({ ...before, phase: 'failed', error });
      },
    );
    running = mine;
    return mine;
  }

  return { get: store.get, subscribe: store.subscribe, reload, put };
}
