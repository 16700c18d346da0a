import { formatBytes, formatPercent, noValue } from '../base/format.ts';
import { t } from '../base/text.ts';
import { Bar } from '../kit/bar.tsx';
import { Icon } from '../kit/icon.tsx';
import type { Column } from '../kit/table/column.ts';
import { isUnknown } from '../shell/recyclable.ts';
import { kindOf } from './kinds.ts';
import type { Entry } from './tree.ts';

export const entryPath = ({ path }: Entry) => path;

/** An entry with its percentage of the folder. */
export type FolderRow = Entry & { share: number };

const shareText = (row: FolderRow) => (isUnknown(row) ? noValue : formatPercent(row.share));

export const folderColumns: Column<FolderRow>[] = [
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
    width: '7.5rem',
    drop: 1,
  },
  {
    id: 'kind',
    title: 'app.kind',
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
