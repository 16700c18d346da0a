import assert from 'node:assert/strict';
import { beforeEach, test } from 'node:test';
import * as format from '../base/format.ts';
import { setLanguage, t, type Plural, type TextTable } from '../base/text.ts';
import { formatDuration } from '../system/duration.ts';
import { tables, texts } from './all_texts.ts';

beforeEach(() => setLanguage('cs'));

const forms = (entry: string | Plural) =>
  Object.entries(typeof entry === 'string' ? { other: entry } : entry);
const holes = (text: string) => [...new Set(text.match(/\{\w+\}/g) ?? [])].sort().join();

test('every text has the same holes in every form, and all forms of its language', () => {
  const categories = ['cs', 'en'].map((language) =>
    new Intl.PluralRules(language)
      .resolvedOptions()
      .pluralCategories.filter((one) => one !== 'many')
      .sort(),
  );
  for (const [key, pair] of Object.entries<TextTable[string]>(texts)) {
    const [czech] = pair;
    const wanted = holes(typeof czech === 'string' ? czech : czech.other);
    for (const [i, entry] of pair.entries()) {
      const own = Object.keys(entry).filter((form) => form !== 'many');
      if (typeof entry !== 'string') assert.deepEqual(own.sort(), categories[i], key);
      for (const [form, text] of forms(entry)) {
        // "every hour": the form for exactly one may omit its number.
        const short = form === 'one' && holes(text + '{n}') === wanted;
        assert.ok(short || holes(text) === wanted, `${key}: "${text}"`);
      }
    }
  }
});

test('no two rooms share a key', () =>
  assert.equal(Object.values(tables).flatMap(Object.keys).length, Object.keys(texts).length));

test('plurals and figures follow the language', () => {
  const unseen = (n: number) => () => t('terminal.unseen', { n });
  const cases: [show: () => string, cs: string, en: string][] = [
    [unseen(1), '1 nový řádek', '1 new line'],
    [unseen(4), '4 nové řádky', '4 new lines'],
    [unseen(12_340), '12_340 nových řádků', '12,340 new lines'],
    [() => format.formatBytes(1000), '0,98_kB', '0.98_kB'],
    [() => format.formatBytes(21 * 2 ** 30), '21,0_GB', '21.0_GB'],
    [() => format.formatBytes(999.7 * 2 ** 30), '0,98_TB', '0.98_TB'],
    [() => format.formatBytes(5000 * 2 ** 50), '5_000_PB', '5,000_PB'],
    [() => format.formatRate(1234.5), '1_234,50_Mb/s', '1,234.50_Mb/s'],
    [() => formatDuration(2 * 3600 + 5 * 60 + 59), '2 h 05 min', '2 h 05 min'],
  ];
  for (const [i, [show, ...wanted]] of cases.entries()) {
    for (const [j, language] of (['cs', 'en'] as const).entries()) {
      setLanguage(language);
      // Shows non-breaking spaces as "_", to make them visible in the expected texts.
      assert.equal(show().replace(/[\u00a0\u202f]/g, '_'), wanted[j], `row ${i}`);
    }
  }
});
