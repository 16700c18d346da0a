import { useEffect } from 'preact/hooks';
import { isDialogOpen } from './dialog.tsx';

/** Returns true if a key pressed now would type into a field. */
export const isTyping = ({ target }: KeyboardEvent) =>
  target instanceof HTMLElement &&
  target.matches('input:not([type=checkbox]):not([type=radio]), textarea, select');

/**
 * Calls `run` on a key anywhere in the document and suppresses its default action. An open dialog only
 * suppresses it.
 */
export function useKey(matches: (event: KeyboardEvent) => boolean, run: () => void) {
  useEffect(() => {
    const onKeyDown = (event: KeyboardEvent) => {
      if (!matches(event)) return;
      event.preventDefault();
      if (!isDialogOpen()) run();
    };
    document.addEventListener('keydown', onKeyDown);
    return () => document.removeEventListener('keydown', onKeyDown);
  }, []);
}
