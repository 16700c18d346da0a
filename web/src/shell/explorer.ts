import { parentOf, rootOf } from '../base/paths.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { errorText } from '../kit/error_text.ts';
import type { MenuItem } from '../kit/menu.tsx';
import { toast } from '../kit/toast.tsx';

/** Opens a folder in Explorer. The backslash at its end sees to it that nothing but a folder is opened: a file would be run. */
export const openInExplorer = (folder: string) =>
  host.openUrl(rootOf(folder)).then(undefined, (error: unknown) => {
    toast(t('explorer.failed', { path: folder, reason: errorText(error) }), { error: true });
  });

/** For a menu: opens a folder, or the one that a file is in. */
export const explorerItem = (path: string, isDirectory = false): MenuItem => ({
  label: t('explorer.open'),
  icon: 'explorer',
  run: () => void openInExplorer(isDirectory ? path : (parentOf(path) ?? path)),
});
