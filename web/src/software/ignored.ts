import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { currentSettings, saveSettings } from '../shell/settings.ts';
import { isIgnoredBy, withIgnored, type Ignoring } from './ignored_entries.ts';
import type { Package } from './package_rows.ts';

type Offer = Pick<Package, 'id' | 'available'>;

/** The list of updates shows the ignored ones too; outlives the view. */
export const ignoredShown = createStore(false);

/** Returns a function that tells whether the user ignores a package. */
export const ignoredNow = () => isIgnoredBy(currentSettings().ignoreList);

export function setIgnored(offers: Offer[], how: Ignoring) {
  const before = currentSettings().ignoreList;
  const action = { label: t('app.undo'), run: () => saveSettings({ ignoreList: before }) };
  const done = {
    always: t('software.ignoredDone', { n: offers.length }),
    version: t('software.skippedDone'),
    never: '',
  }[how];
  saveSettings({ ignoreList: withIgnored(before, offers, how) }, done ? { text: done, action } : undefined);
}
