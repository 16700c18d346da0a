import { useMemo } from 'preact/hooks';
import { t } from '../base/text.ts';
import { copyText } from '../kit/clipboard.ts';
import { useStore } from '../kit/hooks.ts';
import type { Column } from '../kit/table/column.ts';
import { Table } from '../kit/table/table.tsx';
import { processes, showProcess } from '../shell/processes.ts';
import { portKey, reachOf, type Port } from './ports.ts';

/** With the name of the process, as far as it is known. */
type PortRow = Port & { process?: string | undefined };

const tags = { machine: 'tag tag-good', all: 'tag tag-warn', address: 'tag' };

const show = ({ pid }: PortRow) => void showProcess(Number(pid));

const columns: Column<PortRow>[] = [
  {
    id: 'port',
    title: 'network.port',
    value: ({ port }) => Number(port),
    text: ({ port }) => port,
    numeric: true,
    width: '5rem',
  },
  { id: 'local', title: 'network.address', value: ({ local }) => local },
  {
    id: 'reach',
    title: 'network.reach',
    value: ({ local }) => t(`reach.${reachOf(local)}`),
    cell: ({ local }) => (
      <span class={tags[reachOf(local)]} title={t(`reach.${reachOf(local)}.hint`)}>
        {t(`reach.${reachOf(local)}`)}
      </span>
    ),
    width: '10rem',
  },
  {
    id: 'process',
    title: 'network.process',
    value: ({ pid, process = '' }) => `${process} ${pid}`,
    cell: (row) => (
      <button
        type="button"
        class="link"
        title={t('network.show', { pid: row.pid })}
        onClick={() => show(row)}
      >
        {row.pid} <span class="muted">{row.process}</span>
      </button>
    ),
  },
];

export function Ports({ ports }: { ports: Port[] }) {
  const running = useStore(processes).data;
  const rows = useMemo(() => {
    const names = new Map(running?.map(({ pid, name }) => [String(pid), name]));
    return ports.map((port): PortRow => ({ ...port, process: names.get(port.pid) }));
  }, [ports, running]);
  return (
    <Table
      label={t('network.ports')}
      rows={rows}
      rowKey={portKey}
      columns={columns}
      sort={{ column: 'port', descending: false }}
      onActivate={show}
      menu={([row]) =>
        row
          ? [
              { label: t('network.show', { pid: row.pid }), icon: 'processes', run: () => show(row) },
              { label: t('network.copy'), icon: 'copy', run: () => void copyText(row.local) },
            ]
          : []
      }
    />
  );
}
