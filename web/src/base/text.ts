// Texts in the chosen language, with numbers and plurals formatted by Intl.

export const languages = { cs: 'Čeština', en: 'English' } as const;
export type Language = keyof typeof languages;

type Category = 'one' | 'few' | 'many' | 'other';
/** A text that depends on the number `{n}`. Czech `many` is for fractions; a text that only counts omits it. */
export type Plural = { readonly other: string } & Readonly<Partial<Record<Category, string>>>;
/** The texts of a room, each in both languages. */
export type TextTable = Readonly<
  Record<string, readonly [cs: string, en: string] | readonly [cs: Plural, en: Plural]>
>;

/** Every text of the page. Extended where the tables of the rooms are joined. */
export interface Texts {}
export type TextKey = keyof Texts;

type Holes<S> = S extends `${string}{${infer Name}}${infer Rest}` ? Name | Holes<Rest> : never;
type Pattern<Entry> = Entry extends { other: infer S } ? S : Entry;
type HolesOf<K extends TextKey> = Holes<Pattern<Texts[K][number]>>;
type Args<K extends TextKey> = [HolesOf<K>] extends [never]
  ? []
  : [values: Record<HolesOf<K>, string | number>];
/** A text without holes, which tables of data such as columns may name. */
export type PlainKey = { [K in TextKey]: [HolesOf<K>] extends [never] ? K : never }[TextKey];

let texts: TextTable = {};

export function setTexts(all: TextTable) {
  texts = all;
}

const locales: Record<Language, string> = { cs: 'cs-CZ', en: 'en-GB' };

let language: Language = 'cs';

export function setLanguage(next: Language) {
  language = next;
}

export function locale(): string {
  return locales[language];
}

// Creating an Intl object is slow, using it is not.
const cache = new Map<string, unknown>();
export function cached<T>(name: string, make: () => T): T {
  const key = `${language} ${name}`;
  if (!cache.has(key)) cache.set(key, make());
  return cache.get(key) as T;
}

export function formatNumber(value: number, digits = 0, style: 'decimal' | 'percent' = 'decimal'): string {
  const format = cached(style + digits, () => {
    return new Intl.NumberFormat(locale(), {
      style,
      minimumFractionDigits: digits,
      maximumFractionDigits: digits,
    });
  });
  return format.format(value);
}

/**
 * Returns the text of a key. Replaces `{name}` with the value of that name; `{n}` also chooses the plural
 * form.
 */
export function t<K extends TextKey>(key: K, ...args: Args<K>): string {
  const values: Record<string, string | number> = args[0] ?? {};
  const entry = texts[key]![language === 'cs' ? 0 : 1];
  const rules = cached('plural', () => new Intl.PluralRules(locale()));
  const pattern =
    typeof entry === 'string'
      ? entry
      : (entry[rules.select(Number(values.n)) as Category] ?? entry.few ?? entry.other);
  return pattern.replace(/\{(\w+)\}/g, (hole, name: string) => {
    const value = values[name];
    return value === undefined ? hole : typeof value === 'number' ? formatNumber(value) : value;
  });
}
