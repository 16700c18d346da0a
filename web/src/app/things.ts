// Lists everything that the search finds: the things that the page already knows, each with its
// destination.
import { useMemo } from 'preact/hooks';
import { t } from '../base/text.ts';
import { useStore } from '../kit/hooks.ts';
import type { IconName } from '../kit/icon.tsx';
import { leadToRow } from '../kit/table/memory.ts';
import { analysis, folder, openFolder, type Entry } from '../disk/analysis.ts';
import { ask } from '../maint/repair_card.tsx';
import { repairs } from '../maint/repairs.ts';
import { leadToPort, ports, type Port } from '../net/ports.ts';
import { showInstalled, startupKind } from '../shell/links.ts';
import { route, type ViewId } from '../shell/navigation.ts';
import { groupByName, type Running } from '../shell/process_shares.ts';
import { processes, showProgram } from '../shell/processes.ts';
import { apps } from '../software/lists.ts';
import { startScan } from '../software/scan.ts';
import { startup, startupKey, type StartupItem } from '../startup/startup.ts';
import { findable, type Findable } from './hits.ts';
import { views } from './views.ts';

export interface Thing extends Findable {
  /** The view that it leads to. */
  view: ViewId;
  icon: IconName;
  run(): void;
}

const settings = [
  'settings.theme',
  'settings.language',
  'settings.autoScan',
  'settings.autoClean',
  'settings.ignored',
  'keys.title',
] as const;

/** Loads whatever is missing and quick to load. The list of programs takes too long. */
export function loadThings() {
  void processes.reload();
  for (const source of [ports, startup]) if (!source.get().data) void source.reload();
}

const none: never[] = [];

export function useThings(): Thing[] {
  const running = useStore(processes).data ?? none;
  const open = useStore(ports).data ?? none;
  const starting = useStore(startup).data ?? none;
  const installed = useStore(apps).data ?? none;
  const { items } = useStore(folder);
  const { result } = useStore(analysis);
  return useMemo(
    () => thingsOf(running, open, starting, installed, result ? items : []),
    [running, open, starting, installed, result, items],
  );
}

function thingsOf(
  running: readonly Running[],
  open: readonly Port[],
  starting: readonly StartupItem[],
  installed: readonly { name: string }[],
  items: readonly Entry[],
): Thing[] {
  const names = new Map(running.map(({ pid, name }) => [String(pid), name]));
  const of = (view: ViewId, title: string, run = () => {}, icon: IconName = view): Thing =>
    findable({ view, title, icon, run: () => (run(), route.set({ view })) });
  return [
    ...views.map(({ id }) => of(id, t(`view.${id}`))),
    of('software', t('software.scan'), startScan, 'search'),
    ...repairs.map((repair) => of('maintenance', t(`repair.${repair}`), () => void ask(repair))),
    ...settings.map((key) => of('settings', t(key))),
    ...open.map((port) => {
      const name = names.get(port.pid) ?? '';
      return of('network', `${port.port} ${name} ${port.local}`, () => void leadToPort(port));
    }),
    ...groupByName(running).map((one) => ({
      ...of('processes', one.members ? one.name : `${one.name} (PID ${one.pid})`),
      run: () => showProgram(one),
    })),
    ...starting.map((item) =>
      of('startup', item.name, () => {
        startupKind.set('all');
        leadToRow('startup', startupKey(item));
      }),
    ),
    ...installed.map(({ name }) => of('software', name, () => showInstalled(name))),
    ...items
      .filter(({ isDirectory }) => isDirectory)
      .map(({ path }) => of('disk', path, () => void openFolder(path), 'folder')),
  ];
}
