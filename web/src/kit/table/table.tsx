import type { ComponentChildren } from 'preact';
import { useEffect, useId, useLayoutEffect, useMemo, useRef, useState } from 'preact/hooks';
import { formatNumber, locale, t } from '../../base/text.ts';
import { Button } from '../button.tsx';
import { copyText } from '../clipboard.ts';
import { Icon } from '../icon.tsx';
import { Menu, type MenuItem } from '../menu.tsx';
import {
  filterRows,
  keepExisting,
  keepPlaces,
  moveTo,
  noSelection,
  select,
  sortRows,
  toggle,
  toTsv,
  visibleRange,
  type CellValue,
  type Key,
  type Selection,
  type Sort,
} from './rules.ts';

export interface Column<Row> {
  id: string;
  title: string;
  /** What the column is sorted by. */
  value(row: Row): CellValue;
  /** What the filter searches and copying takes; the value in words when left out. */
  text?(row: Row): string;
  /** What the cell shows; the text when left out. */
  cell?(row: Row): ComponentChildren;
  /** Aligned right, with figures of equal width. */
  numeric?: boolean;
  /** CSS width; columns without one share what is left. */
  width?: string;
}

interface Props<Row> {
  /** Accessible name; also in the label of the filter. */
  label: string;
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
  /** Items of the context menu, for the rows it was opened on. Copying is always there. */
  menu?(rows: Row[]): MenuItem[];
  /** What the rows are of, for example a folder: when it changes, the table begins anew, at the row of what it showed before if there is one. */
  subject?: Key;
  /** For rows that are loaded anew all the time: they keep their order while the pointer is over them. */
  steady?: boolean;
  /** Enter or double click on a row. */
  onActivate?(row: Row): void;
  /** Beside the filter; a function is given the ticked rows in the order of the screen, also those that the filter hides. */
  tools?: ComponentChildren | ((ticked: Row[]) => ComponentChildren);
}

export type SelectionState = readonly [Selection, (next: Selection) => void];

/** Selection of a table, kept by the view that acts on it: `const selection = useSelection()`, `selection[0].keys`. */
export function useSelection(): SelectionState {
  return useState<Selection>(noSelection);
}

const windowedAbove = 500;
const marginRows = 12;

