import { useEffect, useMemo } from 'preact/hooks';
import { locale, t } from '../base/text.ts';
import { IconButton } from '../kit/button.tsx';
import { copyText } from '../kit/clipboard.ts';
import { DataView, Notice } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import { Switch } from '../kit/switch.tsx';
import { Table, type Column } from '../kit/table/table.tsx';
import { View } from '../shell/view.tsx';
import { startup, startupKey, switching, switchItem, type StartupItem } from './startup.ts';

const reload = () => void startup.reload();

const impacts = {
  High: { rank: 3, text: 'startup.high', tag: 'tag tag-danger' },
  Medium: { rank: 2, text: 'startup.medium', tag: 'tag tag-warn' },
  Low: { rank: 1, text: 'startup.low', tag: 'tag tag-good' },
} as const;
const impactOf = ({ impact }: StartupItem) => impacts[impact as keyof typeof impacts] ?? impacts.Low;

const scopeText = ({ scope }: StartupItem) => t(scope === 'HKCU' ? 'startup.user' : 'startup.machine');

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
  const list = useStore(startup);
  const language = locale();
  useEffect(reload, []);
  const columns = useMemo<Column<StartupItem>[]>(
    () => [
      { id: 'name', title: t('startup.name'), value: ({ name }) => name, width: '24%' },
      {
        id: 'on',
        title: t('startup.runs'),
        value: ({ enabled }) => !enabled,
        text: ({ enabled }) => t(enabled ? 'startup.yes' : 'startup.no'),
        cell: (item) => <ItemSwitch {...item} />,
        width: '7rem',
      },
      {
        id: 'impact',
        title: t('startup.impact'),
        value: (item) => impactOf(item).rank,
        text: (item) => t(impactOf(item).text),
        cell: (item) => <span class={impactOf(item).tag}>{t(impactOf(item).text)}</span>,
        width: '8rem',
      },
      { id: 'scope', title: t('startup.scope'), value: scopeText, width: '10rem' },
      {
        id: 'command',
        title: t('startup.command'),
        value: ({ command }) => command,
        cell: ({ command, name }) => (
          <span class="command">
            <IconButton
              icon="copy"
              label={t('startup.copyCommand', { name })}
              onClick={() => void copyText(command)}
            />
            <code title={command}>{command}</code>
          </span>
        ),
      },
    ],
    [language],
  );
  return (
    <View id="startup" refresh={reload} at={list.at}>
      <DataView
        source={list}
        reload={reload}
        empty={{
          when: (items) => items.length === 0,
          notice: (
            <Notice icon="startup" title={t('startup.none')}>
              <p>{t('startup.noneHint')}</p>
            </Notice>
          ),
        }}
      >
        {(items) => (
          <Table
            label={t('view.startup')}
            rows={items}
            rowKey={startupKey}
            columns={columns}
            sort={{ column: 'impact', descending: true }}
            menu={([item]) =>
              item ? [{ label: t('startup.copy'), icon: 'copy', run: () => void copyText(item.command) }] : []
            }
            tools={<span class="muted small">{t('startup.impactHint')}</span>}
          />
        )}
      </DataView>
    </View>
  );
}
