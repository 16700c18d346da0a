import { formatBytes, formatMonth } from '../base/format.ts';
import { t } from '../base/text.ts';
import type { Reply } from '../bridge/protocol.ts';
import { Button } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { DataView, Notice } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import type { Column } from '../kit/table/column.ts';
import { useSelection } from '../kit/table/memory.ts';
import { Table } from '../kit/table/table.tsx';
import { fileItems, recycle, sizeColumn } from '../shell/recycle.ts';
import { downloads } from './cleaning.ts';

type Download = Reply<'getDownloadsJunk'>['items'][number];
const pathOf = ({ path }: Download) => path;

const dayMs = 86_400_000;
const monthOf = (daysOld: number) => formatMonth(Date.now() - daysOld * dayMs);

const columns: Column<Download>[] = [
  { id: 'name', title: 'app.name', value: ({ name }) => name },
  sizeColumn,
  {
    id: 'age',
    title: 'downloads.age',
    value: ({ daysOld }) => daysOld,
    text: ({ daysOld }) => `${t('downloads.days', { n: daysOld })} (${monthOf(daysOld)})`,
    numeric: true,
    width: '12.5rem',
  },
];

const remove = async (files: Download[]) => {
  if (await recycle(files)) await downloads.reload();
};

export function Downloads() {
  const { data } = useStore(downloads);
  return (
    <Card
      title={t('downloads.title')}
      class="at-downloads"
      aside={
        data !== undefined &&
        data.count > 0 && (
          <span class="muted">{t('downloads.total', { size: formatBytes(data.totalBytes) })}</span>
        )
      }
    >
      <DataView
        source={downloads}
        isEmpty={({ items }) => items.length === 0}
        nothing={<Notice icon="success" title={t('downloads.none')} hint={t('downloads.about')} />}
      >
        {({ items }) => <DownloadsTable items={items} />}
      </DataView>
    </Card>
  );
}

function DownloadsTable({ items }: { items: Download[] }) {
  const selection = useSelection('downloads');
  const selected = items.filter((item) => selection[0].keys.has(item.path));
  return (
    <>
      <p class="muted small">{t('downloads.about')}</p>
      <Table
        label={t('downloads.title')}
        rows={items}
        rowKey={pathOf}
        columns={columns}
        remember="downloads"
        sort={{ column: 'size', descending: true }}
        selection={selection}
        menu={(rows) => fileItems(rows, (files) => void remove(files))}
        onDelete={(rows) => void remove(rows)}
        tools={
          <Button icon="remove" disabled={selected.length === 0} onClick={() => void remove(selected)}>
            {selected.length === 0
              ? t('recycle.verb')
              : t('recycle.verbSize', {
                  size: formatBytes(selected.reduce((sum, { size }) => sum + size, 0)),
                })}
          </Button>
        }
      />
    </>
  );
}
