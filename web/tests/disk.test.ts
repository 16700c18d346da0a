import assert from 'node:assert/strict';
import { test } from 'node:test';
import { crumbsOf, kindOf, nameOf, parentOf, rootOf } from '../src/lib/disk.ts';

test('roots keep one backslash, folders have none', () => {
  assert.deepEqual([rootOf('C:'), rootOf('D:\\')], ['C:\\', 'D:\\']);
  const cases: [
    path: string,
    parent: string | undefined,
    name: string,
    crumbs: [name: string, path: string][],
  ][] = [
    ['C:\\', undefined, '', [['C:', 'C:\\']]],
    [
      'C:\\Users',
      'C:\\',
      'Users',
      [
        ['C:', 'C:\\'],
        ['Users', 'C:\\Users'],
      ],
    ],
    [
      'D:\\写真\\Žofie a.b\\x',
      'D:\\写真\\Žofie a.b',
      'x',
      [
        ['D:', 'D:\\'],
        ['写真', 'D:\\写真'],
        ['Žofie a.b', 'D:\\写真\\Žofie a.b'],
        ['x', 'D:\\写真\\Žofie a.b\\x'],
      ],
    ],
  ];
  for (const [path, parent, name, crumbs] of cases) {
    assert.equal(parentOf(path), parent, path);
    assert.equal(nameOf(path), name, path);
    assert.deepEqual(
      crumbsOf(path),
      crumbs.map(([shown, to]) => ({ name: shown, path: to })),
      path,
    );
  }
});

test('kinds', () => {
  const cases: [name: string, is_directory: boolean, want: string][] = [
    ['film.MKV', false, 'video'],
    ['archiv.tar.gz', false, 'archive'],
    ['pagefile.sys', false, 'program'],
    ['složka.mp4', true, 'folder'],
    ['README', false, 'other'],
    ['.zip', false, 'other'], // a name, not an extension
    ['konec.', false, 'other'],
    ['x.toString', false, 'other'],
  ];
  for (const [name, isDirectory, want] of cases) assert.equal(kindOf({ name, isDirectory }), want, name);
});
