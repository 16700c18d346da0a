import { useEffect } from 'preact/hooks';
import type { Reply } from '../bridge/protocol.ts';
import { isPending } from '../lib/jobs.ts';
import {
  abandonFileCheck, applyUpdate, download, kComeBack, repairs, repairStates, startRepair, uninstallVarnel, update, type Repair,
} from '../state/maintenance.ts';
import { jobs } from '../state/software.ts';
import { formatPercent, formatTime } from '../text/format.ts';
import { t } from '../text/text.ts';
import { Bar } from '../ui/bar.tsx';
import { Button, IconButton } from '../ui/button.tsx';
import { Card } from '../ui/card.tsx';
import { copyText } from '../ui/clipboard.ts';
import { DataView } from '../ui/data_view.tsx';
import { confirm } from '../ui/dialog.tsx';
import { useElapsed, useStore } from '../ui/hooks.ts';
import { Icon } from '../ui/icon.tsx';
import { ToolLog } from '../ui/tool_log.tsx';
import { View } from '../ui/view.tsx';

const check = () => void update.reload();

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
          <Button icon="remove" onClick={() => void uninstallVarnel()}>{t('remove.verb')}</Button>
        </Card>
        {repairs.map((repair) => (
          <RepairCard key={repair} repair={repair} />
        ))}
      </div>
    </View>
  );
}

function Update() {
  const source = useStore(update);
  return (
    <Card title={t('update.title')} class="at-update" aside={!source.data && <span class="muted">{t('update.current', { version: VARNEL_VERSION })}</span>}>
      <DataView source={source} reload={check}>
        {(found) => <Found {...found} />}
      </DataView>
    </Card>
  );
}

function Found({ currentVersion, onlineVersion, hasUpdate, mandatory, changelog }: Reply<'checkForUpdates'>) {
  const { since, closing, failed } = useStore(download);
  const seconds = useElapsed(since);
  // The update ends the program, and with it what the queue tells.
  const busy = useStore(jobs).some(isPending);
  return (
    <>
      <dl class="versions">
        <div>
          <dt class="muted small">{t('update.installed')}</dt>
          <dd class="big">{currentVersion}</dd>
        </div>
        <div>
          <dt class="muted small">{t('update.online')}</dt>
          <dd class="big">{onlineVersion}</dd>
        </div>
      </dl>
      {!hasUpdate && (
        <p class="outcome good">
          <Icon name="success" />
          {t('update.none')}
        </p>
      )}
      {hasUpdate && mandatory && (
        <p class="outcome">
          <Icon name="alert" />
          {t('update.mandatory')}
        </p>
      )}
      {hasUpdate && changelog !== '' && (
        <>
          <h3>{t('update.changes')}</h3>
          <p class="changelog">{changelog}</p>
        </>
      )}
      {failed !== undefined && (
        <p class="outcome" role="alert">
          <Icon name="alert" />
          {t('update.failed', { reason: failed })}
        </p>
      )}
      {(since !== undefined || closing) && (
        <p class="outcome" role="status">
          <span class="spinner" aria-hidden="true" />
          {closing ? t('update.closing') : t('update.downloading')}
          {since !== undefined && <span class="muted" aria-hidden="true">{t('scan.elapsed', { n: seconds })}</span>}
        </p>
      )}
      {hasUpdate && (
        <div class="buttons">
          <Button kind="primary" icon="arrowDown" disabled={since !== undefined || closing === true || busy} onClick={() => void applyUpdate()}>
            {t('update.install')}
          </Button>
          <span class="muted small">{busy ? t('update.busy') : t('update.willClose')}</span>
        </div>
      )}
    </>
  );
}

/** What interrupts the user's work asks first. */
async function ask(repair: Repair) {
  if (repair === 'rebuild-icons' || repair === 'safemode-reboot') {
    const agreed = await confirm({
      title: t(`repair.${repair}.confirm`),
      body: t(`repair.${repair}.confirmBody`),
      items: repair === 'safemode-reboot' ? [kComeBack] : [],
      verb: t(`repair.${repair}.verb`),
      danger: repair === 'safemode-reboot',
    });
    if (!agreed) return;
  }
  startRepair(repair);
}

// A phase of the file check without a line for so long is worth a word.
const kSilentSeconds = 60;

function RepairCard({ repair }: { repair: Repair }) {
  const { since, heard, percent, lines, result } = useStore(repairStates)[repair] ?? {};
  const running = since !== undefined;
  const seconds = useElapsed(since);
  const silent = useElapsed(running ? heard : undefined);
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
            <code>{kComeBack}</code>
            <IconButton icon="copy" label={t('repair.copyComeBack')} onClick={() => void copyText(kComeBack)} />
          </div>
        </>
      )}
      <div class="buttons" data-repair={repair} aria-busy={running}>
        <Button icon="maintenance" disabled={running} onClick={() => void ask(repair)}>{t(`repair.${repair}.verb`)}</Button>
        {running && (
          <>
            {percent === undefined ? <span class="spinner" aria-hidden="true" /> : <Bar percent={percent} />}
            <span class="muted">
              {percent !== undefined && `${formatPercent(percent)}, `}
              {t('scan.elapsed', { n: seconds })}
            </span>
          </>
        )}
        {silent >= kSilentSeconds && <Button onClick={abandonFileCheck}>{t('jobs.abandon')}</Button>}
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
