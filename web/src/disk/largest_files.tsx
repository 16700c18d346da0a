import { formatBytes } from '../base/format.ts';
import { nameOf, parentOf } from '../base/paths.ts';
import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { copyText } from '../kit/clipboard.ts';
import type { Column } from '../kit/table/column.ts';
import { useSelection } from '../kit/table/rows.ts';
import { Table } from '../kit/table/table.tsx';
import { recycle } from '../shell/recycle.ts';
import { forgetGone, refreshDisk, type BigFile } from './analysis.ts';

const filePath = ({ path }: BigFile) => path;

const columns: Column<BigFile>[] = [
  { id: 'name', title: 'app.name', value: ({ path }) => nameOf(path) },
  { id: 'folder', title: 'kind.folder', value: ({ path }) => parentOf(path) },
  {
    id: 'size',
    title: 'app.size',
    value: ({ size }) => size,
    text: ({ size }) => formatBytes(size),
    numeric: true,
    width: '7rem',
  },
];

export function LargestFiles({ files }: { files: BigFile[] }) {
  const selection = useSelection();
  const selected = files.filter(({ path }) => selection[0].keys.has(path));
  const copy = (rows: BigFile[]) => void copyText(rows.map(filePath).join('\r\n'));
  const remove = async (rows: BigFile[]) => {
    if (!(await recycle(rows))) return;
    await forgetGone(rows);
    refreshDisk();
  };
  return (
    <Card title={t('disk.largest')} aside={<span class="muted">{t('disk.largestHint')}</span>}>
      <Table
        label={t('disk.largest')}
        rows={files}
        rowKey={filePath}
        columns={columns}
        sort={{ column: 'size', descending: true }}
        selection={selection}
        menu={(rows) => [
          { label: t('disk.copyPath'), icon: 'copy', run: () => copy(rows) },
          { label: t('recycle.verb'), icon: 'remove', danger: true, run: () => void remove(rows) },
        ]}
        tools={
          <>
            <Button icon="copy" disabled={selected.length === 0} onClick={() => copy(selected)}>
              {t('disk.copyPath')}
            </Button>
            <Button icon="remove" disabled={selected.length === 0} onClick={() => void remove(selected)}>
              {t('recycle.verb')}
            </Button>
          </>
        }
      />
    </Card>
  );
}
