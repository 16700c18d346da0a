import { t } from '../base/text.ts';

/** Formats whole minutes, rounded down: "2 h 05 min". */
export function formatDuration(seconds: number): string {
  const minutes = Math.floor(seconds / 60);
  const hours = Math.floor(minutes / 60);
  return hours > 0
    ? t('duration.hours', { hours, minutes: String(minutes % 60).padStart(2, '0') })
    : t('duration.minutes', { minutes });
}
