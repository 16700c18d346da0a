import assert from 'node:assert/strict';
import { test } from 'node:test';
import { changeSettings, readSettings } from '../src/lib/settings.ts';

const defaults = { theme: 'amethyst', language: 'cs', autoClean: false, scanInterval: 24, ignoreList: [] };

test('whatever is stored, every unusable key is its default', () => {
  const cases: [name: string, document: unknown, want: object][] = [
    ['absent', undefined, {}],
    ['null', null, {}],
    ['array', [1, 2], {}],
    ['text', 'amethyst', {}],
    ['empty object', {}, {}],
    ['unknown theme and language', { theme: 'x', language: 'de' }, {}],
    ['inherited name as theme', { theme: 'toString', language: '__proto__' }, {}],
    ['mistyped', { theme: 5, language: null, scanInterval: '12', ignoreList: { id: 'a' } }, {}],
    ['interval of nothing', { scanInterval: 0 }, {}],
    ['a switch that is almost on', { autoClean: 'true' }, {}],
    ['negative interval', { scanInterval: -3 }, {}],
    ['usable', { theme: 'light', language: 'en', scanInterval: 5, autoClean: true }, { theme: 'light', language: 'en', scanInterval: 5, autoClean: true }],
    [
      'entries of the ignore list one by one',
      { ignoreList: [null, 'a', { id: 'a' }, { id: 1, type: 't' }, { id: 'a', type: 't', since: 3 }] },
      { ignoreList: [{ id: 'a', type: 't', since: 3 }] },
    ],
  ];
  for (const [name, document, want] of cases) assert.deepEqual(readSettings(document), { ...defaults, ...want }, name);
});

test('a change leaves the keys alone that it is not about', () => {
  const stored = { autoClean: true, theme: 7, future: { a: [1] } };
  assert.deepEqual(changeSettings(stored, { language: 'en' }), { autoClean: true, theme: 7, future: { a: [1] }, language: 'en' });
  assert.deepEqual(stored, { autoClean: true, theme: 7, future: { a: [1] } });
  assert.deepEqual(changeSettings([1, 2], { theme: 'ember' }), { theme: 'ember' });
  assert.deepEqual(changeSettings(null, { theme: 'ember' }), { theme: 'ember' });
});
