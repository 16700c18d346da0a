import { formatBytes, formatPercent } from '../base/format.ts';
import { rootOf } from '../base/paths.ts';
import { t } from '../base/text.ts';
import { Bar } from '../kit/bar.tsx';
import { Button } from '../kit/button.tsx';
import { Notice } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { route } from '../shell/navigation.ts';
import type { Telemetry } from '../shell/telemetry.ts';
import { analysis, startAnalysis } from './analysis.ts';

export type Drive = Telemetry['sample']['disks'][number];

export function Drives({ disks }: { disks: Drive[] }) {
  const { drive: wanted } = useStore(route);
  const { running, result } = useStore(analysis);
  const of = (root: string | undefined) =>
    root !== undefined && disks.find(({ drive }) => rootOf(drive) === rootOf(root));
  const chosen = of(running?.root) || of(wanted) || of(result?.root) || disks[0];
  if (!chosen) return <Notice icon="disk" title={t('dashboard.noDisks')} />;
  return (
    <div class={running || result ? 'drives line brief' : 'drives line'}>
      <div class="drive-list" role="radiogroup" aria-label={t('disk.drives')}>
        {disks.map(({ drive, percent, freeBytes, totalBytes, usedBytes }) => (
          <label class="drive choice" key={drive} data-drive={drive}>
            <input
              type="radio"
              name="drive"
              aria-label={drive}
              aria-describedby={`drive-${drive}`}
              checked={drive === chosen.drive}
              disabled={running !== undefined}
              onChange={() => route.set({ view: 'disk', drive })}
            />
            <span class="drive-head line">
              <Icon name="disk" />
              <strong>{drive}</strong>
              <span>{formatPercent(percent)}</span>
            </span>
            <Bar percent={percent} warn={percent >= 90} />
            <span class="muted small" id={`drive-${drive}`}>
              {t('disk.used', {
                used: formatBytes(usedBytes),
                total: formatBytes(totalBytes),
                free: formatBytes(freeBytes),
              })}
            </span>
          </label>
        ))}
      </div>
      <Button
        kind="primary"
        icon="search"
        disabled={running !== undefined}
        onClick={() => startAnalysis(chosen.drive)}
      >
        {t('disk.analyse', { drive: chosen.drive })}
      </Button>
    </div>
  );
}
