import { useMemo, useState } from 'preact/hooks';
import { formatPercent, noValue } from '../base/format.ts';
import { formatNumber, locale, t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { DataView } from '../kit/data_view.tsx';
import { usePolling, useStore } from '../kit/hooks.ts';
import { noSelection } from '../kit/table/rules.ts';
import { Table, type Column, type SelectionState } from '../kit/table/table.tsx';
import { route } from '../shell/navigation.ts';
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

/** A selection that begins with the process that another view has led to. */
function useLinkedSelection(): SelectionState {
  return useState(() => {
    const { pid } = route.get();
    return pid === undefined ? noSelection : { keys: new Set([pid]), active: pid, anchor: pid };
  });
}

export function Processes() {
  const list = useStore(processes);
  const stopped = useStore(paused);
  const selection = useLinkedSelection();
  const language = locale();
  const columns = useMemo<Column<ProcessRow>[]>(
    () => [
      { id: 'name', title: t('processes.name'), value: ({ name }) => name },
      {
        id: 'pid',
        title: 'PID',
        value: ({ pid }) => pid,
        text: ({ pid }) => String(pid),
        numeric: true,
        width: '7.5rem',
      },
      {
        id: 'share',
        title: t('processes.share'),
        value: ({ share }) => share,
        text: ({ share }) => (share === undefined ? noValue : formatPercent(share, 1)),
        numeric: true,
        width: '8rem',
      },
      {
        id: 'mem',
        title: t('processes.memory'),
        value: (one) => (isMeasured(one) ? one.memUsageMB : undefined),
        text: (one) => (isMeasured(one) ? `${formatNumber(one.mem)}\u00a0MB` : noValue),
        numeric: true,
        width: '8rem',
      },
      {
        id: 'time',
        title: t('processes.time'),
        value: (one) => (isMeasured(one) ? one.cpuTimeSec : undefined),
        text: (one) => (isMeasured(one) ? clockText(one.cpuTimeSec) : noValue),
        numeric: true,
        width: '9rem',
      },
      {
        id: 'kind',
        title: t('processes.kind'),
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
        width: '9rem',
      },
    ],
    [language],
  );
  const ended = (rows: ProcessRow[]) => rows.filter(({ isSystem }) => !isSystem);
  const chosen = ended((list.data ?? []).filter(({ pid }) => selection[0].keys.has(pid)));
  const onlySystem = selection[0].keys.size > 0 && chosen.length === 0;
  usePolling(pollProcesses, processesPeriodMs);
  return (
    <View
      id="processes"
      refresh={reload}
      at={list.at}
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
      <DataView source={list} reload={reload}>
        {(rows) => (
          <Table
            label={t('view.processes')}
            rows={rows}
            rowKey={({ pid }) => pid}
            columns={columns}
            sort={{ column: 'mem', descending: true }}
            selection={selection}
            steady
            menu={(marked) => {
              const some = ended(marked);
              return some.length > 0
                ? [
                    {
                      label: t('processes.end'),
                      icon: 'close',
                      danger: true,
                      run: () => void endProcesses(some),
                    },
                  ]
                : [];
            }}
            tools={
              <span class="muted small">
                {onlySystem ? t('processes.systemHint') : stopped && t('processes.paused')}
              </span>
            }
          />
        )}
      </DataView>
    </View>
  );
}