export function Table<Row>({
  label,
  rows,
  rowKey,
  columns,
  sort: firstSort,
  selection: shared,
  selectable,
  menu,
  subject,
  steady,
  onActivate,
  tools,
}: Props<Row>) {
  const [query, setQuery] = useState('');
  const [sort, setSort] = useState(firstSort);
  const own = useSelection();
  const [stored, setSelection] = shared ?? own;
  const many = shared !== undefined;
  const [menuAt, setMenuAt] = useState<{ x: number; y: number }>();
  const id = useId();
  const grid = useRef<HTMLTableElement>(null);
  const scroller = useScroller();

  const textOf = (column: Column<Row>, row: Row) => column.text?.(row) ?? valueText(column.value(row));
  const language = locale();
  // Rows are put into words once, not at every key that is typed.
  const texts = useMemo(() => {
    const known = new Map<Row, string[]>();
    return (row: Row) =>
      known.get(row) ??
      known
        .set(
          row,
          columns.map((column) => textOf(column, row)),
        )
        .get(row)!;
  }, [rows, columns]);
  const [held, setHeld] = useState(false);
  const placed = useRef<{ rows: readonly Row[]; rules: unknown[] }>({ rows: [], rules: [] });
  const sorted = useMemo(() => {
    const by = columns.find((column) => column.id === sort.column) ?? columns[0]!;
    return sortRows(rows, by.value, sort.descending, language);
  }, [rows, sort, language, columns]);
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

  // Rows that the filter hides stay selected; rows that no longer exist do not.
  const canSelect = selectable ?? (() => true);
  const selection = useMemo(() => {
    const all = rows.map(rowKey);
    return keepExisting(stored, all, selectable ? all.filter((_, i) => selectable(rows[i]!)) : all);
  }, [stored, rows, selectable]);
  // Only what was dropped: two clicks in one moment would undo each other for ever.
  useEffect(() => {
    if (selection !== stored) setSelection(selection);
  }, [selection]);
  const hidden = selection.keys.size - order.filter((key) => selection.keys.has(key)).length;

  const windowed = shown.length > windowedAbove;
  const { first, end } = windowed
    ? visibleRange(scroller.top, scroller.height, scroller.rowHeight, shown.length, marginRows)
    : { first: 0, end: shown.length };
  const activeIndex = selection.active === undefined ? -1 : order.indexOf(selection.active);
  const activeDrawn = activeIndex >= first && activeIndex < end;
  const rowId = (index: number) => `${id}-${index}`;

  function reveal(index: number) {
    const box = scroller.ref.current;
    if (!box) return;
    const head = grid.current?.tHead?.offsetHeight ?? 0;
    const top = index * scroller.rowHeight;
    if (top < box.scrollTop) box.scrollTop = top;
    else if (top + scroller.rowHeight + head > box.scrollTop + box.clientHeight)
      box.scrollTop = top + scroller.rowHeight + head - box.clientHeight;
  }

  // A view that leads to a row selects it beforehand.
  useLayoutEffect(() => {
    if (activeIndex >= 0) reveal(activeIndex);
  }, []);

  // New data may move the row that the user is at: it stays in sight if it was.
  const inSight = useRef(false);
  useLayoutEffect(() => {
    if (inSight.current && activeIndex >= 0) reveal(activeIndex);
  }, [rows, held]);
  useLayoutEffect(() => {
    const top = activeIndex * scroller.rowHeight;
    inSight.current =
      activeIndex >= 0 &&
      top >= scroller.top &&
      top < scroller.top + scroller.height - 2 * scroller.rowHeight;
  });

  // After the effects above, which have their say about the same rows.
  const lastSubject = useRef(subject);
  useEffect(() => {
    if (subject === lastSubject.current) return;
    const from = rows.map(rowKey).indexOf(lastSubject.current!) < 0 ? undefined : lastSubject.current!;
    lastSubject.current = subject;
    setQuery('');
    setSelection(from === undefined ? noSelection : { keys: new Set([from]), active: from, anchor: from });
    scroller.ref.current!.scrollTop = 0;
    if (from !== undefined) reveal(order.indexOf(from));
  }, [subject]);

  /** The selected rows that are visible, or the active one. */
  function chosen(): Row[] {
    const marked = shown.filter((_, i) => selection.keys.has(order[i]!));
    return marked.length > 0 ? marked : shown.filter((_, i) => i === activeIndex);
  }

  function copy() {
    const lines = chosen().map((row) => columns.map((column) => textOf(column, row)));
    if (lines.length > 0) void copyText(toTsv([columns.map((column) => column.title), ...lines]));
  }

  function openMenu(x: number, y: number) {
    if (chosen().length > 0) setMenuAt({ x, y });
  }

  function onKeyDown(event: KeyboardEvent) {
    if (event.target !== grid.current) return; // a control inside a row has its own keys
    const { key, shiftKey: shift, ctrlKey: ctrl } = event;
    const target = moveTo(
      key,
      activeIndex,
      shown.length,
      Math.max(1, Math.floor(scroller.height / scroller.rowHeight) - 2),
    );
    if (target !== undefined) {
      const to = order[target]!;
      if (!many) setSelection({ keys: new Set([to]), active: to, anchor: to });
      else if (ctrl && !shift) setSelection({ ...selection, active: to });
      else setSelection(select(selection, order, to, { shift, ctrl }));
      reveal(target);
    } else if (key === ' ' && activeIndex >= 0) {
      setSelection(
        many
          ? toggle(selection, order[activeIndex]!)
          : select(selection, order, order[activeIndex]!, { shift: false, ctrl: false }),
      );
    } else if (many && ctrl && key.toLowerCase() === 'a') {
      setSelection({ ...selection, keys: new Set([...selection.keys, ...order]) });
    } else if (ctrl && key.toLowerCase() === 'c') {
      copy();
    } else if (key === 'Enter' && activeIndex >= 0 && onActivate) {
      onActivate(shown[activeIndex]!);
    } else if (key === 'ContextMenu' || (shift && key === 'F10')) {
      const row = document.getElementById(rowId(activeIndex))?.getBoundingClientRect();
      if (row) openMenu(row.left + 24, row.bottom);
    } else {
      return;
    }
    event.preventDefault();
  }

  const canBeTicked = useMemo(() => order.filter((_, i) => canSelect(shown[i]!)), [order, selectable]);
  const allTicked = canBeTicked.length > 0 && canBeTicked.every((key) => selection.keys.has(key));
  const columnCount = columns.length + Number(many);

  return (
    <div class="table">
      <div class="table-bar">
        <div class="filter">
          <Icon name="search" />
          <input
            type="text"
            data-filter
            aria-label={t('table.filterLabel', { label })}
            placeholder={t('table.filter')}
            value={query}
            onInput={(event) => setQuery(event.currentTarget.value)}
            onKeyDown={(event) => {
              if (event.key === 'Escape' && query !== '') setQuery('');
              else if (event.key === 'ArrowDown') grid.current?.focus();
              else return;
              event.preventDefault();
            }}
          />
        </div>
        <span class="muted" role="status">
          {shown.length - gone.size === rows.length
            ? t('table.rows', { n: rows.length })
            : t('table.count', { shown: shown.length - gone.size, total: rows.length })}
          {many && selection.keys.size > 0 && `, ${t('table.selected', { n: selection.keys.size })}`}
          {hidden > 0 && ` (${t('table.hidden', { n: hidden })})`}
        </span>
        <div class="table-tools">
          {typeof tools === 'function'
            ? tools(sorted.filter((row) => selection.keys.has(rowKey(row))))
            : tools}
        </div>
      </div>
      <div class="table-scroll" ref={scroller.ref} onScroll={scroller.onScroll}>
        <table
          ref={grid}
          role="grid"
          tabIndex={0}
          aria-label={label}
          aria-rowcount={shown.length + 1}
          aria-colcount={columnCount}
          aria-multiselectable={many}
          aria-activedescendant={activeDrawn ? rowId(activeIndex) : undefined}
          onKeyDown={onKeyDown}
        >
          <thead>
            <tr aria-rowindex={1}>
              {many && (
                <th class="tick" scope="col">
                  <input
                    type="checkbox"
                    aria-label={t('table.selectAll')}
                    checked={allTicked}
                    disabled={canBeTicked.length === 0}
                    indeterminate={!allTicked && selection.keys.size > hidden}
                    onChange={() => {
                      const keys = new Set(selection.keys);
                      for (const key of order) allTicked ? keys.delete(key) : keys.add(key);
                      setSelection({ ...selection, keys });
                    }}
                  />
                </th>
              )}
              {columns.map((column) => (
                <HeadCell
                  key={column.id}
                  column={column}
                  sort={sort}
                  onSort={() =>
                    setSort({ column: column.id, descending: sort.column === column.id && !sort.descending })
                  }
                />
              ))}
            </tr>
          </thead>
          <tbody onPointerEnter={() => setHeld(steady === true)} onPointerLeave={() => setHeld(false)}>
            <Spacer rows={first} height={scroller.rowHeight} columns={columnCount} />
            {shown.slice(first, end).map((row, i) => {
              const index = first + i;
              const key = order[index]!;
              const selected = selection.keys.has(key);
              return (
                <tr
                  key={key}
                  id={rowId(index)}
                  class={index === activeIndex ? 'active' : gone.has(key) ? 'gone' : undefined}
                  aria-rowindex={index + 2}
                  aria-selected={canSelect(row) ? selected : undefined}
                  onClick={(event) => {
                    if (event.target instanceof Element && event.target.closest('button, a, input')) return;
                    setSelection(
                      select(selection, order, key, {
                        shift: many && event.shiftKey,
                        ctrl: many && event.ctrlKey,
                      }),
                    );
                  }}
                  onDblClick={() => onActivate?.(row)}
                  onContextMenu={(event) => {
                    event.preventDefault();
                    if (!selected) setSelection({ keys: new Set([key]), active: key, anchor: key });
                    setMenuAt({ x: event.clientX, y: event.clientY });
                  }}
                >
                  {many && (
                    <td class="tick">
                      <input
                        type="checkbox"
                        tabIndex={-1}
                        aria-label={t('table.selectRow', { name: textOf(columns[0]!, row) })}
                        checked={selected}
                        disabled={!canSelect(row)}
                        onChange={() => setSelection(toggle(selection, key))}
                      />
                    </td>
                  )}
                  {columns.map((column) => (
                    <td
                      key={column.id}
                      class={column.numeric ? 'numeric' : undefined}
                      title={column.cell ? undefined : textOf(column, row)}
                    >
                      {column.cell ? column.cell(row) : textOf(column, row)}
                    </td>
                  ))}
                </tr>
              );
            })}
            <Spacer rows={shown.length - end} height={scroller.rowHeight} columns={columnCount} />
          </tbody>
        </table>
        {shown.length === 0 && query !== '' && (
          <div class="table-none">
            <p class="muted">{t('table.noMatch')}</p>
            <Button onClick={() => setQuery('')}>{t('table.clearFilter')}</Button>
          </div>
        )}
      </div>
      {menuAt && (
        <Menu
          label={t('table.menu')}
          {...menuAt}
          items={[...(menu?.(chosen()) ?? []), { label: t('table.copyRows'), icon: 'copy', run: copy }]}
          onClose={() => {
            setMenuAt(undefined);
            grid.current?.focus();
          }}
        />
      )}
    </div>
  );
}

