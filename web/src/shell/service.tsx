import { useEffect } from 'preact/hooks';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { Button } from '../kit/button.tsx';
import { Dialog } from '../kit/dialog.tsx';
import { useStore } from '../kit/hooks.ts';
import { toast } from '../kit/toast.tsx';
import { status } from './status.ts';

const open = createStore(false);

const missingHandlers: (() => boolean)[] = [];

/**
 * Calls `handle` if the host found the service missing, unless an earlier handler returned false, which
 * keeps the dialog closed.
 */
export function onServiceMissing(handle: () => boolean) {
  missingHandlers.push(handle);
}

export function startServiceDialog() {
  host.on('show_service_error_modal', () => {
    if (missingHandlers.every((handle) => handle())) showServiceDialog();
  });
}

export function showServiceDialog() {
  open.set(true);
}

/** Resolves once the service dialog is closed, so that the next dialog does not cover it. */
export const serviceDialogClosed = () =>
  new Promise<void>((closed) => {
    if (!open.get()) return closed();
    const stop = open.subscribe(() => {
      stop();
      closed();
    });
  });

/** Says that the helper service is not running, what that means, and what still works. */
export function ServiceDialog() {
  const shown = useStore(open);
  const { phase, data } = useStore(status);
  const close = () => open.set(false);

  async function check() {
    await status.reload();
    if (!status.get().data?.serviceActive) return;
    close();
    toast(t('service.back'));
  }

  // The host reports when the service starts on its own.
  const active = data?.serviceActive === true;
  useEffect(() => {
    if (active) close();
  }, [active]);

  if (!shown) return null;
  return (
    <Dialog
      title={t('service.title')}
      onClose={close}
      actions={
        <>
          <Button onClick={close}>{t('app.close')}</Button>
          <Button kind="primary" icon="refresh" disabled={phase === 'loading'} onClick={() => void check()}>
            {t('app.retry')}
          </Button>
        </>
      }
    >
      <p>{t('service.what')}</p>
      <h3>{t('service.stops')}</h3>
      <ul>
        <li>{t('service.stops.1')}</li>
        <li>{t('service.stops.2')}</li>
        <li>{t('service.stops.3')}</li>
      </ul>
      <h3>{t('service.works')}</h3>
      <p>{t('service.works.text')}</p>
      <h3>{t('service.get')}</h3>
      <p>{t('service.get.text')}</p>
    </Dialog>
  );
}
