import { createSource } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { confirm } from '../kit/dialog.tsx';
import { errorText, explained } from '../kit/error_text.ts';
import { toast } from '../kit/toast.tsx';
import { unsaved } from '../shell/busy.ts';
import { restoreLineEnds, withLf } from './hosts_text.ts';

/** The file as stored, with the byte order mark kept separately, because it is invisible in an editor. */
interface HostsFile {
  mark: string;
  stored: string;
  /** The text in its form for an editor. */
  text: string;
}

function readFile(content: string): HostsFile {
  const mark = content.startsWith('\ufeff') ? '\ufeff' : '';
  const stored = content.slice(mark.length);
  return { mark, stored, text: withLf(stored) };
}

export const hosts = createSource(async () => {
  const { content } = await explained(host.request('getHostsFile'), () => t('hosts.unreadable'));
  const file = readFile(content);
  if (!firstHosts.get()) firstHosts.set(file);
  return file;
});
/** The file as first loaded, so that the user can bring it back. */
export const firstHosts = createStore<HostsFile | undefined>(undefined);

/** The edited, unsaved text; outlives the view. */
export const draft = createStore<string | undefined>(undefined);
draft.subscribe(() => unsaved.set(draft.get() !== undefined));
export const savingHosts = createStore(false);

export function editHosts(text: string) {
  draft.set(text === hosts.get().data?.text ? undefined : text);
}

export function restoreHosts() {
  const before = draft.get();
  editHosts(firstHosts.get()!.text);
  toast(t('hosts.restored'), { action: { label: t('app.undo'), run: () => draft.set(before) } });
}

export async function reloadHosts() {
  const question = {
    title: t('hosts.discardTitle'),
    body: t('hosts.discardBody'),
    verb: t('hosts.discard'),
    danger: true,
  };
  if (draft.get() !== undefined && !(await confirm(question))) return;
  draft.set(undefined);
  await hosts.reload();
}

/** Asks before replacing changes that another program made since the file was loaded. */
async function mayReplace(loaded: string) {
  const now = await host.request('getHostsFile').catch(() => undefined);
  const question = {
    title: t('hosts.changedTitle'),
    body: t('hosts.changedBody'),
    verb: t('hosts.overwrite'),
    danger: true,
  };
  return now === undefined || now.content === loaded || confirm(question);
}

export async function saveHosts() {
  const file = hosts.get().data;
  const edited = draft.get();
  if (!file || edited === undefined || savingHosts.get()) return;
  savingHosts.set(true);
  try {
    if (!(await mayReplace(file.mark + file.stored))) return;
    const first = firstHosts.get()!;
    const content =
      edited === first.text ? first.mark + first.stored : file.mark + restoreLineEnds(file.stored, edited);
    await host.request('saveHostsFile', { content });
    hosts.put(readFile(content));
    editHosts(draft.get() ?? edited);
    toast(t('hosts.saved'));
  } catch (error) {
    toast(t('hosts.saveFailed', { reason: errorText(error, t('hosts.refused')) }), { error: true });
  } finally {
    savingHosts.set(false);
  }
}
