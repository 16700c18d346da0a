import { createSource } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import type { Message } from '../bridge/protocol.ts';
import { errorText } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';
import { createLookup } from '../shell/path_lookup.ts';
import { fileOf } from './startup_command.ts';

export type StartupItem = Message<'startup'>['items'][number];

export const startup = createSource(async () => (await host.request('getStartupItems')).items);

/** Names of values are unique within a scope. */
export const startupKey = ({ scope, name }: StartupItem) => `${scope}\n${name}`;

/** The items that are being switched, with their wanted states. */
export const switching = createStore<ReadonlyMap<string, boolean>>(new Map());

/** Keys of the items whose file does not exist. */
export const missing = createStore<ReadonlySet<string>>(new Set());

/** Looks for the items' files and lists each folder once. */
export async function findMissing() {
  const { data = [] } = startup.get();
  const isMissing = createLookup();
  const found = await Promise.all(
    data.map(async (item) => {
      const file = fileOf(item.command);
      return file !== undefined && (await isMissing(file)) ? [startupKey(item)] : [];
    }),
  );
  if (startup.get().data === data) missing.set(new Set(found.flat()));
}

function mark(items: readonly StartupItem[], wanted?: boolean) {
  const next = new Map(switching.get());
  for (const item of items) {
    if (wanted === undefined) next.delete(startupKey(item));
    else next.set(startupKey(item), wanted);
  }
  switching.set(next);
}

/** Switches items, checks that the change was stored, and offers to undo it. */
export async function switchItems(items: readonly StartupItem[], enabled: boolean) {
  const todo = items.filter((item) => !switching.get().has(startupKey(item)));
  const asked: StartupItem[] = [];
  const failed = (item: StartupItem, reason: string) =>
    toast(t(enabled ? 'startup.onFailed' : 'startup.offFailed', { name: item.name, reason }), {
      error: true,
      about: startupKey(item),
    });
  mark(todo, enabled);
  for (const item of todo) {
    const { scope, name } = item;
    try {
      await host.request('toggleStartupItem', { scope, name, enabled });
      asked.push(item);
    } catch (error) {
      failed(item, errorText(error, t(scope === 'HKCU' ? 'startup.noList' : 'startup.needsService')));
    }
  }
  if (asked.length > 0) await startup.reload();
  const { data, error } = startup.get();
  const now = new Map(error ? [] : data?.map((item) => [startupKey(item), item.enabled]));
  // The host answers before Windows has confirmed storing it.
  const isStored = (item: StartupItem) => (now.get(startupKey(item)) ?? enabled) === enabled;
  for (const item of asked) if (!isStored(item)) failed(item, t('startup.notStored'));
  const done = asked.filter(isStored);
  const [first] = done;
  if (first) {
    const text =
      done.length === 1
        ? t(enabled ? 'startup.on' : 'startup.off', { name: first.name })
        : t(enabled ? 'startup.onSome' : 'startup.offSome', { n: done.length });
    const action = { label: t('app.undo'), run: () => void switchItems(done, !enabled) };
    toast(text, { about: startupKey(first), action });
  }
  mark(todo);
}
