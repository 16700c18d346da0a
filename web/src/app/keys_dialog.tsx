import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { Dialog } from '../kit/dialog.tsx';
import { useStore } from '../kit/hooks.ts';

const help = createStore(false);

export function showKeys() {
  help.set(true);
}

export function KeysDialog() {
  if (!useStore(help)) return null;
  const close = () => help.set(false);
  const space = t('keys.space');
  const arrows = t('keys.arrows');
  const rows: [keys: string[], meaning: string][] = [
    [['Ctrl', '1–9, 0'], t('keys.views')],
    [['Ctrl', 'K'], t('search.title')],
    [['F5'], t('keys.refresh')],
    [['Ctrl', 'F'], t('keys.filter')],
    [['Esc'], t('keys.escape')],
    [[arrows, 'Home', 'End', 'PgUp', 'PgDn'], t('keys.rows')],
    [[space], t('keys.select')],
    [['Shift', arrows], t('keys.range')],
    [['Ctrl', 'A'], t('keys.all')],
    [['Ctrl', 'C'], t('keys.copy')],
    [['Ctrl', 'Z'], t('app.undo')],
    [['Shift', 'F10'], t('table.menu')],
    [['Delete'], t('keys.delete')],
    [['Backspace'], t('keys.up')],
    [['Ctrl', 'S'], t('keys.save')],
    [['Ctrl', '/'], t('keys.comment')],
    [['F3'], t('keys.next')],
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
          <div class="line">
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
