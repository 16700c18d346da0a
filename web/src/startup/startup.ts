import { createSource } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import type { Message } from '../bridge/protocol.ts';
import { errorText } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';

export type StartupItem = Message<'startup'>['items'][number];

export const startup = createSource(async () => (await host.request('getStartupItems')).items);

/** Names of values differ within a scope. */
export const startupKey = ({ scope, name }: StartupItem) => `${scope}\n${name}`;

/** What is being switched, with the state that is wanted. */
export const switching = createStore<ReadonlyMap<string, boolean>>(new Map());

function mark(key: string, wanted?: boolean) {
  const next = new Map(switching.get());
  if (wanted === undefined) next.delete(key);
  else next.set(key, wanted);
  switching.set(next);
}

/** Switches, looks whether it holds, and offers the way back. */
export async function switchItem(item: StartupItem, enabled: boolean) {
  const { scope, name } = item;
  const key = startupKey(item);
  if (switching.get().has(key)) return;
  mark(key, enabled);
  const failed = (reason: string) =>
    toast(t(enabled ? 'startup.onFailed' : 'startup.offFailed', { name, reason }), {
      error: true,
      about: key,
    });
  try {
    await host.request('toggleStartupItem', { scope, name, enabled });
    await startup.reload();
    const now = startup.get().data?.find((other) => startupKey(other) === key);
    // The host answers before Windows has agreed to store it.
    if (now && now.enabled !== enabled) failed(t('startup.notStored'));
    else
      toast(t(enabled ? 'startup.on' : 'startup.off', { name }), {
        about: key,
        action: { label: t('app.undo'), run: () => void switchItem(item, !enabled) },
      });
  } catch (error) {
    failed(errorText(error, t(scope === 'HKCU' ? 'startup.noList' : 'startup.needsService')));
  }
  mark(key);
}
