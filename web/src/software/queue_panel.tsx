import { useState } from 'preact/hooks';
import { codeText, formatPercent } from '../base/format.ts';
import { t } from '../base/text.ts';
import { Bar } from '../kit/bar.tsx';
import { Button, IconButton } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { Spinner } from '../kit/data_view.tsx';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { silentSeconds, ToolLog } from '../kit/tool_log.tsx';
import { wordOf, type JobKind } from './exit_codes.ts';
import { isPending, pendingOnly, sameJob, stateWord, withoutWaiting, type Job } from './jobs.ts';
import { abandonRunning, enqueue, jobs, restartWindows } from './queue.ts';

/** Shows a job's progress in a row of a table. */
export function JobState({ kind, id }: { kind: JobKind; id: string }) {
  const job = useStore(jobs, (all) => all.findLast((one) => sameJob(one, { kind, id, name: '' })));
  return job ? <JobProgress {...job} /> : null;
}

function JobProgress(job: Job) {
  const { state, percent } = job;
  return (
    <span class="job-state" data-state={state}>
      {state === 'running' && percent === undefined && <Spinner />}
      {state === 'done' && <Icon name="success" />}
      {state === 'restart' && <Icon name="refresh" />}
      {state === 'failed' && <Icon name="alert" />}
      {percent === undefined ? (
        t(`jobs.${stateWord(job)}`)
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

/** Shows every installation and removal with the tools' output. */
export function QueuePanel() {
  const all = useStore(jobs);
  const [folded, setFolded] = useState(false);
  if (all.length === 0) return null;
  const sorted = [...all.entries()].sort(([, a], [, b]) => order.indexOf(a.state) - order.indexOf(b.state));
  return (
    <Card
      title={t('jobs.title')}
      class="jobs"
      aside={
        <>
          <span class="muted">
            {t('jobs.ended', { n: all.filter((job) => !isPending(job)).length, total: all.length })}
          </span>
          <span class="buttons line">
            {all.some(({ state }) => state === 'waiting') && (
              <Button onClick={() => jobs.set(withoutWaiting(jobs.get()))}>{t('jobs.cancelWaiting')}</Button>
            )}
            {pendingOnly(all).length < all.length && (
              <Button onClick={() => jobs.set(pendingOnly(jobs.get()))}>{t('jobs.clear')}</Button>
            )}
            <IconButton
              icon={folded ? 'chevronUp' : 'chevronDown'}
              label={t(folded ? 'jobs.unfold' : 'jobs.fold')}
              onClick={() => setFolded(!folded)}
            />
          </span>
        </>
      }
    >
      {all.some(({ restart }) => restart) && (
        <div class="outcome">
          <Icon name="alert" />
          {t('jobs.restartNote')}
          <Button icon="refresh" disabled={all.some(isPending)} onClick={() => void restartWindows()}>
            {t('restart.ask')}
          </Button>
        </div>
      )}
      {!folded && (
        <ul>
          {sorted.map(([at, job]) => (
            <JobRow key={`${job.kind} ${job.id} ${job.abandoned ? at : ''}`} {...job} />
          ))}
        </ul>
      )}
    </Card>
  );
}

function JobRow(job: Job) {
  const { kind, id, name, state, code, lines, lastOutput, unelevated } = job;
  const running = state === 'running';
  const silent = useElapsed(running ? lastOutput : undefined);
  const word = code === undefined ? undefined : wordOf(kind, code);
  return (
    <li data-job={id} data-state={state}>
      <details open={running}>
        <summary>
          <strong title={name}>{name}</strong>
          <span class="muted small">{t(`jobs.${kind}`)}</span>
          <JobProgress {...job} />
        </summary>
        {lines.length > 0 && <ToolLog label={`${t('jobs.log')}: ${name}`} lines={lines} />}
      </details>
      {state === 'failed' && (
        <div class="outcome small">
          {code === undefined
            ? t('jobs.noEnd')
            : `${word ? t(`code.${word}`) : ''} (${t('exit.code', { code: codeText(code) })})`}
          <Button icon="refresh" onClick={() => enqueue([job])}>
            {t('app.retry')}
          </Button>
        </div>
      )}
      {unelevated && <p class="small muted">{t('jobs.alone')}</p>}
      {silent >= silentSeconds && (
        <p class="outcome small">
          {t('jobs.silent', { n: silent })}
          <Button onClick={abandonRunning}>{t('jobs.abandon')}</Button>
        </p>
      )}
    </li>
  );
}
