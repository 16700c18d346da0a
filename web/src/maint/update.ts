// Updates and removes Varnel itself.
import { createSource } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { confirm, isDialogOpen } from '../kit/dialog.tsx';
import { errorText } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';
import { queueBusy, updateBusy, withLosses } from '../shell/busy.ts';

export const update = createSource(() => host.request('checkForUpdates'));

/**
 * Checks for an update. Offers a mandatory one immediately, but never over a question that the user is
 * about to answer.
 */
export async function checkForUpdate() {
  await update.reload();
  const { data, phase } = update.get();
  if (phase === 'ready' && data?.hasUpdate && data.mandatory && !isDialogOpen()) await applyUpdate();
}

interface Download {
  /** When the running download began (ms since the epoch). */
  since?: number;
  /** The program is about to end. */
  closing?: true;
  failed?: unknown;
}

export const download = createStore<Download>({});
download.subscribe(() => {
  const { since, closing } = download.get();
  updateBusy.set(since !== undefined || closing === true);
});

export async function applyUpdate() {
  const { data } = update.get();
  if (!data || updateBusy.get() || queueBusy.get()) return;
  const agreed = await confirm({
    title: data.mandatory ? t('update.mandatory') : t('update.confirm', { version: data.onlineVersion }),
    body: withLosses(t('update.confirmBody', { version: data.onlineVersion })),
    verb: t('update.install'),
  });
  if (!agreed) return;
  download.set({ since: Date.now() });
  try {
    // Without an address, the program uses the installer at its release address.
    const { downloadUrl } = data;
    await host.request('downloadAndApplyUpdate', downloadUrl ? { downloadUrl } : {});
    download.set({ closing: true });
  } catch (error) {
    download.set({ failed: error });
  }
}

export async function uninstallVarnel() {
  const agreed = await confirm({
    title: t('remove.confirm'),
    body: withLosses(t('remove.confirmBody')),
    verb: t('remove.verb'),
    danger: true,
  });
  if (!agreed) return;
  try {
    host.start('uninstallAppSuite', {});
    toast(t('remove.started'));
  } catch (error) {
    toast(errorText(error), { error: true });
  }
}
