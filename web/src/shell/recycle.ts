import { formatBytes } from '../base/format.ts';
import { t } from '../base/text.ts';
import { BridgeError } from '../bridge/bridge.ts';
import { host } from '../bridge/host.ts';
import { copyText } from '../kit/clipboard.ts';
import { confirm } from '../kit/dialog.tsx';
import { errorText } from '../kit/error_text.ts';
import type { MenuItem } from '../kit/menu.tsx';
import type { Column } from '../kit/table/column.ts';
import { toast } from '../kit/toast.tsx';

interface File {
  path: string;
  size: number;
}

/** Asks, moves files to the recycle bin and says how many went. Resolves to false when the user declined. */
export async function recycle(files: File[]): Promise<boolean> {
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

/** For the menu of a table of files. */
export const fileItems = <F extends File>(files: F[], remove: (files: F[]) => void): MenuItem[] => [
  { label: t('disk.copyPath'), icon: 'copy', run: () => copyPaths(files) },
  { label: t('recycle.verb'), icon: 'remove', danger: true, run: () => remove(files) },
];

export const copyPaths = (files: { path: string }[]) =>
  void copyText(files.map(({ path }) => path).join('\r\n'));

export const sizeColumn: Column<{ size: number }> = {
  id: 'size',
  title: 'app.size',
  value: ({ size }) => size,
  text: ({ size }) => formatBytes(size),
  numeric: true,
  width: '7rem',
};
