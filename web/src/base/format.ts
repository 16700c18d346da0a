// Figures as people read them, in the chosen language.
import { cached, formatNumber, locale } from './text.ts';

export const noValue = '—';
const nbsp = '\u00a0';

const units = ['B', 'kB', 'MB', 'GB', 'TB', 'PB'];

/** Bytes in the largest unit that gives at least 1; a unit is 1024 of the one before it. */
export function formatBytes(bytes: number): string {
  let value = bytes;
  let unit = 0;
  // 999.5 would print as 1000: that figure is shorter in the next unit.
  while (Math.abs(value) >= 999.5 && unit < units.length - 1) {
    value /= 1024;
    unit++;
  }
  const digits = unit === 0 ? 0 : Math.abs(value) < 9.995 ? 2 : Math.abs(value) < 99.95 ? 1 : 0;
  return formatNumber(value, digits) + nbsp + units[unit];
}

/** Every byte: for tool tips of figures that are rounded. */
export const exactBytes = (bytes: number) => `${formatNumber(bytes)} B`;

/** 0 to 100. */
export function formatPercent(percent: number, digits = 0): string {
  return formatNumber(percent / 100, digits, 'percent');
}

/** 2^20 bits per second. */
export function formatRate(rate: number, digits = 2): string {
  return formatNumber(rate, digits) + nbsp + 'Mb/s';
}

export function formatTemperature(celsius: number): string {
  return formatNumber(celsius) + nbsp + '°C';
}

/** Milliseconds since the epoch as a time of day. */
export function formatTime(time: number): string {
  return cached('time', () => new Intl.DateTimeFormat(locale(), { timeStyle: 'medium' })).format(time);
}

/** Milliseconds since the epoch as a month: "červenec 2025". */
export function formatMonth(time: number): string {
  return cached('month', () => new Intl.DateTimeFormat(locale(), { month: 'long', year: 'numeric' })).format(
    time,
  );
}

/** A day as "2024-07-01" in the order of the language; any other text as it is. */
export function formatDate(text: string): string {
  const time = /^\d{4}-\d\d-\d\d$/.test(text) ? Date.parse(text) : NaN;
  if (Number.isNaN(time)) return text;
  return cached(
    'date',
    () => new Intl.DateTimeFormat(locale(), { dateStyle: 'medium', timeZone: 'UTC' }),
  ).format(time);
}

/** An exit code (unsigned, 32 bits); large ones are known by their hexadecimal form. */
export const codeText = (code: number) =>
  code >= 2 ** 31 ? `0x${code.toString(16).toUpperCase()}` : String(code);
