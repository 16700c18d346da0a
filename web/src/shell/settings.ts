import { createSource } from '../base/source.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { errorText } from '../kit/error_text.ts';
import { sorts } from '../kit/table/memory.ts';
import { toast, type ToastAction } from '../kit/toast.tsx';
import { changeSettings, readSettings, type Settings } from './settings_document.ts';

/** The stored document, unchanged. The value is `undefined` until it arrives. */
export const settingsDocument = createSource(async () => ({
  value: (await host.request('getSettings')).settings,
}));

export function currentSettings(): Settings {
  return readSettings(settingsDocument.get().data?.value);
}

/** Keeps the sorts of tables for the next start of the program. */
export function keepSorts() {
  sorts.set(currentSettings().tableSorts);
  sorts.subscribe(() => saveSettings({ tableSorts: sorts.get() }, null));
}

// Saves one at a time in the order of the changes, because each save stores the whole document.
let lastSave: Promise<unknown> = Promise.resolve();

/**
 * Applies changes immediately, then stores them and confirms with a toast (none for null). Undoes them if
 * saving fails.
 */
export function saveSettings(
  changes: Partial<Settings>,
  confirmation?: { text: string; action?: ToastAction } | null,
) {
  const before = settingsDocument.get().data;
  // Without the stored document, saving would erase the keys that have not been read.
  if (!before) return;
  const value = changeSettings(before.value, changes);
  settingsDocument.put({ value });
  lastSave = lastSave.then(async () => {
    try {
      await host.request('saveSettings', value);
      if (confirmation !== null)
        toast(confirmation?.text ?? t('settings.saved'), { action: confirmation?.action });
    } catch (error) {
      if (settingsDocument.get().data?.value === value) settingsDocument.put(before);
      toast(t('settings.saveFailed', { reason: errorText(error) }), { error: true });
    }
  });
}
