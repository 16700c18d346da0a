import assert from 'node:assert/strict';
import { test } from 'node:test';
import { entered, nextTile, picked, tileAt } from './map_rules.ts';
import { nestedTiles } from './treemap.ts';

const entry = (path: string, size: number, isDirectory = false) => ({ name: path, path, size, isDirectory });
const items = [entry('C:\\Users', 50, true), entry('C:\\film.mkv', 30), entry('C:\\Data', 20, true)];
const inside = new Map([['C:\\Users', [entry('C:\\Users\\a', 30, true), entry('C:\\Users\\b.zip', 20)]]]);
const tiles = nestedTiles(items, inside, 400, 300, 36, 20);
const of = (path: string) => tiles.find((tile) => tile.entry?.path === path)!;

test('each click does its action', () => {
  const cases: [at: string, row: string, enters: string | undefined][] = [
    ['C:\\Users', 'C:\\Users', 'C:\\Users'],
    ['C:\\Users\\a', 'C:\\Users', 'C:\\Users\\a'],
    ['C:\\Users\\b.zip', 'C:\\Users', 'C:\\Users'],
    ['C:\\film.mkv', 'C:\\film.mkv', undefined],
  ];
  for (const [at, row, enters] of cases) {
    const tile = tileAt(tiles, of(at).x + 3, of(at).y + 3)!;
    assert.deepEqual([picked(tile).entry?.path, picked(tile).row, entered(tile)], [at, row, enters], at);
  }
  const rest = { ...of('C:\\Users\\a'), entry: undefined };
  assert.deepEqual([picked(rest).row, entered(rest)], ['C:\\Users', 'C:\\Users'], 'small ones of a folder');
  assert.equal(tileAt(tiles, 400, 0), undefined);
});

test('arrow keys reach every tile of the folder and stop at its edges', () => {
  const reached = new Set([nextTile(tiles, undefined, 'ArrowDown')!]);
  for (const tile of reached)
    for (const key of ['ArrowLeft', 'ArrowRight', 'ArrowUp', 'ArrowDown'])
      reached.add(nextTile(tiles, tile, key)!);
  assert.deepEqual(
    [...reached].map((tile) => tile.entry?.path).toSorted(),
    items.map(({ path }) => path).toSorted(),
  );
  assert.equal(nextTile(tiles, of('C:\\Users'), 'ArrowLeft'), of('C:\\Users'));
  assert.equal(nextTile(tiles, of('C:\\Users'), 'x'), undefined);
});
