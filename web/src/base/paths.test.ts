import assert from 'node:assert/strict';
import { test } from 'node:test';
import { crumbsOf, nameOf, parentOf, rootOf } from './paths.ts';

test('roots keep one backslash, folders have none', () => {
  assert.deepEqual([rootOf('C:'), rootOf('D:\\')], ['C:\\', 'D:\\']);
  const cases: [path: string, parent: string | undefined, name: string, crumbs: string][] = [
    ['C:\\', undefined, '', 'C:=C:\\'],
    ['C:\\Users', 'C:\\', 'Users', 'C:=C:\\ Users=C:\\Users'],
    ['D:\\写真\\a.b\\x', 'D:\\写真\\a.b', 'x', 'D:=D:\\ 写真=D:\\写真 a.b=D:\\写真\\a.b x=D:\\写真\\a.b\\x'],
  ];
  for (const [path, parent, name, crumbs] of cases) {
    const shown = crumbsOf(path).map((crumb) => `${crumb.name}=${crumb.path}`);
    assert.deepEqual([parentOf(path), nameOf(path), shown.join(' ')], [parent, name, crumbs], path);
  }
});
