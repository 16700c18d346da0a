import { useEffect, useMemo } from 'preact/hooks';
import { formatBytes, formatPercent, noValue } from '../base/format.ts';
import { crumbsOf, nameOf, parentOf, rootOf } from '../base/paths.ts';
import { formatNumber, locale, t } from '../base/text.ts';
import { Bar } from '../kit/bar.tsx';
import { Button } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { copyText } from '../kit/clipboard.ts';
import { DataView, Notice } from '../kit/data_view.tsx';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { Table, useSelection, type Column } from '../kit/table/table.tsx';
import { route } from '../shell/navigation.ts';
import { recycle } from '../shell/recycle.ts';
import { telemetry, type Telemetry } from '../shell/telemetry.ts';
import { View } from '../shell/view.tsx';
import {
  analysis,
  folder,
  forgetGone,
  openFolder,
  startAnalysis,
  type BigFile,
  type Entry,
} from './analysis.ts';
import { DiskMap } from './disk_map.tsx';
import { kindOf } from './kinds.ts';

type Drive = Telemetry['sample']['disks'][number];

function refresh() {
  void telemetry.reload();
  const { result, running } = analysis.get();
  if (result && !running) void openFolder(folder.get().path);
}

function goUp() {
  const parent = parentOf(folder.get().path);
  if (parent !== undefined) void openFolder(parent);
}

export function Disk() {
  const live = useStore(telemetry);
  const { running, result } = useStore(analysis);
  useEffect(() => void telemetry.reload(), []);
  const disks = live.data?.sample.disks;
  return (
    <View id="disk" refresh={refresh} at={running ? undefined : result?.at}>
      <div class="analysis">
        <DataView source={live} reload={() => void telemetry.reload()}>
          {({ sample }) => <Drives disks={sample.disks} />}
        </DataView>
        {running && <Progress {...running} />}
        {!running && result && (
          <Result {...result} disk={disks?.find(({ drive }) => rootOf(drive) === result.root)} />
        )}
        {!running && !result && disks && disks.length > 0 && (
          <Notice icon="disk" title={t('disk.start')}>
            <p>{t('disk.startHint')}</p>
          </Notice>
        )}
      </div>
    </View>
  );
}

function Drives({ disks }: { disks: Drive[] }) {
  const { drive: wanted } = useStore(route);
  const { running, result } = useStore(analysis);
  const of = (root: string | undefined) =>
    root !== undefined && disks.find(({ drive }) => rootOf(drive) === rootOf(root));
  const chosen = of(running?.root) || of(wanted) || of(result?.root) || disks[0];
  if (!chosen) return <Notice icon="disk" title={t('dashboard.noDisks')} />;
  return (
    <div class="drives">
      <div class="drive-list" role="radiogroup" aria-label={t('disk.drives')}>
        {disks.map(({ drive, percent, freeBytes, totalBytes, usedBytes }) => (
          <label class="drive" key={drive} data-drive={drive}>
            <input
              type="radio"
              name="drive"
              aria-label={drive}
              aria-describedby={`drive-${drive}`}
              checked={drive === chosen.drive}
              disabled={running !== undefined}
              onChange={() => route.set({ view: 'disk', drive })}
            />
            <span class="drive-head">
              <Icon name="disk" />
              <strong>{drive}</strong>
              <span>{formatPercent(percent)}</span>
            </span>
            <Bar percent={percent} warn={percent >= 90} />
            <span class="muted small" id={`drive-${drive}`}>
              {t('disk.used', {
                used: formatBytes(usedBytes),
                total: formatBytes(totalBytes),
                free: formatBytes(freeBytes),
              })}
            </span>
          </label>
        ))}
      </div>
      <Button
        kind="primary"
        icon="search"
        disabled={running !== undefined}
        onClick={() => startAnalysis(chosen.drive)}
      >
        {t('disk.analyse', { drive: chosen.drive })}
      </Button>
    </div>
  );
}

function Progress({
  root,
  since,
  scanned,
  perSecond,
  folder: current,
}: NonNullable<ReturnType<typeof analysis.get>['running']>) {
  const seconds = useElapsed(since);
  const figures = [
    [t('disk.scanned'), formatNumber(scanned)],
    [t('disk.perSecond'), scanned === 0 ? noValue : formatNumber(Math.round(perSecond))],
    [t('disk.elapsed'), t('disk.seconds', { n: seconds })],
  ];
  return (
    <section
      class="card scan"
      aria-label={t('disk.running', { drive: root })}
      aria-busy="true"
      data-testid="disk-progress"
    >
      <span class="spinner" aria-hidden="true" />
      <h2>{t('disk.running', { drive: root })}</h2>
      <dl class="scan-figures">
        {figures.map(([name, value]) => (
          <div key={name}>
            <dt class="muted small">{name}</dt>
            <dd>{value}</dd>
          </div>
        ))}
      </dl>
      <p class="muted scan-folder" title={current}>
        {current || t('disk.reading')}
      </p>
    </section>
  );
}

