import { parentOf, rootOf } from '../base/paths.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { errorText } from '../kit/error_text.ts';
import type { MenuItem } from '../kit/menu.tsx';
import { toast } from '../kit/toast.tsx';

/**
 * Returns the address that opens a folder, or the folder of a file. Only a folder's address may end with a
 * backslash: opening a file would run it.
 */
export const explorerAddress = (path: string, isDirectory: boolean) =>
  rootOf(isDirectory ? path : (parentOf(path) ?? path));

export const openInExplorer = (path: string, isDirectory = true) =>
  host.openUrl(explorerAddress(path, isDirectory)).then(undefined, (error: unknown) => {
    toast(t('explorer.failed', { path, reason: errorText(error) }), { error: true });
  });

/** Returns an item for the menu of a file or folder. */
export const explorerItem = (path: string, isDirectory = false): MenuItem => ({
  label: t('explorer.open'),
  icon: 'explorer',
  run: () => void openInExplorer(path, isDirectory),
});
