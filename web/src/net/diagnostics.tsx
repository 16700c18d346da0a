import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { Notice, Spinner } from '../kit/data_view.tsx';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { ToolLog } from '../kit/tool_log.tsx';
import { diagnostics, runTool, setTarget, stopShowing } from './diagnostics.ts';

export function Diagnostics() {
  const { state, run, target, recent } = useStore(diagnostics);
  const seconds = useElapsed(state.active ? run?.since : undefined);
  const idle = state.active || target.trim() === '';
  return (
    <Card title={t('diagnostics.title')} class="diagnostics">
      <form
        class="buttons line"
        onSubmit={(event) => {
          event.preventDefault();
          runTool('ping');
        }}
      >
        <input
          type="text"
          aria-label={t('diagnostics.target')}
          placeholder={t('diagnostics.target')}
          spellcheck={false}
          value={target}
          onInput={(event) => setTarget(event.currentTarget.value)}
        />
        <Button kind="primary" disabled={idle} onClick={() => runTool('ping')}>
          {t('diagnostics.ping')}
        </Button>
        <Button disabled={idle} onClick={() => runTool('dns')}>
          {t('diagnostics.dns')}
        </Button>
      </form>
      {recent.length > 0 && (
        <p class="buttons line small">
          <span class="muted">{t('diagnostics.recent')}</span>
          {recent.map((one) => (
            <button key={one} type="button" class="link" onClick={() => setTarget(one)}>
              {one}
            </button>
          ))}
        </p>
      )}
      {!run ? (
        <Notice icon="network" title={t('diagnostics.none')} hint={t('diagnostics.noneHint')} />
      ) : (
        <>
          <div class="diagnostics-state">
            {run.outcome ? <Icon name={run.outcome.icon} /> : <Spinner />}
            <p>
              <strong>{`${t(`diagnostics.${run.tool}`)} ${run.target}`}</strong>
              <span>
                <span role="status">
                  {run.outcome?.text ?? t(state.ambiguous ? 'diagnostics.owed' : 'diagnostics.running')}
                </span>
                {state.active && <span class="muted"> {t('app.seconds', { n: seconds })}</span>}
              </span>
            </p>
            {state.active && <Button onClick={stopShowing}>{t('diagnostics.stop')}</Button>}
          </div>
          <ToolLog label={t('jobs.log')} lines={run.lines} />
        </>
      )}
    </Card>
  );
}
