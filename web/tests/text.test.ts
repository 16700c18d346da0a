import assert from 'node:assert/strict';
import { beforeEach, test } from 'node:test';
import * as format from '../src/text/format.ts';
import { setLanguage, t, tables, type Language, type Plural, type TextKey } from '../src/text/text.ts';

beforeEach(() => setLanguage('cs'));

const languages = Object.keys(tables) as Language[];
const forms = (entry: string | Plural) =>
  Object.entries(typeof entry === 'string' ? { other: entry } : entry);
const holes = (text: string) => [...new Set(text.match(/\{\w+\}/g) ?? [])].sort().join();

test('every text has the same holes in every form, and the forms that its language uses', () => {
  for (const language of languages) {
    const wantedForms = new Intl.PluralRules(language).resolvedOptions().pluralCategories.sort();
    for (const key of Object.keys(tables.cs) as TextKey[]) {
      const czech = tables.cs[key];
      const wanted = holes(typeof czech === 'string' ? czech : czech.other);
      const entry = tables[language][key];
      if (typeof entry !== 'string') assert.deepEqual(Object.keys(entry).sort(), wantedForms, key);
      for (const [form, text] of forms(entry)) {
        // "every hour": the form for exactly one may do without its number.
        const short = form === 'one' && holes(text + '{n}') === wanted;
        assert.ok(short || holes(text) === wanted, `${language} ${key}: "${text}"`);
      }
    }
  }
});

test('plurals and figures', () => {
  const unseen = (n: number) => () => t('terminal.unseen', { n });
  const cases: [show: () => string, cs: string, en: string][] = [
    [unseen(1), '1 nový řádek', '1 new line'],
    [unseen(4), '4 nové řádky', '4 new lines'],
    [unseen(12_340), '12_340 nových řádků', '12,340 new lines'],
    [() => format.formatBytes(999), '999_B', '999_B'],
    [() => format.formatBytes(1000), '0,98_kB', '0.98_kB'],
    [() => format.formatBytes(21 * 2 ** 30), '21,0_GB', '21.0_GB'],
    [() => format.formatBytes(250e9), '233_GB', '233_GB'],
    [() => format.formatBytes(999.7 * 2 ** 30), '0,98_TB', '0.98_TB'],
    [() => format.formatBytes(5000 * 2 ** 50), '5_000_PB', '5,000_PB'],
    [() => format.formatPercent(56.6), '57_%', '57%'],
    [() => format.formatRate(1234.5), '1_234,50_Mb/s', '1,234.50_Mb/s'],
    [() => format.formatTemperature(39.6), '40_°C', '40_°C'],
    [() => format.formatDuration(2 * 3600 + 5 * 60 + 59), '2 h 05 min', '2 h 05 min'],
  ];
  for (const [i, [show, ...wanted]] of cases.entries()) {
    for (const [j, language] of (['cs', 'en'] as const).entries()) {
      setLanguage(language);
      // Non-breaking spaces as "_", so that they can be seen in the expected texts.
      assert.equal(show().replace(/[\u00a0\u202f]/g, '_'), wanted[j], `row ${i}`);
    }
  }
});

test('a value that looks like a hole or a pattern is shown as it is', () => {
  const text = t('settings.saveFailed', { reason: '{reason} $& $1' });
  assert.ok(text.endsWith(' {reason} $& $1'), text);
});
