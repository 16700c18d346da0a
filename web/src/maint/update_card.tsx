import { noValue } from '../base/format.ts';
import { t } from '../base/text.ts';
import type { BridgeError } from '../bridge/bridge.ts';
import { Button } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { Spinner } from '../kit/data_view.tsx';
import { errorText } from '../kit/error_text.ts';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { queueBusy, updateBusy } from '../shell/busy.ts';
import { applyUpdate, checkForUpdate, download, update } from './update.ts';

// The host's text if the server does not answer.
const unreachableReason = 'Download failed from update server';

/** Shows the page's text, with the host's own (in English) below it. */
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

export function UpdateCard() {
  const { phase, data, error } = useStore(update);
  return (
    <Card title={t('update.title')} class="at-update">
      <dl class="versions">
        <div>
          <dt class="muted small">{t('update.installed')}</dt>
          <dd class="big">{data?.currentVersion ?? VARNEL_VERSION}</dd>
        </div>
        <div>
          <dt class="muted small">{t('update.online')}</dt>
          <dd class="big">{data?.onlineVersion ?? noValue}</dd>
        </div>
      </dl>
      {phase === 'loading' && !data && (
        <p class="outcome" role="status">
          <Spinner />
          {t('update.checking')}
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
          <Button icon="refresh" disabled={phase === 'loading'} onClick={() => void checkForUpdate()}>
            {t('app.retry')}
          </Button>
        </div>
      )}
      {data && !data.hasUpdate && error === undefined && (
        <p class="outcome good" role="status">
          <Icon name="success" />
          {t('update.none')}
        </p>
      )}
      {data?.hasUpdate && <Offer {...data} />}
    </Card>
  );
}

/** Shows what is new and the progress of its download. */
function Offer({ mandatory, changelog }: { mandatory: boolean; changelog: string }) {
  const { failed } = useStore(download);
  // The update ends the program and with it the queue's reports.
  const busy = useStore(queueBusy);
  const running = useStore(updateBusy);
  return (
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
      {running && <DownloadState />}
      <div class="buttons line">
        <Button kind="primary" icon="arrowDown" disabled={running || busy} onClick={() => void applyUpdate()}>
          {t('update.install')}
        </Button>
        <span class="muted small">{busy ? t('update.busy') : t('update.willClose')}</span>
      </div>
    </>
  );
}

function DownloadState() {
  const { since, closing } = useStore(download);
  const seconds = useElapsed(since);
  return (
    <p class="outcome" role="status">
      <Spinner />
      {closing ? t('update.closing') : t('update.downloading')}
      {since !== undefined && (
        <span class="muted" aria-hidden="true">
          {t('app.seconds', { n: seconds })}
        </span>
      )}
    </p>
  );
}
