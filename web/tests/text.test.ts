import assert from 'node:assert/strict';
import { beforeEach, test } from 'node:test';
import {
  formatBytes,
  formatDuration,
  formatPercent,
  formatRate,
  formatTemperature,
} from '../src/text/format.ts';
import {
  formatNumber,
  setLanguage,
  t,
  tables,
  type Language,
  type Plural,
  type TextKey,
} from '../src/text/text.ts';

beforeEach(() => setLanguage('cs'));

/** Non-breaking spaces as "_", so that they can be seen in the expected texts. */
const visible = (text: string) => text.replace(/[\u00a0\u202f]/g, '_');
const forms = (entry: string | Plural) =>
  Object.entries(typeof entry === 'string' ? { other: entry } : entry);
const holes = (text: string) => [...new Set(text.match(/\{\w+\}/g) ?? [])].sort().join();

test('every text has the same holes in every form and language', () => {
  for (const key of Object.keys(tables.cs) as TextKey[]) {
    const czech = tables.cs[key];
    const wanted = holes(typeof czech === 'string' ? czech : czech.other);
    for (const language of Object.keys(tables) as Language[]) {
      for (const [form, text] of forms(tables[language][key])) {
        // "every hour": the form for exactly one may do without its number.
        const short = form === 'one' && holes(text + '{n}') === wanted;
        assert.ok(short || holes(text) === wanted, `${language} ${key}: "${text}"`);
      }
    }
  }
});

test('every plural has the forms that its language uses', () => {
  for (const [language, table] of Object.entries(tables)) {
    const wanted = new Intl.PluralRules(language).resolvedOptions().pluralCategories;
    for (const [key, entry] of Object.entries(table)) {
      if (typeof entry !== 'string')
        assert.deepEqual(Object.keys(entry).sort(), [...wanted].sort(), `${language} ${key}`);
    }
  }
});

test('plurals', () => {
  const cases: [n: number, cs: string, en: string][] = [
    [0, '0 nových řádků', '0 new lines'],
    [1, '1 nový řádek', '1 new line'],
    [2, '2 nové řádky', '2 new lines'],
    [4, '4 nové řádky', '4 new lines'],
    [5, '5 nových řádků', '5 new lines'],
    [22, '22 nových řádků', '22 new lines'],
    [12_340, '12_340 nových řádků', '12,340 new lines'],
  ];
  for (const [n, cs, en] of cases) {
    setLanguage('cs');
    assert.equal(visible(t('terminal.unseen', { n })), cs);
    setLanguage('en');
    assert.equal(visible(t('terminal.unseen', { n })), en);
  }
});

test('a value that looks like a hole or a pattern is shown as it is', () => {
  assert.equal(
    t('settings.saveFailed', { reason: '{reason} $& $1' }),
    'Nastavení se nepodařilo uložit. {reason} $& $1',
  );
});

test('figures', () => {
  const cases: [name: string, format: () => string, cs: string, en: string][] = [
    ['no bytes', () => formatBytes(0), '0_B', '0_B'],
    ['bytes', () => formatBytes(999), '999_B', '999_B'],
    ['just below the next unit', () => formatBytes(1000), '0,98_kB', '0.98_kB'],
    ['three figures', () => formatBytes(1_610_612_736), '1,50_GB', '1.50_GB'],
    ['tens', () => formatBytes(21 * 2 ** 30), '21,0_GB', '21.0_GB'],
    ['hundreds', () => formatBytes(250e9), '233_GB', '233_GB'],
    ['never four figures', () => formatBytes(999.7 * 2 ** 30), '0,98_TB', '0.98_TB'],
    ['beyond the last unit', () => formatBytes(5000 * 2 ** 50), '5_000_PB', '5,000_PB'],
    ['percent', () => formatPercent(56.6), '57_%', '57%'],
    ['rate', () => formatRate(1234.5), '1_234,50_Mb/s', '1,234.50_Mb/s'],
    ['temperature', () => formatTemperature(39.6), '40_°C', '40_°C'],
    ['hours', () => formatDuration(2 * 3600 + 5 * 60 + 59), '2 h 05 min', '2 h 05 min'],
    ['minutes', () => formatDuration(59), '0 min', '0 min'],
    ['number', () => formatNumber(-1234.567, 1), '-1_234,6', '-1,234.6'],
  ];
  for (const [name, format, cs, en] of cases) {
    setLanguage('cs');
    assert.equal(visible(format()), cs, name);
    setLanguage('en');
    assert.equal(visible(format()), en, name);
  }
});
