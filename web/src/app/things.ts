// Lists everything that the search finds: the things that the page already knows, each with its
// destination.
import { useMemo } from 'preact/hooks';
import { t, type PlainKey } from '../base/text.ts';
import { useStore } from '../kit/hooks.ts';
import type { IconName } from '../kit/icon.tsx';
import { leadToRow } from '../kit/table/memory.ts';
import { analysis, folder, openFolder, type Entry } from '../disk/analysis.ts';
import type { Sized } from '../disk/tree.ts';
import { ask } from '../maint/repair_card.tsx';
import { repairs } from '../maint/repairs.ts';
import { openedPart } from '../net/developer.ts';
import { leadToPort, ports, type Port } from '../net/ports.ts';
import { openedList, showInstalled, startupKind } from '../shell/links.ts';
import { route, type ViewId } from '../shell/navigation.ts';
import { groupByName, type Running } from '../shell/process_shares.ts';
import { pollProcesses, processes, showProgram } from '../shell/processes.ts';
import { apps } from '../software/lists.ts';
import { startScan } from '../software/scan.ts';
import { startup, startupKey, type StartupItem } from '../startup/startup.ts';
import { findable, type Findable } from './hits.ts';
import { views } from './views.ts';

export interface Thing extends Findable {
  /** The view that it leads to. */
  view: ViewId;
  icon: IconName;
  /** It leads to a row, which then has the focus. */
  toRow?: true;
  /** The search stays open. */
  stays?: true;
  run(): unknown;
}

/** Parts of views, by names that the views themselves do not have. */
const parts: [view: ViewId, name: PlainKey, open?: () => void][] = [
  ['cleaning', 'cleaning.junk'],
  ['cleaning', 'downloads.title'],
  ['cleaning', 'system.hibernation'],
  ['software', 'software.updates', () => openedList.set('updates')],
  ['software', 'software.installed', () => openedList.set('installed')],
  ['software', 'software.drivers', () => openedList.set('drivers')],
  ['network', 'diagnostics.title'],
  ['developer', 'developer.hosts', () => openedPart.set('hosts')],
  ['developer', 'search.variables', () => openedPart.set('variables')],
  ['developer', 'developer.services', () => openedPart.set('services')],
  ['developer', 'developer.devices', () => openedPart.set('devices')],
  ['maintenance', 'update.title'],
  ['settings', 'settings.theme'],
  ['settings', 'settings.language'],
  ['settings', 'settings.autoScan'],
  ['settings', 'settings.autoClean'],
  ['settings', 'settings.ignored'],
  ['settings', 'keys.title'],
];

/** Loads whatever is missing and quick to load. The list of programs takes too long. */
export function loadThings() {
  pollProcesses();
  for (const source of [ports, startup]) if (!source.get().data) void source.reload();
}

const none: never[] = [];

export function useThings(): Thing[] {
  const running = useStore(processes).data ?? none;
  const open = useStore(ports).data ?? none;
  const starting = useStore(startup).data ?? none;
  const installed = useStore(apps).data ?? none;
  const shown = useStore(folder);
  const { result } = useStore(analysis);
  const entries = useMemo(
    () => (result ? [shown.items, ...shown.inside.values()].flat() : []),
    [result, shown],
  );
  const files = result?.files ?? none;
  return useMemo(
    () => thingsOf(running, open, starting, installed, entries, files),
    [running, open, starting, installed, entries, files],
  );
}

/** Returns what loads the installed programs, until they are found like the rest. */
export function useMissing(): Thing | undefined {
  const { data, phase } = useStore(apps);
  if (data) return;
  const title = t(`search.apps.${phase === 'loading' || phase === 'failed' ? phase : 'idle'}`);
  return findable<Omit<Thing, 'folded'>>({
    view: 'software',
    icon: 'software',
    title,
    stays: true,
    run: apps.reload,
  });
}

function thingsOf(
  running: readonly Running[],
  open: readonly Port[],
  starting: readonly StartupItem[],
  installed: readonly { name: string }[],
  entries: readonly Entry[],
  files: readonly Sized[],
): Thing[] {
  const names = new Map(running.map(({ pid, name }) => [String(pid), name]));
  const of = (view: ViewId, title: string, run = () => {}, icon: IconName = view): Thing =>
    findable({ view, title, icon, run: () => (run(), route.set({ view })) });
  const row = (...thing: Parameters<typeof of>): Thing => ({ ...of(...thing), toRow: true });
  return [
    ...views.map(({ id }) => of(id, t(`view.${id}`))),
    of('software', t('software.scan'), startScan, 'search'),
    ...repairs.map((repair) => of('maintenance', t(`repair.${repair}`), () => void ask(repair))),
    ...parts.map(([view, name, open]) => of(view, t(name), open)),
    ...open.map((port) => {
      const name = names.get(port.pid) ?? '';
      return row('network', `${port.port} ${name} ${port.local}`, () => void leadToPort(port));
    }),
    ...groupByName(running).map((one) => ({
      ...row('processes', one.members ? one.name : `${one.name} (PID ${one.pid})`),
      run: () => showProgram(one),
    })),
    ...starting.map((item) =>
      row('startup', item.name, () => {
        startupKind.set('all');
        leadToRow('startup', startupKey(item));
      }),
    ),
    ...installed.map(({ name }) => of('software', name, () => showInstalled(name))),
    ...entries
      .filter(({ isDirectory }) => isDirectory)
      .map(({ path }) => of('disk', path, () => void openFolder(path), 'folder')),
    ...files.map(({ path }) => row('disk', path, () => leadToRow('largest', path), 'file')),
  ];
}