function valueText(value: CellValue): string {
  return typeof value === 'number' ? formatNumber(value) : String(value ?? '');
}

function HeadCell<Row>({ column, sort, onSort }: { column: Column<Row>; sort: Sort; onSort(): void }) {
  const sorted = sort.column === column.id;
  return (
    <th
      scope="col"
      class={column.numeric ? 'numeric' : undefined}
      style={column.width ? { width: column.width } : undefined}
      aria-sort={!sorted ? 'none' : sort.descending ? 'descending' : 'ascending'}
    >
      <button type="button" onClick={onSort}>
        {column.title}
        {sorted && <Icon name={sort.descending ? 'arrowDown' : 'arrowUp'} />}
      </button>
    </th>
  );
}

/** Stands for rows that are not drawn. */
function Spacer({ rows, height, columns }: { rows: number; height: number; columns: number }) {
  if (rows <= 0) return null;
  return (
    <tr aria-hidden="true" class="spacer">
      <td colSpan={columns} style={{ height: `${rows * height}px` }} />
    </tr>
  );
}

/** Scroll position and size of the table's box; a row is 2.25 rem high (styles/table.css). */
function useScroller() {
  const ref = useRef<HTMLDivElement>(null);
  const [box, setBox] = useState({ top: 0, height: 600, rowHeight: 36 });
  const measure = () => {
    const { scrollTop: top, clientHeight: height } = ref.current!;
    setBox({
      top,
      height,
      rowHeight: 2.25 * parseFloat(getComputedStyle(document.documentElement).fontSize),
    });
  };
  useLayoutEffect(() => {
    const observer = new ResizeObserver(measure);
    observer.observe(ref.current!);
    return () => observer.disconnect();
  }, []);
  return { ref, ...box, onScroll: measure };
}
