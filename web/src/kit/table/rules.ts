// The table's rules, independent of the screen: order, filter, selection, visible range, columns,
// copying.
import { fold } from '../../base/fold.ts';

export type CellValue = string | number | boolean | null | undefined;

export interface Sort {
  column: string;
  descending: boolean;
}

const collators = new Map<string, Intl.Collator>(); // slow to create
function collatorOf(locale: string): Intl.Collator {
  const options = { numeric: true, sensitivity: 'base' } as const;
  return collators.get(locale) ?? collators.set(locale, new Intl.Collator(locale, options)).get(locale)!;
}

/**
 * Returns a new array sorted by `value`. Rows without a value come last in both directions; equal rows keep
 * their order.
 */
export function sortRows<Row>(
  rows: readonly Row[],
  value: (row: Row) => CellValue,
  descending: boolean,
  locale: string,
): Row[] {
  const { compare } = collatorOf(locale);
  const direction = descending ? -1 : 1;
  const missing = (v: CellValue) => v === null || v === undefined || v === '' || Number.isNaN(v);
  return rows
    .map((row) => ({ row, key: value(row) }))
    .sort((a, b) => {
      if (missing(a.key) || missing(b.key)) return Number(missing(a.key)) - Number(missing(b.key));
      const order =
        typeof a.key === 'string' || typeof b.key === 'string'
          ? compare(String(a.key), String(b.key))
          : Number(a.key) - Number(b.key);
      return order * direction;
    })
    .map(({ row }) => row);
}

/**
 * Puts new data in the places of the old, so that nothing moves under the pointer. Known rows stay where
 * they are, new ones come last, and a removed one keeps its place and its last data (`gone` holds its key).
 */
export function keepPlaces<Row>(
  before: readonly Row[],
  now: readonly Row[],
  keyOf: (row: Row) => Key,
): { rows: Row[]; gone: ReadonlySet<Key> } {
  const fresh = new Map(now.map((row) => [keyOf(row), row]));
  const gone = new Set<Key>();
  const rows = before.map((row) => {
    const key = keyOf(row);
    const next = fresh.get(key);
    if (!next) gone.add(key);
    fresh.delete(key);
    return next ?? row;
  });
  return { rows: [...rows, ...fresh.values()], gone };
}

/** Returns the rows whose folded text contains every word of the query. */
export function filterRows<Row>(
  rows: readonly Row[],
  query: string,
  folded: (row: Row) => string,
): readonly Row[] {
  const words = fold(query).split(/\s+/).filter(Boolean);
  if (words.length === 0) return rows;
  return rows.filter((row) => words.every((word) => folded(row).includes(word)));
}

export type Key = string | number;

export interface Selection {
  keys: ReadonlySet<Key>;
  /** The row that the keyboard acts on. */
  active: Key | undefined;
  /** The start of a range. */
  anchor: Key | undefined;
}

export const noSelection: Selection = { keys: new Set(), active: undefined, anchor: undefined };

export interface Modifiers {
  shift: boolean;
  ctrl: boolean;
}

/**
 * Selects a row by a click, or by a key that moves to it. A plain click selects it alone, Ctrl adds or
 * removes it, and Shift extends the range from the anchor.
 */
export function select(
  selection: Selection,
  order: readonly Key[],
  key: Key,
  { shift, ctrl }: Modifiers,
): Selection {
  const from = selection.anchor === undefined ? -1 : order.indexOf(selection.anchor);
  if (shift && from >= 0) {
    const to = order.indexOf(key);
    const range = order.slice(Math.min(from, to), Math.max(from, to) + 1);
    return {
      keys: new Set(ctrl ? [...selection.keys, ...range] : range),
      active: key,
      anchor: selection.anchor,
    };
  }
  if (ctrl) return toggle(selection, key);
  return { keys: new Set([key]), active: key, anchor: key };
}

export function toggle(selection: Selection, key: Key): Selection {
  const keys = new Set(selection.keys);
  if (!keys.delete(key)) keys.add(key);
  return { keys, active: key, anchor: key };
}

/** Drops keys of rows that no longer exist or cannot be selected. */
export function keepExisting(selection: Selection, order: readonly Key[], selectable = order): Selection {
  if (selection.keys.size === 0 && selection.active === undefined) return selection;
  const there = new Set(order);
  const can = selectable === order ? there : new Set(selectable);
  const known = (key: Key | undefined) => (key !== undefined && there.has(key) ? key : undefined);
  const keys = new Set([...selection.keys].filter((key) => can.has(key)));
  const active = known(selection.active);
  const anchor = known(selection.anchor);
  const same =
    keys.size === selection.keys.size && active === selection.active && anchor === selection.anchor;
  return same ? selection : { keys, active, anchor };
}

/**
 * Returns the index that a key moves to from `index` (-1: none yet), or undefined if the key does not move.
 */
export function moveTo(key: string, index: number, count: number, page: number): number | undefined {
  const last = count - 1;
  const target = {
    ArrowDown: index + 1,
    ArrowUp: index < 0 ? last : index - 1,
    Home: 0,
    End: last,
    PageDown: Math.max(index, 0) + page,
    PageUp: index - page,
  }[key];
  return target === undefined || count === 0 ? undefined : Math.min(Math.max(target, 0), last);
}

/** Rows [first, end). */
export interface RowRange {
  first: number;
  end: number;
}

const windowedAbove = 100;
const marginRows = 12;
const aheadRows = 16;

/** Returns the rows in and near the viewport; all of a short table. All measures are in pixels. */
export function rowsNear(scrollTop: number, viewport: number, rowHeight: number, count: number): RowRange {
  if (count <= windowedAbove) return { first: 0, end: count };
  const first = Math.max(0, Math.min(Math.floor(scrollTop / rowHeight) - marginRows, count - 1));
  const end = Math.min(count, Math.ceil((scrollTop + viewport) / rowHeight) + marginRows);
  return { first, end: Math.max(first, end) };
}

/**
 * Returns `last`, the rows drawn so far, as long as they contain those that are near. Otherwise adds rows
 * ahead in the direction of scrolling: drawing sixteen takes only about twice as long as drawing one.
 */
export function rangeToDraw(near: RowRange, last: RowRange | undefined, count: number): RowRange {
  if (!last) return near;
  if (near.end > last.end) return { first: near.first, end: Math.min(count, near.end + aheadRows) };
  if (near.first < last.first) return { first: Math.max(0, near.first - aheadRows), end: near.end };
  return last;
}

/** The minimum width of a column without a width in rem, and of the row's name. */
const leastRem = 10;

/**
 * Returns the columns that fit into a width (rem). The one with the highest `drop` goes first; columns
 * without it stay.
 */
export function fittingColumns<C extends { width?: string; drop?: number }>(
  columns: readonly C[],
  widthRem: number,
): readonly C[] {
  const remOf = ({ width = '' }: C) => (width.endsWith('rem') ? parseFloat(width) : leastRem);
  const left = [...columns];
  while (left.reduce((sum, column) => sum + remOf(column), 0) > widthRem) {
    const next = left.reduce((a, b) => ((b.drop ?? 0) > (a.drop ?? 0) ? b : a));
    if (!next.drop) break;
    left.splice(left.indexOf(next), 1);
  }
  return left.length === columns.length ? columns : left;
}

/**
 * Returns tab-separated lines. Tabs and line ends inside a cell become spaces, so that every row keeps its
 * columns.
 */
export function toTsv(rows: readonly (readonly string[])[]): string {
  return rows.map((cells) => cells.map((cell) => cell.replace(/[\t\r\n]+/g, ' ')).join('\t')).join('\r\n');
}
