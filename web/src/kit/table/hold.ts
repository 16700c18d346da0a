import { useEffect, useState } from 'preact/hooks';

const restMs = 3000;

/**
 * Whether rows keep their places: while the pointer moves over them and 3 s longer, while it is pressed, and while the
 * menu of a row is open. Tells `onChange`.
 */
export class Hold {
  #rest: ReturnType<typeof setTimeout> | undefined;
  #reasons = new Set<string>();

  constructor(readonly onChange: (held: boolean) => void) {}

  /** The pointer has moved over the rows. */
  readonly moved = () => {
    clearTimeout(this.#rest);
    this.#rest = setTimeout(this.left, restMs);
    this.onChange(true);
  };

  /** The pointer is elsewhere, or at rest. */
  readonly left = () => {
    clearTimeout(this.#rest);
    if (this.#reasons.size === 0) this.onChange(false);
  };

  /** Holds until it is called for the same reason with false. */
  keep(reason: 'pressed' | 'menu', on: boolean) {
    if (on === this.#reasons.has(reason)) return;
    if (on) this.#reasons.add(reason);
    else this.#reasons.delete(reason);
    this.moved();
  }
}

/** Whether the rows are held, and the handlers of the element that has them. Rows that are not `steady` never are. */
export function useHold(steady: boolean, menuOpen: boolean) {
  const [held, setHeld] = useState(false);
  const [hold] = useState(() => new Hold(setHeld));
  useEffect(() => hold.keep('menu', menuOpen), [menuOpen]);
  useEffect(() => {
    const release = () => hold.keep('pressed', false);
    addEventListener('pointerup', release);
    addEventListener('pointercancel', release);
    return () => {
      removeEventListener('pointerup', release);
      removeEventListener('pointercancel', release);
      hold.left();
    };
  }, []);
  const handlers = {
    onPointerMove: hold.moved,
    onWheel: hold.moved,
    onPointerDown: () => hold.keep('pressed', true),
    onPointerLeave: hold.left,
  };
  return { held: held && steady, handlers: steady ? handlers : {} };
}
