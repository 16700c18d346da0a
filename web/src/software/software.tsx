import type { ComponentChildren } from 'preact';
import { useEffect, useMemo, useState } from 'preact/hooks';
import { formatDate, noValue } from '../base/format.ts';
import type { Source, SourceState } from '../base/source.ts';
import { createStore } from '../base/store.ts';
import { formatNumber, locale, t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { Button, IconButton } from '../kit/button.tsx';
import { DataView, Notice } from '../kit/data_view.tsx';
import { confirm } from '../kit/dialog.tsx';
import { errorText } from '../kit/error_text.ts';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import type { MenuItem } from '../kit/menu.tsx';
import { Table, useSelection, type Column } from '../kit/table/table.tsx';
import { panelOf, Tabs } from '../kit/tabs.tsx';
import { toast } from '../kit/toast.tsx';
import { updateBusy } from '../shell/busy.ts';
import { currentSettings, saveSettings, settingsDocument } from '../shell/settings.ts';
import { openTerminal } from '../shell/terminal.ts';
import { View } from '../shell/view.tsx';
import type { JobKind } from './exit_codes.ts';
import { isPending } from './jobs.ts';
import { LeftoversDialog } from './leftovers_dialog.tsx';
import { apps, drivers, packageKey, updates, type Drivers } from './lists.ts';
import { isSafeArgument, obstacleOf, type Obstacle, type Package } from './package_rows.ts';
import { enqueue, jobs } from './queue.ts';
import { JobsPanel, JobState } from './queue_panel.tsx';
import { scan, startScan } from './scan.ts';

const lists = { updates, installed: apps, drivers };
type List = keyof typeof lists;

const opened = createStore<List>('updates');

export function Software() {
  const list = useStore(opened);
  const { running } = useStore(scan);
  const found = useStore(updates);
  const installed = useStore(apps);
  const offered = useStore(drivers);
  useStore(settingsDocument);
  useEffect(() => {
    if (list === 'installed' && apps.get().phase === 'idle') void apps.reload();
  }, [list]);

  const shown = { updates: found, installed, drivers: offered }[list];
  const ignored = ignoredIds();
  const counts = {
    updates: found.data?.filter(({ id }) => !ignored.has(id)).length ?? running?.found,
    installed: installed.data?.length,
    drivers: offered.data?.updates.length,
  };
  return (
    <View
      id="software"
      refresh={() => void lists[list].reload()}
      at={running ? undefined : shown.at}
      actions={
        <Button icon="search" disabled={running !== undefined} onClick={startScan}>
          {t('software.scan')}
        </Button>
      }
    >
      <div class="software">
        <ScanState />
        <Tabs
          label={t('software.lists')}
          active={list}
          onChoose={(id: List) => opened.set(id)}
          tabs={(['updates', 'installed', 'drivers'] as const).map((id) => ({
            id,
            title: (
              <>
                {t(`software.${id}`)}
                {counts[id] !== undefined && <span class="tag">{formatNumber(counts[id])}</span>}
              </>
            ),
          }))}
        />
        <div class="software-list" role="tabpanel" id={panelOf(list)} aria-label={t(`software.${list}`)}>
          {list === 'updates' && (
            <Listed
              source={updates}
              state={found}
              count={(data) => data.length}
              nothing={[t('software.noUpdates'), t('software.noUpdatesHint')]}
            >
              {(data) => <Updates packages={data} />}
            </Listed>
          )}
          {list === 'installed' && (
            <Listed
              source={apps}
              state={installed}
              count={(data) => data.length}
              nothing={[t('software.noApps'), t('software.noAppsHint')]}
            >
              {(data) => <Installed packages={data} />}
            </Listed>
          )}
          {list === 'drivers' && (
            <Listed
              source={drivers}
              state={offered}
              count={(data) => data.updates.length}
              nothing={[
                t('software.noDrivers'),
                t('software.checked', { n: offered.data?.scannedDriversCount ?? 0 }),
              ]}
            >
              {(data) => <DriverList {...data} />}
            </Listed>
          )}
        </div>
        <JobsPanel />
      </div>
      <LeftoversDialog />
    </View>
  );
}

/** What the scan is doing, or why it did not finish. */
function ScanState() {
  const { running, failed } = useStore(scan);
  const seconds = useElapsed(running?.since);
  if (!running && !failed) return null;
  return (
    <div class="banner" role={failed && 'alert'} data-testid="scan">
      {running ? <span class="spinner" aria-hidden="true" /> : <Icon name="alert" />}
      <p>
        {failed && t(`scan.failed.${failed}`)}
        {running && (
          <>
            <span role="status">
              {running.found === undefined ? t('scan.apps') : t('scan.drivers', { n: running.found })}
            </span>{' '}
            <span class="muted">{t('scan.elapsed', { n: seconds })}</span>
          </>
        )}
      </p>
      <Button kind="quiet" icon="terminal" onClick={() => openTerminal(true)}>
        {t('scan.log')}
      </Button>
      {failed && <IconButton icon="close" label={t('app.close')} onClick={() => scan.set({})} />}
    </div>
  );
}

interface ListedProps<T> {
  source: Source<T>;
  state: SourceState<T>;
  count(data: T): number;
  /** Said of an empty list: title and reason. */
  nothing: [title: string, why: string];
  children(data: T): ComponentChildren;
}

/** A list that the scan fills: before the first one, an invitation. */
function Listed<T>({ source, state, count, nothing: [title, why], children }: ListedProps<T>) {
  const { running } = useStore(scan);
  if (state.phase === 'idle') {
    return running ? (
      <Notice icon="search" title={t('software.scanning')} />
    ) : (
      <Notice icon="software" title={t('software.start')}>
        <p>{t('software.startHint')}</p>
        <Button kind="primary" icon="search" onClick={startScan}>
          {t('software.scan')}
        </Button>
      </Notice>
    );
  }
  const notice = (
    <Notice icon="software" title={title}>
      <p>{why}</p>
    </Notice>
  );
  return (
    <DataView
      source={state}
      reload={() => void source.reload()}
      empty={{ when: (data) => count(data) === 0, notice }}
    >
      {children}
    </DataView>
  );
}

const ignoredType = 'software';

function ignoredIds(): Set<string> {
  return new Set(
    currentSettings()
      .ignoreList.filter(({ type }) => type === ignoredType)
      .map(({ id }) => id),
  );
}

function setIgnored(rows: Row[], on: boolean) {
  const ids = rows.map(({ id }) => id);
  const before = currentSettings().ignoreList;
  const others = before.filter(({ id, type }) => type !== ignoredType || !ids.includes(id));
  const added = on ? ids.map((id) => ({ id, type: ignoredType })) : [];
  const action = { label: t('app.undo'), run: () => saveSettings({ ignoreList: before }) };
  saveSettings(
    { ignoreList: [...others, ...added] },
    on ? { text: t('software.ignoredDone', { n: ids.length }), action } : undefined,
  );
}

type Block = Obstacle | 'skipped';

type Cell = 'name' | 'id' | 'version' | 'available' | 'source' | 'date' | 'severity';

/** What the three lists have in common: a row is a task that can be queued, unless something stands in its way. */
interface Row {
  key: string;
  /** Identifier of the package, title of the driver. */
  id: string;
  name: string;
  block: Block | undefined;
  ignored?: boolean;
  cells: Partial<Record<Cell, string>>;
}

interface TasksProps {
  kind: JobKind;
  label: string;
  rows: Row[];
  columns: [id: Cell, width?: string][];
  menu?(rows: Row[]): MenuItem[];
  tools?: ComponentChildren;
}

/** Where Windows itself does what a row cannot. */
const settingsPages: Partial<Record<JobKind, string>> = {
  uninstall: 'ms-settings:appsfeatures',
  driver: 'ms-settings:windowsupdate-optionalupdates',
};

/** An update can be repeated by hand; what changes more is asked about first. */
async function start(kind: JobKind, rows: Row[]) {
  // Varnel ends as soon as its own update is there.
  if (updateBusy.get()) return toast(`${t('update.downloading')} ${t('update.willClose')}`, { error: true });
  const tasks = [...new Map(rows.map(({ id, name }) => [id, { kind, id, name }])).values()];
  const agreed =
    kind === 'update' ||
    (await confirm({
      title: t(`software.${kind}.title`, { n: tasks.length }),
      body: t(`software.${kind}.body`),
      items: tasks.map(({ name }) => name),
      verb: t(`software.${kind}`),
      danger: kind === 'uninstall',
    }));
  if (agreed) enqueue(tasks);
}

function Tasks({ kind, label, rows, columns: described, menu, tools }: TasksProps) {
  const selection = useSelection();
  const language = locale();
  // One text, so that it changes only when a job comes or ends, and not with every line that a tool prints.
  const pending = useStore(jobs, (all) =>
    all
      .filter((job) => job.kind === kind && isPending(job))
      .map(({ id }) => id)
      .join('\n'),
  );
  const isUsable = useMemo(() => {
    const ids = new Set(pending.split('\n'));
    return ({ block, ignored, id }: Row) => !block && !ignored && !ids.has(id);
  }, [pending]);
  const columns = useMemo<Column<Row>[]>(
    () => [
      ...described.map(([id, width]): Column<Row> => {
        const value = ({ cells }: Row) => cells[id] ?? '';
        const words = id === 'date' ? formatDate : String;
        return {
          id,
          title: t(`software.${id}`),
          value,
          text: (row) => words(value(row)) || noValue,
          ...(width && { width }),
        };
      }),
      {
        id: 'state',
        title: t('software.state'),
        value: ({ block, ignored }) =>
          block ? t(`obstacle.${block}`) : ignored ? t('software.ignored') : '',
        cell: (row) => <State kind={kind} {...row} />,
        width: '12.5rem',
      },
    ],
    [language],
  );
  const verb = (n: number) =>
    n === 0 ? t(`software.${kind}`) : t('software.selected', { verb: t(`software.${kind}`), n });
  const removes = kind === 'uninstall';
  return (
    <>
      <Table
        label={label}
        rows={rows}
        rowKey={({ key }) => key}
        columns={columns}
        sort={{ column: 'name', descending: false }}
        selection={selection}
        selectable={isUsable}
        menu={(marked) => {
          const ready = marked.filter(isUsable);
          const act: MenuItem = {
            label: verb(ready.length),
            icon: removes ? 'remove' : 'software',
            danger: removes,
            run: () => void start(kind, ready),
          };
          const help: MenuItem = {
            label: t('obstacle.settings'),
            icon: 'settings',
            run: () => openSettings(kind),
          };
          return [
            ...(ready.length > 0 ? [act] : []),
            ...(settingsPages[kind] && marked.some(({ block }) => block) ? [help] : []),
            ...(menu?.(marked) ?? []),
          ];
        }}
        tools={(chosen) => (
          <>
            {tools}
            <Button
              kind={removes ? undefined : 'primary'}
              icon={removes ? 'remove' : undefined}
              disabled={chosen.length === 0}
              onClick={() => void start(kind, chosen)}
            >
              {verb(chosen.length)}
            </Button>
          </>
        )}
      />
      <Obstacles kind={kind} rows={rows} />
    </>
  );
}

function State({ kind, id, block, ignored }: Row & { kind: JobKind }) {
  if (block)
    return (
      <span class="tag" title={t(`obstacle.${block}.why`)}>
        {t(`obstacle.${block}`)}
      </span>
    );
  if (ignored) return <span class="tag">{t('software.ignored')}</span>;
  return <JobState kind={kind} id={id} />;
}

const obstacles = ['windows', 'shifted', 'cut', 'characters', 'skipped'] as const;

function openSettings(kind: JobKind) {
  void host
    .openUrl(settingsPages[kind] ?? '')
    .catch((error: unknown) => toast(errorText(error), { error: true }));
}

/** Why some rows cannot be acted on, in words: their marks only name it. */
function Obstacles({ kind, rows }: { kind: JobKind; rows: Row[] }) {
  const count = (wanted: Block) => rows.filter(({ block }) => block === wanted).length;
  const n = rows.filter(({ block }) => block).length;
  if (n === 0) return null;
  return (
    <details class="obstacles small">
      <summary>{t('obstacle.some', { n })}</summary>
      {obstacles.filter(count).map((block) => (
        <p key={block}>
          <strong>{`${t(`obstacle.${block}`)} (${formatNumber(count(block))})`}</strong>:{' '}
          {t(`obstacle.${block}.why`)}
        </p>
      ))}
      {settingsPages[kind] && (
        <Button icon="settings" onClick={() => openSettings(kind)}>
          {t('obstacle.settings')}
        </Button>
      )}
    </details>
  );
}

const asRow = (one: Package): Row => ({
  key: packageKey(one),
  id: one.id,
  name: one.name,
  block: obstacleOf(one),
  cells: one,
});

function Updates({ packages }: { packages: Package[] }) {
  const [all, setAll] = useState(false);
  const { ignoreList } = currentSettings();
  const known = useMemo(() => {
    const ignored = ignoredIds();
    return packages.map((one) => ({ ...asRow(one), ignored: ignored.has(one.id) }));
  }, [packages, JSON.stringify(ignoreList)]);
  const rows = useMemo(() => known.filter(({ ignored }) => all || !ignored), [known, all]);
  const hidden = known.filter(({ ignored }) => ignored).length;
  return (
    <Tasks
      kind="update"
      label={t('software.updates')}
      rows={rows}
      columns={[
        ['name'],
        ['id', '18%'],
        ['version', '7.5rem'],
        ['available', '7.5rem'],
        ['source', '5.5rem'],
      ]}
      menu={(marked) => {
        const whole = marked.filter(({ block }) => block !== 'shifted');
        const on = whole.some(({ ignored }) => !ignored);
        return whole.length > 0
          ? [
              {
                label: t(on ? 'software.ignore' : 'software.unignore'),
                icon: 'close',
                run: () => setIgnored(whole, on),
              },
            ]
          : [];
      }}
      tools={
        hidden > 0 && (
          <label class="check">
            <input type="checkbox" checked={all} onChange={() => setAll(!all)} />
            {t('software.showIgnored', { n: hidden })}
          </label>
        )
      }
    />
  );
}

function Installed({ packages }: { packages: Package[] }) {
  const rows = useMemo(() => packages.map(asRow), [packages]);
  return (
    <Tasks
      kind="uninstall"
      label={t('software.installed')}
      rows={rows}
      columns={[['name'], ['id', '26%'], ['version', '9rem']]}
    />
  );
}

/** Windows Update's answers pass through as they are, so any member can be of any type. */
const asText = (value: unknown) =>
  typeof value === 'string' || typeof value === 'number' ? String(value) : '';

function DriverList({ updates: offered, scannedDriversCount }: Drivers) {
  const rows = useMemo(
    () =>
      offered.map(
        ({ title, currentVersion, availableVersion, releaseDate, severity, isSkipped }, at): Row => {
          const name = asText(title);
          return {
            key: `${name}\n${at}`, // two devices can be offered one title
            id: name,
            name,
            block:
              name === '' || !isSafeArgument(name)
                ? 'characters'
                : isSkipped === true
                  ? 'skipped'
                  : undefined,
            cells: {
              name,
              version: asText(currentVersion),
              available: asText(availableVersion),
              date: asText(releaseDate),
              severity: asText(severity),
            },
          };
        },
      ),
    [offered],
  );
  return (
    <Tasks
      kind="driver"
      label={t('software.drivers')}
      rows={rows}
      columns={[
        ['name'],
        ['version', '7.5rem'],
        ['available', '7.5rem'],
        ['date', '7rem'],
        ['severity', '7rem'],
      ]}
      tools={
        <span class="muted small" data-testid="drivers-checked">
          {t('software.checked', { n: scannedDriversCount })}
        </span>
      }
    />
  );
}
