// Decides what the pointer and the keys do in the map.
import { parentOf } from '../base/paths.ts';
import type { Tile } from './treemap.ts';
import type { Entry } from './tree.ts';

export type MapTile = Tile<Entry>;

/** Returns the deepest tile at a point (pixels). */
export const tileAt = (tiles: readonly MapTile[], x: number, y: number) =>
  tiles.findLast((tile) => x >= tile.x && x < tile.x + tile.width && y >= tile.y && y < tile.y + tile.height);

/**
 * Returns the entry that a click on a tile marks, and the row of the table that contains it. The tile for
 * everything too small has no entry.
 */
export function picked({ entry, around }: MapTile): { entry: Entry | undefined; row: string | undefined } {
  return { entry, row: (around ?? entry)?.path };
}

/**
 * Returns the folder that a double-click enters: the tile's own, or the one around a file that is not in
 * the shown folder.
 */
export function entered({ entry, around }: MapTile): string | undefined {
  if (entry?.isDirectory) return entry.path;
  return around && (entry ? parentOf(entry.path) : around.path);
}

const directions: Readonly<Record<string, readonly [x: number, y: number]>> = {
  ArrowLeft: [-1, 0],
  ArrowRight: [1, 0],
  ArrowUp: [0, -1],
  ArrowDown: [0, 1],
};

const centreOf = ({ x, y, width, height }: MapTile) => [x + width / 2, y + height / 2] as const;

/**
 * Returns the tile that an arrow key leads to among those of the folder itself: the nearest one in that
 * direction, with sideways distance counting twice. Returns the first tile if there was none before, the
 * same tile at the edge, and undefined for any other key.
 */
export function nextTile(
  tiles: readonly MapTile[],
  from: MapTile | undefined,
  key: string,
): MapTile | undefined {
  const direction = directions[key];
  if (!direction) return undefined;
  const own = tiles.filter(({ entry, around }) => entry && !around);
  if (!from) return own[0];
  const [x, y] = centreOf(from);
  const wayTo = (tile: MapTile) => {
    const [dx, dy] = [centreOf(tile)[0] - x, centreOf(tile)[1] - y];
    const along = dx * direction[0] + dy * direction[1];
    return along > 0.5 ? along + 2 * Math.abs(dx * direction[1] + dy * direction[0]) : Infinity;
  };
  const best = own.reduce((a, b) => (wayTo(b) < wayTo(a) ? b : a), from);
  return wayTo(best) < Infinity ? best : from;
}
