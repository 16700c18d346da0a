import assert from 'node:assert/strict';
import { test } from 'node:test';
import { nestedTiles, squarify, tilesOf, type Rect } from './treemap.ts';

const area = ({ width, height }: Rect) => width * height;
const sum = (values: number[]) => values.reduce((total, value) => total + value, 0);
const sizesOf = (count: number) => Array.from({ length: count }, (_, i) => ((i * 7919) % 1009) ** 4);

/** Fails unless each rectangle has its share of the box, none leaves it, and none overlaps another. */
function assertTiling(rects: Rect[], sizes: number[], box: Rect) {
  const slack = 1e-3;
  const after = (a: Rect, b: Rect) => a.x + a.width <= b.x + slack || a.y + a.height <= b.y + slack;
  for (const [i, rect] of rects.entries()) {
    assert.ok(Math.abs(area(rect) - (sizes[i]! / sum(sizes)) * area(box)) < 0.1, `${i} has its share`);
    const right = box.x + box.width - rect.x - rect.width;
    const below = box.y + box.height - rect.y - rect.height;
    assert.ok(Math.min(rect.x - box.x, rect.y - box.y, right, below) > -slack, `${i} lies in the box`);
    for (const other of rects.slice(0, i))
      assert.ok(after(rect, other) || after(other, rect), `${i} overlaps`);
  }
}

test('areas are proportional, inside the box and without overlaps', () => {
  const box = { x: 10, y: 5, width: 500, height: 400 };
  const giant = sizesOf(300).with(150, 1e16);
  for (const sizes of [[5], Array(7).fill(5), giant, giant.toSorted((a, b) => b - a)])
    assertTiling(squarify(sizes, box), sizes, box);
  for (const rect of [...squarify([0, 0], box), ...squarify([3, 2, 1], { ...box, height: 0 })])
    assert.ok(area(rect) === 0 && Object.values(rect).every(Number.isFinite), 'nothing to divide');
});

test('entries too small to draw are merged, and none is lost', () => {
  for (const sizes of [[7], [0, 1, 1e9], sizesOf(2000), Array(100_000).fill(1)]) {
    const entries = sizes.map((size) => ({ size }));
    const tiles = tilesOf(entries, 500, 400, 36);
    const lost = [sizes.filter((size) => size > 0).length, sum(sizes)];
    assert.deepEqual([sum(tiles.map(({ count }) => count)), sum(tiles.map(({ size }) => size))], lost);
    for (const tile of tiles.slice(0, -1))
      assert.ok(tile.entry && area(tile) >= 36 - 1e-6, 'one rest, the last; the others can be hit');
  }
});

test("a folder's tiles fill its tile below the name, in proportion", () => {
  const users = ['a', 'b', 'c'].map((path, i) => ({ path, size: 3 ** i }));
  const entries = [
    { path: 'Users', size: 13 },
    { path: 'tiny', size: 1 },
  ];
  const inside = new Map(entries.map(({ path }) => [path, users]));
  const [outer, ...rest] = nestedTiles(entries, inside, 600, 400, 1, 20);
  const inner = rest.filter(({ around }) => around === outer!.entry);
  assert.deepEqual([outer!.filled, inner.length, rest.length], [true, 3, 4], 'a small tile stays empty');
  const box = { x: outer!.x + 2, y: 20, width: outer!.width - 4, height: outer!.height - 22 };
  const sizes = inner.map(({ size }) => size);
  assertTiling(inner, sizes, box);
});
