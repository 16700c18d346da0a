import { useEffect } from 'preact/hooks';
import { noValue } from '../base/format.ts';
import { driveOf, rootOf } from '../base/paths.ts';
import { formatNumber, t } from '../base/text.ts';
import { DataView, Notice, Spinner } from '../kit/data_view.tsx';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { telemetry } from '../shell/telemetry.ts';
import { View } from '../shell/view.tsx';
import { analysis, refreshDisk } from './analysis.ts';
import { Drives } from './drives.tsx';
import { Result } from './folder.tsx';

export function Disk() {
  const live = useStore(telemetry);
  const { running, result } = useStore(analysis);
  useEffect(() => void telemetry.reload(), []);
  const disks = live.data?.sample.disks;
  return (
    <View
      id="disk"
      refresh={refreshDisk}
      state={running ? { phase: 'loading', since: running.since } : { phase: 'ready', at: result?.at }}
    >
      <div class="analysis">
        <DataView source={telemetry}>{({ sample }) => <Drives disks={sample.disks} />}</DataView>
        {running && <AnalysisProgress {...running} />}
        {!running && result && (
          <Result {...result} disk={disks?.find(({ drive }) => rootOf(drive) === result.root)} />
        )}
        {!running && !result && disks && disks.length > 0 && (
          <Notice icon="disk" title={t('disk.start')} hint={t('disk.startHint')} />
        )}
      </div>
    </View>
  );
}

function AnalysisProgress({
  root,
  since,
  scanned,
  perSecond,
  folder: current,
}: NonNullable<ReturnType<typeof analysis.get>['running']>) {
  const seconds = useElapsed(since);
  const title = t('disk.running', { drive: driveOf(root) });
  const figures = [
    [t('disk.scanned'), formatNumber(scanned)],
    [t('disk.perSecond'), scanned === 0 ? noValue : formatNumber(Math.round(perSecond))],
    [t('disk.elapsed'), t('app.seconds', { n: seconds })],
  ];
  return (
    <section class="card scan" aria-label={title} aria-busy="true" data-testid="disk-progress">
      <Spinner />
      <h2>{title}</h2>
      <dl class="scan-figures">
        {figures.map(([name, value]) => (
          <div key={name}>
            <dt class="muted small">{name}</dt>
            <dd>{value}</dd>
          </div>
        ))}
      </dl>
      <p class="muted scan-folder" title={current}>
        {current || t('disk.reading')}
      </p>
    </section>
  );
}
