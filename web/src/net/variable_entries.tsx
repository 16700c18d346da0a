import { useEffect, useLayoutEffect, useMemo, useRef, useState } from 'preact/hooks';
import { t } from '../base/text.ts';
import { Button, IconButton } from '../kit/button.tsx';
import { createLookup } from '../shell/path_lookup.ts';
import { isRepeated, joinList, pathOf, splitList } from './variable_values.ts';
import type { Variable } from './variables.ts';

/** Shows the value as an ordered list. */
export function Entries({
  all,
  value,
  onChange,
}: {
  all: Variable[];
  value: string;
  onChange(value: string): void;
}) {
  const list = useRef<HTMLOListElement>(null);
  const [entries, setEntries] = useState(() => splitList(value));
  const missing = useMissing(entries, all);
  // The focus follows an entry: its row, and the same control of that row, or its field if that control
  // is disabled.
  const focus = useRef<[row: number, nth: number] | undefined>(undefined);
  useLayoutEffect(() => {
    const [row, nth] = focus.current ?? [-1, 0];
    const controls = list.current?.children[row]?.querySelectorAll<HTMLInputElement | HTMLButtonElement>(
      'input, button',
    );
    controls?.[controls[nth]!.disabled ? 0 : nth]!.focus();
    focus.current = undefined;
  });
  function set(next: string[], row: number, nth = 0) {
    setEntries(next);
    onChange(joinList(next));
    focus.current = [row, nth];
  }
  // A typed or pasted semicolon splits the entry.
  function type(i: number, text: string) {
    const parts = splitList(text);
    set(entries.toSpliced(i, 1, ...parts), i + parts.length - 1);
  }
  const isUseless = (entry: string, i: number) => isRepeated(entries, i) || missing.has(entry);
  const useless = entries.filter(isUseless).length;
  const swap = (i: number, j: number, nth: number) =>
    set(entries.with(i, entries[j]!).with(j, entries[i]!), j, nth);
  return (
    <>
      <ol class="entries" ref={list}>
        {entries.map((entry, i) => {
          const n = i + 1;
          return (
            <li key={i}>
              <input
                type="text"
                spellcheck={false}
                aria-label={t('variables.entry', { n })}
                placeholder={t('variables.emptyEntry')}
                value={entry}
                onInput={(event) => type(i, event.currentTarget.value)}
              />
              {isRepeated(entries, i) && <span class="tag tag-warn">{t('variables.repeated')}</span>}
              {missing.has(entry) && <span class="tag tag-danger">{t('variables.missing')}</span>}
              <IconButton
                icon="arrowUp"
                label={t('variables.up', { n })}
                disabled={i === 0}
                onClick={() => swap(i, i - 1, 1)}
              />
              <IconButton
                icon="arrowDown"
                label={t('variables.down', { n })}
                disabled={i === entries.length - 1}
                onClick={() => swap(i, i + 1, 2)}
              />
              <IconButton
                icon="remove"
                label={t('variables.removeEntry', { n })}
                onClick={() => set(entries.toSpliced(i, 1), Math.min(i, entries.length - 2), 3)}
              />
            </li>
          );
        })}
      </ol>
      <div class="buttons line">
        <Button onClick={() => set([...entries, ''], entries.length)}>{t('variables.addEntry')}</Button>
        {useless > 0 && (
          <Button
            icon="cleaning"
            onClick={() =>
              set(
                entries.filter((entry, i) => !isUseless(entry, i)),
                0,
              )
            }
          >
            {t('variables.removeUseless', { n: useless })}
          </Button>
        )}
      </div>
    </>
  );
}

/** Returns the entries whose path does not exist. */
function useMissing(entries: string[], all: Variable[]): ReadonlySet<string> {
  const [missing, setMissing] = useState<ReadonlySet<string>>(new Set());
  const isMissing = useMemo(createLookup, []);
  const values = useMemo(
    () => new Map([...all].reverse().map(({ name, value }) => [name.toLowerCase(), value])),
    [all],
  );
  useEffect(() => {
    let latest = true;
    void Promise.all(
      entries.map(async (entry) => {
        const path = pathOf(entry, values);
        return path !== undefined && (await isMissing(path)) ? [entry] : [];
      }),
    ).then((found) => latest && setMissing(new Set(found.flat())));
    return () => {
      latest = false;
    };
  }, [entries, values]);
  return missing;
}
