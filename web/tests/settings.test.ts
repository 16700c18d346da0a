import assert from 'node:assert/strict';
import { test } from 'node:test';
import { changeSettings, readSettings, scanIsDue } from '../src/lib/settings.ts';

const defaults = {
  theme: 'amethyst',
  language: 'cs',
  autoClean: false,
  autoScan: true,
  autoOpen: false,
  scanInterval: 24,
  lastScan: 0,
  ignoreList: [],
};

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
    ['switches that are almost on', { autoClean: 'true', autoScan: 0, autoOpen: 'on', lastScan: '5' }, {}],
    ['negative interval', { scanInterval: -3 }, {}],
    [
      'usable',
      { theme: 'light', language: 'en', scanInterval: 5, autoClean: true, autoScan: false },
      { theme: 'light', language: 'en', scanInterval: 5, autoClean: true, autoScan: false },
    ],
    [
      'entries of the ignore list one by one',
      { ignoreList: [null, 'a', { id: 'a' }, { id: 1, type: 't' }, { id: 'a', type: 't', since: 3 }] },
      { ignoreList: [{ id: 'a', type: 't', since: 3 }] },
    ],
  ];
  for (const [name, document, want] of cases)
    assert.deepEqual(readSettings(document), { ...defaults, ...want }, name);
});

test('a change leaves the keys alone that it is not about', () => {
  const stored = { autoClean: true, theme: 7, future: { a: [1] } };
  assert.deepEqual(changeSettings(stored, { language: 'en' }), {
    autoClean: true,
    theme: 7,
    future: { a: [1] },
    language: 'en',
  });
  assert.deepEqual(stored, { autoClean: true, theme: 7, future: { a: [1] } });
  assert.deepEqual(changeSettings([1, 2], { theme: 'ember' }), { theme: 'ember' });
  assert.deepEqual(changeSettings(null, { theme: 'ember' }), { theme: 'ember' });
});

test('a scan is due when the interval is over, and only where it is wanted', () => {
  const hour = 3_600_000;
  const now = 1000 * hour;
  const cases: [name: string, stored: object, want: boolean][] = [
    ['not wanted', { autoScan: false }, false],
    ['never yet', {}, true],
    ['just before', { autoScan: true, scanInterval: 6, lastScan: now - 6 * hour + 1 }, false],
    ['just now', { autoScan: true, scanInterval: 6, lastScan: now - 6 * hour }, true],
    ['stored by a clock that was ahead', { autoScan: true, lastScan: now + hour }, true],
  ];
  for (const [name, stored, want] of cases) assert.equal(scanIsDue(readSettings(stored), now), want, name);
});
