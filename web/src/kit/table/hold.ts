import { useEffect, useRef, useState } from 'preact/hooks';

const restMs = 3000;

/**
 * Decides whether rows keep their places: while the pointer moves over them and for 3 s after that, while
 * it is pressed, and while a row's menu is open. Calls `onChange` when that changes.
 */
export class Hold {
  #rest: ReturnType<typeof setTimeout> | undefined;
  #reasons = new Set<string>();

  constructor(readonly onChange: (held: boolean) => void) {}

  /** Called whenever the pointer moves over the rows. */
  readonly moved = () => {
    clearTimeout(this.#rest);
    this.#rest = setTimeout(this.left, restMs);
    this.onChange(true);
  };

  /** Called when the pointer has left the rows or is at rest. */
  readonly left = () => {
    clearTimeout(this.#rest);
    if (this.#reasons.size === 0) this.onChange(false);
  };

  /** Holds until it is called with false for the same reason. */
  keep(reason: 'pressed' | 'menu', on: boolean) {
    if (on === this.#reasons.has(reason)) return;
    if (on) this.#reasons.add(reason);
    else this.#reasons.delete(reason);
    this.moved();
  }
}

/**
 * Returns whether the rows are held, and the handlers for the element that contains them. Never holds rows
 * that are not `steady`.
 */
export function useHold(steady: boolean, menuOpen: boolean) {
  const [held, setHeld] = useState(false);
  const [hold] = useState(() => new Hold(setHeld));
  const ref = useRef<HTMLTableSectionElement>(null);
  useEffect(() => hold.keep('menu', menuOpen), [menuOpen]);
  useEffect(() => {
    const release = () => hold.keep('pressed', false);
    // A listener that could cancel the event would make scrolling wait for this thread.
    ref.current?.addEventListener('wheel', hold.moved, { passive: true });
    addEventListener('pointerup', release);
    addEventListener('pointercancel', release);
    return () => {
      removeEventListener('pointerup', release);
      removeEventListener('pointercancel', release);
      hold.left();
    };
  }, []);
  const handlers = {
    ref,
    onPointerMove: hold.moved,
    onPointerDown: () => hold.keep('pressed', true),
    onPointerLeave: hold.left,
  };
  return { held: held && steady, handlers: steady ? handlers : {} };
}
