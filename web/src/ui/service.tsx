import { useEffect } from 'preact/hooks';
import { host } from '../bridge/host.ts';
import { createStore } from '../lib/store.ts';
import { serviceIsMissing } from '../state/software.ts';
import { status } from '../state/status.ts';
import { t } from '../text/text.ts';
import { Button } from './button.tsx';
import { Dialog } from './dialog.tsx';
import { useStore } from './hooks.ts';
import { toast } from './toast.tsx';

const open = createStore(false);

export function startServiceDialog() {
  host.on('show_service_error_modal', () => {
    if (serviceIsMissing()) showServiceDialog();
  });
}

export function showServiceDialog() {
  open.set(true);
}

/** When the dialog, if it is open, has been closed: what asks something must not cover it. */
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

  // The host tells when the service has come up by itself.
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
    </Dialog>
  );
}
