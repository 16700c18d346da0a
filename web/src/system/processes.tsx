import { useEffect, useMemo } from 'preact/hooks';
import { formatPercent, noValue } from '../base/format.ts';
import { formatNumber, t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { DataView } from '../kit/data_view.tsx';
import { usePolling, useStore } from '../kit/hooks.ts';
import type { MenuItem } from '../kit/menu.tsx';
import { Switch } from '../kit/switch.tsx';
import type { Column } from '../kit/table/column.ts';
import { useSelection } from '../kit/table/memory.ts';
import { Table } from '../kit/table/table.tsx';
import { programOf, searchWeb, showInstalled, showPorts, showRunning, showStartup } from '../shell/links.ts';
import { clockText, groupByName, isMeasured, isOwn, type ProcessRow } from '../shell/process_shares.ts';
import {
  endProcesses,
  grouped,
  paused,
  pollProcesses,
  processes,
  processesPeriodMs,
  togglePaused,
} from '../shell/processes.ts';
import { View } from '../shell/view.tsx';

const reload = () => void processes.reload();

const kindOf = (one: ProcessRow) => (isOwn(one) ? 'own' : one.isSystem ? 'system' : 'user');

/** A quarter of all processors, or 4 GB, gets the hottest colour. */
const heatOf = (value: number, hottest: number) => Math.sqrt(Math.min(1, value / hottest));

const columns: Column<ProcessRow>[] = [
  {
    id: 'name',
    title: 'network.process',
    value: ({ name }) => name,
    cell: ({ name, members }) => (
      <span title={name}>
        {name}{' '}
        {members && (
          <span class="tag" title={t('processes.count', { n: members.length })}>
            {formatNumber(members.length)}
          </span>
        )}
      </span>
    ),
    width: '14rem',
  },
  {
    id: 'pid',
    title: 'processes.pid',
    value: ({ pid, members }) => (members ? undefined : pid),
    text: ({ pid, members }) => (members ? noValue : String(pid)),
    numeric: true,
    width: '5rem',
    drop: 1,
  },
  {
    id: 'share',
    title: 'dashboard.cpu',
    value: ({ share }) => share,
    text: ({ share }) => (share === undefined ? noValue : formatPercent(share, 1)),
    heat: ({ share = 0 }) => (share < 1 ? 0 : heatOf(share, 25)),
    numeric: true,
    width: '7.5rem',
  },
  {
    id: 'mem',
    title: 'dashboard.memory',
    value: (one) => (isMeasured(one) ? one.memUsageMB : undefined),
    text: (one) => (isMeasured(one) ? `${formatNumber(one.mem)}\u00a0MB` : noValue),
    heat: ({ memUsageMB }) => (memUsageMB < 200 ? 0 : heatOf(memUsageMB, 4096)),
    numeric: true,
    width: '7.5rem',
  },
  {
    id: 'time',
    title: 'processes.time',
    value: (one) => (isMeasured(one) ? one.cpuTimeSec : undefined),
    text: (one) => (isMeasured(one) ? clockText(one.cpuTimeSec) : noValue),
    numeric: true,
    width: '9rem',
    drop: 3,
  },
  {
    id: 'kind',
    title: 'app.kind',
    value: (one) => t(`processes.${kindOf(one)}`),
    cell: (one) =>
      kindOf(one) === 'user' ? (
        <span class="muted">{t('processes.user')}</span>
      ) : (
        <span class="tag" title={one.isSystem ? t('processes.systemHint') : undefined}>
          {t(`processes.${kindOf(one)}`)}
        </span>
      ),
    width: '9rem',
    drop: 2,
  },
];

/** Only processes that do not belong to the system can be ended. */
const endable = (rows: ProcessRow[]) => rows.filter(({ isSystem }) => !isSystem);

function showMembers({ name, members }: ProcessRow) {
  if (!members) return;
  grouped.set(false);
  showRunning(name);
}

function menuOf(rows: ProcessRow[]): MenuItem[] {
  const ready = endable(rows);
  const end: MenuItem = {
    label: t('processes.end'),
    icon: 'close',
    danger: true,
    run: () => void endProcesses(ready),
  };
  return [...(ready.length > 0 ? [end] : []), ...(rows.length === 1 ? linksOf(rows[0]!) : [])];
}

function linksOf(one: ProcessRow): MenuItem[] {
  const { name, pid, members, isSystem } = one;
  return [
    ...(members ? [{ label: t('processes.apart'), run: () => showMembers(one) }] : []),
    { label: t('processes.ports'), icon: 'network', run: () => showPorts(name, members ? undefined : pid) },
    ...(isSystem
      ? []
      : ([
          { label: t('processes.startup'), icon: 'startup', run: () => showStartup(name) },
          { label: t('processes.uninstall'), icon: 'software', run: () => showInstalled(programOf(name)) },
        ] as const)),
    { label: t('app.web'), icon: 'search', run: () => searchWeb(name) },
  ];
}

export function Processes() {
  const state = useStore(processes);
  const stopped = useStore(paused);
  const folded = useStore(grouped);
  const selection = useSelection('processes');
  usePolling(pollProcesses, processesPeriodMs);
  useEffect(() => () => paused.set(false), []); // other views show these figures as current
  const { data = [] } = state;
  const rows = useMemo(() => (folded ? groupByName(data) : data), [data, folded]);
  const keyOf = folded ? nameKey : pidKey;
  const marked = rows.filter((row) => selection[0].keys.has(keyOf(row)));
  const chosen = endable(marked);
  const onlySystem = marked.length > 0 && chosen.length === 0;
  return (
    <View
      id="processes"
      refresh={reload}
      state={state}
      actions={
        <>
          <Button icon={stopped ? 'play' : 'pause'} onClick={togglePaused}>
            {t(stopped ? 'processes.resume' : 'processes.pause')}
          </Button>
          <Button icon="close" disabled={chosen.length === 0} onClick={() => void endProcesses(chosen)}>
            {t('processes.end')}
          </Button>
        </>
      }
    >
      <DataView source={processes}>
        {() => (
          <Table
            key={String(folded)}
            label={t('view.processes')}
            rows={rows}
            columns={columns}
            rowKey={keyOf}
            remember="processes"
            sort={{ column: 'mem', descending: true }}
            selection={selection}
            steady
            onActivate={showMembers}
            onDelete={(list) => void endProcesses(list)}
            menu={menuOf}
            tools={
              <>
                <span class="muted small">
                  {onlySystem ? t('processes.systemHint') : stopped && t('processes.paused')}
                </span>
                <span class="line small switched" title={t('processes.groupHint')}>
                  {t('processes.group')}
                  <Switch label={t('processes.group')} on={folded} onToggle={grouped.set} />
                </span>
              </>
            }
          />
        )}
      </DataView>
    </View>
  );
}

const pidKey = ({ pid }: ProcessRow) => pid;
const nameKey = ({ name }: ProcessRow) => name.toLowerCase();
