import assert from 'node:assert/strict';
import { test } from 'node:test';
import { kindOf } from './kinds.ts';

test('extensions decide the kind of a file', () => {
  const names = ['film.MKV', 'archiv.tar.gz', 'pagefile.sys', 'README', '.zip', 'konec.', 'x.toString'];
  const kinds = names.map((name) => kindOf({ name, isDirectory: false }));
  assert.deepEqual(kinds, ['video', 'archive', 'system', 'other', 'other', 'other', 'other']);
  assert.equal(kindOf({ name: 'složka.mp4', isDirectory: true }), 'folder');
});
