import { useMemo } from 'preact/hooks';
import { t } from '../base/text.ts';
import { copyText } from '../kit/clipboard.ts';
import { usePolling, useStore } from '../kit/hooks.ts';
import type { MenuItem } from '../kit/menu.tsx';
import { Switch } from '../kit/switch.tsx';
import type { Column } from '../kit/table/column.ts';
import { Table } from '../kit/table/table.tsx';
import type { ProcessRow } from '../shell/process_shares.ts';
import { endProcesses, processes, showProcess } from '../shell/processes.ts';
import { followed, portKey, reachOf, reloadPorts, type Port } from './ports.ts';

/** A port with the name of its process, if that is known. */
type PortRow = Port & { process?: string | undefined };

const followMs = 5000;

const tags = { machine: 'tag tag-good', all: 'tag tag-warn', address: 'tag' };

const show = ({ pid }: PortRow) => void showProcess(Number(pid));

const columns: Column<PortRow>[] = [
  {
    id: 'port',
    title: 'network.port',
    value: ({ port }) => Number(port),
    text: ({ port }) => port,
    numeric: true,
    width: '4.5rem',
  },
  {
    id: 'reach',
    title: 'network.reach',
    value: ({ local }) => t(`reach.${reachOf(local)}`),
    cell: ({ local }) => (
      <span class={tags[reachOf(local)]} title={t(`reach.${reachOf(local)}.hint`, { local })}>
        {t(`reach.${reachOf(local)}`)}
      </span>
    ),
    width: '9.5rem',
    drop: 1,
  },
  {
    id: 'process',
    title: 'network.process',
    value: ({ pid, process = '' }) => `${process} ${pid}`,
    cell: (row) => (
      <button
        type="button"
        class="link"
        tabIndex={-1}
        title={`${row.process ?? ''} (PID ${row.pid})`}
        onClick={() => show(row)}
      >
        {row.process} <span class="muted">{row.pid}</span>
      </button>
    ),
    width: '12rem',
  },
  { id: 'local', title: 'network.address', value: ({ local }) => local, width: '10rem', drop: 2 },
];

/** Reloads from the moment the switch is turned on, except while the window is hidden. */
function Follow() {
  usePolling(reloadPorts, followMs);
  return null;
}

function menuOf([row]: PortRow[], running: ProcessRow[] = []): MenuItem[] {
  if (!row) return [];
  const { pid, local } = row;
  const one = running.find((other) => String(other.pid) === pid && !other.isSystem);
  const end = (process: ProcessRow) => async () => {
    await endProcesses([process]);
    reloadPorts();
  };
  return [
    { label: t('network.show', { pid }), icon: 'processes', run: () => show(row) },
    { label: t('network.copy'), icon: 'copy', run: () => void copyText(local) },
    ...(one
      ? [{ label: t('network.end'), icon: 'close' as const, danger: true, run: () => void end(one)() }]
      : []),
  ];
}

export function Ports({ ports }: { ports: Port[] }) {
  const running = useStore(processes).data;
  const following = useStore(followed);
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
      remember="ports"
      steady={following}
      sort={{ column: 'port', descending: false }}
      onActivate={show}
      menu={(marked) => menuOf(marked, running)}
      tools={
        <span class="line small switched" title={t('network.followHint')}>
          {t('network.follow')}
          <Switch label={t('network.follow')} on={following} onToggle={followed.set} />
          {following && <Follow />}
        </span>
      }
    />
  );
}
