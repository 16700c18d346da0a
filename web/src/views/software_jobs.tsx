import { codeText, isPending, pendingOnly, sameJob, withoutWaiting, wordOf, type Job, type JobKind } from '../lib/jobs.ts';
import { abandonRunning, jobs } from '../state/software.ts';
import { formatPercent } from '../text/format.ts';
import { t } from '../text/text.ts';
import { Bar } from '../ui/bar.tsx';
import { Button } from '../ui/button.tsx';
import { Card } from '../ui/card.tsx';
import { useElapsed, useStore } from '../ui/hooks.ts';
import { Icon } from '../ui/icon.tsx';
import { ToolLog } from '../ui/tool_log.tsx';

// Silence that is worth a word; a large installer can be silent for longer and be well.
const kSilentSeconds = 60;

/** How far a job is, in a row of a table. */
export function JobState({ kind, id }: { kind: JobKind; id: string }) {
  const job = useStore(jobs).find((one) => sameJob(one, { kind, id, name: '' }));
  return job ? <Progress {...job} /> : null;
}

function Progress({ state, percent, code }: Job) {
  return (
    <span class="job-state" data-state={state}>
      {state === 'running' && percent === undefined && <span class="spinner" aria-hidden="true" />}
      {state === 'done' && <Icon name="success" />}
      {state === 'restart' && <Icon name="refresh" />}
      {state === 'failed' && <Icon name="alert" />}
      {percent === undefined ? (
        t(state === 'failed' && code === undefined ? 'jobs.unknown' : `jobs.${state}`)
      ) : (
        <>
          <Bar percent={percent} />
          {formatPercent(percent)}
        </>
      )}
    </span>
  );
}

const order: Job['state'][] = ['running', 'waiting', 'failed', 'restart', 'done'];

/** Everything that is installed and removed, with what the tools print. */
export function JobsPanel() {
  const all = useStore(jobs);
  if (all.length === 0) return null;
  const sorted = [...all].sort((a, b) => order.indexOf(a.state) - order.indexOf(b.state));
  return (
    <Card
      title={t('jobs.title')}
      class="jobs"
      aside={
        <span class="buttons">
          {all.some(({ state }) => state === 'waiting') && (
            <Button onClick={() => jobs.set(withoutWaiting(jobs.get()))}>{t('jobs.cancelWaiting')}</Button>
          )}
          {!all.every(isPending) && <Button onClick={() => jobs.set(pendingOnly(jobs.get()))}>{t('jobs.clear')}</Button>}
        </span>
      }
    >
      {all.some(({ restart }) => restart) && (
        <p class="outcome">
          <Icon name="alert" />
          {t('jobs.restartNote')}
        </p>
      )}
      <ul>
        {sorted.map((job) => (
          <JobRow key={`${job.kind} ${job.id}`} {...job} />
        ))}
      </ul>
    </Card>
  );
}

function JobRow(job: Job) {
  const { kind, id, name, state, code, lines, heard } = job;
  const running = state === 'running';
  const silent = useElapsed(running ? heard : undefined);
  const word = code === undefined ? undefined : wordOf(kind, code);
  return (
    <li data-job={id} data-state={state}>
      <div class="job-head">
        <strong>{name}</strong>
        <span class="muted small">{t(`jobs.${kind}`)}</span>
        <Progress {...job} />
      </div>
      {state === 'failed' && (
        <p class="small">
          {code === undefined ? t('jobs.noEnd') : `${word ? t(`code.${word}`) : ''} (${t('jobs.code', { code: codeText(code) })})`}
        </p>
      )}
      {silent >= kSilentSeconds && (
        <p class="outcome small">
          {t('jobs.silent', { n: silent })}
          <Button onClick={abandonRunning}>{t('jobs.abandon')}</Button>
        </p>
      )}
      {lines.length > 0 && (
        <details open={running}>
          <summary>{t('jobs.log')}</summary>
          <ToolLog label={`${t('jobs.log')}: ${name}`} lines={lines} />
        </details>
      )}
    </li>
  );
}
