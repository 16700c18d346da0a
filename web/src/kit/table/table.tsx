import type { ComponentChildren } from 'preact';
import { useId, useRef, useState } from 'preact/hooks';
import { t } from '../../base/text.ts';
import { Button } from '../button.tsx';
import { copyText } from '../clipboard.ts';
import { Menu, type MenuItem } from '../menu.tsx';
import { textOf, type Column } from './column.ts';
import { TableBar, TableHead } from './header.tsx';
import { useRows, type Rows, type RowsProps } from './rows.ts';
import { moveTo, select, toggle, toTsv, type Key } from './rules.ts';
import { useActiveRow, useScroller, type Scroller } from './scroller.ts';

export interface TableProps<Row> extends RowsProps<Row> {
  /** Accessible name; also in the label of the filter. */
  label: string;
  /** Items of the context menu, for the rows it was opened on. Copying is always there. */
  menu?(rows: Row[]): MenuItem[];
  /**
   * What the rows are of, for example a folder: when it changes, the table begins anew, at the row of what it showed before if
   * there is one.
   */
  subject?: Key;
  /** For rows that are loaded anew all the time: they keep their order while the pointer is over them. */
  steady?: boolean;
  /** Enter or double click on a row. */
  onActivate?(row: Row): void;
  /** Beside the filter; a function is given the ticked rows in the order of the screen, also those that the filter hides. */
  tools?: ComponentChildren | ((ticked: Row[]) => ComponentChildren);
}

export function Table<Row>(props: TableProps<Row>) {
  const { label, columns, menu, steady, onActivate, tools } = props;
  const rows = useRows(props);
  const { shown, order, many, activeIndex, query, setQuery, setHeld, chosen } = rows;
  const [menuAt, setMenuAt] = useState<{ x: number; y: number }>();
  const id = useId();
  const grid = useRef<HTMLTableElement>(null);
  const scroller = useScroller(shown.length);
  const { first, end, rowHeight } = scroller;
  useActiveRow(props, rows, scroller);
  const columnCount = columns.length + Number(many);
  const rowId = (index: number) => `${id}-${index}`;

  function copy() {
    const lines = chosen().map((row) => columns.map((column) => textOf(column, row)));
    if (lines.length > 0) void copyText(toTsv([columns.map((column) => t(column.title)), ...lines]));
  }

  function act({ key, shiftKey, ctrlKey }: KeyboardEvent): boolean {
    const active = shown[activeIndex];
    if (ctrlKey && key.toLowerCase() === 'c') copy();
    else if (key === 'Enter' && active && onActivate) onActivate(active);
    else if (key === 'ContextMenu' || (shiftKey && key === 'F10')) {
      const row = document.getElementById(rowId(activeIndex))?.getBoundingClientRect();
      if (row && chosen().length > 0) setMenuAt({ x: row.left + 24, y: row.bottom });
    } else return false;
    return true;
  }

  function onKeyDown(event: KeyboardEvent) {
    if (event.target !== grid.current) return; // a control inside a row has its own keys
    if (selectByKey(event, rows, scroller) || act(event)) event.preventDefault();
  }

  return (
    <div class="table">
      <TableBar
        label={label}
        rows={rows}
        tools={typeof tools === 'function' ? tools(rows.ticked()) : tools}
        onLeave={() => grid.current?.focus()}
      />
      <div class="table-scroll" ref={scroller.ref} onScroll={scroller.measure}>
        <table
          ref={grid}
          role="grid"
          tabIndex={0}
          aria-label={label}
          aria-rowcount={shown.length + 1}
          aria-colcount={columnCount}
          aria-multiselectable={many}
          aria-activedescendant={activeIndex >= first && activeIndex < end ? rowId(activeIndex) : undefined}
          onKeyDown={onKeyDown}
        >
          <TableHead columns={columns} rows={rows} />
          <tbody onPointerEnter={() => setHeld(steady === true)} onPointerLeave={() => setHeld(false)}>
            <Spacer rows={first} height={rowHeight} columns={columnCount} />
            {shown.slice(first, end).map((row, i) => (
              <TableRow
                key={order[first + i]}
                id={rowId(first + i)}
                row={row}
                index={first + i}
                columns={columns}
                rows={rows}
                onActivate={onActivate}
                onMenu={setMenuAt}
              />
            ))}
            <Spacer rows={shown.length - end} height={rowHeight} columns={columnCount} />
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

/** Moves to a row, ticks it or ticks all; false for any other key. */
function selectByKey<Row>(
  { key, shiftKey: shift, ctrlKey: ctrl }: KeyboardEvent,
  { many, order, activeIndex, selection, setSelection }: Rows<Row>,
  { pageRows, reveal }: Scroller,
): boolean {
  const active = order[activeIndex];
  const target = moveTo(key, activeIndex, order.length, pageRows);
  if (target !== undefined) {
    const to = order[target]!;
    if (!many) setSelection({ keys: new Set([to]), active: to, anchor: to });
    else if (ctrl && !shift) setSelection({ ...selection, active: to });
    else setSelection(select(selection, order, to, { shift, ctrl }));
    reveal(target);
  } else if (key === ' ' && active !== undefined) {
    const alone = () => select(selection, order, active, { shift: false, ctrl: false });
    setSelection(many ? toggle(selection, active) : alone());
  } else if (many && ctrl && key.toLowerCase() === 'a') {
    setSelection({ ...selection, keys: new Set([...selection.keys, ...order]) });
  } else return false;
  return true;
}

interface TableRowProps<Row> {
  id: string;
  row: Row;
  index: number;
  columns: readonly Column<Row>[];
  rows: Rows<Row>;
  onActivate: ((row: Row) => void) | undefined;
  onMenu(at: { x: number; y: number }): void;
}

function TableRow<Row>({ id, row, index, columns, rows, onActivate, onMenu }: TableRowProps<Row>) {
  const { order, gone, many, activeIndex, selection, setSelection, canSelect } = rows;
  const key = order[index]!;
  const selected = selection.keys.has(key);
  return (
    <tr
      id={id}
      class={index === activeIndex ? 'active' : gone.has(key) ? 'gone' : undefined}
      aria-rowindex={index + 2}
      aria-selected={canSelect(row) ? selected : undefined}
      onClick={(event) => {
        if (event.target instanceof Element && event.target.closest('button, a, input')) return;
        const keys = { shift: many && event.shiftKey, ctrl: many && event.ctrlKey };
        setSelection(select(selection, order, key, keys));
      }}
      onDblClick={() => onActivate?.(row)}
      onContextMenu={(event) => {
        event.preventDefault();
        if (!selected) setSelection({ keys: new Set([key]), active: key, anchor: key });
        onMenu({ x: event.clientX, y: event.clientY });
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
