import { formatBytes, formatPercent, noValue } from '../base/format.ts';
import { t } from '../base/text.ts';
import { Card } from '../kit/card.tsx';
import { usePolling, useStore } from '../kit/hooks.ts';
import type { ProcessRow } from '../shell/process_shares.ts';
import { pollProcesses, processes, processesPeriodMs, showProgram } from '../shell/processes.ts';
import { culprits } from './culprits.ts';

const kinds = [
  { of: 'share', title: 'dashboard.cpu', text: ({ share = 0 }: ProcessRow) => formatPercent(share, 1) },
  {
    of: 'memUsageMB',
    title: 'dashboard.memory',
    text: ({ memUsageMB }: ProcessRow) => formatBytes(memUsageMB * 2 ** 20),
  },
] as const;

/** Shows the programs that keep the computer busy. */
export function Culprits() {
  usePolling(pollProcesses, processesPeriodMs);
  const { data = [] } = useStore(processes);
  return (
    <Card title={t('dashboard.who')} class="at-who">
      <div class="culprits">
        {kinds.map(({ of, title, text }) => {
          const rows = culprits(data, of);
          return (
            <div key={of}>
              <h3 class="muted small">{t(title)}</h3>
              <ol data-who={of}>
                {rows.map((one) => (
                  <li key={one.name}>
                    <button
                      type="button"
                      class="culprit line"
                      title={one.name}
                      onClick={() => showProgram(one)}
                    >
                      <span>{one.name}</span>
                      <span>{text(one)}</span>
                    </button>
                  </li>
                ))}
                {rows.length === 0 && <li class="culprit muted">{noValue}</li>}
              </ol>
            </div>
          );
        })}
      </div>
    </Card>
  );
}
