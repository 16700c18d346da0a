import { nameOf, parentOf } from '../base/paths.ts';
import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import type { Column } from '../kit/table/column.ts';
import { useSelection } from '../kit/table/memory.ts';
import { Table } from '../kit/table/table.tsx';
import { copyPaths, fileItems, sizeColumn } from '../shell/recycle.ts';
import { remove } from './analysis.ts';
import type { Sized } from './tree.ts';

const filePath = ({ path }: Sized) => path;

const columns: Column<Sized>[] = [
  { id: 'name', title: 'app.name', value: ({ path }) => nameOf(path) },
  { id: 'folder', title: 'kind.folder', value: ({ path }) => parentOf(path), drop: 1 },
  sizeColumn,
];

export function LargestFiles({ files }: { files: Sized[] }) {
  const selection = useSelection('largest');
  const selected = files.filter(({ path }) => selection[0].keys.has(path));
  return (
    <Card title={t('disk.largest')} aside={<span class="muted">{t('disk.largestHint')}</span>}>
      <Table
        label={t('disk.largest')}
        rows={files}
        rowKey={filePath}
        columns={columns}
        remember="largest"
        sort={{ column: 'size', descending: true }}
        selection={selection}
        menu={(rows) => fileItems(rows, (files) => void remove(files))}
        onDelete={(rows) => void remove(rows)}
        tools={
          <>
            <Button icon="copy" disabled={selected.length === 0} onClick={() => copyPaths(selected)}>
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
