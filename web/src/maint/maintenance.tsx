import { useEffect } from 'preact/hooks';
import { formatPercent, formatTime } from '../base/format.ts';
import { t } from '../base/text.ts';
import type { BridgeError } from '../bridge/bridge.ts';
import { Bar } from '../kit/bar.tsx';
import { Button, IconButton } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { copyText } from '../kit/clipboard.ts';
import { confirm } from '../kit/dialog.tsx';
import { errorText } from '../kit/error_text.ts';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { ToolLog } from '../kit/tool_log.tsx';
import { queueBusy } from '../shell/busy.ts';
import { View } from '../shell/view.tsx';
import {
  abandonFileCheck,
  leaveSafeMode,
  repairs,
  repairStates,
  startRepair,
  type Repair,
} from './repairs.ts';
import { applyUpdate, checkForUpdate, download, uninstallVarnel, update, withQueue } from './update.ts';

const check = () => void checkForUpdate();

// What the host says when nobody answers.
const unreachableReason = 'Download failed from update server';

export function Maintenance() {
  const { at, phase } = useStore(update);
  useEffect(() => {
    if (phase === 'idle') check();
  }, []);
  return (
    <View id="maintenance" refresh={check} at={at}>
      <div class="maintenance">
        <Update />
        <Card title={t('remove.title')} class="at-remove">
          <p class="muted">{t('remove.about')}</p>
          <Button icon="remove" onClick={() => void uninstallVarnel()}>
            {t('remove.verb')}
          </Button>
        </Card>
        {repairs.map((repair) => (
          <RepairCard key={repair} repair={repair} />
        ))}
      </div>
    </View>
  );
}

/** In the page's words; the host's own, which are English, stand below them. */
function Failure({ error, text }: { error: unknown; text: string }) {
  const { kind, reason } = error as BridgeError;
  return (
    <>
      <Icon name="alert" />
      <span>
        {kind === 'refused' ? `${text}\n` : errorText(error)}
        {kind === 'refused' && (
          <span class="muted small" lang="en">
            {reason}
          </span>
        )}
      </span>
    </>
  );
}

function Update() {
  const { phase, data, error } = useStore(update);
  const { since, closing, failed } = useStore(download);
  const seconds = useElapsed(since);
  // The update ends the program, and with it what the queue tells.
  const busy = useStore(queueBusy);
  const { hasUpdate = false, mandatory, changelog } = data ?? {};
  return (
    <Card title={t('update.title')} class="at-update">
      <dl class="versions">
        <div>
          <dt class="muted small">{t('update.installed')}</dt>
          <dd class="big">{data?.currentVersion ?? VARNEL_VERSION}</dd>
        </div>
        <div>
          <dt class="muted small">{t('update.online')}</dt>
          <dd class="big">{data?.onlineVersion ?? '—'}</dd>
        </div>
      </dl>
      {phase === 'loading' && !data && (
        <p class="outcome" role="status">
          <span class="spinner" aria-hidden="true" />
          {t('data.loading')}
        </p>
      )}
      {error !== undefined && (
        <div class="outcome" role="status">
          <Failure
            error={error}
            text={
              (error as BridgeError).reason === unreachableReason
                ? t('update.unreachable')
                : t('update.unreadable')
            }
          />
          <Button icon="refresh" disabled={phase === 'loading'} onClick={check}>
            {t('app.retry')}
          </Button>
        </div>
      )}
      {data && !hasUpdate && error === undefined && (
        <p class="outcome good" role="status">
          <Icon name="success" />
          {t('update.none')}
        </p>
      )}
      {hasUpdate && (
        <>
          {mandatory && (
            <p class="outcome">
              <Icon name="alert" />
              {t('update.mandatory')}
            </p>
          )}
          {changelog && (
            <>
              <h3>{t('update.changes')}</h3>
              <p class="changelog" tabIndex={0}>
                {changelog}
              </p>
            </>
          )}
          {failed !== undefined && (
            <p class="outcome" role="alert">
              <Failure error={failed} text={t('update.failed')} />
            </p>
          )}
          {(since !== undefined || closing) && (
            <p class="outcome" role="status">
              <span class="spinner" aria-hidden="true" />
              {closing ? t('update.closing') : t('update.downloading')}
              {since !== undefined && (
                <span class="muted" aria-hidden="true">
                  {t('scan.elapsed', { n: seconds })}
                </span>
              )}
            </p>
          )}
          <div class="buttons">
            <Button
              kind="primary"
              icon="arrowDown"
              disabled={since !== undefined || closing === true || busy}
              onClick={() => void applyUpdate()}
            >
              {t('update.install')}
            </Button>
            <span class="muted small">{busy ? t('update.busy') : t('update.willClose')}</span>
          </div>
        </>
      )}
    </Card>
  );
}

/** What interrupts the user's work asks first. */
async function ask(repair: Repair) {
  if (repair === 'rebuild-icons' || repair === 'safemode-reboot') {
    const restarts = repair === 'safemode-reboot';
    const body = t(`repair.${repair}.confirmBody`);
    const agreed = await confirm({
      title: t(`repair.${repair}.confirm`),
      body: restarts ? withQueue(body) : body,
      items: restarts ? [leaveSafeMode] : [],
      verb: t(`repair.${repair}.verb`),
      danger: restarts,
    });
    if (!agreed) return;
  }
  startRepair(repair);
}

// A phase of the file check without a line for so long is worth a word.
const silentSeconds = 60;

function RepairCard({ repair }: { repair: Repair }) {
  const { since, lastOutput, percent, lines, result } = useStore(repairStates)[repair] ?? {};
  const running = since !== undefined;
  const seconds = useElapsed(since);
  const silent = useElapsed(running ? lastOutput : undefined);
  return (
    <Card title={t(`repair.${repair}`)} class="repair">
      <p>{t(`repair.${repair}.about`)}</p>
      <dl class="small">
        <dt>{t('repair.needs')}</dt>
        <dd>{t(`repair.${repair}.needs`)}</dd>
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
      <div class="buttons" data-repair={repair} aria-busy={running}>
        <Button icon="maintenance" disabled={running} onClick={() => void ask(repair)}>
          {t(`repair.${repair}.verb`)}
        </Button>
        {running && (
          <>
            {percent === undefined ? <span class="spinner" aria-hidden="true" /> : <Bar percent={percent} />}
            <span class="muted">
              {percent !== undefined && `${formatPercent(percent)}, `}
              {t('scan.elapsed', { n: seconds })}
            </span>
          </>
        )}
        {silent >= silentSeconds && <Button onClick={abandonFileCheck}>{t('jobs.abandon')}</Button>}
      </div>
      {result && (
        <p class={result.good ? 'outcome good' : 'outcome'} role="status" data-result={repair}>
          <Icon name={result.good ? 'success' : 'alert'} />
          <span>{result.text}</span>
          <span class="muted small">{formatTime(result.at)}</span>
        </p>
      )}
      {lines && (
        <details open={running}>
          <summary>{t('jobs.log')}</summary>
          <ToolLog label={`${t('jobs.log')}: ${t(`repair.${repair}`)}`} lines={lines} />
        </details>
      )}
    </Card>
  );
}
