import type { ComponentChildren } from 'preact';
import { formatTime } from '../base/format.ts';
import type { Readable } from '../base/source.ts';
import { t } from '../base/text.ts';
import { Button } from './button.tsx';
import { errorText } from './error_text.ts';
import { useElapsed, useStore } from './hooks.ts';
import { Icon, type IconName } from './icon.tsx';

interface NoticeProps {
  icon: IconName;
  title: string;
  hint?: string;
  children?: ComponentChildren;
}

/** A calm sentence in place of content: why there is none, and what to do next. */
export function Notice({ icon, title, hint, children }: NoticeProps) {
  return (
    <div class="notice">
      <Icon name={icon} />
      <p class="notice-title">{title}</p>
      {hint && <p>{hint}</p>}
      {children}
    </div>
  );
}

/** Shows "Loading", with the elapsed time after two seconds. */
function Loading({ since }: { since: number }) {
  const seconds = useElapsed(since);
  return (
    <div class="notice" aria-busy="true">
      <Spinner />
      <p class="notice-title">{seconds > 2 ? t('data.elapsed', { n: seconds }) : t('data.loading')}</p>
    </div>
  );
}

/** Decoration beside the words that describe the activity. */
export function Spinner() {
  return <span class="spinner" aria-hidden="true" />;
}

interface Props<T> {
  source: Readable<T>;
  /** The action of "Try again"; reloads the source if absent. */
  reload?(): void;
  children(data: T): ComponentChildren;
  /** Shown instead of the children if the data is an empty list, or if `isEmpty` returns true. */
  nothing?: ComponentChildren;
  isEmpty?(data: T): boolean;
}

const isEmptyList = (data: unknown) => Array.isArray(data) && data.length === 0;

/** Shows a data source in any state. Existing data stays visible while newer data loads or fails. */
export function DataView<T>({
  source,
  reload = () => void source.reload(),
  children,
  nothing,
  isEmpty = isEmptyList,
}: Props<T>) {
  const { phase, data, error, at, since } = useStore(source);
  const retry = (
    <Button icon="refresh" onClick={reload}>
      {t('app.retry')}
    </Button>
  );
  if (data === undefined) {
    if (phase !== 'failed') return <Loading since={since ?? Date.now()} />;
    return (
      <Notice icon="alert" title={t('data.failed')} hint={errorText(error)}>
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
      {nothing && isEmpty(data) ? nothing : children(data)}
    </>
  );
}
