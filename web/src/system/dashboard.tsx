import { formatBytes, formatPercent, formatRate, formatTemperature, noValue } from '../base/format.ts';
import { t } from '../base/text.ts';
import type { Message } from '../bridge/protocol.ts';
import { Bar } from '../kit/bar.tsx';
import { IconButton } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { copyText } from '../kit/clipboard.ts';
import { DataView } from '../kit/data_view.tsx';
import { usePolling, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { route } from '../shell/navigation.ts';
import { status } from '../shell/status.ts';
import { historyMs, telemetry, telemetryPeriodMs, type Telemetry } from '../shell/telemetry.ts';
import { View } from '../shell/view.tsx';
import { memoryInUse } from './culprits.ts';
import { Culprits } from './culprits.tsx';
import { formatDuration } from './duration.ts';
import { Gauge } from './gauge.tsx';
import { niceCeiling, stats } from './series.ts';
import { Sparkline } from './sparkline.tsx';

const fullDiskPercent = 90;

const pollTelemetry = () => void telemetry.reload();

function refresh() {
  void status.reload();
  pollTelemetry();
}

export function Dashboard() {
  const live = useStore(telemetry);
  usePolling(pollTelemetry, telemetryPeriodMs);
  return (
    <View id="dashboard" refresh={refresh} state={live}>
      <div class="board dashboard">
        <DataView source={telemetry}>
          {(data) => (
            <>
              <Processor {...data} />
              <Memory {...data} />
              <Culprits />
              <Disks disks={data.sample.disks} />
              <Network {...data} />
              <Temperatures {...data} />
              {data.sample.battery.hasBattery && <Battery battery={data.sample.battery} />}
            </>
          )}
        </DataView>
        <Machine />
      </div>
    </View>
  );
}

const spark = { windowMs: historyMs, gapMs: telemetryPeriodMs * 2.5 };

function Processor({ rates }: Telemetry) {
  const load = stats(rates.cpu)?.current;
  return (
    <Card
      title={t('dashboard.cpu')}
      class="at-cpu"
      aside={<span class="muted">{t('dashboard.window')}</span>}
    >
      <div class="gauge-and-spark">
        <Gauge label={t('dashboard.loadGauge')} percent={load} caption={t('dashboard.load')} />
        <Sparkline
          name={t('dashboard.load')}
          points={rates.cpu}
          top={100}
          topText={formatPercent(100)}
          format={formatPercent}
          {...spark}
        />
      </div>
    </Card>
  );
}

function Memory({ sample, rates }: Telemetry) {
  const hint = useStore(status, ({ data }) => data?.specs.ramTooltip ?? '');
  const amount = memoryInUse(hint, sample.ram);
  return (
    <Card
      title={t('dashboard.memory')}
      class="at-memory"
      aside={
        amount && (
          <span class="muted">
            {t('dashboard.memoryOf', { used: formatBytes(amount.used), total: formatBytes(amount.total) })}
          </span>
        )
      }
    >
      <div class="gauge-and-spark">
        <Gauge label={t('dashboard.memoryGauge')} percent={sample.ram} caption={t('dashboard.memoryUsed')} />
        <Sparkline
          name={t('dashboard.memoryUse')}
          points={rates.ram}
          top={100}
          topText={formatPercent(100)}
          format={formatPercent}
          {...spark}
        />
      </div>
    </Card>
  );
}

function Temperatures({ sample, rates }: Telemetry) {
  // Both are derived from the load, so they are unknown as long as the load is.
  const known = rates.cpu.length > 0;
  const rows = [
    [t('dashboard.cpu'), sample.cpuTemp],
    [t('dashboard.graphics'), sample.gpuTemp],
  ] as const;
  return (
    <Card
      title={t('dashboard.temperatures')}
      class="at-temperatures"
      aside={
        <span class="tag" title={t('dashboard.estimateNote')}>
          {t('dashboard.estimate')}
        </span>
      }
    >
      <dl class="figures">
        {rows.map(([name, value]) => (
          <div>
            <dt>{name}</dt>
            <dd class="big">{known ? formatTemperature(value) : noValue}</dd>
          </div>
        ))}
      </dl>
      <p class="muted small note">{t('dashboard.estimateNote')}</p>
    </Card>
  );
}

function Network({ sample, rates }: Telemetry) {
  const absent = sample.networkAdapter === '' || sample.networkAdapter === 'No Active Adapter';
  const adapter = absent ? t('dashboard.noAdapter') : sample.networkAdapter;
  return (
    <Card title={t('view.network')} class="at-network" aside={<span class="muted">{adapter}</span>}>
      <div class="two-sparks" title={t('dashboard.networkHint')}>
        {(['download', 'upload'] as const).map((direction) => {
          const points = rates[direction];
          const top = niceCeiling(stats(points)?.peak ?? 0);
          const name = t(`dashboard.${direction}`);
          return (
            <Sparkline
              key={direction}
              name={name}
              points={points}
              top={top}
              topText={formatRate(top, 0)}
              format={formatRate}
              {...spark}
            />
          );
        })}
      </div>
    </Card>
  );
}

function Disks({ disks }: { disks: Telemetry['sample']['disks'] }) {
  return (
    <Card title={t('dashboard.disks')} class="at-disks">
      {disks.length === 0 && <p class="muted">{t('dashboard.noDisks')}</p>}
      <ul class="disks">
        {disks.map(({ drive, percent, freeBytes, totalBytes }) => {
          const isFull = percent >= fullDiskPercent;
          const sizes = { free: formatBytes(freeBytes), total: formatBytes(totalBytes) };
          const space = t(isFull ? 'dashboard.diskFull' : 'dashboard.diskFree', sizes);
          return (
            <li key={drive} title={space}>
              <button type="button" class="disk" onClick={() => route.set({ view: 'disk', drive })}>
                <Icon name="disk" />
                <span class="disk-name">{drive}</span>
                <span class="muted disk-free">{space}</span>
                <span class="disk-share">{formatPercent(percent)}</span>
                <span class="hidden">{t('dashboard.diskOpen')}</span>
                <Icon name="chevronRight" />
                <Bar percent={percent} warn={isFull} />
              </button>
            </li>
          );
        })}
      </ul>
    </Card>
  );
}

function Battery({ battery }: { battery: Telemetry['sample']['battery'] }) {
  const { percent, isCharging, lifeTime, saverMode } = battery;
  const facts = [
    t(`dashboard.${isCharging ? 'charging' : lifeTime > 0 ? 'onBattery' : 'discharging'}`),
    lifeTime >= 0 && !isCharging && t('dashboard.remaining', { time: formatDuration(lifeTime) }),
    saverMode && t('dashboard.saver'),
  ];
  return (
    <Card
      title={t('dashboard.battery')}
      class="at-battery"
      aside={<Icon name={isCharging ? 'batteryCharging' : 'battery'} />}
    >
      <p class="big">{formatPercent(percent)}</p>
      <p class="muted">{facts.filter(Boolean).join(', ')}</p>
      <Bar percent={percent} />
    </Card>
  );
}

function specLines({ specs }: Message<'status'>) {
  return (['cpu', 'gpu', 'ram', 'motherboard', 'os'] as const)
    .filter((name) => name !== 'motherboard' || specs.motherboard !== 'Unknown')
    .map((name) => ({
      name: t(`spec.${name}`),
      text: specs[name].trim() || (name === 'motherboard' ? noValue : t(`spec.${name}.unknown`)),
      hint: name === 'ram' ? specs.ramTooltip : undefined,
    }));
}

function Machine() {
  const state = useStore(status);
  const copy = (data: Message<'status'>) =>
    void copyText(
      specLines(data)
        .map(({ name, text }) => `${name}: ${text}`)
        .join('\r\n'),
    );
  return (
    <Card
      title={t('dashboard.machine')}
      class="at-machine"
      aside={
        state.data && (
          <IconButton icon="copy" label={t('dashboard.copyMachine')} onClick={() => copy(state.data!)} />
        )
      }
    >
      <DataView source={status}>
        {(data) => (
          <dl class="facts">
            {specLines(data).map(({ name, text, hint }) => (
              <div>
                <dt>{name}</dt>
                <dd title={hint}>{text}</dd>
              </div>
            ))}
          </dl>
        )}
      </DataView>
    </Card>
  );
}
