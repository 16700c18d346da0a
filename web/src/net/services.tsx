import { useMemo } from 'preact/hooks';
import { locale, t } from '../base/text.ts';
import { DataView, Notice } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import { Table, type Column } from '../kit/table/table.tsx';
import { commanded, commandText, control, services, type ServiceRow } from './services.ts';

export function Services() {
  const list = useStore(services);
  const busy = useStore(commanded);
  const language = locale();
  const columns = useMemo<Column<ServiceRow>[]>(
    () => [
      { id: 'title', title: t('services.name'), value: ({ title }) => title, width: '28%' },
      {
        id: 'status',
        title: t('devices.status'),
        value: ({ status }) => status,
        cell: ({ key, status }) =>
          key === busy?.key ? (
            <span class="spinner" role="img" aria-label={t('diagnostics.running')} />
          ) : (
            status && <span class={status === 'running' ? 'tag tag-good' : 'tag'}>{status}</span>
          ),
        width: '10rem',
      },
      { id: 'facts', title: t('services.facts'), value: ({ facts }) => facts },
      {
        id: 'commands',
        title: t('services.commands'),
        value: ({ commands }) => commands.join(', '),
        cell: (service) =>
          service.type !== undefined &&
          service.commands.map((command) => (
            <button
              key={command}
              type="button"
              class="link"
              aria-disabled={busy !== undefined}
              onClick={() => void control(service, command)}
            >
              {commandText(command)}
            </button>
          )),
        width: '16rem',
      },
    ],
    [language, busy],
  );
  return (
    <DataView
      source={list}
      reload={() => void services.reload()}
      empty={{
        when: (rows) => rows.length === 0,
        notice: <Notice icon="service" title={t('services.none')} />,
      }}
    >
      {(rows) => (
        <Table
          label={t('developer.services')}
          rows={rows}
          rowKey={({ key }) => key}
          columns={columns}
          sort={{ column: 'title', descending: false }}
        />
      )}
    </DataView>
  );
}
