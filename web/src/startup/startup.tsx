import { useEffect, useMemo } from 'preact/hooks';
import { nameOf } from '../base/paths.ts';
import { t } from '../base/text.ts';
import { Button, IconButton } from '../kit/button.tsx';
import { Chips } from '../kit/chips.tsx';
import { copyText } from '../kit/clipboard.ts';
import { DataView, Notice } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import type { MenuItem } from '../kit/menu.tsx';
import { Switch } from '../kit/switch.tsx';
import type { Column } from '../kit/table/column.ts';
import { useSelection } from '../kit/table/memory.ts';
import { Table } from '../kit/table/table.tsx';
import { explorerItem } from '../shell/explorer.ts';
import { searchWeb, showRunning, startupKind, type StartupKind } from '../shell/links.ts';
import { ServiceMark } from '../shell/service_mark.tsx';
import { View } from '../shell/view.tsx';
import { fileOf } from './startup_command.ts';
import {
  findMissing,
  missing,
  startup,
  startupKey,
  switching,
  switchItems,
  type StartupItem,
} from './startup.ts';

const reload = () => void startup.reload();

const impacts = {
  High: { rank: 3, text: 'startup.high', tag: 'tag tag-danger' },
  Medium: { rank: 2, text: 'startup.medium', tag: 'tag tag-warn' },
  Low: { rank: 1, text: 'startup.low', tag: 'tag tag-good' },
} as const;
const impactOf = ({ impact }: StartupItem) => impacts[impact as keyof typeof impacts] ?? impacts.Low;

const columns: Column<StartupItem>[] = [
  {
    id: 'name',
    title: 'startup.name',
    value: ({ name }) => name,
    cell: (item) => <ItemName {...item} />,
    width: '15rem',
  },
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
    title: 'app.scope',
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
          inRow
        />
        <code title={command}>{command}</code>
      </span>
    ),
    drop: 3,
  },
];

const isMachine = ({ scope }: StartupItem) => scope !== 'HKCU';

/** Shows the name, and what the user should know before switching it. */
function ItemName(item: StartupItem) {
  const gone = useStore(missing).has(startupKey(item));
  return (
    <span class="startup-name line">
      <span class="cut">{item.name}</span>
      {gone && (
        <span class="tag tag-warn" title={t('startup.missingHint', { file: fileOf(item.command) ?? '' })}>
          {t('startup.missing')}
        </span>
      )}
      {isMachine(item) && <ServiceMark />}
    </span>
  );
}

function ItemSwitch(item: StartupItem) {
  const wanted = useStore(switching).get(startupKey(item));
  return (
    <Switch
      label={t('startup.switch', { name: item.name })}
      on={wanted ?? item.enabled}
      disabled={wanted !== undefined}
      onToggle={(on) => void switchItems([item], on)}
      inRow
    />
  );
}

const kinds: Record<StartupKind, (item: StartupItem) => boolean> = {
  all: () => true,
  on: ({ enabled }) => enabled,
  off: ({ enabled }) => !enabled,
  high: (item) => impactOf(item) === impacts.High,
  missing: (item) => missing.get().has(startupKey(item)),
};

export function Startup() {
  useEffect(reload, []);
  const state = useStore(startup);
  useEffect(() => void findMissing(), [state.data]);
  return (
    <View id="startup" refresh={reload} state={state}>
      <DataView
        source={startup}
        nothing={<Notice icon="startup" title={t('startup.none')} hint={t('startup.noneHint')} />}
      >
        {(items) => <Items items={items} />}
      </DataView>
      <p class="startup-note muted small">
        {t('startup.only')} {t('startup.impactHint')} {t('startup.stateHint')}
      </p>
    </View>
  );
}

function Items({ items }: { items: StartupItem[] }) {
  const chosen = useStore(startupKind);
  const gone = useStore(missing);
  const selection = useSelection('startup');
  const chips = (Object.keys(kinds) as StartupKind[]).map((id) => ({
    id,
    title: t(`startup.kind.${id}`),
    count: items.filter(kinds[id]).length,
  }));
  const rows = useMemo(() => items.filter(kinds[chosen]), [items, chosen, gone]);
  return (
    <Table
      label={t('view.startup')}
      rows={rows}
      columns={columns}
      rowKey={startupKey}
      remember="startup"
      sort={{ column: 'impact', descending: true }}
      selection={selection}
      menu={menuOf}
      onActivate={(item) => void switchItems([item], !item.enabled)}
      tools={(ticked) => (
        <>
          {ticked.length > 1 ? (
            [true, false].map((on) => {
              const todo = ticked.filter(({ enabled }) => enabled !== on);
              return (
                <Button disabled={todo.length === 0} onClick={() => void switchItems(todo, on)}>
                  {t(on ? 'startup.turnOn' : 'startup.turnOff', { n: todo.length })}
                </Button>
              );
            })
          ) : (
            <Chips
              label={t('startup.kinds')}
              chips={chips}
              active={chosen}
              onChoose={(id) => startupKind.set(id)}
            />
          )}
        </>
      )}
    />
  );
}

function menuOf(items: StartupItem[]): MenuItem[] {
  const [item] = items;
  if (!item) return [];
  const off = items.filter(({ enabled }) => enabled);
  const on = items.filter(({ enabled }) => !enabled);
  const all: MenuItem[] = [];
  if (on.length > 0)
    all.push({
      label: t('startup.turnOn', { n: on.length }),
      icon: 'play',
      run: () => void switchItems(on, true),
    });
  if (off.length > 0)
    all.push({
      label: t('startup.turnOff', { n: off.length }),
      icon: 'pause',
      run: () => void switchItems(off, false),
    });
  if (items.length > 1) return all;
  const file = fileOf(item.command);
  const name = file && nameOf(file);
  const key = `${isMachine(item) ? 'HKLM' : 'HKCU'}\\${item.registryPath}`;
  return [
    ...all,
    ...(file && name
      ? [
          { label: t('startup.running'), icon: 'processes' as const, run: () => showRunning(name) },
          explorerItem(file),
        ]
      : []),
    { label: t('app.web'), icon: 'search', run: () => searchWeb(name ?? item.name) },
    { label: t('startup.copy'), icon: 'copy', run: () => void copyText(item.command) },
    { label: t('startup.copyKey'), icon: 'copy', run: () => void copyText(key) },
  ];
}
