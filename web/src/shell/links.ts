// Links from one subject to related information in other views.
import { createStore } from '../base/store.ts';
import { host } from '../bridge/host.ts';
import { errorText } from '../kit/error_text.ts';
import { leadToRows } from '../kit/table/memory.ts';
import { toast } from '../kit/toast.tsx';
import { route, type ViewId } from './navigation.ts';

/** The list shown in the software view; outlives the view. */
export const openedList = createStore<'updates' | 'installed' | 'drivers'>('updates');

export type StartupKind = 'all' | 'on' | 'off' | 'high' | 'missing';

/** The kind of start-up items that is shown; outlives the view. */
export const startupKind = createStore<StartupKind>('all');

function showRows(view: ViewId, table: string, query: string) {
  leadToRows(table, query);
  route.set({ view });
}

/** Returns "Code" for "Code.exe", the part that entries of other lists share with it. */
export const programOf = (file: string) => file.replace(/\.exe$/i, '');

export const showPorts = (name: string, pid?: number) => showRows('network', 'ports', [name, pid].join(' '));

/** Shows all kinds, so that a link to an item finds it. */
export function showStartup(file: string) {
  startupKind.set('all');
  showRows('startup', 'startup', programOf(file));
}

export const showRunning = (file: string) => showRows('processes', 'processes', file);

export function showInstalled(name: string) {
  openedList.set('installed');
  showRows('software', 'uninstall', name);
}

export function searchWeb(words: string) {
  host
    .openUrl(`https://www.bing.com/search?q=${encodeURIComponent(words)}`)
    .catch((error: unknown) => toast(errorText(error), { error: true }));
}
