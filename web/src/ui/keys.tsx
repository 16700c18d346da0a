import { useEffect } from 'preact/hooks';
import { createStore } from '../lib/store.ts';
import { place } from '../state/navigation.ts';
import { t } from '../text/text.ts';
import { views } from '../views/views.ts';
import { Button } from './button.tsx';
import { Dialog } from './dialog.tsx';
import { useStore } from './hooks.ts';

/** What F5 does in the view that is shown. */
export const refreshOfView = createStore<(() => void) | undefined>(undefined);

const help = createStore(false);

export function showKeys() {
  help.set(true);
}

function onKeyDown(event: KeyboardEvent) {
  const { key, ctrlKey, altKey, metaKey, shiftKey } = event;
  const typing =
    event.target instanceof HTMLElement &&
    event.target.matches('input:not([type=checkbox]), textarea, select');
  const act = (run: () => void) => {
    event.preventDefault();
    if (!document.querySelector('dialog[open]')) run();
  };
  if (altKey || metaKey) return;
  // The control's own reload would lose the queue and everything that is not saved.
  if (key === 'F5' || (ctrlKey && event.code === 'KeyR')) act(() => refreshOfView.get()?.());
  else if (ctrlKey && !shiftKey && key.toLowerCase() === 'f')
    act(() => document.querySelector<HTMLElement>('[data-filter]')?.focus());
  // By position, so that it also works on the Czech layout, whose upper row gives letters.
  else if (ctrlKey && !shiftKey && /^(Digit|Numpad)[1-9]$/.test(event.code))
    act(() => {
      const view = views[Number(event.code.slice(-1)) - 1];
      if (!view) return;
      place.set({ view: view.id });
      requestAnimationFrame(() => document.querySelector<HTMLElement>('h1')?.focus());
    });
  else if (key === '?' && !typing && !ctrlKey) act(showKeys);
}

// A dropped file would take the place of the page.
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

export function KeysDialog() {
  if (!useStore(help)) return null;
  const close = () => help.set(false);
  const space = t('keys.space');
  const arrows = t('keys.arrows');
  const rows: [keys: string[], meaning: string][] = [
    [['Ctrl', '1–9'], t('keys.views')],
    [['F5'], t('keys.refresh')],
    [['Ctrl', 'F'], t('keys.filter')],
    [['Esc'], t('keys.escape')],
    [[arrows, 'Home', 'End', 'PgUp', 'PgDn'], t('keys.rows')],
    [[space], t('keys.select')],
    [['Shift', arrows], t('keys.range')],
    [['Ctrl', 'A'], t('keys.all')],
    [['Ctrl', 'C'], t('keys.copy')],
    [['Shift', 'F10'], t('keys.menu')],
    [['Backspace'], t('keys.up')],
    [['?'], t('keys.help')],
  ];
  return (
    <Dialog
      title={t('keys.title')}
      onClose={close}
      actions={<Button onClick={close}>{t('app.close')}</Button>}
    >
      <dl class="keys">
        {rows.map(([keys, meaning]) => (
          <div>
            <dt>
              {keys.map((key) => (
                <kbd>{key}</kbd>
              ))}
            </dt>
            <dd>{meaning}</dd>
          </div>
        ))}
      </dl>
    </Dialog>
  );
}
