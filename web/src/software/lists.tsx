import type { ComponentChildren } from 'preact';
import { useMemo } from 'preact/hooks';
import type { Readable } from '../base/source.ts';
import { t } from '../base/text.ts';
import { Button } from '../kit/button.tsx';
import { DataView, Notice } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import type { MenuItem } from '../kit/menu.tsx';
import { ServiceMark } from '../shell/service_mark.tsx';
import { currentSettings } from '../shell/settings.ts';
import { ignoredNow, ignoredShown, setIgnored } from './ignored.ts';
import { apps, drivers, packageKey, updates, type Drivers } from './lists.ts';
import { isSafeArgument, obstacleOf, type Package } from './package_rows.ts';
import { scan } from './scan.ts';
import { taskColumns, TaskList, type Row } from './task_list.tsx';

const updateColumns = taskColumns('update', [
  ['name'],
  ['id', '18%', 3],
  ['version', '7.5rem', 1],
  ['available', '7.5rem'],
  ['source', '5.5rem', 2],
]);

const uninstallColumns = taskColumns('uninstall', [['name'], ['id', '26%', 2], ['version', '9rem', 1]]);

const driverColumns = taskColumns('driver', [
  ['name'],
  ['version', '7.5rem', 1],
  ['available', '7.5rem'],
  ['date', '7rem', 3],
  ['severity', '7rem', 2],
]);

const asRow = (one: Package): Row => ({
  key: packageKey(one),
  id: one.id,
  name: one.name,
  block: obstacleOf(one),
  cells: one,
});

interface ScannedProps<T> {
  source: Readable<T>;
  isEmpty?(data: T): boolean;
  nothing: ComponentChildren;
  children(data: T): ComponentChildren;
}

/** A list that the scan fills or that is requested on its own. Until then, it shows an invitation. */
function Scanned<T>({ source, ...view }: ScannedProps<T>) {
  const { running } = useStore(scan);
  const { phase } = useStore(source);
  if (phase !== 'idle') return <DataView source={source} {...view} />;
  if (running) return <Notice icon="search" title={t('software.scanning')} />;
  return (
    <Notice icon="software" title={t('software.start')} hint={t('software.startHint')}>
      <Button kind="primary" icon="search" onClick={() => void source.reload()}>
        {t('software.look')}
      </Button>
    </Notice>
  );
}

export function UpdatesPanel() {
  return (
    <Scanned
      source={updates}
      nothing={<Notice icon="software" title={t('software.noUpdates')} hint={t('software.noUpdatesHint')} />}
    >
      {(packages) => <Updates packages={packages} />}
    </Scanned>
  );
}

function Updates({ packages }: { packages: Package[] }) {
  const all = useStore(ignoredShown);
  const { ignoreList } = currentSettings();
  const known = useMemo(() => {
    const isIgnored = ignoredNow();
    return packages.map((one) => ({ ...asRow(one), ignored: isIgnored(one) }));
  }, [packages, JSON.stringify(ignoreList)]);
  const rows = useMemo(() => known.filter(({ ignored }) => all || !ignored), [known, all]);
  const hidden = known.filter(({ ignored }) => ignored).length;
  return (
    <TaskList
      kind="update"
      label={t('software.updates')}
      rows={rows}
      columns={updateColumns}
      menu={ignoreItems}
      tools={
        hidden > 0 && (
          <label class="check">
            <input type="checkbox" checked={all} onChange={() => ignoredShown.set(!all)} />
            {t('software.showIgnored', { n: hidden })}
          </label>
        )
      }
    />
  );
}

function ignoreItems(marked: Row[]): MenuItem[] {
  const whole = marked.filter(({ block }) => block !== 'shifted');
  const offers = whole.map(({ id, cells }) => ({ id, available: cells.available ?? '' }));
  const [first] = offers;
  if (!first) return [];
  if (whole.every(({ ignored }) => ignored))
    return [{ label: t('software.unignore'), icon: 'close', run: () => setIgnored(offers, 'never') }];
  const skip =
    offers.length === 1
      ? t('software.skip', { version: first.available })
      : t('software.skipSome', { n: offers.length });
  return [
    { label: skip, icon: 'skip', run: () => setIgnored(offers, 'version') },
    { label: t('software.ignore'), icon: 'close', run: () => setIgnored(offers, 'always') },
  ];
}

export function InstalledPanel() {
  return (
    <Scanned
      source={apps}
      nothing={<Notice icon="software" title={t('software.noApps')} hint={t('software.noAppsHint')} />}
    >
      {(packages) => <Installed packages={packages} />}
    </Scanned>
  );
}

function Installed({ packages }: { packages: Package[] }) {
  const rows = useMemo(() => packages.map(asRow), [packages]);
  return <TaskList kind="uninstall" label={t('software.installed')} rows={rows} columns={uninstallColumns} />;
}

export function DriversPanel() {
  const checked = useStore(drivers).data?.scannedDriversCount ?? 0;
  return (
    <Scanned
      source={drivers}
      isEmpty={({ updates: offered }) => offered.length === 0}
      nothing={
        <Notice
          icon="software"
          title={t('software.noDrivers')}
          hint={t('software.checked', { n: checked })}
        />
      }
    >
      {(data) => <DriverList {...data} />}
    </Scanned>
  );
}

/** Windows Update's answers pass through unchanged, so any member can have any type. */
const asText = (value: unknown) =>
  typeof value === 'string' || typeof value === 'number' ? String(value) : '';

function DriverList({ updates: offered, scannedDriversCount }: Drivers) {
  const rows = useMemo(
    () =>
      offered.map(
        ({ title, currentVersion, availableVersion, releaseDate, severity, isSkipped }, at): Row => {
          const name = asText(title);
          return {
            key: `${name}\n${at}`, // two devices can have an offer of the same title
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
    <TaskList
      kind="driver"
      label={t('software.drivers')}
      rows={rows}
      columns={driverColumns}
      tools={
        <>
          <span class="muted small" data-testid="drivers-checked">
            {t('software.checked', { n: scannedDriversCount })}
          </span>
          <ServiceMark />
        </>
      }
    />
  );
}
