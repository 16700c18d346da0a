// The rows of a table in the order of the screen, and which of them are selected.
import { useEffect, useMemo, useRef, useState } from 'preact/hooks';
import { locale } from '../../base/text.ts';
import { textOf, type Column } from './column.ts';
import {
  filterRows,
  keepExisting,
  keepPlaces,
  noSelection,
  sortRows,
  type Key,
  type Selection,
  type Sort,
} from './rules.ts';

export type SelectionState = readonly [Selection, (next: Selection) => void];

/** Selection of a table, kept by the view that acts on it: `const selection = useSelection()`, `selection[0].keys`. */
export function useSelection(): SelectionState {
  return useState<Selection>(noSelection);
}

export interface RowsProps<Row> {
  rows: readonly Row[];
  /** Identifies a row across refreshes. */
  rowKey(row: Row): Key;
  /** The first one names the row. */
  columns: readonly Column<Row>[];
  sort: Sort;
  /** From useSelection(); with it, many rows can be ticked. */
  selection?: SelectionState;
  /** Rows that can be ticked; all when left out. Keep it stable (useMemo). */
  selectable?(row: Row): boolean;
}

export type Rows<Row> = ReturnType<typeof useRows<Row>>;

export function useRows<Row>({ rows, rowKey, columns, sort: firstSort, ...props }: RowsProps<Row>) {
  const [query, setQuery] = useState('');
  const [sort, setSort] = useState(firstSort);
  const [held, setHeld] = useState(false);
  const language = locale();
  // Rows are put into words once, not at every key that is typed.
  const texts = useMemo(() => {
    const known = new Map<Row, string[]>();
    const inWords = (row: Row) => columns.map((column) => textOf(column, row));
    return (row: Row) => known.get(row) ?? known.set(row, inWords(row)).get(row)!;
  }, [rows, columns, language]);
  const sorted = useMemo(() => {
    const by = columns.find((column) => column.id === sort.column) ?? columns[0]!;
    return sortRows(rows, by.value, sort.descending, language);
  }, [rows, sort, language, columns]);
  const placed = useRef<{ rows: readonly Row[]; rules: unknown[] }>({ rows: [], rules: [] });
  const { rows: shown, gone } = useMemo(() => {
    const found = filterRows(sorted, query, texts);
    const rules = [query, sort, language, columns];
    const keep = held && rules.every((rule, i) => rule === placed.current.rules[i]);
    const result = keep
      ? keepPlaces(placed.current.rows, found, rowKey)
      : { rows: found, gone: noSelection.keys };
    placed.current = { rows: result.rows, rules };
    return result;
  }, [sorted, query, held]);
  const order = useMemo(() => shown.map(rowKey), [shown]);
  const selected = useRowSelection({ rows, rowKey, ...props }, shown, order);
  return {
    query,
    setQuery,
    sort,
    setSort,
    /** While true, rows keep the places that they have. */
    held,
    setHeld,
    /** How many rows there are, whatever the filter hides. */
    total: rows.length,
    shown,
    /** Keys of the shown rows. */
    order,
    /** Keys of rows that are only shown until their place is given up. */
    gone,
    /** The ticked rows, also those that the filter hides. */
    ticked: () => sorted.filter((row) => selected.selection.keys.has(rowKey(row))),
    ...selected,
  };
}

function useRowSelection<Row>(
  { rows, rowKey, selection: shared, selectable }: Omit<RowsProps<Row>, 'columns' | 'sort'>,
  shown: readonly Row[],
  order: readonly Key[],
) {
  const own = useSelection();
  const [stored, setSelection] = shared ?? own;
  // Rows that the filter hides stay selected; rows that no longer exist do not.
  const selection = useMemo(() => {
    const all = rows.map(rowKey);
    return keepExisting(stored, all, selectable ? all.filter((_, i) => selectable(rows[i]!)) : all);
  }, [stored, rows, selectable]);
  // Only what was dropped: two clicks in one moment would undo each other for ever.
  useEffect(() => {
    if (selection !== stored) setSelection(selection);
  }, [selection]);
  const canSelect = selectable ?? (() => true);
  const tickable = useMemo(() => order.filter((_, i) => canSelect(shown[i]!)), [order, selectable]);
  const activeIndex = selection.active === undefined ? -1 : order.indexOf(selection.active);
  return {
    /** Many rows can be ticked. */
    many: shared !== undefined,
    selection,
    setSelection,
    canSelect,
    /** Keys of the shown rows that can be ticked. */
    tickable,
    /** How many selected rows the filter hides. */
    hidden: selection.keys.size - order.filter((key) => selection.keys.has(key)).length,
    /** Among the shown rows; -1 for none. */
    activeIndex,
    /** The selected rows that are shown, or the active one. */
    chosen(): Row[] {
      const marked = shown.filter((_, i) => selection.keys.has(order[i]!));
      return marked.length > 0 ? marked : shown.filter((_, i) => i === activeIndex);
    },
  };
}
