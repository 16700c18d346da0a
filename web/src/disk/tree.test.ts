import assert from 'node:assert/strict';
import { test } from 'node:test';
import { stillThere, unexplained, withoutGone } from './tree.ts';

test('a removed file is subtracted from every folder around it only', () => {
  const gone = [
    { path: 'C:\\a\\x', size: 5 },
    { path: 'C:\\a\\y.txt', size: 2 },
    { path: 'C:\\d', size: 9 },
  ];
  const sizes: [path: string, isDirectory: boolean, before: number, after: number][] = [
    ['C:\\a', true, 30, 23],
    ['C:\\a\\x', true, 5, 0], // created again
    ['C:\\a\\x2', true, 6, 6],
    ['C:\\ab', true, 7, 7],
    ['C:\\a\\y.txt', false, 3, 3],
    ['C:\\d', true, 8, 0],
  ];
  const items = sizes.map(([path, isDirectory, size]) => ({ name: '', path, isDirectory, size }));
  assert.deepEqual(
    withoutGone(items, gone).map(({ size }) => size),
    sizes.map(([, , , after]) => after),
  );
  const files = ['C:\\a\\x\\1', 'C:\\a\\y.txt', 'C:\\a\\y.txt2', 'C:\\e'].map((path) => ({ path, size: 1 }));
  assert.deepEqual(
    stillThere(files, gone).map(({ path }) => path),
    ['C:\\a\\y.txt2', 'C:\\e'],
  );
});

test('what went to the recycle bin is neither missing nor found twice', () => {
  const cases: [name: string, found: number, gone: number, used: number, unexplained: number][] = [
    ['a small difference', 98, 0, 100, 0],
    ['out of reach', 90, 0, 100, 10],
    ['recycled', 60, 40, 100, 0],
    ['out of reach, and recycled', 50, 40, 100, 10],
    ['recycled, and the bin emptied', 60, 40, 60, 0],
    ['hard links', 105, 0, 100, -5],
  ];
  for (const [name, found, size, used, expected] of cases)
    assert.equal(unexplained(found, [{ path: 'C:\\x', size }], used), expected, name);
});
