import { useId, useLayoutEffect, useMemo, useRef, useState } from 'preact/hooks';
import { t } from '../base/text.ts';
import { isDialogOpen } from '../kit/dialog.tsx';
import { useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { searching } from '../shell/navigation.ts';
import { bestHits } from './hits.ts';
import { loadThings, useMissing, useThings, type Thing } from './things.ts';

const close = () => searching.set(false);

/** The search over everything that the page knows: Ctrl+K. */
export function SearchDialog() {
  return useStore(searching) ? <Search /> : null;
}

function Search() {
  const dialog = useRef<HTMLDialogElement>(null);
  const id = useId();
  const [query, setQuery] = useState('');
  const [at, setAt] = useState(0);
  const things = useThings();
  const found = useMemo(() => bestHits(things, query), [things, query]);
  const missing = useMissing();
  const asked = query.trim() !== '';
  const hits = missing && asked ? [...found, missing] : found;
  // Opens before the next key, which belongs to the query.
  useLayoutEffect(() => {
    loadThings();
    dialog.current!.showModal();
  }, []);
  async function go(hit: Thing | undefined) {
    if (!hit) return;
    if (hit.stays) setAt(0);
    else close();
    await hit.run();
    // The dialog has taken the focus with it: it goes on at the row, or at the top.
    requestAnimationFrame(() => {
      if (isDialogOpen()) return;
      // Of several tables, the last one is led to.
      const rows = hit.toRow ? document.querySelectorAll<HTMLElement>('table[aria-activedescendant]') : [];
      ([...rows].at(-1) ?? document.querySelector<HTMLElement>('h1'))?.focus();
    });
  }
  function onKeyDown(event: KeyboardEvent) {
    const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
    if (step !== undefined) setAt((at + step + hits.length) % Math.max(1, hits.length));
    else if (event.key === 'Enter') void go(hits[at]);
    else return;
    event.preventDefault();
  }
  return (
    <dialog
      ref={dialog}
      class="dialog search"
      aria-label={t('search.title')}
      onClose={close}
      onClick={(event) => event.target === dialog.current && close()}
    >
      <div class="filter">
        <Icon name="search" />
        <input
          type="text"
          role="combobox"
          aria-label={t('search.title')}
          aria-expanded={hits.length > 0}
          aria-controls={id}
          aria-activedescendant={hits[at] && `${id}-${at}`}
          placeholder={t('search.hint')}
          spellcheck={false}
          value={query}
          onInput={(event) => {
            setQuery(event.currentTarget.value);
            setAt(0);
          }}
          onKeyDown={onKeyDown}
        />
      </div>
      {hits.length > 0 && (
        <ul role="listbox" id={id} aria-label={t('search.title')}>
          {hits.map((hit, i) => (
            <li
              key={i}
              id={`${id}-${i}`}
              class="hit line"
              role="option"
              aria-selected={i === at}
              onPointerMove={() => setAt(i)}
              onClick={() => void go(hit)}
            >
              <Icon name={hit.icon} />
              <span title={hit.title}>{hit.title}</span>
              <span class="muted small">{t(`view.${hit.view}`)}</span>
            </li>
          ))}
        </ul>
      )}
      {asked && found.length === 0 && (
        <p class="muted" role="status">
          {t(missing ? 'search.notYet' : 'search.nothing')}
        </p>
      )}
    </dialog>
  );
}
