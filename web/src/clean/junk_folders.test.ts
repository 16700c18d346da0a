import assert from 'node:assert/strict';
import { test } from 'node:test';
import { bytesOf, expand } from './junk_folders.ts';

test('names in paths are replaced; an unknown name makes the path unknown', () => {
  const values = { TEMP: 'D:\\t', NONE: undefined };
  const cases = { '%temp%\\x': 'D:\\t\\x', 'C:\\x': 'C:\\x', '%NONE%\\x': undefined, '%OTHER%': undefined };
  for (const [path, want] of Object.entries(cases)) assert.equal(expand(path, values), want, path);
});

test('a folder has no size until an analysis has covered its subfolders', () => {
  const entry = (size: number, isDirectory = false) => ({ name: '', path: '', size, isDirectory });
  assert.deepEqual(
    [[], [entry(1)], [entry(1), entry(0, true)], [entry(1), entry(2, true), entry(0, true)]].map(bytesOf),
    [0, 1, undefined, 3],
  );
});
