import { useMemo } from 'preact/hooks';
import { formatBytes, formatPercent, noValue } from '../base/format.ts';
import { crumbsOf } from '../base/paths.ts';
import { t } from '../base/text.ts';
import { Bar } from '../kit/bar.tsx';
import { Button } from '../kit/button.tsx';
import { copyText } from '../kit/clipboard.ts';
import { useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { isTyping, useKey } from '../kit/keyboard.ts';
import type { MenuItem } from '../kit/menu.tsx';
import type { Column } from '../kit/table/column.ts';
import { Table } from '../kit/table/table.tsx';
import { analysis, folder, goUp, openFolder, type Entry } from './analysis.ts';
import { DiskMap } from './disk_map.tsx';
import type { Drive } from './drives.tsx';
import { kindOf } from './kinds.ts';
import { LargestFiles } from './largest_files.tsx';

const isUpKey = (event: KeyboardEvent) => event.key === 'Backspace' && !isTyping(event);

export function Result({
  total,
  files,
  disk,
}: NonNullable<ReturnType<typeof analysis.get>['result']> & { disk: Drive | undefined }) {
  const { path, items } = useStore(folder);
  const crumbs = crumbsOf(path);

  useKey(isUpKey, goUp);

  return (
    <>
      <div class="where line">
        <Button icon="arrowUp" disabled={crumbs.length === 1} onClick={goUp}>
          {t('disk.up')}
        </Button>
        <Crumbs crumbs={crumbs} />
        <span class="muted small" data-testid="disk-total">
          {disk
            ? t('disk.foundOf', { found: formatBytes(total), used: formatBytes(disk.usedBytes) })
            : t('disk.found', { found: formatBytes(total) })}
        </span>
      </div>
      {disk && total > disk.usedBytes && <p class="muted small">{t('disk.hardLinks')}</p>}
      <div class="explorer">
        <FolderTable path={path} items={items} />
        <DiskMap path={path} items={items} />
      </div>
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

const entryPath = ({ path }: Entry) => path;

/** A folder without bytes: nothing in it, no access to it, or the analysis has never been there, as behind a link. */
const isUnknown = ({ isDirectory, size }: Entry) => isDirectory && size === 0;

/** With its percentage of the folder. */
type FolderRow = Entry & { share: number };

const shareText = (row: FolderRow) => (isUnknown(row) ? noValue : formatPercent(row.share));

const folderColumns: Column<FolderRow>[] = [
  {
    id: 'name',
    title: 'app.name',
    value: ({ name }) => name,
    cell: ({ name, isDirectory }) => (
      <span class="entry line" title={name}>
        <Icon name={isDirectory ? 'folder' : 'file'} />
        <span>{name}</span>
      </span>
    ),
  },
  {
    id: 'size',
    title: 'app.size',
    value: ({ size }) => size,
    text: (row) => (isUnknown(row) ? noValue : formatBytes(row.size)),
    numeric: true,
    width: '6.25rem',
  },
  {
    id: 'share',
    title: 'disk.share',
    value: ({ share }) => share,
    text: shareText,
    cell: (row) => (
      <span class="share line">
        <Bar percent={row.share} />
        <span>{shareText(row)}</span>
      </span>
    ),
    width: '8rem',
    drop: 1,
  },
  {
    id: 'kind',
    title: 'disk.kind',
    value: (row) => t(`kind.${kindOf(row)}`),
    text: (row) => (isUnknown(row) ? t('disk.unknown') : t(`kind.${kindOf(row)}`)),
    cell: (row) =>
      isUnknown(row) ? (
        <span class="tag" title={t('disk.unknownHint')}>
          {t('disk.unknown')}
        </span>
      ) : (
        t(`kind.${kindOf(row)}`)
      ),
    width: '7.5rem',
    drop: 2,
  },
];

function folderMenu([entry]: Entry[]): MenuItem[] {
  if (!entry) return [];
  const { path, isDirectory } = entry;
  const open: MenuItem = { label: t('disk.open'), icon: 'folder', run: () => void openFolder(path) };
  const copy: MenuItem = { label: t('disk.copyPath'), icon: 'copy', run: () => void copyText(path) };
  return isDirectory ? [open, copy] : [copy];
}

function FolderTable({ path, items }: { path: string; items: Entry[] }) {
  const rows = useMemo(() => {
    const sum = items.reduce((total, { size }) => total + size, 0);
    return items.map((entry) => ({ ...entry, share: sum > 0 ? (entry.size / sum) * 100 : 0 }));
  }, [items]);
  return (
    <Table
      label={t('disk.contents')}
      rows={rows}
      rowKey={entryPath}
      columns={folderColumns}
      remember="folder"
      sort={{ column: 'size', descending: true }}
      subject={path}
      onActivate={(entry) => entry.isDirectory && void openFolder(entry.path)}
      menu={folderMenu}
    />
  );
}
