import { useEffect } from 'preact/hooks';
import { t } from '../base/text.ts';
import { IconButton } from '../kit/button.tsx';
import { copyText } from '../kit/clipboard.ts';
import { Notice } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import { ListView } from '../kit/list_view.tsx';
import { Switch } from '../kit/switch.tsx';
import type { Column } from '../kit/table/column.ts';
import { View } from '../shell/view.tsx';
import { startup, startupKey, switching, switchItem, type StartupItem } from './startup.ts';

const reload = () => void startup.reload();

const impacts = {
  High: { rank: 3, text: 'startup.high', tag: 'tag tag-danger' },
  Medium: { rank: 2, text: 'startup.medium', tag: 'tag tag-warn' },
  Low: { rank: 1, text: 'startup.low', tag: 'tag tag-good' },
} as const;
const impactOf = ({ impact }: StartupItem) => impacts[impact as keyof typeof impacts] ?? impacts.Low;

const columns: Column<StartupItem>[] = [
  { id: 'name', title: 'startup.name', value: ({ name }) => name },
  {
    id: 'on',
    title: 'startup.runs',
    value: ({ enabled }) => !enabled,
    text: ({ enabled }) => t(enabled ? 'startup.yes' : 'startup.no'),
    cell: (item) => <ItemSwitch {...item} />,
    width: '7rem',
  },
  {
    id: 'impact',
    title: 'startup.impact',
    value: (item) => impactOf(item).rank,
    text: (item) => t(impactOf(item).text),
    cell: (item) => <span class={impactOf(item).tag}>{t(impactOf(item).text)}</span>,
    width: '8rem',
    drop: 1,
  },
  {
    id: 'scope',
    title: 'startup.scope',
    value: ({ scope }) => t(scope === 'HKCU' ? 'startup.user' : 'startup.machine'),
    width: '10rem',
    drop: 2,
  },
  {
    id: 'command',
    title: 'startup.command',
    value: ({ command }) => command,
    cell: ({ command, name }) => (
      <span class="command line">
        <IconButton
          icon="copy"
          label={t('startup.copyCommand', { name })}
          onClick={() => void copyText(command)}
        />
        <code title={command}>{command}</code>
      </span>
    ),
    drop: 3,
  },
];

function ItemSwitch(item: StartupItem) {
  const wanted = useStore(switching).get(startupKey(item));
  return (
    <Switch
      label={t('startup.switch', { name: item.name })}
      on={wanted ?? item.enabled}
      disabled={wanted !== undefined}
      onToggle={(on) => void switchItem(item, on)}
    />
  );
}

export function Startup() {
  useEffect(reload, []);
  return (
    <View id="startup" refresh={reload} state={useStore(startup)}>
      <ListView
        source={startup}
        label={t('view.startup')}
        columns={columns}
        rowKey={startupKey}
        remember="startup"
        sort={{ column: 'impact', descending: true }}
        nothing={<Notice icon="startup" title={t('startup.none')} hint={t('startup.noneHint')} />}
        menu={([item]) =>
          item ? [{ label: t('startup.copy'), icon: 'copy', run: () => void copyText(item.command) }] : []
        }
        tools={<span class="muted small">{t('startup.impactHint')}</span>}
      />
    </View>
  );
}
