import assert from 'node:assert/strict';
import { test } from 'node:test';
import { fitText, nestedTiles, squarify, tilesOf, type Rect } from './treemap.ts';

const area = ({ width, height }: Rect) => width * height;
const sum = (values: number[]) => values.reduce((total, value) => total + value, 0);

/** The same numbers in every run: a failure can be looked at again. */
function randomOf(seed: number) {
  return () => (seed = (seed * 16807) % 2147483647) / 2147483647;
}

function assertTiling(rects: Rect[], sizes: number[], box: Rect, name: string) {
  const slack = 1e-6 * Math.max(box.width, box.height);
  /** Whether `b` begins where `a` ends, or after it. */
  const after = (a: Rect, b: Rect) => a.x + a.width <= b.x + slack || a.y + a.height <= b.y + slack;
  rects.forEach((rect, i) => {
    const share = (sizes[i]! / sum(sizes)) * area(box);
    assert.ok(Math.abs(area(rect) - share) <= 1e-6 * area(box), `${name}: ${i} has its share`);
    const right = box.x + box.width - rect.x - rect.width;
    const below = box.y + box.height - rect.y - rect.height;
    const room = Math.min(rect.x - box.x, rect.y - box.y, right, below);
    assert.ok(room >= -slack, `${name}: ${i} lies in the box`);
    for (const other of rects.slice(0, i)) {
      const apart = after(rect, other) || after(other, rect);
      assert.ok(apart || area(rect) < slack || area(other) < slack, `${name}: ${i} overlaps none`);
    }
  });
}

test('areas are in proportion, nothing overlaps, nothing leaves the box', () => {
  const random = randomOf(11);
  const shapes: Record<string, () => number> = {
    alike: () => 5,
    'one giant among dwarfs': () => random() ** 40 * 1e12 + 1,
    'whole bytes': () => Math.floor(random() ** 8 * 2 ** 40) + 1,
  };
  for (const [name, size] of Object.entries(shapes)) {
    for (const count of [1, 7, 300]) {
      const box = { x: 10 * random(), y: 5, width: 20 + 900 * random(), height: 20 + 600 * random() };
      const sizes = Array.from({ length: count }, size);
      assertTiling(squarify(sizes, box), sizes, box, `${name}, ${count}, as they come`);
      sizes.sort((a, b) => b - a);
      assertTiling(squarify(sizes, box), sizes, box, `${name}, ${count}, largest first`);
    }
  }
  const box = { x: 0, y: 0, width: 100, height: 50 };
  assert.deepEqual(squarify([], box), []);
  for (const rect of [...squarify([0, 0], box), ...squarify([3, 2, 1], { ...box, height: 0 })])
    assert.ok(area(rect) === 0 && Object.values(rect).every(Number.isFinite), 'nothing to divide');
});

test('what is too small is put together, and nothing gets lost', () => {
  const random = randomOf(5);
  for (const count of [1, 50, 2000]) {
    const sizes = Array.from({ length: count }, () => Math.floor(random() ** 9 * 1e9));
    const entries = sizes.map((size, i) => ({ name: String(i), size }));
    const tiles = tilesOf(entries, 500, 400, 36);
    const counted = sum(tiles.map((tile) => tile.count));
    assert.equal(counted, sizes.filter((size) => size > 0).length, `${count}: entries`);
    assert.equal(sum(tiles.map(({ size }) => size)), sum(sizes), `${count}: bytes`);
    for (const tile of tiles.slice(0, -1))
      assert.ok(tile.entry && area(tile) >= 36 - 1e-6, `${count}: one rest, the last; the others can be hit`);
  }
  const dust = Array.from({ length: 100_000 }, () => ({ size: 1 }));
  const alike = tilesOf(dust, 500, 400, 36).map(({ count, entry }) => [count, entry]);
  assert.deepEqual(alike, [[100_000, undefined]]);
});

test('the tiles of a folder fill its tile below the name, in proportion', () => {
  const users = ['a', 'b', 'c'].map((path, i) => ({ path, size: 3 ** i }));
  const entries = [
    { path: 'Users', size: 13 },
    { path: 'tiny', size: 1 },
  ];
  const inside = new Map([
    ['Users', users],
    ['tiny', users],
  ]);
  const [outer, ...rest] = nestedTiles(entries, inside, 600, 400, 1, 20);
  const inner = rest.filter(({ around }) => around === outer!.entry);
  assert.deepEqual([outer!.filled, inner.length, rest.length], [true, 3, 4], 'a small tile stays empty');
  const box = { x: outer!.x + 2, y: 20, width: outer!.width - 4, height: outer!.height - 22 };
  assertTiling(
    inner,
    inner.map(({ size }) => size),
    box,
    'inside',
  );
  assert.ok(Math.abs(sum(inner.map(area)) - area(box)) < 1);
});

test('a label is whole, shortened or absent, and never wider than its room', () => {
  const measure = (text: string) => [...text].length * 10;
  const cases: [text: string, width: number, want: string][] = [
    ['Users', 50, 'Users'],
    ['Users', 49, 'Use…'],
    ['Users', 39, ''],
    ['🗂🗂🗂🗂🗂', 40, '🗂🗂🗂…'],
  ];
  for (const [text, width, want] of cases) assert.equal(fitText(text, width, measure), want, text);
});
