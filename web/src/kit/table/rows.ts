// Arranges the rows of a table in the order of the screen and keeps the selection.
import { useLayoutEffect, useMemo, useRef } from 'preact/hooks';
import { fold } from '../../base/fold.ts';
import { locale } from '../../base/text.ts';
import { useStore } from '../hooks.ts';
import { textOf, type Column } from './column.ts';
import { change, useSelection, useSort, useTableState, type SelectionState } from './memory.ts';
import { filterRows, keepExisting, keepPlaces, noSelection, sortRows, type Key, type Sort } from './rules.ts';

export interface RowsProps<Row> {
  rows: readonly Row[];
  /** Identifies a row across refreshes. */
  rowKey(row: Row): Key;
  /** The first column names the row. */
  columns: readonly Column<Row>[];
  /** The initial sort; the user may choose another. */
  sort: Sort;
  /**
   * Name under which filter, selection and scroll position are kept for the session, and the sort for
   * longer.
   */
  remember?: string;
  /** From useSelection() with the name of `remember`. With it, several rows can be ticked. */
  selection?: SelectionState;
  /** Returns true for a row that can be ticked; by default, all can. Keep it stable (useMemo). */
  selectable?(row: Row): boolean;
}

export type Rows<Row> = ReturnType<typeof useRows<Row>>;

/** Arranges the rows. While `held`, they keep their places. */
export function useRows<Row>(props: RowsProps<Row>, held: boolean) {
  const { rows, rowKey, columns, sort: firstSort, remember } = props;
  const state = useTableState(remember);
  const query = useStore(state, (one) => one.query);
  const setQuery = (next: string) => change(state, { query: next });
  const [sort, setSort] = useSort(remember, firstSort, columns);
  const language = locale();
  // Rows are converted to text once, not at every keystroke.
  const folded = useMemo(() => {
    const known = new Map<Row, string>();
    const inWords = (row: Row) => fold(columns.map((column) => textOf(column, row)).join('\n'));
    return (row: Row) => known.get(row) ?? known.set(row, inWords(row)).get(row)!;
  }, [rows, columns, language]);
  const sorted = useMemo(() => {
    const by = columns.find((column) => column.id === sort.column) ?? columns[0]!;
    return sortRows(rows, by.value, sort.descending, language);
  }, [rows, sort, language, columns]);
  const placed = useRef<{ rows: readonly Row[]; rules: unknown[] }>({ rows: [], rules: [] });
  const { rows: shown, gone } = useMemo(() => {
    const found = filterRows(sorted, query, folded);
    const rules = [query, sort, language, columns];
    const keep = held && rules.every((rule, i) => rule === placed.current.rules[i]);
    const result = keep
      ? keepPlaces(placed.current.rows, found, rowKey)
      : { rows: found, gone: noSelection.keys };
    placed.current = { rows: result.rows, rules };
    return result;
  }, [sorted, query, held]);
  const order = useMemo(() => shown.map(rowKey), [shown]);
  const selected = useRowSelection(props, shown, order);
  return {
    state,
    query,
    setQuery,
    sort,
    setSort,
    held,
    /** The number of rows, including those that the filter hides. */
    total: rows.length,
    shown,
    /** Keys of the shown rows. */
    order,
    /** Keys of removed rows that are shown only until they may give up their places. */
    gone,
    /** Keys of rows that were not in the previous data. */
    fresh: useFresh(rows, rowKey),
    /** The ticked rows, including those that the filter hides. */
    ticked: () => sorted.filter((row) => selected.selection.keys.has(rowKey(row))),
    ...selected,
  };
}

/** Returns the keys of new rows. Data that shares no row with the previous data has none. */
function useFresh<Row>(rows: readonly Row[], rowKey: (row: Row) => Key): ReadonlySet<Key> {
  const last = useRef<ReadonlySet<Key>>(noSelection.keys);
  return useMemo(() => {
    const before = last.current;
    last.current = new Set(rows.map(rowKey));
    const fresh = [...last.current].filter((key) => !before.has(key));
    return fresh.length < last.current.size ? new Set(fresh) : noSelection.keys;
  }, [rows]);
}

function useRowSelection<Row>(
  { rows, rowKey, selection: shared, selectable, remember }: RowsProps<Row>,
  shown: readonly Row[],
  order: readonly Key[],
) {
  const own = useSelection(remember);
  const [stored, setSelection] = shared ?? own;
  // Rows that the filter hides stay selected; rows that no longer exist do not.
  const selection = useMemo(() => {
    const all = rows.map(rowKey);
    return keepExisting(stored, all, selectable ? all.filter((_, i) => selectable(rows[i]!)) : all);
  }, [stored, rows, selectable]);
  // Stores dropped keys only. Otherwise two clicks at the same moment would undo each other forever. Runs
  // before the frame is drawn: afterwards, it could overwrite a selection made in the meantime.
  useLayoutEffect(() => {
    if (selection !== stored) setSelection(selection);
  }, [selection]);
  const canSelect = selectable ?? (() => true);
  const tickable = useMemo(() => order.filter((_, i) => canSelect(shown[i]!)), [order, selectable]);
  const activeIndex = selection.active === undefined ? -1 : order.indexOf(selection.active);
  return {
    /** Several rows can be ticked. */
    many: shared !== undefined,
    selection,
    setSelection,
    canSelect,
    /** Keys of the shown rows that can be ticked. */
    tickable,
    /** The number of selected rows that the filter hides. */
    hidden: selection.keys.size - order.filter((key) => selection.keys.has(key)).length,
    /** Index among the shown rows, or -1 for none. */
    activeIndex,
    /** Returns the selected rows that are shown, or the active row. */
    chosen(): Row[] {
      const marked = shown.filter((_, i) => selection.keys.has(order[i]!));
      return marked.length > 0 ? marked : shown.filter((_, i) => i === activeIndex);
    },
  };
}
