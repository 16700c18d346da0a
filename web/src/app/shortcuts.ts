import { useEffect } from 'preact/hooks';
import { isDialogOpen } from '../kit/dialog.tsx';
import { undoLast } from '../kit/toast.tsx';
import { refreshOfView, route, searching } from '../shell/navigation.ts';
import { showKeys } from './keys_dialog.tsx';
import { views } from './views.ts';

function onKeyDown(event: KeyboardEvent) {
  const { key, ctrlKey, altKey, metaKey, shiftKey } = event;
  const typing =
    event.target instanceof HTMLElement &&
    event.target.matches('input:not([type=checkbox]), textarea, select');
  const act = (run: () => void) => {
    event.preventDefault();
    if (!isDialogOpen()) run();
  };
  if (altKey || metaKey) return;
  // The control's own reload would lose the queue and everything unsaved.
  if (key === 'F5' || (ctrlKey && event.code === 'KeyR')) act(() => refreshOfView.get()?.());
  else if (ctrlKey && !shiftKey && key.toLowerCase() === 'f') {
    // Without a filter, the control's own search opens.
    const filter = document.querySelector<HTMLInputElement>('[data-filter]');
    if (filter) act(() => (filter.focus(), filter.select()));
  } else if (ctrlKey && !shiftKey && key.toLowerCase() === 'k') act(() => searching.set(true));
  else if (ctrlKey && !shiftKey && key.toLowerCase() === 'z' && !typing) act(undoLast);
  // By position, so that it also works on the Czech layout, whose top row types letters.
  else if (ctrlKey && !shiftKey && /^(Digit|Numpad)[0-9]$/.test(event.code))
    act(() => {
      const view = views[(Number(event.code.slice(-1)) + 9) % 10];
      if (!view) return;
      route.set({ view: view.id });
      requestAnimationFrame(() => document.querySelector<HTMLElement>('h1')?.focus());
    });
  else if (key === '?' && !typing && !ctrlKey) act(showKeys);
}

// A dropped file would replace the page.
function refuseFiles(event: DragEvent) {
  if (event.dataTransfer?.types.includes('Files')) event.preventDefault();
}

export function useShortcuts() {
  useEffect(() => {
    document.addEventListener('keydown', onKeyDown);
    document.addEventListener('dragover', refuseFiles);
    document.addEventListener('drop', refuseFiles);
  }, []);
}
