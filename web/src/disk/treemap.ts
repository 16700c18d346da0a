// Computes a squarified treemap: rectangles as near to squares as possible, with areas proportional to
// sizes.

export interface Rect {
  x: number;
  y: number;
  width: number;
  height: number;
}

/**
 * Returns one rectangle per size, in the same order. They fill the box without overlapping. Shapes are best
 * if the largest size comes first.
 */
export function squarify(sizes: readonly number[], box: Rect): Rect[] {
  const total = sizes.reduce((sum, size) => sum + size, 0);
  const scale = total > 0 ? (box.width * box.height) / total : 0;
  let { x, y, width, height } = box;
  const rects: Rect[] = [];
  for (let start = 0; start < sizes.length;) {
    // A row lies along the shorter side and takes rectangles as long as its worst shape does not get
    // worse.
    const side = Math.min(width, height);
    let end = start;
    let area = 0;
    let least = Infinity;
    let most = 0;
    let worst = Infinity;
    for (; end < sizes.length; end++) {
      const next = sizes[end]! * scale;
      const sum = area + next;
      least = Math.min(least, next);
      most = Math.max(most, next);
      const ratio =
        sum > 0
          ? Math.max((side * side * most) / (sum * sum), (sum * sum) / (side * side * least))
          : Infinity;
      if (ratio > worst) break;
      worst = ratio;
      area = sum;
    }
    const thickness = side > 0 ? area / side : 0;
    let along = 0;
    for (; start < end; start++) {
      const length = thickness > 0 ? (sizes[start]! * scale) / thickness : 0;
      rects.push(
        width >= height
          ? { x, y: y + along, width: thickness, height: length }
          : { x: x + along, y, width: length, height: thickness },
      );
      along += length;
    }
    if (width >= height) {
      x += thickness;
      width = Math.max(0, width - thickness);
    } else {
      y += thickness;
      height = Math.max(0, height - thickness);
    }
  }
  return rects;
}

export interface Tile<Entry> extends Rect {
  size: number;
  /** Absent for the tile of everything too small to draw. */
  entry: Entry | undefined;
  /** The number of entries that it represents. */
  count: number;
  /** The folder whose tile contains it. */
  around?: Entry;
  /** It contains tiles. */
  filled?: true;
}

/**
 * Returns the tiles of a folder. Entries that would get less than `leastArea` (square pixels) are merged
 * into one, the last.
 */
export function tilesOf<Entry extends { size: number }>(
  entries: readonly Entry[],
  width: number,
  height: number,
  leastArea: number,
): Tile<Entry>[] {
  const sorted = entries.filter(({ size }) => size > 0).sort((a, b) => b.size - a.size);
  const total = sorted.reduce((sum, { size }) => sum + size, 0);
  const leastSize = (total * leastArea) / (width * height);
  const found = sorted.findIndex(({ size }) => size < leastSize);
  // A single small entry may stay: merging it with nothing would only remove its name.
  const cut = found < 0 || found === sorted.length - 1 ? sorted.length : found;
  const tiles = sorted
    .slice(0, cut)
    .map((entry) => ({ entry: entry as Entry | undefined, size: entry.size, count: 1 }));
  if (cut < sorted.length) {
    const size = sorted.slice(cut).reduce((sum, entry) => sum + entry.size, 0);
    tiles.push({ entry: undefined, size, count: sorted.length - cut });
  }
  const rects = squarify(
    tiles.map(({ size }) => size),
    { x: 0, y: 0, width, height },
  );
  return tiles.map((tile, i) => ({ ...tile, ...rects[i]! }));
}

const frame = 2; // pixels around the inner tiles

/**
 * Returns the tiles of a folder, each followed by the tiles of its contents if those are known (by path)
 * and fit below a name `head` pixels high.
 */
export function nestedTiles<Entry extends { path: string; size: number }>(
  entries: readonly Entry[],
  inside: ReadonlyMap<string, readonly Entry[]>,
  width: number,
  height: number,
  leastArea: number,
  head: number,
): Tile<Entry>[] {
  return tilesOf(entries, width, height, leastArea).flatMap((tile) => {
    const { entry } = tile;
    const items = entry && inside.get(entry.path)?.filter(({ size }) => size > 0);
    if (!entry || !items?.length || tile.width < 3 * head || tile.height < 3 * head) return [tile];
    const inner = tilesOf(items, tile.width - 2 * frame, tile.height - head - frame, leastArea);
    return [
      { ...tile, filled: true as const },
      ...inner.map((one) => ({ ...one, x: tile.x + frame + one.x, y: tile.y + head + one.y, around: entry })),
    ];
  });
}

/**
 * Returns the text, or as much of its beginning as fits with an ellipsis, or nothing if that is less than
 * three characters.
 */
export function fitText(text: string, width: number, measure: (text: string) => number): string {
  const whole = measure(text);
  if (whole <= width) return text;
  const characters = [...text];
  for (let n = Math.floor((characters.length * width) / whole); n >= 3; n--) {
    const shorter = `${characters.slice(0, n).join('')}…`;
    if (measure(shorter) <= width) return shorter;
  }
  return '';
}
