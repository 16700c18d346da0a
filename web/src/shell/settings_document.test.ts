import assert from 'node:assert/strict';
import { test } from 'node:test';
import { changeSettings, readSettings, scanIsDue } from './settings_document.ts';

const switches = { autoClean: false, autoScan: true, autoOpen: false };
const numbers = { scanInterval: 24, lastScan: 0 };
const lists = { ignoreList: [], tableSorts: {}, repairResults: {} };
const defaults = { theme: 'amethyst', language: 'cs', ...switches, ...numbers, ...lists };

test('every unusable stored key gets its default', () => {
  const usable = { theme: 'light', language: 'en', scanInterval: 5, autoClean: true, autoScan: false };
  const ignored = { id: 'a', type: 't', since: 3 };
  const cases: [document: unknown, want: object][] = [
    [undefined, {}],
    [[1, 2], {}],
    [{ theme: 'toString', language: '__proto__' }, {}],
    [{ theme: 5, language: null, scanInterval: '12', ignoreList: { id: 'a' } }, {}],
    [{ scanInterval: 0, tableSorts: { a: { column: 'b' } }, repairResults: { sfc: { good: true } } }, {}],
    [{ autoClean: 'true', autoScan: 0, autoOpen: 'on', lastScan: '5' }, {}],
    [usable, usable],
    [{ ignoreList: [null, 'a', { id: 'a' }, { id: 1, type: 't' }, ignored] }, { ignoreList: [ignored] }],
  ];
  for (const [document, want] of cases)
    assert.deepEqual(readSettings(document), { ...defaults, ...want }, JSON.stringify(document));
});

test('a change leaves all other keys alone', () => {
  const stored = Object.freeze({ autoClean: true, theme: 7, future: { a: [1] } });
  assert.deepEqual(changeSettings(stored, { language: 'en' }), { ...stored, language: 'en' });
  for (const broken of [[1, 2], null])
    assert.deepEqual(changeSettings(broken, { theme: 'ember' }), { theme: 'ember' });
});

test('a scan is due if it is enabled and the interval is over', () => {
  const hour = 3_600_000;
  const now = 1000 * hour;
  const cases: [name: string, stored: object, want: boolean][] = [
    ['not wanted', { autoScan: false }, false],
    ['just before', { autoScan: true, scanInterval: 6, lastScan: now - 6 * hour + 1 }, false],
    ['just now', { autoScan: true, scanInterval: 6, lastScan: now - 6 * hour }, true],
    ['stored by a clock that was ahead', { autoScan: true, lastScan: now + hour }, true],
  ];
  for (const [name, stored, want] of cases) assert.equal(scanIsDue(readSettings(stored), now), want, name);
});
