import { useLayoutEffect, useMemo, useRef, useState } from 'preact/hooks';
import { formatBytes } from '../base/format.ts';
import { t } from '../base/text.ts';
import { useSize } from '../kit/hooks.ts';
import { currentSettings } from '../shell/settings.ts';
import { openFolder, type Entry } from './analysis.ts';
import { kindOf, kinds, type Kind } from './kinds.ts';
import { fitText, tilesOf, type Tile } from './treemap.ts';

const leastTileArea = 36; // square pixels; smaller tiles can neither be told apart nor hit
const tilePadding = 6;

/** The folder as a treemap. Only a picture for the pointer: the table beside it says and does the same. */
export function DiskMap({ path, items }: { path: string; items: Entry[] }) {
  const canvas = useRef<HTMLCanvasElement>(null);
  const [box, setBox] = useState({ width: 0, height: 0 });
  const [hover, setHover] = useState<Tile<Entry>>();
  const { theme, language } = currentSettings();

  useSize(canvas, () => setBox({ width: canvas.current!.clientWidth, height: canvas.current!.clientHeight }));

  const tiles = useMemo(
    () => (box.width > 0 && box.height > 0 ? tilesOf(items, box.width, box.height, leastTileArea) : []),
    [items, box],
  );
  useLayoutEffect(() => {
    setHover(undefined);
    draw(canvas.current!, tiles);
  }, [tiles, theme, language]);

  const tileAt = ({ offsetX: x, offsetY: y }: MouseEvent) =>
    tiles.find((tile) => x >= tile.x && x < tile.x + tile.width && y >= tile.y && y < tile.y + tile.height);

  return (
    <figure class="map">
      <div class="map-box">
        <canvas
          ref={canvas}
          role="img"
          aria-label={t('disk.map', { path })}
          class={hover?.entry?.isDirectory ? 'map-enter' : undefined}
          onPointerMove={(event) => setHover(tileAt(event))}
          onPointerLeave={() => setHover(undefined)}
          onClick={(event) => {
            const entry = tileAt(event)?.entry;
            // The second click of a double click would enter once more.
            if (entry?.isDirectory && event.detail < 2) void openFolder(entry.path);
          }}
        />
        {hover && <Hover tile={hover} below={hover.y + hover.height / 2 < box.height / 2} />}
        {tiles.length === 0 && <p class="map-none muted">{t('disk.mapEmpty')}</p>}
      </div>
      <figcaption class="legend small muted" aria-hidden="true">
        {kinds.map((kind) => (
          <span class="line" key={kind}>
            <i style={{ background: `var(--kind-${kind})` }} />
            {t(`kind.${kind}`)}
          </span>
        ))}
      </figcaption>
    </figure>
  );
}

/** Outlines a tile and names its path and size, at the edge of the map that is further away. */
function Hover({ tile, below }: { tile: Tile<Entry>; below: boolean }) {
  const { entry, size, count, x, y, width, height } = tile;
  return (
    <>
      <div
        class="map-mark"
        style={{ left: `${x}px`, top: `${y}px`, width: `${width}px`, height: `${height}px` }}
      />
      <div class={below ? 'map-hint map-hint-below' : 'map-hint'} data-testid="map-hint">
        <span>{entry ? entry.path : t('disk.rest', { n: count })}</span>
        <strong>{formatBytes(size)}</strong>
      </div>
    </>
  );
}

function draw(canvas: HTMLCanvasElement, tiles: readonly Tile<Entry>[]) {
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
  for (const { entry, size, count, x, y, width, height } of tiles) {
    context.fillStyle = colours[entry ? kindOf(entry) : 'other'];
    context.fillRect(x, y, Math.max(width - 1, 0.5), Math.max(height - 1, 0.5));
    const room = width - 2 * tilePadding;
    if (room < line * 1.5 || height < line + tilePadding) continue;
    const name = fitText(entry ? entry.name : t('disk.rest', { n: count }), room, measure);
    if (name === '') continue;
    context.fillStyle = '#fff';
    context.fillText(name, x + tilePadding, y + tilePadding / 2 + line / 2);
    const amount = formatBytes(size);
    if (height >= 2 * line + tilePadding && measure(amount) <= room)
      context.fillText(amount, x + tilePadding, y + tilePadding / 2 + line * 1.5);
  }
}
