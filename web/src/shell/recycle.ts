import { formatBytes } from '../base/format.ts';
import { t } from '../base/text.ts';
import { BridgeError } from '../bridge/bridge.ts';
import { host } from '../bridge/host.ts';
import { confirm } from '../kit/dialog.tsx';
import { errorText } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';

/** Asks, moves files to the recycle bin and says how many went. Resolves to false when the user declined. */
export async function recycle(files: { path: string; size: number }[]): Promise<boolean> {
  const n = files.length;
  const agreed = await confirm({
    title: t('recycle.title', { n }),
    body: t('recycle.body', { size: formatBytes(files.reduce((sum, { size }) => sum + size, 0)) }),
    items: files.map(({ path }) => path),
    verb: t('recycle.verb'),
    danger: true,
  });
  if (!agreed) return false;
  try {
    const { deletedCount } = await host.request('deleteSpecificFiles', {
      paths: files.map(({ path }) => path),
    });
    if (deletedCount >= n) toast(t('recycle.done', { n }));
    else toast(t('recycle.some', { n: deletedCount, total: n }), { error: true });
  } catch (error) {
    // The host refuses without a reason when not a single file went.
    const none = error instanceof BridgeError && error.kind === 'refused';
    toast(none ? t('recycle.none') : errorText(error), { error: true });
  }
  return true;
}
