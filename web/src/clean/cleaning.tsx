import { useEffect, useId } from 'preact/hooks';
import { exactBytes, formatBytes, noValue } from '../base/format.ts';
import { t } from '../base/text.ts';
import type { Message } from '../bridge/protocol.ts';
import { Button } from '../kit/button.tsx';
import { DataView, Spinner } from '../kit/data_view.tsx';
import { confirm } from '../kit/dialog.tsx';
import { useElapsed, useStore } from '../kit/hooks.ts';
import { Icon } from '../kit/icon.tsx';
import { ServiceMark } from '../shell/service_mark.tsx';
import { View } from '../shell/view.tsx';
import {
  cleaning,
  cleanJunk,
  downloads,
  freedBytes,
  junk,
  measureIfOld,
  measureJunk,
  systemFiles,
  unfolded,
} from './cleaning.ts';
import { Downloads } from './downloads.tsx';
import { categories, tick, tickedBytes, type Category, type Outcome } from './junk.ts';
import { isOfWindows } from './junk_folders.ts';
import { JunkInside } from './junk_inside.tsx';
import { SystemFiles } from './system_files.tsx';

type Sizes = Message<'junk'>;

function refresh() {
  measureJunk();
  loadOthers();
}

function loadOthers() {
  void downloads.reload();
  void systemFiles.reload();
}

export function Cleaning() {
  const state = useStore(junk);
  const { since } = useStore(cleaning);
  useEffect(() => {
    measureIfOld();
    loadOthers();
  }, []);
  const unmeasured = state.data === undefined && state.phase !== 'failed';
  return (
    <View id="cleaning" refresh={refresh} state={since === undefined ? state : { phase: 'loading', since }}>
      <div class="board cleaning">
        {unmeasured ? (
          <Junk />
        ) : (
          <DataView source={junk} reload={measureJunk}>
            {(data) => <Junk data={data} />}
          </DataView>
        )}
        <Downloads />
        <SystemFiles />
        <JunkTotal data={state.data} />
      </div>
    </View>
  );
}

function Junk({ data }: { data?: Sizes }) {
  const { ticks, since, done } = useStore(cleaning);
  return (
    <section class="card junk-list" aria-label={t('cleaning.junk')}>
      {categories.map((category) => (
        <JunkRow
          key={category}
          category={category}
          size={data?.categories[category]}
          outcome={done?.[category]}
          kept={data?.kept?.includes(category) ?? false}
          ticked={ticks[category]}
          disabled={since !== undefined}
        />
      ))}
    </section>
  );
}

interface RowProps {
  category: Category;
  size: number | undefined;
  outcome: Outcome | undefined;
  /** Neither measured nor emptied, because its folder holds more than junk. */
  kept: boolean;
  ticked: boolean;
  disabled: boolean;
}

function JunkRow({ category, size, outcome, kept, ticked, disabled }: RowProps) {
  const id = useId();
  const measured = kept ? undefined : size;
  const { at } = useStore(junk);
  const isOpen = useStore(unfolded) === category;
  // A changed tick replaces the result of the last clean with a new estimate.
  const toggle = (on: boolean) => {
    const { done: _, ...rest } = cleaning.get();
    cleaning.set({ ...rest, ticks: tick(rest.ticks, category, on) });
  };
  return (
    <div class="junk" data-junk={category}>
      <div class="line">
        <label class="line">
          <input
            type="checkbox"
            aria-labelledby={`${id}-name`}
            aria-describedby={`${id}-size ${id}-about`}
            checked={ticked && !kept}
            disabled={disabled || kept}
            onChange={(event) => toggle(event.currentTarget.checked)}
          />
          <span class="junk-about">
            <strong id={`${id}-name`}>{t(`junk.${category}`)}</strong>
            {isOfWindows(category) && <ServiceMark />}
            <span class={outcome && !kept ? 'junk-outcome small' : 'muted small'} id={`${id}-about`}>
              {kept ? (
                t('junk.kept')
              ) : outcome ? (
                <JunkOutcome category={category} {...outcome} />
              ) : (
                t(`junk.${category}.about`)
              )}
            </span>
          </span>
          <span
            class="junk-size"
            id={`${id}-size`}
            title={measured === undefined ? undefined : exactBytes(measured)}
          >
            {measured === undefined ? noValue : formatBytes(measured)}
          </span>
        </label>
        <button
          type="button"
          class="icon-button"
          aria-label={t('junk.show', { name: t(`junk.${category}`) })}
          title={t('junk.show', { name: t(`junk.${category}`) })}
          aria-expanded={isOpen}
          aria-controls={isOpen ? `${id}-inside` : undefined}
          onClick={() => unfolded.set(isOpen ? undefined : category)}
        >
          <Icon name={isOpen ? 'chevronUp' : 'chevronDown'} />
        </button>
      </div>
      {isOpen && <JunkInside id={`${id}-inside`} category={category} at={at} />}
    </div>
  );
}

function JunkOutcome({ category, freed, left }: Outcome & { category: Category }) {
  const went = freed > 0 || left === 0;
  return (
    <>
      <span class={went ? 'line' : 'line junk-stuck'}>
        <Icon name={went ? 'success' : 'alert'} />
        {t('cleaning.freed', { size: formatBytes(freed) })}
      </span>
      {left > 0 && leftText(category, formatBytes(left))}
    </>
  );
}

/**
 * Returns the reason why something is left. Three categories have folders that the program measures but
 * deliberately does not empty.
 */
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
    <section class="junk-total line" aria-busy={busy} aria-label={t('cleaning.total')}>
      <span class="muted">{done ? t('cleaning.freedTotal') : t('cleaning.total')}</span>
      <span
        class="big"
        data-testid="junk-total"
        title={chosen === undefined || done ? undefined : exactBytes(chosen)}
      >
        {done ? formatBytes(freedBytes(done)) : chosen === undefined ? noValue : formatBytes(chosen)}
      </span>
      <span class="junk-note muted small">
        {busy ? (
          <span class="junk-busy line">
            <Spinner />
            {since === undefined
              ? t('cleaning.measuring', { n: seconds })
              : t('cleaning.cleaning', { n: seconds })}
          </span>
        ) : data?.bytes === 0 && !done ? (
          t('cleaning.nothing')
        ) : (
          data && t(done ? 'cleaning.stays' : 'cleaning.ofAll', { size: formatBytes(data.bytes) })
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
    </section>
  );
}
