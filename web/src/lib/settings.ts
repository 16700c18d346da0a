// The settings document belongs to the page, but it can hold anything: an old version's keys, null, an array.
import { isRecord, object, text } from './shape.ts';

export const themes = ['amethyst', 'sapphire', 'emerald', 'ember', 'light'] as const;

/** One thing that views leave out: `type` says which kind `id` is of. Further members are kept as they are. */
export interface Ignored {
  id: string;
  type: string;
}

export interface Settings {
  theme: (typeof themes)[number];
  language: 'cs' | 'en';
  /** Clean regularly without asking; the helper service keeps the schedule. */
  autoClean: boolean;
  /** Hours. */
  scanInterval: number;
  ignoreList: Ignored[];
}

function oneOf<T extends string>(value: unknown, allowed: readonly T[], fallback: T): T {
  return allowed.includes(value as T) ? (value as T) : fallback;
}

const isIgnored = object({ id: text, type: text });

/** Reads what is usable; every key that is missing, null or of the wrong type is its default. */
export function readSettings(document: unknown): Settings {
  const stored = isRecord(document) ? document : {};
  const { scanInterval, ignoreList } = stored;
  return {
    theme: oneOf(stored.theme, themes, 'amethyst'),
    language: oneOf(stored.language, ['cs', 'en'], 'cs'),
    autoClean: stored.autoClean === true,
    scanInterval: typeof scanInterval === 'number' && scanInterval > 0 && Number.isFinite(scanInterval) ? scanInterval : 24,
    ignoreList: Array.isArray(ignoreList) ? ignoreList.filter(isIgnored) : [],
  };
}

/** The document to store after a change. Keys that this version does not know stay untouched. */
export function changeSettings(document: unknown, changes: Partial<Settings>): Record<string, unknown> {
  return { ...(isRecord(document) ? document : {}), ...changes };
}
