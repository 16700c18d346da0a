import { useEffect, useId, useMemo, useState } from 'preact/hooks';
import { formatBytes, noValue } from '../base/format.ts';
import { formatNumber, locale, t } from '../base/text.ts';
import { host } from '../bridge/host.ts';
import type { Message, Reply } from '../bridge/protocol.ts';
import { Button } from '../kit/button.tsx';
import { Card } from '../kit/card.tsx';
import { copyText } from '../kit/clipboard.ts';
import { DataView, Notice } from '../kit/data_view.tsx';
import { confirm } from '../kit/dialog.tsx';
import { errorText } from '../kit/error_text.ts';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { Switch } from '../kit/switch.tsx';
import { Table, useSelection, type Column } from '../kit/table/table.tsx';
import { toast } from '../kit/toast.tsx';
import { recycle } from '../shell/recycle.ts';
import { View } from '../shell/view.tsx';
import { cleaning, cleanJunk, downloads, freedBytes, junk, measureJunk, systemFiles } from './cleaning.ts';
import { categories, tick, tickedBytes, type Category, type Outcome } from './junk.ts';

type Sizes = Message<'junk'>;

function refresh() {
  measureJunk();
  void downloads.reload();
  void systemFiles.reload();
}

export function Cleaning() {
  const state = useStore(junk);
  const { since } = useStore(cleaning);
  useEffect(refresh, []);
  const unmeasured = state.data === undefined && state.phase !== 'failed';
  return (
    <View id="cleaning" refresh={refresh} at={since === undefined ? state.at : undefined}>
      <div class="cleaning">
        {unmeasured ? (
          <Junk />
        ) : (
          <DataView source={state} reload={measureJunk}>
            {(data) => <Junk data={data} />}
          </DataView>
        )}
        <Downloads />
        <SystemFiles />
      </div>
    </View>
  );
}

const exact = (bytes: number) => `${formatNumber(bytes)} B`;

function Junk({ data }: { data?: Sizes }) {
  const { ticks, since, done } = useStore(cleaning);
  return (
    <section class="junk-cards" aria-label={t('cleaning.junk')}>
      {categories.map((category) => (
        <JunkCard
          key={category}
          category={category}
          size={data?.categories[category]}
          outcome={done?.[category]}
          kept={data?.kept?.includes(category) ?? false}
          ticked={ticks[category]}
          disabled={since !== undefined}
        />
      ))}
      <JunkTotal data={data} />
    </section>
  );
}

interface CardProps {
  category: Category;
  size: number | undefined;
  outcome: Outcome | undefined;
  /** Neither measured nor emptied: its folder holds more than junk. */
  kept: boolean;
  ticked: boolean;
  disabled: boolean;
}

function JunkCard({ category, size, outcome, kept, ticked, disabled }: CardProps) {
  const id = useId();
  const measured = kept ? undefined : size;
  // What the last clean freed gives way to what the next one would.
  const toggle = (on: boolean) => {
    const { done: _, ...rest } = cleaning.get();
    cleaning.set({ ...rest, ticks: tick(rest.ticks, category, on) });
  };
  return (
    <label class="card junk" data-junk={category}>
      <span class="junk-name">
        <input
          type="checkbox"
          aria-labelledby={`${id}-name`}
          aria-describedby={`${id}-size ${id}-about`}
          checked={ticked && !kept}
          disabled={disabled || kept}
          onChange={(event) => toggle(event.currentTarget.checked)}
        />
        <span id={`${id}-name`}>{t(`junk.${category}`)}</span>
      </span>
      <span class="junk-size" id={`${id}-size`} title={measured === undefined ? undefined : exact(measured)}>
        {measured === undefined ? noValue : formatBytes(measured)}
      </span>
      <span class={outcome && !kept ? 'junk-outcome small' : 'muted small'} id={`${id}-about`}>
        {kept ? (
          t('junk.kept')
        ) : outcome ? (
          <JunkOutcome category={category} {...outcome} />
        ) : (
          t(`junk.${category}.about`)
        )}
      </span>
    </label>
  );
}

function JunkOutcome({ category, freed, left }: Outcome & { category: Category }) {
  const went = freed > 0 || left === 0;
  return (
    <>
      <span class={went ? undefined : 'junk-stuck'}>
        <Icon name={went ? 'success' : 'alert'} />
        {t('cleaning.freed', { size: formatBytes(freed) })}
      </span>
      {left > 0 && leftText(category, formatBytes(left))}
    </>
  );
}

/** Why something stayed. Three categories hold folders that are measured but, on purpose, not emptied by the program. */
function leftText(category: Category, size: string): string {
  switch (category) {
    case 'windowsTemp':
    case 'browserCache':
    case 'systemLogs':
      return t('cleaning.leftMeasured', { size, what: t(`junk.${category}.measured`) });
    default:
      return t('cleaning.left', { size });
  }
}

async function askAndClean({ categories: sizes, kept = [] }: Sizes) {
  const { ticks } = cleaning.get();
  const agreed = await confirm({
    title: t('cleaning.confirm'),
    body: t('cleaning.confirmBody', { size: formatBytes(tickedBytes(sizes, ticks)) }),
    items: categories
      .filter((category) => ticks[category] && !kept.includes(category))
      .map((category) => `${t(`junk.${category}`)} (${formatBytes(sizes[category])})`),
    listAll: true,
    verb: t('cleaning.clean'),
    danger: true,
  });
  if (agreed) await cleanJunk();
}

