import assert from 'node:assert/strict';
import { test } from 'node:test';
import { tickedAtFirst } from '../src/lib/leftovers.ts';

test("only what lies in a publisher's folder or key is ticked from the start", () => {
  const cases: [path: string, want: boolean][] = [
    ['C:\\Users\\Žofie\\AppData\\Local\\Brook\\TarnSync', true],
    ['c:\\users\\eva\\appdata\\roaming\\Brook\\Tarn Sync', true],
    ['D:\\ProgramData\\Brook\\TarnSync', true],
    ['C:\\Program Files (x86)\\Brook\\Tarn.Sync', true],
    ['HKCU\\Software\\Brook\\TarnSync', true],
    ['HKLM\\Software\\Brook\\TarnSync', true],
    ['C:\\Users\\Žofie\\AppData\\Local\\Tarn Sync', false],
    ['C:\\Program Files\\Brook', false],
    ['C:\\Program Files\\Brook.TarnSync', false],
    ['HKLM\\Software\\Brook', false],
    // Names that are empty or lead out of the root.
    ['C:\\Program Files\\', false],
    ['C:\\Program Files\\Brook\\', false],
    ['C:\\Program Files\\..\\Windows', false],
    ['C:\\Program Files\\Brook\\..', false],
    // Known by the names of its publisher, but part of Windows.
    ['HKLM\\Software\\Microsoft\\Windows', false],
    ['C:\\Users\\eva\\AppData\\Local\\Microsoft\\Edge', false],
    // No root that is known.
    ['C:\\Brook\\TarnSync', false],
    ['C:\\Users\\eva\\Documents\\Brook\\TarnSync', false],
    ['C:\\Users\\eva\\AppData\\LocalLow\\Brook\\TarnSync', false],
  ];
  for (const [path, want] of cases)
    assert.equal(tickedAtFirst({ type: 'directory', path, size: 1 }), want, path);
});
