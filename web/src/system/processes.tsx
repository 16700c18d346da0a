import { formatPercent, noValue } from '../base/format.ts';
import { formatNumber, t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { usePolling, useStore } from '../kit/hooks.ts';
import { ListView } from '../kit/list_view.tsx';
import type { MenuItem } from '../kit/menu.tsx';
import type { Column } from '../kit/table/column.ts';
import { useSelection } from '../kit/table/memory.ts';
import { clockText, isMeasured, type ProcessRow } from '../shell/process_shares.ts';
import {
  endProcesses,
  paused,
  pollProcesses,
  processes,
  processesPeriodMs,
  togglePaused,
} from '../shell/processes.ts';
import { View } from '../shell/view.tsx';

const reload = () => void processes.reload();

const columns: Column<ProcessRow>[] = [
  { id: 'name', title: 'processes.name', value: ({ name }) => name },
  {
    id: 'pid',
    title: 'processes.pid',
    value: ({ pid }) => pid,
    text: ({ pid }) => String(pid),
    numeric: true,
    width: '6rem',
    drop: 1,
  },
  {
    id: 'share',
    title: 'processes.share',
    value: ({ share }) => share,
    text: ({ share }) => (share === undefined ? noValue : formatPercent(share, 1)),
    numeric: true,
    width: '8rem',
  },
  {
    id: 'mem',
    title: 'processes.memory',
    value: (one) => (isMeasured(one) ? one.memUsageMB : undefined),
    text: (one) => (isMeasured(one) ? `${formatNumber(one.mem)}\u00a0MB` : noValue),
    numeric: true,
    width: '8rem',
  },
  {
    id: 'time',
    title: 'processes.time',
    value: (one) => (isMeasured(one) ? one.cpuTimeSec : undefined),
    text: (one) => (isMeasured(one) ? clockText(one.cpuTimeSec) : noValue),
    numeric: true,
    width: '9rem',
    drop: 2,
  },
  {
    id: 'kind',
    title: 'processes.kind',
    value: ({ isSystem }) => isSystem,
    text: ({ isSystem }) => t(isSystem ? 'processes.system' : 'processes.user'),
    cell: ({ isSystem }) =>
      isSystem ? (
        <span class="tag" title={t('processes.systemHint')}>
          {t('processes.system')}
        </span>
      ) : (
        <span class="muted">{t('processes.user')}</span>
      ),
    width: '8rem',
    drop: 3,
  },
];

/** Only processes that are not the system's can be ended. */
const endable = (rows: ProcessRow[]) => rows.filter(({ isSystem }) => !isSystem);

const endItem = (rows: ProcessRow[]): MenuItem[] =>
  rows.length > 0
    ? [{ label: t('processes.end'), icon: 'close', danger: true, run: () => void endProcesses(rows) }]
    : [];

export function Processes() {
  const state = useStore(processes);
  const { data = [] } = state;
  const stopped = useStore(paused);
  const selection = useSelection('processes');
  usePolling(pollProcesses, processesPeriodMs);
  const chosen = endable(data.filter(({ pid }) => selection[0].keys.has(pid)));
  const onlySystem = selection[0].keys.size > 0 && chosen.length === 0;
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
      <ListView
        source={processes}
        label={t('view.processes')}
        columns={columns}
        rowKey={({ pid }) => pid}
        remember="processes"
        sort={{ column: 'mem', descending: true }}
        selection={selection}
        steady
        menu={(marked) => endItem(endable(marked))}
        tools={
          <span class="muted small">
            {onlySystem ? t('processes.systemHint') : stopped && t('processes.paused')}
          </span>
        }
      />
    </View>
  );
}
