import type { ComponentChildren } from 'preact';
import { useEffect, useLayoutEffect } from 'preact/hooks';
import { formatTime } from '../base/format.ts';
import type { SourceState } from '../base/source.ts';
import { t } from '../base/text.ts';
import { IconButton } from '../kit/button.tsx';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { refreshOfView, searching, type ViewId } from './navigation.ts';
import { showServiceDialog } from './service.tsx';
import { status } from './status.ts';

interface Props {
  id: ViewId;
  children: ComponentChildren;
  /** The view's own buttons in the header. */
  actions?: ComponentChildren;
  /** Reloads the view's data: F5 and a button in the header. */
  refresh?: () => void;
  /** State of that data. The header shows that it is loading, and for how long, or when it arrived. */
  state?: LoadState;
}

/** The frame of every view: the header with title, actions and badges, and the content below. */
export function View({ id, children, actions, refresh, state }: Props) {
  useLayoutEffect(() => {
    refreshOfView.set(refresh);
    return () => refreshOfView.set(undefined);
  }, [refresh]);
  useEffect(() => {
    document.title = `${t(`view.${id}`)} – Varnel`;
  });
  return (
    <>
      <header class="head line">
        <h1 tabIndex={-1}>{t(`view.${id}`)}</h1>
        <div class="head-actions line">
          {actions}
          {refresh && <Refresh run={refresh} state={state} />}
        </div>
        <div class="badges">
          <IconButton
            icon="search"
            label={`${t('search.title')} (Ctrl+K)`}
            onClick={() => searching.set(true)}
          />
          <Badges />
        </div>
      </header>
      <main class="content" data-view={id}>
        {children}
      </main>
    </>
  );
}

type LoadState = Pick<SourceState<unknown>, 'phase' | 'since'> & { at?: number | undefined };

/** A load that takes longer is mentioned in words. */
const toldSeconds = 2;

function Refresh({ run, state }: { run(): void; state: LoadState | undefined }) {
  const { phase, since, at } = state ?? {};
  const loading = phase === 'loading';
  const seconds = useElapsed(loading ? since : undefined);
  const slow = loading && seconds >= toldSeconds;
  return (
    <>
      <span class="refresh" aria-busy={loading}>
        <IconButton icon="refresh" label={t('app.refresh')} onClick={run} />
      </span>
      <span class="updated muted small" data-slow={slow || undefined}>
        {slow
          ? t('app.refreshing', { n: seconds })
          : at !== undefined && t('app.updated', { time: formatTime(at) })}
      </span>
    </>
  );
}

function Badges() {
  const { phase, data } = useStore(status);
  if (!data) {
    return <span class="badge">{phase === 'failed' ? t('badge.unknown') : t('badge.checking')}</span>;
  }
  const role = data.isAdmin ? 'admin' : 'user';
  return (
    <>
      <span class="badge" title={t(`badge.${role}.hint`)} data-testid="badge-elevation">
        <Icon name={role} />
        <span>{t(`badge.${role}`)}</span>
      </span>
      {data.serviceActive ? (
        <span class="badge badge-good" title={t('badge.service.on.hint')} data-testid="badge-service">
          <Icon name="service" />
          <span>{t('badge.service.on')}</span>
        </span>
      ) : (
        <button
          type="button"
          class="badge badge-warn"
          title={t('badge.service.off.hint')}
          data-testid="badge-service"
          onClick={showServiceDialog}
        >
          <Icon name="service" />
          <span>{t('badge.service.off')}</span>
        </button>
      )}
    </>
  );
}
