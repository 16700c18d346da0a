import { t } from '../base/text.ts';
import { IconButton } from '../kit/button.tsx';
import { useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { CopyLines, Output } from '../kit/tool_log.tsx';
import { clearTerminal, openTerminal, scrolledTerminal, terminal } from './terminal.ts';

/** The pane at the bottom with the output of the host and the tools. */
export function Terminal() {
  const { lines, open, atEnd, unseen } = useStore(terminal);
  return (
    <section class="terminal" aria-label={t('terminal.title')}>
      <div class="terminal-bar line">
        <button
          type="button"
          class="terminal-toggle line"
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
            <CopyLines lines={lines} />
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
        <Output
          class="terminal-output"
          label={t('terminal.output')}
          lines={lines}
          empty={t('terminal.empty')}
          follow={atEnd}
          onScrolled={scrolledTerminal}
        />
      )}
    </section>
  );
}
