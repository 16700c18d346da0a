import type { ComponentChildren } from 'preact';
import { useMemo } from 'preact/hooks';
import { distinctBy } from '../base/distinct.ts';
import { formatDate, noValue } from '../base/format.ts';
import { formatNumber, t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import { Button } from '../kit/button.tsx';
import { confirm } from '../kit/dialog.tsx';
import { errorText } from '../kit/error_text.ts';
import type { MenuItem } from '../kit/menu.tsx';
import type { Column } from '../kit/table/column.ts';
import { useSelection } from '../kit/table/memory.ts';
import { Table } from '../kit/table/table.tsx';
import { toast } from '../kit/toast.tsx';
import type { JobKind } from './exit_codes.ts';
import { isPending } from './jobs.ts';
import type { Obstacle } from './package_rows.ts';
import { enqueue, mayStart } from './queue.ts';
import { JobState } from './queue_panel.tsx';
import { useDone, useIds } from './waiting.ts';

type Block = Obstacle | 'skipped';

type Cell = 'name' | 'id' | 'version' | 'available' | 'source' | 'date' | 'severity';

/** The common part of the three lists: a row is a task that can be queued unless something prevents it. */
export interface Row {
  key: string;
  /** ID of the package, or title of the driver. */
  id: string;
  name: string;
  block: Block | undefined;
  ignored?: boolean;
  cells: Partial<Record<Cell, string>>;
}

interface TaskListProps {
  kind: JobKind;
  label: string;
  rows: Row[];
  columns: readonly Column<Row>[];
  menu?(rows: Row[]): MenuItem[];
  tools?: ComponentChildren;
}

const cell =
  (id: Cell) =>
  ({ cells }: Row) =>
    cells[id] ?? '';

/** Returns columns for these cells and for the state of the row's job. */
export function taskColumns(
  kind: JobKind,
  described: [id: Cell, width?: string, drop?: number][],
): Column<Row>[] {
  return [
    ...described.map(([id, width, drop]): Column<Row> => ({
      id,
      title: `software.${id}`,
      value: cell(id),
      text: (row) => (id === 'date' ? formatDate(cell(id)(row)) : cell(id)(row)) || noValue,
      ...(width && { width }),
      ...(drop && { drop }),
    })),
    {
      id: 'state',
      title: 'software.state',
      value: ({ block, ignored }) => (block ? t(`obstacle.${block}`) : ignored ? t('software.ignored') : ''),
      cell: (row) => <State kind={kind} {...row} />,
      width: '12.5rem',
    },
  ];
}

/**
 * Returns a function that tells whether a row can be queued: nothing prevents it, and it is not queued
 * already.
 */
function useUsable(kind: JobKind): (row: Row) => boolean {
  const pending = useIds((job) => job.kind === kind && isPending(job));
  return useMemo(
    () =>
      ({ block, ignored, id }) =>
        !block && !ignored && !pending.has(id),
    [pending],
  );
}

export function TaskList({ kind, label, rows, columns, menu, tools }: TaskListProps) {
  const selection = useSelection(kind);
  const isUsable = useUsable(kind);
  const verb = (n: number) =>
    n === 0 ? t(`software.${kind}`) : t('software.selected', { verb: t(`software.${kind}`), n });
  const removes = kind === 'uninstall';
  const done = useDone(kind);
  const usable = kind === 'update' ? rows.filter((row) => isUsable(row) && !done.has(row.id)) : [];
  function menuOf(marked: Row[]): MenuItem[] {
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
      run: () => openSettings(settingsPages[kind]),
    };
    return [
      ...(ready.length > 0 ? [act] : []),
      ...(settingsPages[kind] && marked.some(({ block }) => block) ? [help] : []),
      ...(menu?.(marked) ?? []),
    ];
  }
  return (
    <>
      <Table
        label={label}
        rows={rows}
        rowKey={({ key }) => key}
        columns={columns}
        remember={kind}
        sort={{ column: 'name', descending: false }}
        selection={selection}
        selectable={isUsable}
        menu={menuOf}
        tools={(chosen) => {
          const all = chosen.length === 0 && usable.length > 0;
          return (
            <>
              {tools}
              <Button
                kind={removes ? undefined : 'primary'}
                icon={removes ? 'remove' : undefined}
                disabled={chosen.length === 0 && !all}
                onClick={() => void start(kind, all ? usable : chosen)}
              >
                {all ? t('software.updateAll', { n: usable.length }) : verb(chosen.length)}
              </Button>
            </>
          );
        }}
      />
      <Obstacles kind={kind} rows={rows} />
    </>
  );
}

/** The Windows settings page for things that a row cannot do. */
const settingsPages: Partial<Record<JobKind, string>> = {
  uninstall: 'ms-settings:appsfeatures',
  driver: 'ms-settings:windowsupdate-optionalupdates',
};

/** Starts updates directly, because the user could repeat them by hand. Asks first before larger changes. */
async function start(kind: JobKind, rows: Row[]) {
  if (!mayStart()) return;
  const tasks = distinctBy(rows, ({ id }) => id).map(({ id, name }) => ({ kind, id, name }));
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

/** Opens a page of the Windows settings. */
export function openSettings(page = '') {
  void host.openUrl(page).catch((error: unknown) => toast(errorText(error), { error: true }));
}

/** Explains why some rows cannot be acted on. Their marks only name the reason. */
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
        <Button icon="settings" onClick={() => openSettings(settingsPages[kind])}>
          {t('obstacle.settings')}
        </Button>
      )}
    </details>
  );
}
