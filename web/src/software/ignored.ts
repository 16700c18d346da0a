import { t } from '../base/text.ts';
import { currentSettings, saveSettings } from '../shell/settings.ts';

const ignoredType = 'software';

/** Identifiers of the packages that the user does not want to be offered. */
export function ignoredIds(): Set<string> {
  return new Set(
    currentSettings()
      .ignoreList.filter(({ type }) => type === ignoredType)
      .map(({ id }) => id),
  );
}

export function setIgnored(ids: string[], on: boolean) {
  const before = currentSettings().ignoreList;
  const others = before.filter(({ id, type }) => type !== ignoredType || !ids.includes(id));
  const added = on ? ids.map((id) => ({ id, type: ignoredType })) : [];
  const action = { label: t('app.undo'), run: () => saveSettings({ ignoreList: before }) };
  saveSettings(
    { ignoreList: [...others, ...added] },
    on ? { text: t('software.ignoredDone', { n: ids.length }), action } : undefined,
  );
}
