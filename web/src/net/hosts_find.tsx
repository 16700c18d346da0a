import { useMemo, useRef, useState } from 'preact/hooks';
import { t } from '../base/text.ts';
import { IconButton } from '../kit/button.tsx';
import { Icon } from '../kit/icon.tsx';
import { useKey } from '../kit/keyboard.ts';
import { findAll, nextMatch } from './hosts_edit.ts';

const isNextKey = ({ key, shiftKey }: KeyboardEvent) => key === 'F3' && !shiftKey;
const isPreviousKey = ({ key, shiftKey }: KeyboardEvent) => key === 'F3' && shiftKey;

export interface Find {
  query: string;
  count: number;
  /** Number of the selected match from 1; 0 if none is selected. */
  nth: number;
  /** Line of the selected match. */
  line?: number;
  setQuery(query: string): void;
  step(back: boolean): void;
}

/**
 * Finds in the whole text. The text area holds its part from `start` on. F3 continues from the cursor,
 * wherever the focus is.
 */
export function useFind(
  text: string,
  area: () => HTMLTextAreaElement,
  start: number,
  select: (start: number, end: number) => number,
): Find {
  const [query, setQuery] = useState('');
  const [found, setFound] = useState<{ at: number; line: number }>();
  const matches = useMemo(() => findAll(text, query), [text, query]);
  function show(all: readonly number[], place: number, length: number, back = false) {
    const at = all[nextMatch(all, place, back)];
    setFound(at === undefined ? undefined : { at, line: select(at, at + length) });
  }
  function step(back: boolean) {
    const { selectionStart, selectionEnd } = area();
    show(matches, start + (back ? selectionStart : selectionEnd), query.length, back);
  }
  const latest = useRef(step);
  latest.current = step;
  useKey(isNextKey, () => latest.current(false));
  useKey(isPreviousKey, () => latest.current(true));
  const nth = found ? matches.indexOf(found.at) + 1 : 0;
  return {
    query,
    count: matches.length,
    nth,
    ...(found && nth > 0 && { line: found.line }),
    setQuery(wanted) {
      setQuery(wanted);
      show(findAll(text, wanted), start + area().selectionStart, wanted.length);
    },
    step,
  };
}

/** The bar that the shortcut for filters leads to. */
export function FindBar({ query, count, nth, setQuery, step, onLeave }: Find & { onLeave(): void }) {
  return (
    <div class="find line">
      <div class="filter">
        <Icon name="search" />
        <input
          type="text"
          data-filter
          aria-label={t('hosts.find')}
          placeholder={t('hosts.findHint')}
          value={query}
          onInput={(event) => setQuery(event.currentTarget.value)}
          onKeyDown={(event) => {
            if (event.key === 'Enter') step(event.shiftKey);
            else if (event.key === 'Escape') {
              setQuery('');
              onLeave();
            } else return;
            event.preventDefault();
          }}
        />
      </div>
      {query !== '' && (
        <>
          <span class="muted" role="status">
            {t('table.count', { shown: nth, total: count })}
          </span>
          <IconButton icon="arrowUp" label={t('hosts.previous')} onClick={() => step(true)} />
          <IconButton icon="arrowDown" label={t('hosts.next')} onClick={() => step(false)} />
        </>
      )}
    </div>
  );
}
