import type { RefObject } from 'preact';
import { useEffect, useLayoutEffect, useReducer, useRef, useState } from 'preact/hooks';
import type { Store } from '../base/store.ts';

/** Returns the store's value, or a selected part of it. Redraws the component whenever that changes. */
export function useStore<T, V = T>(
  store: Pick<Store<T>, 'get' | 'subscribe'>,
  choose: (value: T) => V = (value) => value as unknown as V,
): V {
  const [, redraw] = useReducer((count: number, _: void) => count + 1, 0);
  const value = choose(store.get());
  const drawn = useRef({ value, choose });
  drawn.current = { value, choose };
  useEffect(() => {
    const check = () => {
      if (!Object.is(drawn.current.choose(store.get()), drawn.current.value)) redraw();
    };
    check(); // it may have changed between drawing and subscribing
    return store.subscribe(check);
  }, [store]);
  return value;
}

/**
 * Returns the whole seconds since a moment (ms since the epoch) and keeps counting while the component is
 * shown. Returns 0 without a moment.
 */
export function useElapsed(since: number | undefined): number {
  const [now, setNow] = useState(Date.now());
  useEffect(() => {
    if (since === undefined) return;
    const tick = () => setNow(Date.now());
    tick();
    const timer = setInterval(tick, 1000);
    return () => clearInterval(timer);
  }, [since]);
  return since === undefined ? 0 : Math.max(0, Math.floor((now - since) / 1000));
}

/** Calls `poll` now and every `periodMs`, except while the window is hidden. */
export function usePolling(poll: () => void, periodMs: number) {
  useEffect(() => {
    let timer: ReturnType<typeof setInterval> | undefined;
    const follow = () => {
      clearInterval(timer);
      if (document.hidden) return;
      poll();
      timer = setInterval(poll, periodMs);
    };
    follow();
    document.addEventListener('visibilitychange', follow);
    return () => {
      clearInterval(timer);
      document.removeEventListener('visibilitychange', follow);
    };
  }, [poll, periodMs]);
}

/** Calls `measure` when the element is first drawn and whenever its size changes. */
export function useSize(ref: RefObject<HTMLElement | null>, measure: () => void) {
  useLayoutEffect(() => {
    measure();
    const observer = new ResizeObserver(measure);
    observer.observe(ref.current!);
    return () => observer.disconnect();
  }, []);
}

/** Keeps the state that a `Switch` shows while the host carries out the change. */
export function usePending(on: boolean, change: (on: boolean) => Promise<void>) {
  const [wanted, setWanted] = useState<boolean>();
  return {
    on: wanted ?? on,
    disabled: wanted !== undefined,
    onToggle(next: boolean) {
      setWanted(next);
      void change(next).finally(() => setWanted(undefined));
    },
  };
}
