// Reads and changes the settings document. It belongs to the page but can hold anything: an old
// version's keys, null, an array.
import { bool, isRecord, number, object, optional, record, text, type Guarded } from '../base/shape.ts';

export const themes = ['amethyst', 'sapphire', 'emerald', 'ember', 'light', 'system'] as const;

/**
 * One thing that views leave out. `type` says what kind of ID `id` is. Further members are kept unchanged.
 */
export interface Ignored {
  id: string;
  type: string;
  /** The only version to leave out; absent for all versions. */
  version?: string | undefined;
}

export interface Settings {
  theme: (typeof themes)[number];
  language: 'cs' | 'en';
  /** Clean regularly without asking. The helper service keeps the schedule. */
  autoClean: boolean;
  /** Look for updates at program start and then every `scanInterval`. */
  autoScan: boolean;
  /** Show the terminal at the start of a scan. */
  autoOpen: boolean;
  /** Hours. */
  scanInterval: number;
  /** When the last scan succeeded (ms since the epoch); 0 for never. */
  lastScan: number;
  ignoreList: Ignored[];
  /** The sort of each table whose sort the user has chosen. */
  tableSorts: Readonly<Record<string, { column: string; descending: boolean }>>;
  /** How each repair ended the last time, and when (ms since the epoch). */
  repairResults: Readonly<Guarded<typeof isResults>>;
}

const isResults = record(object({ good: bool, text, at: number }));

function oneOf<T extends string>(value: unknown, allowed: readonly T[], fallback: T): T {
  return allowed.includes(value as T) ? (value as T) : fallback;
}

const isSorts = record(object({ column: text, descending: bool }));
const isIgnored = object({ id: text, type: text, version: optional(text) });

/** Reads the usable keys. A key that is missing, null or of the wrong type gets its default. */
export function readSettings(document: unknown): Settings {
  const stored = isRecord(document) ? document : {};
  const { scanInterval, lastScan, ignoreList } = stored;
  return {
    theme: oneOf(stored.theme, themes, 'amethyst'),
    language: oneOf(stored.language, ['cs', 'en'], 'cs'),
    autoClean: stored.autoClean === true,
    autoScan: stored.autoScan !== false,
    autoOpen: stored.autoOpen === true,
    scanInterval:
      typeof scanInterval === 'number' && scanInterval > 0 && Number.isFinite(scanInterval)
        ? scanInterval
        : 24,
    lastScan: typeof lastScan === 'number' ? lastScan : 0,
    ignoreList: Array.isArray(ignoreList) ? ignoreList.filter(isIgnored) : [],
    tableSorts: isSorts(stored.tableSorts) ? stored.tableSorts : {},
    repairResults: isResults(stored.repairResults) ? stored.repairResults : {},
  };
}

/** Returns the document to store after a change. Keys that this version does not know stay unchanged. */
export function changeSettings(document: unknown, changes: Partial<Settings>): Record<string, unknown> {
  return { ...(isRecord(document) ? document : {}), ...changes };
}

/** Returns true if an automatic scan is due. A last scan in the future means that the clock was wrong. */
export function scanIsDue({ autoScan, scanInterval, lastScan }: Settings, now: number): boolean {
  return autoScan && (lastScan > now || now - lastScan >= scanInterval * 3_600_000);
}
