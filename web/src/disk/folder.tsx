import { useMemo, useState } from 'preact/hooks';
import { fold } from '../base/fold.ts';
import { formatBytes } from '../base/format.ts';
import { crumbsOf } from '../base/paths.ts';
import { t } from '../base/text.ts';
import { IconButton } from '../kit/button.tsx';
import { useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { isTyping, useKey } from '../kit/keyboard.ts';
import type { MenuItem } from '../kit/menu.tsx';
import { textOf } from '../kit/table/column.ts';
import { change, useSelection, useTableState } from '../kit/table/memory.ts';
import { filterRows } from '../kit/table/rules.ts';
import { Table } from '../kit/table/table.tsx';
import { fileItems } from '../shell/recycle.ts';
import { analysis, folder, goUp, onlyKind, openFolder, remove } from './analysis.ts';
import { DiskMap } from './disk_map.tsx';
import type { Drive } from './drives.tsx';
import { entryPath, folderColumns } from './folder_columns.tsx';
import { kindOf, sumsOfKinds } from './kinds.ts';
import { LargestFiles } from './largest_files.tsx';
import { sumOf, unexplained, type Entry } from './tree.ts';

const isUpKey = (event: KeyboardEvent) => event.key === 'Backspace' && !isTyping(event);

export function Result({
  total,
  files,
  gone,
  disk,
}: NonNullable<ReturnType<typeof analysis.get>['result']> & { disk: Drive | undefined }) {
  const { path } = useStore(folder);
  const crumbs = crumbsOf(path);
  const used = disk?.usedBytes ?? total;
  const missing = unexplained(total, gone, used);

  useKey(isUpKey, goUp);

  return (
    <>
      <div class="where line">
        <IconButton icon="arrowUp" label={t('disk.up')} disabled={crumbs.length === 1} onClick={goUp} />
        <Crumbs crumbs={crumbs} />
        <span class="muted small" data-testid="disk-total">
          {disk
            ? t('disk.foundOf', { found: formatBytes(total), used: formatBytes(used) })
            : t('disk.found', { found: formatBytes(total) })}
        </span>
      </div>
      <Explorer />
      {missing < 0 && <p class="muted small">{t('disk.hardLinks')}</p>}
      {missing > 0 && <p class="muted small">{t('disk.missing', { size: formatBytes(missing) })}</p>}
      <LargestFiles files={files} />
    </>
  );
}

function Crumbs({ crumbs }: { crumbs: ReturnType<typeof crumbsOf> }) {
  return (
    <nav aria-label={t('disk.path')}>
      <ol class="crumbs line">
        {crumbs.map((crumb, i) => (
          <li class="line" key={crumb.path}>
            {i > 0 && <Icon name="chevronRight" />}
            <button
              type="button"
              class="crumb"
              aria-current={i === crumbs.length - 1 ? 'location' : undefined}
              onClick={() => void openFolder(crumb.path)}
            >
              {crumb.name}
            </button>
          </li>
        ))}
      </ol>
    </nav>
  );
}

const wordsOf = (row: Entry & { share: number }) =>
  fold(folderColumns.map((column) => textOf(column, row)).join('\n'));

function entryMenu(entries: Entry[]): MenuItem[] {
  const [entry] = entries;
  const open = (path: string): MenuItem => ({
    label: t('disk.open'),
    icon: 'folder',
    run: () => void openFolder(path),
  });
  return [
    ...(entry?.isDirectory && entries.length === 1 ? [open(entry.path)] : []),
    ...fileItems(entries, (chosen) => void remove(chosen)),
  ];
}

/** Shows the folder as a table and as a map, kept in step. */
function Explorer() {
  const { path, items, inside } = useStore(folder);
  const state = useTableState('folder');
  const selection = useSelection('folder');
  const query = useStore(state, (one) => one.query);
  const only = useStore(onlyKind);
  const sums = useMemo(() => sumsOfKinds(items), [items]);
  const kind = only?.path === path ? sums.find((one) => one.kind === only.kind)?.kind : undefined;
  // The path clicked in the map, which may lie one level below the rows.
  const [picked, setPicked] = useState('');

  const rows = useMemo(() => {
    const sum = sumOf(items);
    return items
      .map((entry) => ({ ...entry, share: sum > 0 ? (entry.size / sum) * 100 : 0 }))
      .filter((entry) => kind === undefined || kindOf(entry) === kind);
  }, [items, kind]);
  const shown = useMemo(() => filterRows(rows, query, wordsOf), [rows, query]);

  const { keys, active } = selection[0];
  const deep = inside.get(String(active))?.find((entry) => entry.path === picked);
  const marked = deep ? new Set([...keys, deep.path]) : keys;
  const chosen = () => (deep ? [deep] : shown.filter((row) => keys.has(row.path)));

  return (
    <div class="explorer">
      <Table
        label={t('disk.contents')}
        rows={rows}
        rowKey={entryPath}
        columns={folderColumns}
        remember="folder"
        sort={{ column: 'size', descending: true }}
        subject={path}
        selection={selection}
        onActivate={(entry) => entry.isDirectory && void openFolder(entry.path)}
        onDelete={(entries) => void remove(entries)}
        menu={entryMenu}
      />
      <figure class="map">
        <DiskMap
          path={path}
          items={shown}
          inside={inside}
          marked={marked}
          onPick={(entry, row) => {
            setPicked(entry.path);
            change(state, {
              selection: { keys: new Set([row]), active: row, anchor: row },
              scrollTop: undefined,
            });
          }}
          onEnter={(folder) => void openFolder(folder)}
          onDelete={() => void remove(chosen())}
          menu={() => entryMenu(chosen())}
        />
        <figcaption class="legend small" role="group" aria-label={t('disk.kinds')}>
          {sums.map(({ kind: one, size }) => (
            <button
              type="button"
              class="line"
              key={one}
              aria-pressed={one === kind}
              onClick={() => onlyKind.set(one === kind ? undefined : { path, kind: one })}
            >
              <i style={{ background: `var(--kind-${one})` }} />
              {t(`kind.${one}`)} <span class="muted">{formatBytes(size)}</span>
            </button>
          ))}
        </figcaption>
      </figure>
    </div>
  );
}
