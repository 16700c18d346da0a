import { useEffect } from 'preact/hooks';
import { isDialogOpen } from './dialog.tsx';

/** Whether a key pressed now would write into a field. */
export const isTyping = ({ target }: KeyboardEvent) =>
  target instanceof HTMLElement &&
  target.matches('input:not([type=checkbox]):not([type=radio]), textarea, select');

/** Runs on a key anywhere in the document, which then does nothing else. An open dialog only swallows it. */
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
