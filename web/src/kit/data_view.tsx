import type { ComponentChildren } from 'preact';
import { formatTime } from '../base/format.ts';
import type { SourceState } from '../base/source.ts';
import { t } from '../base/text.ts';
import { Button } from './button.tsx';
import { errorText } from './error_text.ts';
import { useElapsed } from './hooks.ts';
import { Icon, type IconName } from './icon.tsx';

/** A calm sentence where content would be: why there is none, and what next. */
export function Notice({
  icon,
  title,
  children,
}: {
  icon: IconName;
  title: string;
  children?: ComponentChildren;
}) {
  return (
    <div class="notice">
      <Icon name={icon} />
      <p class="notice-title">{title}</p>
      {children}
    </div>
  );
}

/** "Loading", with the elapsed time once it takes longer than two seconds. */
function Loading({ since }: { since: number }) {
  const seconds = useElapsed(since);
  return (
    <div class="notice" aria-busy="true">
      <span class="spinner" aria-hidden="true" />
      <p class="notice-title">{seconds > 2 ? t('data.elapsed', { n: seconds }) : t('data.loading')}</p>
    </div>
  );
}

interface Props<T> {
  source: SourceState<T>;
  reload(): void;
  children(data: T): ComponentChildren;
  /** Shown instead of the children when the data has nothing in it. */
  empty?: { when(data: T): boolean; notice: ComponentChildren };
}

/** Shows a data source in whatever state it is. Data that is already there stays while newer data loads or fails. */
export function DataView<T>({ source, reload, children, empty }: Props<T>) {
  const { phase, data, error, at, since } = source;
  const retry = (
    <Button icon="refresh" onClick={reload}>
      {t('app.retry')}
    </Button>
  );
  if (data === undefined) {
    if (phase !== 'failed') return <Loading since={since ?? Date.now()} />;
    return (
      <Notice icon="alert" title={t('data.failed')}>
        <p>{errorText(error)}</p>
        {retry}
      </Notice>
    );
  }
  return (
    <>
      {error !== undefined && (
        <div class="banner" role="status">
          <Icon name="alert" />
          <p>
            {t('data.failedOld', { time: formatTime(at ?? 0) })} {errorText(error)}
          </p>
          {retry}
        </div>
      )}
      {empty?.when(data) ? empty.notice : children(data)}
    </>
  );
}
