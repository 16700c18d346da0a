import { useEffect, useId, useLayoutEffect, useMemo, useRef, useState } from 'preact/hooks';
import { locale, t } from '../base/text.ts';
import { Button, IconButton } from '../kit/button.tsx';
import { DataView } from '../kit/data_view.tsx';
import { confirm, Dialog } from '../kit/dialog.tsx';
import { useStore } from '../kit/hooks.ts';
import { Table, useSelection, type Column } from '../kit/table/table.tsx';
import { toast } from '../kit/toast.tsx';
import { isList, isRepeated, joinList, nameFault, pathOf, splitList } from './variable_values.ts';
import { createLookup, saveVariable, scopes, variables, type Variable } from './variables.ts';

const keyOf = ({ scope, name }: Variable) => `${scope}\n${name}`;
const scopeText = ({ scope }: Pick<Variable, 'scope'>) => t(`variables.${scope}`);

async function remove(list: Variable[]) {
  const agreed = await confirm({
    title: t('variables.deleteTitle', { n: list.length }),
    body: t('variables.deleteBody'),
    items: list.map((one) => `${one.name} (${scopeText(one)})`),
    listAll: true,
    verb: t('variables.delete'),
    danger: true,
  });
  if (!agreed) return;
  for (const one of list) {
    const failure = await saveVariable(one, true);
    if (failure) toast(failure, { error: true });
  }
}

export function Variables() {
  const list = useStore(variables);
  const selection = useSelection();
  const [opened, setOpened] = useState<Variable | 'new'>();
  const language = locale();
  useEffect(() => void variables.reload(), []);
  const columns = useMemo<Column<Variable>[]>(
    () => [
      { id: 'name', title: t('app.name'), value: ({ name }) => name, width: '26%' },
      { id: 'scope', title: t('variables.scope'), value: scopeText, width: '9rem' },
      { id: 'value', title: t('variables.value'), value: ({ value }) => value },
    ],
    [language],
  );
  const chosen = (list.data ?? []).filter((one) => selection[0].keys.has(keyOf(one)));
  return (
    <DataView source={list} reload={() => void variables.reload()}>
      {(rows) => (
        <>
          <Table
            label={t('developer.variables')}
            rows={rows}
            rowKey={keyOf}
            columns={columns}
            sort={{ column: 'name', descending: false }}
            selection={selection}
            onActivate={(row) => setOpened(row)}
            menu={(marked) => [
              ...(marked.length === 1
                ? [{ label: t('variables.edit'), run: () => setOpened(marked[0]!) }]
                : []),
              { label: t('variables.delete'), icon: 'remove', danger: true, run: () => void remove(marked) },
            ]}
            tools={
              <>
                <Button onClick={() => setOpened('new')}>{t('variables.add')}</Button>
                <Button disabled={chosen.length !== 1} onClick={() => setOpened(chosen[0])}>
                  {t('variables.edit')}
                </Button>
                <Button icon="remove" disabled={chosen.length === 0} onClick={() => void remove(chosen)}>
                  {t('variables.delete')}
                </Button>
              </>
            }
          />
          {opened && (
            <VariableDialog
              key={opened === 'new' ? opened : keyOf(opened)}
              all={rows}
              {...(opened !== 'new' && { before: opened })}
              onClose={() => setOpened(undefined)}
            />
          )}
        </>
      )}
    </DataView>
  );
}

const overwrite = (name: string, stored = '') =>
  confirm({
    title: t('variables.changed', { name }),
    body: t('variables.changedBody'),
    items: [stored],
    verb: t('hosts.overwrite'),
    danger: true,
  });

function VariableDialog({ all, before, onClose }: { all: Variable[]; before?: Variable; onClose(): void }) {
  const [now, setNow] = useState<Variable>(before ?? { scope: 'user', name: '', value: '' });
  const [raw, setRaw] = useState(!before || !isList(before.name, before.value));
  const [saving, setSaving] = useState(false);
  const [failure, setFailure] = useState<string>();
  const id = useId();
  const fault = before
    ? undefined
    : nameFault(
        now.name,
        all.filter(({ scope }) => scope === now.scope).map(({ name }) => name),
      );
  const change = (changes: Partial<Variable>) => setNow({ ...now, ...changes });
  async function save() {
    setSaving(true);
    // An installer may have added to it since it was read.
    await variables.reload();
    const stored = variables.get().data?.find((one) => keyOf(one) === keyOf(now))?.value;
    if (stored === before?.value || (await overwrite(now.name, stored))) {
      const failed = await saveVariable(now);
      if (!failed) return onClose();
      setFailure(failed);
    }
    setSaving(false);
  }
  return (
    <Dialog
      title={before ? `${before.name} (${scopeText(before)})` : t('variables.add')}
      onClose={onClose}
      actions={
        <>
          <Button onClick={onClose}>{t('app.cancel')}</Button>
          <Button
            kind="primary"
            disabled={saving || fault !== undefined || now.value === before?.value}
            onClick={() => void save()}
          >
            {t('variables.save')}
          </Button>
        </>
      }
    >
      <div class="variable">
        {!before && (
          <>
            <label for={`${id}-scope`}>{t('variables.scope')}</label>
            <select
              id={`${id}-scope`}
              value={now.scope}
              onChange={(event) => change({ scope: event.currentTarget.value as Variable['scope'] })}
            >
              {scopes.map((scope) => (
                <option value={scope}>{scopeText({ scope })}</option>
              ))}
            </select>
            <label for={`${id}-name`}>{t('app.name')}</label>
            <input
              id={`${id}-name`}
              data-first
              type="text"
              spellcheck={false}
              value={now.name}
              onInput={(event) => change({ name: event.currentTarget.value })}
            />
            {fault && fault !== 'empty' && (
              <p class="small" role="alert">
                {t(`variables.${fault}`)}
              </p>
            )}
          </>
        )}
        <div class="variable-head">
          <label for={raw ? `${id}-value` : undefined}>{t('variables.value')}</label>
          <button type="button" class="link" onClick={() => setRaw(!raw)}>
            {t(raw ? 'variables.asList' : 'variables.asText')}
          </button>
        </div>
        {raw ? (
          <textarea
            id={`${id}-value`}
            data-first
            rows={5}
            spellcheck={false}
            value={now.value}
            onInput={(event) => change({ value: event.currentTarget.value.replace(/\n/g, '') })}
          />
        ) : (
          <Entries all={all} value={now.value} onChange={(value) => change({ value })} />
        )}
        {failure && <p role="alert">{failure}</p>}
      </div>
    </Dialog>
  );
}

/** The value as an ordered list. */
function Entries({
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
  // The focus goes along with an entry: its row, and which of the row's controls, or its field where that cannot be used.
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
  // A semicolon that is typed or pasted divides.
  function type(i: number, text: string) {
    const parts = splitList(text);
    set(entries.toSpliced(i, 1, ...parts), i + parts.length - 1);
  }
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
      <Button onClick={() => set([...entries, ''], entries.length)}>{t('variables.addEntry')}</Button>
    </>
  );
}

/** Those of the entries that name what is not on the disk. */
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
