import { useLayoutEffect, useRef } from 'preact/hooks';
import { t } from '../base/text.ts';
import { IconButton } from '../kit/button.tsx';
import { copyText } from '../kit/clipboard.ts';
import { useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { clearTerminal, openTerminal, scrolledTerminal, terminal } from './terminal.ts';

/** The pane at the bottom: what the host and the tools print. It follows its end unless the user has scrolled up. */
export function Terminal() {
  const { lines, open, atEnd, unseen } = useStore(terminal);
  const output = useRef<HTMLDivElement>(null);

  useLayoutEffect(() => {
    if (output.current && atEnd) output.current.scrollTop = output.current.scrollHeight;
  }, [lines, open]);

  return (
    <section class="terminal" aria-label={t('terminal.title')}>
      <div class="terminal-bar">
        <button
          type="button"
          class="terminal-toggle"
          aria-expanded={open}
          title={open ? t('terminal.hide') : t('terminal.show')}
          onClick={() => openTerminal(!open)}
        >
          <Icon name="terminal" />
          {t('terminal.title')}
          {unseen > 0 && <span class="count">{t('terminal.unseen', { n: unseen })}</span>}
          <Icon name={open ? 'chevronDown' : 'chevronUp'} />
        </button>
        {open && (
          <>
            <IconButton
              icon="copy"
              label={t('terminal.copy')}
              disabled={lines.length === 0}
              onClick={() => void copyText(lines.map((line) => line.text).join('\r\n'))}
            />
            <IconButton
              icon="remove"
              label={t('terminal.clear')}
              disabled={lines.length === 0}
              onClick={clearTerminal}
            />
          </>
        )}
      </div>
      {open && (
        <div
          ref={output}
          class="terminal-output"
          role="log"
          aria-live="off"
          aria-label={t('terminal.output')}
          tabIndex={0}
          onScroll={({ currentTarget: { scrollTop, clientHeight, scrollHeight } }) => {
            scrolledTerminal(scrollTop + clientHeight >= scrollHeight - 8);
          }}
        >
          {lines.length === 0 && <p class="muted">{t('terminal.empty')}</p>}
          {lines.map(({ id, text, style }) => (
            <div key={id} class={style}>
              {text}
            </div>
          ))}
        </div>
      )}
    </section>
  );
}