function Result({
  total,
  files,
  disk,
}: NonNullable<ReturnType<typeof analysis.get>['result']> & { disk: Drive | undefined }) {
  const { path, items } = useStore(folder);
  const crumbs = crumbsOf(path);

  useEffect(() => {
    const onKeyDown = (event: KeyboardEvent) => {
      const typing =
        event.target instanceof HTMLElement &&
        event.target.matches('input:not([type=checkbox]):not([type=radio]), textarea');
      if (event.key !== 'Backspace' || typing || document.querySelector('dialog[open]')) return;
      event.preventDefault();
      goUp();
    };
    document.addEventListener('keydown', onKeyDown);
    return () => document.removeEventListener('keydown', onKeyDown);
  }, []);

  return (
    <>
      <div class="where">
        <Button icon="arrowUp" disabled={crumbs.length === 1} onClick={goUp}>
          {t('disk.up')}
        </Button>
        <nav aria-label={t('disk.path')}>
          <ol class="crumbs">
            {crumbs.map((crumb, i) => (
              <li key={crumb.path}>
                {i > 0 && <Icon name="chevronRight" />}
                <button
                  type="button"
                  class="crumb"
                  aria-current={i === crumbs.length - 1 ? 'location' : undefined}
                  onClick={() => void openFolder(crumb.path)}
                >
                  {crumb.name}
                </button>
              </li>
            ))}
          </ol>
        </nav>
        <span class="muted small" data-testid="disk-total">
          {disk
            ? t('disk.foundOf', { found: formatBytes(total), used: formatBytes(disk.usedBytes) })
            : t('disk.found', { found: formatBytes(total) })}
        </span>
      </div>
      {disk && total > disk.usedBytes && <p class="muted small">{t('disk.hardLinks')}</p>}
      <div class="explorer">
        <FolderTable path={path} items={items} />
        <DiskMap path={path} items={items} />
      </div>
      <LargestFiles files={files} />
    </>
  );
}

const entryPath = ({ path }: Entry) => path;

/** A folder without bytes: nothing in it, no access to it, or the analysis has never been there, as behind a link. */
const isUnknown = ({ isDirectory, size }: Entry) => isDirectory && size === 0;

function FolderTable({ path, items }: { path: string; items: Entry[] }) {
  const language = locale();
  const sum = useMemo(() => items.reduce((total, { size }) => total + size, 0), [items]);
  const columns = useMemo<Column<Entry>[]>(() => {
    const share = ({ size }: Entry) => (sum > 0 ? (size / sum) * 100 : 0);
    const shareText = (entry: Entry) => (isUnknown(entry) ? noValue : formatPercent(share(entry)));
    return [
      {
        id: 'name',
        title: t('app.name'),
        value: ({ name }) => name,
        cell: ({ name, isDirectory }) => (
          <span class="entry" title={name}>
            <Icon name={isDirectory ? 'folder' : 'file'} />
            <span>{name}</span>
          </span>
        ),
      },
      {
        id: 'size',
        title: t('app.size'),
        value: ({ size }) => size,
        text: (entry) => (isUnknown(entry) ? noValue : formatBytes(entry.size)),
        numeric: true,
        width: '6.25rem',
      },
      {
        id: 'share',
        title: t('disk.share'),
        value: share,
        text: shareText,
        cell: (entry) => (
          <span class="share">
            <Bar percent={share(entry)} />
            <span>{shareText(entry)}</span>
          </span>
        ),
        width: '8rem',
      },
      {
        id: 'kind',
        title: t('disk.kind'),
        value: (entry) => t(`kind.${kindOf(entry)}`),
        text: (entry) => (isUnknown(entry) ? t('disk.unknown') : t(`kind.${kindOf(entry)}`)),
        cell: (entry) =>
          isUnknown(entry) ? (
            <span class="tag" title={t('disk.unknownHint')}>
              {t('disk.unknown')}
            </span>
          ) : (
            t(`kind.${kindOf(entry)}`)
          ),
        width: '7.5rem',
      },
    ];
  }, [language, sum]);
  return (
    <Table
      label={t('disk.contents')}
      rows={items}
      rowKey={entryPath}
      columns={columns}
      sort={{ column: 'size', descending: true }}
      subject={path}
      onActivate={(entry) => entry.isDirectory && void openFolder(entry.path)}
      menu={(rows) => [
        ...(rows[0]?.isDirectory
          ? [{ label: t('disk.open'), icon: 'folder' as const, run: () => void openFolder(rows[0]!.path) }]
          : []),
        {
          label: t('disk.copyPath'),
          icon: 'copy',
          run: () => void copyText(rows.map(entryPath).join('\r\n')),
        },
      ]}
    />
  );
}

const filePath = ({ path }: BigFile) => path;

function LargestFiles({ files }: { files: BigFile[] }) {
  const selection = useSelection();
  const language = locale();
  const columns = useMemo<Column<BigFile>[]>(
    () => [
      { id: 'name', title: t('app.name'), value: ({ path }) => nameOf(path) },
      { id: 'folder', title: t('kind.folder'), value: ({ path }) => parentOf(path) },
      {
        id: 'size',
        title: t('app.size'),
        value: ({ size }) => size,
        text: ({ size }) => formatBytes(size),
        numeric: true,
        width: '7rem',
      },
    ],
    [language],
  );
  const selected = files.filter(({ path }) => selection[0].keys.has(path));
  const copy = (rows: BigFile[]) => void copyText(rows.map(filePath).join('\r\n'));
  const remove = async (rows: BigFile[]) => {
    if (!(await recycle(rows))) return;
    await forgetGone(rows);
    refresh();
  };
  return (
    <Card title={t('disk.largest')} aside={<span class="muted">{t('disk.largestHint')}</span>}>
      <Table
        label={t('disk.largest')}
        rows={files}
        rowKey={filePath}
        columns={columns}
        sort={{ column: 'size', descending: true }}
        selection={selection}
        menu={(rows) => [
          { label: t('disk.copyPath'), icon: 'copy', run: () => copy(rows) },
          { label: t('recycle.verb'), icon: 'remove', danger: true, run: () => void remove(rows) },
        ]}
        tools={
          <>
            <Button icon="copy" disabled={selected.length === 0} onClick={() => copy(selected)}>
              {t('disk.copyPath')}
            </Button>
            <Button icon="remove" disabled={selected.length === 0} onClick={() => void remove(selected)}>
              {t('recycle.verb')}
            </Button>
          </>
        }
      />
    </Card>
  );
}
