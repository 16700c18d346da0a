// A data source: something that is loaded, may fail, and keeps showing its old data while it reloads.
import { createStore, type Store } from './store.ts';

export interface SourceState<T> {
  phase: 'idle' | 'loading' | 'ready' | 'failed';
  /** The last data that arrived; kept during a reload and after a failure. */
  data?: T;
  /** The reason why the last finished load failed; kept during a reload. */
  error?: unknown;
  /** When the data arrived (ms since the epoch). */
  at?: number;
  /** When the running load began (ms since the epoch). */
  since?: number;
}

/** A source for its readers. */
export interface Readable<T> extends Pick<Store<SourceState<T>>, 'get' | 'subscribe'> {
  /** Loads the data. A second call joins a running load. Never rejects: a failure becomes the state. */
  reload(): Promise<void>;
}

export interface Source<T> extends Readable<T> {
  /**
   * Takes data that arrived in another way, for example unrequested from the host. Drops the result of a
   * running load.
   */
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
