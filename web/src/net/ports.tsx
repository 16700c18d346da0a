import { useMemo } from 'preact/hooks';
import { locale, t } from '../base/text.ts';
import { copyText } from '../kit/clipboard.ts';
import { useStore } from '../kit/hooks.ts';
import { Table, type Column } from '../kit/table/table.tsx';
import { processes, showProcess } from '../shell/processes.ts';
import { portKey, reachOf, type Port } from './ports.ts';

const tags = { machine: 'tag tag-good', all: 'tag tag-warn', address: 'tag' };

export function Ports({ rows }: { rows: Port[] }) {
  const running = useStore(processes).data;
  const language = locale();
  const columns = useMemo<Column<Port>[]>(() => {
    const names = new Map(running?.map(({ pid, name }) => [String(pid), name]));
    return [
      {
        id: 'port',
        title: t('network.port'),
        value: ({ port }) => Number(port),
        text: ({ port }) => port,
        numeric: true,
        width: '5rem',
      },
      { id: 'local', title: t('network.address'), value: ({ local }) => local },
      {
        id: 'reach',
        title: t('network.reach'),
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
        title: t('network.process'),
        value: ({ pid }) => `${names.get(pid) ?? ''} ${pid}`,
        cell: ({ pid }) => (
          <button
            type="button"
            class="link"
            title={t('network.show', { pid })}
            onClick={() => void showProcess(Number(pid))}
          >
            {pid} <span class="muted">{names.get(pid)}</span>
          </button>
        ),
      },
    ];
  }, [language, running]);
  return (
    <Table
      label={t('network.ports')}
      rows={rows}
      rowKey={portKey}
      columns={columns}
      sort={{ column: 'port', descending: false }}
      onActivate={({ pid }) => void showProcess(Number(pid))}
      menu={([port]) =>
        port
          ? [
              {
                label: t('network.show', { pid: port.pid }),
                icon: 'processes',
                run: () => void showProcess(Number(port.pid)),
              },
              { label: t('network.copy'), icon: 'copy', run: () => void copyText(port.local) },
            ]
          : []
      }
    />
  );
}
