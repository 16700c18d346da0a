// Formats figures for people, in the chosen language.
import { cached, formatNumber, locale } from './text.ts';

export const noValue = '—';
const nbsp = '\u00a0';

const units = ['B', 'kB', 'MB', 'GB', 'TB', 'PB'];

/** Formats bytes in the largest unit that gives at least 1. Each unit is 1024 times the previous one. */
export function formatBytes(bytes: number): string {
  let value = bytes;
  let unit = 0;
  // 999.5 would print as 1000, which is shorter in the next unit.
  while (Math.abs(value) >= 999.5 && unit < units.length - 1) {
    value /= 1024;
    unit++;
  }
  const digits = unit === 0 ? 0 : Math.abs(value) < 9.995 ? 2 : Math.abs(value) < 99.95 ? 1 : 0;
  return formatNumber(value, digits) + nbsp + units[unit];
}

/** Formats every byte, for the tool tips of rounded figures. */
export const exactBytes = (bytes: number) => `${formatNumber(bytes)} B`;

/** Formats a percentage from 0 to 100. */
export function formatPercent(percent: number, digits = 0): string {
  return formatNumber(percent / 100, digits, 'percent');
}

/** Formats a rate in 2^20 bits per second. */
export function formatRate(rate: number, digits = 2): string {
  return formatNumber(rate, digits) + nbsp + 'Mb/s';
}

export function formatTemperature(celsius: number): string {
  return formatNumber(celsius) + nbsp + '°C';
}

/**
 * Formats milliseconds since the epoch as a time of day: "09:05:00". Both languages write it so. Every view
 * shows it at the start, where creating an Intl object for it took as long as all the rest.
 */
export function formatTime(time: number): string {
  return new Date(time).toTimeString().slice(0, 8);
}

/** Formats milliseconds since the epoch as a day and a time of day. */
export function formatMoment(time: number): string {
  const options = { dateStyle: 'medium', timeStyle: 'short' } as const;
  return cached('moment', () => new Intl.DateTimeFormat(locale(), options)).format(time);
}

/** Formats milliseconds since the epoch as a month: "červenec 2025". */
export function formatMonth(time: number): string {
  return cached('month', () => new Intl.DateTimeFormat(locale(), { month: 'long', year: 'numeric' })).format(
    time,
  );
}

/** Formats a day such as "2024-07-01" in the order of the language. Returns any other text unchanged. */
export function formatDate(text: string): string {
  const time = /^\d{4}-\d\d-\d\d$/.test(text) ? Date.parse(text) : NaN;
  if (Number.isNaN(time)) return text;
  return cached(
    'date',
    () => new Intl.DateTimeFormat(locale(), { dateStyle: 'medium', timeZone: 'UTC' }),
  ).format(time);
}

/** Formats an exit code (unsigned, 32 bits). Large ones are best known in hexadecimal. */
export const codeText = (code: number) =>
  code >= 2 ** 31 ? `0x${code.toString(16).toUpperCase()}` : String(code);
