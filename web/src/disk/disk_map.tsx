import { useLayoutEffect, useMemo, useRef, useState } from 'preact/hooks';
import { formatBytes } from '../base/format.ts';
import { t } from '../base/text.ts';
import { useSize } from '../kit/hooks.ts';
import { Menu, type MenuItem } from '../kit/menu.tsx';
import { currentSettings } from '../shell/settings.ts';
import { kindOf, kinds, type Kind } from './kinds.ts';
import { entered, nextTile, picked, tileAt, type MapTile } from './map_rules.ts';
import { fitText, nestedTiles } from './treemap.ts';
import type { Entry } from './tree.ts';

const leastTileArea = 36; // square pixels; smaller tiles cannot be told apart or hit
const tilePadding = 6;
const headHeight = 22; // pixels for a folder's name above its contents

interface Props {
  path: string;
  items: readonly Entry[];
  inside: ReadonlyMap<string, readonly Entry[]>;
  /** Paths of the tiles to outline. */
  marked: ReadonlySet<string | number>;
  onPick(entry: Entry, row: string): void;
  onEnter(path: string): void;
  onDelete(): void;
  /** Actions for the picked entry. */
  menu(): MenuItem[];
}

/** Shows the folder as a treemap for pointer and eye. The table beside it says and does the same. */
export function DiskMap({ path, items, inside, marked, onPick, onEnter, onDelete, menu }: Props) {
  const canvas = useRef<HTMLCanvasElement>(null);
  const [box, setBox] = useState({ width: 0, height: 0 });
  const [hover, setHover] = useState<MapTile>();
  // The pointer has a place of its own. The keys have theirs only while they are in use.
  const [keyed, setKeyed] = useState(false);
  const [menuAt, setMenuAt] = useState<{ x: number; y: number }>();
  const { theme, language } = currentSettings();

  useSize(canvas, () => setBox({ width: canvas.current!.clientWidth, height: canvas.current!.clientHeight }));

  const tiles = useMemo(
    () =>
      box.width > 0 && box.height > 0
        ? nestedTiles(items, inside, box.width, box.height, leastTileArea, headHeight)
        : [],
    [items, inside, box],
  );
  useLayoutEffect(() => {
    setHover(undefined);
    draw(canvas.current!, tiles);
  }, [tiles, theme, language]);

  const at = ({ offsetX, offsetY }: MouseEvent) => tileAt(tiles, offsetX, offsetY);
  const outlined = tiles.filter(({ entry }) => entry && marked.has(entry.path));
  const named = hover ?? (keyed ? outlined.at(-1) : undefined);

  function pick(tile: MapTile | undefined): boolean {
    const { entry, row } = tile ? picked(tile) : {};
    if (entry && row !== undefined) onPick(entry, row);
    return entry !== undefined;
  }
  function enter(tile: MapTile | undefined) {
    const folder = tile && entered(tile);
    if (folder !== undefined) onEnter(folder);
  }

  function onKeyDown(event: KeyboardEvent) {
    const { key, shiftKey } = event;
    const current = outlined.at(-1);
    const next = nextTile(tiles, current, key);
    if (next) {
      setHover(undefined);
      setKeyed(true);
      pick(next);
    } else if (key === 'Enter') enter(current);
    else if (key === 'Delete' && current) onDelete();
    else if (current && (key === 'ContextMenu' || (shiftKey && key === 'F10'))) {
      const { left, top } = canvas.current!.getBoundingClientRect();
      setMenuAt({ x: left + current.x + 24, y: top + current.y + headHeight });
    } else return;
    event.preventDefault();
  }

  return (
    <div class="map-box">
      <canvas
        ref={canvas}
        role="img"
        tabIndex={0}
        aria-label={t('disk.map', { path })}
        onPointerMove={(event) => setHover(at(event))}
        onPointerDown={() => setKeyed(false)}
        onBlur={() => setKeyed(false)}
        onPointerLeave={() => setHover(undefined)}
        onClick={(event) => pick(at(event))}
        onDblClick={(event) => enter(at(event))}
        onContextMenu={(event) => {
          event.preventDefault();
          if (pick(at(event))) setMenuAt({ x: event.clientX, y: event.clientY });
        }}
        onKeyDown={onKeyDown}
      />
      {outlined.map((tile) => (
        <Outline key={tile.entry!.path} tile={tile} class="map-mark map-picked" />
      ))}
      {hover && <Outline tile={hover} class="map-mark" />}
      {named && <Hint tile={named} below={named.y + named.height / 2 < box.height / 2} />}
      {tiles.length === 0 && <p class="map-none muted">{t('disk.mapEmpty')}</p>}
      {menuAt && (
        <Menu
          label={t('table.menu')}
          {...menuAt}
          items={menu()}
          onClose={() => {
            setMenuAt(undefined);
            canvas.current?.focus();
          }}
        />
      )}
    </div>
  );
}

function Outline({ tile: { x, y, width, height }, class: name }: { tile: MapTile; class: string }) {
  return (
    <div class={name} style={{ left: `${x}px`, top: `${y}px`, width: `${width}px`, height: `${height}px` }} />
  );
}

/** Shows the path and size of a tile, at the edge of the map that is further away. */
function Hint({ tile: { entry, size, count }, below }: { tile: MapTile; below: boolean }) {
  return (
    <div class={below ? 'map-hint map-hint-below' : 'map-hint'} data-testid="map-hint">
      <span>{entry ? entry.path : t('disk.rest', { n: count })}</span>
      <strong>{formatBytes(size)}</strong>
    </div>
  );
}

function draw(canvas: HTMLCanvasElement, tiles: readonly MapTile[]) {
  const scale = devicePixelRatio;
  canvas.width = Math.round(canvas.clientWidth * scale);
  canvas.height = Math.round(canvas.clientHeight * scale);
  const context = canvas.getContext('2d')!;
  const style = getComputedStyle(canvas);
  const colours = Object.fromEntries(
    kinds.map((kind) => [kind, style.getPropertyValue(`--kind-${kind}`)]),
  ) as Record<Kind, string>;
  const line = parseFloat(style.lineHeight);
  const measure = (text: string) => context.measureText(text).width;
  context.scale(scale, scale);
  context.font = `${style.fontSize} ${style.fontFamily}`;
  context.textBaseline = 'middle';
  for (const { entry, size, count, x, y, width, height, filled } of tiles) {
    const fill = (colour: string) => {
      context.fillStyle = colour;
      context.fillRect(x, y, Math.max(width - 1, 0.5), Math.max(height - 1, 0.5));
    };
    fill(colours[entry ? kindOf(entry) : 'other']);
    if (filled) fill('rgb(0 0 0 / 0.4)');
    const room = width - 2 * tilePadding;
    if (room < line * 1.5 || height < line + tilePadding) continue;
    const label = entry ? entry.name : t('disk.rest', { n: count });
    const amount = formatBytes(size);
    const top = y + tilePadding / 2 + line / 2;
    context.fillStyle = '#fff';
    if (filled) {
      // The size is beside the name unless the name needs the space.
      const beside = measure(amount) + 2 * tilePadding;
      const name = fitText(label, room - beside, measure);
      context.fillText(name || fitText(label, room, measure), x + tilePadding, top);
      if (name !== '') context.fillText(amount, x + width - tilePadding - measure(amount), top);
      continue;
    }
    const name = fitText(label, room, measure);
    context.fillText(name, x + tilePadding, top);
    if (name !== '' && height >= 2 * line + tilePadding && measure(amount) <= room)
      context.fillText(amount, x + tilePadding, top + line);
  }
}
