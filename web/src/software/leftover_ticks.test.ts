import assert from 'node:assert/strict';
import { test } from 'node:test';
import { tickedAtFirst } from './leftover_ticks.ts';

test("only items in a publisher's folder or key are ticked initially", () => {
  const ticked = [
    'C:\\Users\\Žofie\\AppData\\Local\\Brook\\TarnSync',
    'c:\\users\\eva\\appdata\\roaming\\Brook\\Tarn Sync',
    'C:\\Program Files (x86)\\Brook\\Tarn.Sync',
    'HKLM\\Software\\Brook\\TarnSync',
  ];
  const notTicked = [
    'C:\\Users\\Žofie\\AppData\\Local\\Tarn Sync',
    'C:\\Program Files\\Brook',
    'C:\\Program Files\\Brook.TarnSync',
    'HKLM\\Software\\Brook',
    // Names that are empty or lead out of the root.
    'C:\\Program Files\\',
    'C:\\Program Files\\Brook\\',
    'C:\\Program Files\\..\\Windows',
    'C:\\Program Files\\Brook\\..',
    // Guessed from the publisher's name, but part of Windows.
    'HKLM\\Software\\Microsoft\\Windows',
    'C:\\Users\\eva\\AppData\\Local\\Microsoft\\Edge',
    // No known root.
    'C:\\Brook\\TarnSync',
    'C:\\Users\\eva\\Documents\\Brook\\TarnSync',
    'C:\\Users\\eva\\AppData\\LocalLow\\Brook\\TarnSync',
  ];
  const isTicked = (path: string) => tickedAtFirst({ type: 'directory', path, size: 1 });
  for (const path of ticked) assert.ok(isTicked(path), path);
  for (const path of notTicked) assert.ok(!isTicked(path), path);
});
