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
import { explorerItem } from './explorer.ts';
import { mayRecycle, possibleBins, sizeOf, type File } from './recyclable.ts';

/** Returns true if a path belongs to Varnel, which need not be where the setup puts it. */
async function isOfVarnel(files: File[]): Promise<boolean> {
  const bins = possibleBins(files.map(({ path }) => path));
  const listings = await Promise.all(bins.map((path) => host.request('getFolderContents', { path })));
  return listings.some(({ items }) => items.some(({ name }) => name.toLowerCase() === 'varnel.exe'));
}

/**
 * Asks, moves files and folders to the recycle bin and reports how many were moved. Resolves to false if
 * nothing was tried.
 */
export async function recycle(files: File[]): Promise<boolean> {
  const n = files.length;
  if (n === 0) return false;
  if (!files.every(({ path }) => mayRecycle(path)) || (await isOfVarnel(files).catch(() => true))) {
    toast(t('recycle.refused'), { error: true });
    return false;
  }
  const size = sizeOf(files);
  const agreed = await confirm({
    title: t('recycle.title', { n }),
    body: [size !== undefined && t('recycle.size', { size: formatBytes(size) }), t('recycle.body')]
      .filter(Boolean)
      .join(' '),
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
    // The host refuses without a reason if it moved no file at all.
    const none = error instanceof BridgeError && error.kind === 'refused';
    toast(none ? t('recycle.none') : errorText(error), { error: true });
  }
  return true;
}

/** Returns items for the menu of files and folders. */
export function fileItems<F extends File>(files: F[], remove: (files: F[]) => void): MenuItem[] {
  const [first] = files;
  const items: MenuItem[] = files.length === 1 && first ? [explorerItem(first.path, first.isDirectory)] : [];
  items.push({ label: t('disk.copyPath'), icon: 'copy', run: () => copyPaths(files) });
  if (files.every(({ path }) => mayRecycle(path)))
    items.push({ label: t('recycle.verb'), icon: 'remove', danger: true, run: () => remove(files) });
  return items;
}

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