function JunkTotal({ data }: { data: Sizes | undefined }) {
  const { ticks, since, done } = useStore(cleaning);
  const { phase, since: measuring } = useStore(junk);
  const seconds = useElapsed(since ?? measuring);
  const chosen = data && tickedBytes(data.categories, ticks);
  const busy = since !== undefined || phase === 'loading';
  return (
    <div class="card junk junk-total" aria-busy={busy}>
      <span class="junk-name">{done ? t('cleaning.freedTotal') : t('cleaning.total')}</span>
      <span
        class="junk-size"
        data-testid="junk-total"
        title={chosen === undefined || done ? undefined : exact(chosen)}
      >
        {done ? formatBytes(freedBytes(done)) : chosen === undefined ? noValue : formatBytes(chosen)}
      </span>
      <span class="muted small">
        {busy ? (
          <span class="junk-busy">
            <span class="spinner" aria-hidden="true" />
            {since === undefined
              ? t('cleaning.measuring', { n: seconds })
              : t('cleaning.cleaning', { n: seconds })}
          </span>
        ) : data?.bytes === 0 && !done ? (
          t('cleaning.nothing')
        ) : (
          t(done ? 'cleaning.stays' : 'cleaning.ofAll', { size: formatBytes(data?.bytes ?? 0) })
        )}
      </span>
      <Button
        kind="primary"
        icon="cleaning"
        disabled={busy || !chosen}
        onClick={() => void (data && askAndClean(data))}
      >
        {t('cleaning.clean')}
      </Button>
    </div>
  );
}

type Download = Reply<'getDownloadsJunk'>['items'][number];
const pathOf = ({ path }: Download) => path;

const reload = () => void downloads.reload();

function Downloads() {
  const source = useStore(downloads);
  const nothing = (
    <Notice icon="success" title={t('downloads.none')}>
      <p>{t('downloads.about')}</p>
    </Notice>
  );
  return (
    <Card
      title={t('downloads.title')}
      class="at-downloads"
      aside={
        source.data !== undefined &&
        source.data.count > 0 && (
          <span class="muted">{t('downloads.total', { size: formatBytes(source.data.totalBytes) })}</span>
        )
      }
    >
      <DataView
        source={source}
        reload={reload}
        empty={{ when: ({ items }) => items.length === 0, notice: nothing }}
      >
        {({ items }) => <DownloadsTable items={items} reload={reload} />}
      </DataView>
    </Card>
  );
}

function DownloadsTable({ items, reload }: { items: Download[]; reload(): void }) {
  const selection = useSelection();
  const language = locale();
  const columns = useMemo<Column<Download>[]>(
    () => [
      { id: 'name', title: t('app.name'), value: ({ name }) => name },
      {
        id: 'size',
        title: t('app.size'),
        value: ({ size }) => size,
        text: ({ size }) => formatBytes(size),
        numeric: true,
        width: '7rem',
      },
      {
        id: 'age',
        title: t('downloads.age'),
        value: ({ daysOld }) => daysOld,
        text: ({ daysOld }) => t('downloads.days', { n: daysOld }),
        numeric: true,
        width: '7rem',
      },
    ],
    [language],
  );
  const selected = items.filter((item) => selection[0].keys.has(item.path));
  const remove = async (files: Download[]) => {
    if (await recycle(files)) reload();
  };
  return (
    <>
      <p class="muted small">{t('downloads.about')}</p>
      <Table
        label={t('downloads.title')}
        rows={items}
        rowKey={pathOf}
        columns={columns}
        sort={{ column: 'size', descending: true }}
        selection={selection}
        menu={(rows) => [
          {
            label: t('disk.copyPath'),
            icon: 'copy',
            run: () => void copyText(rows.map(pathOf).join('\r\n')),
          },
          { label: t('recycle.verb'), icon: 'remove', danger: true, run: () => void remove(rows) },
        ]}
        tools={
          <Button icon="remove" disabled={selected.length === 0} onClick={() => void remove(selected)}>
            {selected.length === 0
              ? t('recycle.verb')
              : t('recycle.verbSize', {
                  size: formatBytes(selected.reduce((sum, { size }) => sum + size, 0)),
                })}
          </Button>
        }
      />
    </>
  );
}

function SystemFiles() {
  const source = useStore(systemFiles);
  const [wanted, setWanted] = useState<boolean>();

  async function hibernate(enabled: boolean) {
    setWanted(enabled);
    try {
      await host.request('setHibernation', { enabled });
      toast(enabled ? t('system.hibernationOn') : t('system.hibernationOff'));
    } catch (error) {
      toast(t('system.hibernationFailed', { reason: errorText(error, t('service.refused')) }), {
        error: true,
      });
    }
    await systemFiles.reload();
    setWanted(undefined);
  }

  return (
    <Card title={t('system.title')} class="at-system">
      <DataView source={source} reload={() => void systemFiles.reload()}>
        {(files) => (
          <>
            {(['hiberfil', 'pagefile', 'swapfile'] as const).map((file) => (
              <div class="row system-file" key={file}>
                <span>
                  <strong>{t(`system.${file}`)}</strong>
                  <span class="muted small">{t(`system.${file}.about`)}</span>
                </span>
                <span class="system-size" title={exact(files[file].size)}>
                  {files[file].exists ? formatBytes(files[file].size) : t('system.absent')}
                </span>
              </div>
            ))}
            <div class="row">
              <span>
                <strong>{t('system.hibernation')}</strong>
                <span class="muted small">{t('system.hibernation.about')}</span>
              </span>
              <Switch
                label={t('system.hibernation')}
                on={wanted ?? files.hiberfil.enabled}
                disabled={wanted !== undefined}
                onToggle={(enabled) => void hibernate(enabled)}
              />
            </div>
          </>
        )}
      </DataView>
    </Card>
  );
}
