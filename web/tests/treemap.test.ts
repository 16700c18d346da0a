import assert from 'node:assert/strict';
import { test } from 'node:test';
import { fitText, squarify, tilesOf, type Rect } from '../src/lib/treemap.ts';

const area = ({ width, height }: Rect) => width * height;
const sum = (values: number[]) => values.reduce((total, value) => total + value, 0);

/** The same numbers in every run: a failure can be looked at again. */
function randomOf(seed: number) {
  return () => (seed = (seed * 16807) % 2147483647) / 2147483647;
}

function assertTiling(rects: Rect[], sizes: number[], box: Rect, name: string) {
  const total = sum(sizes);
  const slack = 1e-6 * Math.max(box.width, box.height);
  rects.forEach((rect, i) => {
    const share = (sizes[i]! / total) * area(box);
    assert.ok(
      Math.abs(area(rect) - share) <= 1e-6 * area(box),
      `${name}: area of ${i} is ${area(rect)}, not ${share}`,
    );
    const inside =
      rect.x >= box.x - slack &&
      rect.y >= box.y - slack &&
      rect.x + rect.width <= box.x + box.width + slack &&
      rect.y + rect.height <= box.y + box.height + slack;
    assert.ok(inside, `${name}: ${i} lies in the box`);
    for (const [j, other] of rects.slice(0, i).entries()) {
      const apart =
        rect.x + rect.width <= other.x + slack ||
        other.x + other.width <= rect.x + slack ||
        rect.y + rect.height <= other.y + slack ||
        other.y + other.height <= rect.y + slack;
      assert.ok(apart || area(rect) < slack || area(other) < slack, `${name}: ${i} and ${j} overlap`);
    }
  });
  assert.ok(Math.abs(sum(rects.map(area)) - area(box)) <= 1e-6 * area(box), `${name}: the box is filled`);
}

test('areas are in proportion, nothing overlaps, nothing leaves the box', () => {
  const random = randomOf(11);
  const shapes: [name: string, size: () => number][] = [
    ['alike', () => 5],
    ['even', () => 1 + random()],
    ['one giant among dwarfs', () => random() ** 40 * 1e12 + 1],
    ['whole bytes', () => Math.floor(random() ** 8 * 2 ** 40) + 1],
  ];
  for (const [name, size] of shapes) {
    for (const count of [1, 2, 7, 60, 300]) {
      const box = { x: 10 * random(), y: 5, width: 20 + 900 * random(), height: 20 + 600 * random() };
      const sizes = Array.from({ length: count }, size);
      assertTiling(squarify(sizes, box), sizes, box, `${name}, ${count}, as they come`);
      sizes.sort((a, b) => b - a);
      assertTiling(squarify(sizes, box), sizes, box, `${name}, ${count}, largest first`);
    }
  }
});

test('the worked example of squarified treemaps', () => {
  const rects = squarify([6, 6, 4, 3, 2, 2, 1], { x: 0, y: 0, width: 6, height: 4 });
  const round = (value: number) => Math.round(value * 100) / 100;
  assert.deepEqual(
    rects.map(({ x, y, width, height }) => [x, y, width, height].map(round)),
    [
      [0, 0, 3, 2],
      [0, 2, 3, 2],
      [3, 0, 1.71, 2.33],
      [4.71, 0, 1.29, 2.33],
      [3, 2.33, 1.2, 1.67],
      [4.2, 2.33, 1.2, 1.67],
      [5.4, 2.33, 0.6, 1.67],
    ],
  );
});

test('nothing to divide, or nothing to divide into', () => {
  const box = { x: 0, y: 0, width: 100, height: 50 };
  assert.deepEqual(squarify([], box), []);
  for (const rect of [...squarify([0, 0], box), ...squarify([3, 2, 1], { ...box, height: 0 })]) {
    assert.equal(area(rect), 0);
    assert.ok(Object.values(rect).every(Number.isFinite));
  }
});

test('what is too small is put together, and nothing gets lost', () => {
  const random = randomOf(5);
  for (const count of [1, 3, 50, 2000]) {
    const entries = Array.from({ length: count }, (_, i) => ({
      name: String(i),
      size: Math.floor(random() ** 9 * 1e9),
    }));
    const tiles = tilesOf(entries, 500, 400, 36);
    const rest = tiles.filter(({ entry }) => !entry);
    assert.ok(rest.length <= 1 && (rest.length === 0 || tiles.at(-1) === rest[0]), 'one rest, the last');
    assert.equal(
      sum(tiles.map((tile) => tile.count)),
      entries.filter(({ size }) => size > 0).length,
      `${count}: entries`,
    );
    assert.equal(sum(tiles.map(({ size }) => size)), sum(entries.map(({ size }) => size)), `${count}: bytes`);
    for (const tile of tiles.slice(0, -1))
      assert.ok(area(tile) >= 36 - 1e-6, `${count}: ${tile.entry?.name} can be hit`);
  }
  const alike = tilesOf(
    Array.from({ length: 100_000 }, () => ({ size: 1 })),
    500,
    400,
    36,
  );
  assert.deepEqual(
    alike.map(({ count, entry }) => [count, entry]),
    [[100_000, undefined]],
  );
});

test('a label is whole, shortened or absent, and never wider than its room', () => {
  const measure = (text: string) => [...text].length * 10;
  const cases: [text: string, width: number, want: string][] = [
    ['Users', 50, 'Users'],
    ['Users', 49, 'Use…'],
    ['Users', 39, ''],
    ['写真と動画', 42, '写真と…'],
    ['🗂🗂🗂🗂🗂', 40, '🗂🗂🗂…'],
    ['', 0, ''],
  ];
  for (const [text, width, want] of cases) assert.equal(fitText(text, width, measure), want, text);
});
