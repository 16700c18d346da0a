import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { Notice } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import type { MenuItem } from '../kit/menu.tsx';
import { ListView } from '../kit/list_view.tsx';
import type { Column } from '../kit/table/column.ts';
import { status } from '../shell/status.ts';
import {
  commanded,
  commandText,
  control,
  services,
  startText,
  stateText,
  type ServiceRow,
} from './services.ts';

function Status({ service: { key, status } }: { service: ServiceRow }) {
  const busy = useStore(commanded);
  if (key === busy?.key) return <span class="spinner" role="img" aria-label={t('diagnostics.running')} />;
  if (status === '') return null;
  return <span class={status === 'running' ? 'tag tag-good' : 'tag'}>{stateText(status)}</span>;
}

function Commands({ service }: { service: ServiceRow }) {
  const busy = useStore(commanded);
  return commandsOf(service).map((command) => (
    <button
      key={command}
      type="button"
      class="link"
      tabIndex={-1}
      aria-disabled={busy !== undefined}
      onClick={() => void control(service, command)}
    >
      {commandText(command)}
    </button>
  ));
}

const commandsOf = ({ type, commands }: ServiceRow) => (type === undefined ? [] : commands);

const menuOf = ([service]: ServiceRow[]): MenuItem[] =>
  service
    ? commandsOf(service).map((command) => ({
        label: commandText(command),
        run: () => void control(service, command),
      }))
    : [];

const columns: Column<ServiceRow>[] = [
  { id: 'title', title: 'services.name', value: ({ title }) => title, width: '28%' },
  {
    id: 'status',
    title: 'devices.status',
    value: ({ status }) => stateText(status),
    cell: (service) => <Status service={service} />,
    width: '10rem',
  },
  {
    id: 'facts',
    title: 'services.facts',
    value: ({ start = '', facts }) => [startText(start), facts].filter(Boolean).join(', '),
    drop: 1,
  },
  {
    id: 'commands',
    title: 'services.commands',
    value: ({ commands }) => commands.join(', '),
    cell: (service) => <Commands service={service} />,
    width: '16rem',
  },
];

export function Services() {
  const { phase } = useStore(services);
  const known = useStore(status, (state) => state.phase === 'failed' || state.data?.serviceActive === false);
  if (phase === 'idle' && known)
    return (
      <Notice icon="service" title={t('services.away')} hint={t('services.awayHint')}>
        <Button icon="refresh" onClick={() => void services.reload()}>
          {t('app.retry')}
        </Button>
      </Notice>
    );
  return (
    <ListView
      source={services}
      label={t('developer.services')}
      columns={columns}
      rowKey={({ key }) => key}
      remember="services"
      sort={{ column: 'title', descending: false }}
      menu={menuOf}
      nothing={<Notice icon="service" title={t('services.none')} />}
    />
  );
}
