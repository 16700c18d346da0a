import { useEffect, useMemo, useReducer, useRef, useState } from 'preact/hooks';
import { host } from '../bridge/host.ts';
import type { RequestArgs } from '../bridge/bridge.ts';
import type { Action, Message, MessageType, Reply } from '../bridge/protocol.ts';
import { createSource, type Source, type SourceState } from '../lib/source.ts';
import type { Store } from '../lib/store.ts';

/** The store's value, or what is chosen of it; the component is drawn again when that changes. */
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

/** One request as a data source: loads when the view opens and whenever its data changes. */
export function useRequest<A extends Action>(
  action: A,
  ...args: RequestArgs<A>
): SourceState<Reply<A>> & Source<Reply<A>> {
  const source = useMemo(
    () => createSource(() => host.request(action, ...args)),
    [action, JSON.stringify(args)],
  );
  const state = useStore(source);
  useEffect(() => void source.reload(), [source]);
  return { ...source, ...state };
}

/** Hears every message of one type while the component is shown. */
export function useStream<T extends MessageType>(type: T, listener: (message: Message<T>) => void) {
  const latest = useRef(listener);
  latest.current = listener;
  useEffect(() => host.on(type, (message) => latest.current(message)), [type]);
}

/** Whole seconds since a moment (ms since the epoch), counting on while the component is shown; 0 without a moment. */
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

/** Calls `poll` now and every `periodMs`, but not while the window is hidden. */
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
