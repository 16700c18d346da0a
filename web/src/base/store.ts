// A value that notifies its listeners of changes: state that outlives the view that shows it.

export interface Store<T> {
  get(): T;
  set(next: T): void;
  /** Returns the function that ends the subscription. */
  subscribe(listener: () => void): () => void;
}

export function createStore<T>(value: T): Store<T> {
  const listeners = new Set<() => void>();
  return {
    get: () => value,
    set(next) {
      if (Object.is(next, value)) return;
      value = next;
      for (const listener of [...listeners]) listener();
    },
    subscribe(listener) {
      listeners.add(listener);
      return () => listeners.delete(listener);
    },
  };
}
