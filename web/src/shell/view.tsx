import type { ComponentChildren } from 'preact';
import { useEffect, useLayoutEffect } from 'preact/hooks';
import { formatTime } from '../base/format.ts';
import { t } from '../base/text.ts';
import { IconButton } from '../kit/button.tsx';
import { useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { refreshOfView, type ViewId } from './navigation.ts';
import { showServiceDialog } from './service.tsx';
import { status } from './status.ts';

interface Props {
  id: ViewId;
  children: ComponentChildren;
  /** The view's own buttons in the header. */
  actions?: ComponentChildren;
  /** Loads the view's data anew: F5 and a button in the header. */
  refresh?: () => void;
  /** When that data arrived (ms since the epoch). */
  at?: number | undefined;
}

/** What every view returns: the header with its title, actions and badges, and the content below. */
export function View({ id, children, actions, refresh, at }: Props) {
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
          {refresh && <IconButton icon="refresh" label={t('app.refresh')} onClick={refresh} />}
          {at !== undefined && <span class="muted small">{t('app.updated', { time: formatTime(at) })}</span>}
        </div>
        <Badges />
      </header>
      <main class="content" data-view={id}>
        {children}
      </main>
    </>
  );
}

function Badges() {
  const { phase, data } = useStore(status);
  if (!data) {
    return (
      <div class="badges">
        <span class="badge">{phase === 'failed' ? t('badge.unknown') : t('badge.checking')}</span>
      </div>
    );
  }
  const role = data.isAdmin ? 'admin' : 'user';
  return (
    <div class="badges">
      <span class="badge" title={t(`badge.${role}.hint`)} data-testid="badge-elevation">
        <Icon name={role} />
        {t(`badge.${role}`)}
      </span>
      {data.serviceActive ? (
        <span class="badge badge-good" title={t('badge.service.on.hint')} data-testid="badge-service">
          <Icon name="service" />
          {t('badge.service.on')}
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
          {t('badge.service.off')}
        </button>
      )}
    </div>
  );
}
