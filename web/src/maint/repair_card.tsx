import { formatMoment, formatPercent } from '../base/format.ts';
import { t } from '../base/text.ts';
import { Bar } from '../kit/bar.tsx';
import { Button, IconButton } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { copyText } from '../kit/clipboard.ts';
import { Spinner } from '../kit/data_view.tsx';
import { confirm } from '../kit/dialog.tsx';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { Icon, type IconName } from '../kit/icon.tsx';
import { silentSeconds, ToolLog } from '../kit/tool_log.tsx';
import { withLosses } from '../shell/busy.ts';
import { ServiceMark } from '../shell/service_mark.tsx';
import { currentSettings, settingsDocument } from '../shell/settings.ts';
import { abandonFileCheck, leaveSafeMode, repairStates, startRepair, type Repair } from './repairs.ts';

const icons: Record<Repair, IconName> = {
  'flush-dns': 'network',
  'rebuild-icons': 'images',
  sfc: 'admin',
  'safemode-reboot': 'power',
};

const byService: readonly Repair[] = ['sfc', 'safemode-reboot'];

/** Asks first before anything that interrupts the user's work. */
export async function ask(repair: Repair) {
  if (repair === 'rebuild-icons' || repair === 'safemode-reboot') {
    const restarts = repair === 'safemode-reboot';
    const body = t(`repair.${repair}.confirmBody`);
    const agreed = await confirm({
      title: t(`repair.${repair}.confirm`),
      body: restarts ? withLosses(body) : body,
      items: restarts ? [leaveSafeMode] : [],
      verb: t(`repair.${repair}.verb`),
      danger: restarts,
    });
    if (!agreed) return;
  }
  startRepair(repair);
}

export function RepairCard({ repair }: { repair: Repair }) {
  useStore(settingsDocument);
  const { since, lines, ...state } = useStore(repairStates)[repair] ?? {};
  const result = state.result ?? currentSettings().repairResults[repair];
  return (
    <Card title={t(`repair.${repair}`)} class="repair">
      <p>{t(`repair.${repair}.about`)}</p>
      <dl class="small">
        <dt>{t('repair.needs')}</dt>
        <dd>
          {t(`repair.${repair}.needs`)}
          {byService.includes(repair) && <ServiceMark />}
        </dd>
        <dt>{t('repair.next')}</dt>
        <dd>{t(`repair.${repair}.next`)}</dd>
      </dl>
      {repair === 'safemode-reboot' && (
        <>
          <p class="small">{t('repair.comeBack')}</p>
          <div class="tool-log">
            <code>{leaveSafeMode}</code>
            <IconButton
              icon="copy"
              label={t('repair.copyComeBack')}
              onClick={() => void copyText(leaveSafeMode)}
            />
          </div>
        </>
      )}
      <RepairButton repair={repair} />
      {result && since === undefined && (
        <p class={result.good ? 'outcome good' : 'outcome'} role="status" data-result={repair}>
          <Icon name={result.good ? 'success' : 'alert'} />
          <span>{result.text}</span>
          <span class="muted small">{formatMoment(result.at)}</span>
        </p>
      )}
      {lines && (
        <details open={since !== undefined}>
          <summary>{t('jobs.log')}</summary>
          <ToolLog label={`${t('jobs.log')}: ${t(`repair.${repair}`)}`} lines={lines} />
        </details>
      )}
    </Card>
  );
}

/** Starts a repair and shows its progress. */
function RepairButton({ repair }: { repair: Repair }) {
  const { since, lastOutput, percent } = useStore(repairStates)[repair] ?? {};
  const running = since !== undefined;
  const seconds = useElapsed(since);
  const silent = useElapsed(running ? lastOutput : undefined);
  return (
    <div class="buttons line" data-repair={repair} aria-busy={running}>
      <Button
        kind={repair === 'safemode-reboot' ? 'danger' : undefined}
        icon={icons[repair]}
        disabled={running}
        onClick={() => void ask(repair)}
      >
        {t(`repair.${repair}.verb`)}
      </Button>
      {running && (
        <>
          {percent === undefined ? <Spinner /> : <Bar percent={percent} />}
          <span class="muted">
            {percent !== undefined && `${formatPercent(percent)}, `}
            {t('app.seconds', { n: seconds })}
          </span>
        </>
      )}
      {silent >= silentSeconds && <Button onClick={abandonFileCheck}>{t('jobs.abandon')}</Button>}
    </div>
  );
}
