import type { RefObject } from 'preact';
import { locale } from '../../base/text.ts';
import type { Column } from './column.ts';
import { TableHead } from './header.tsx';
import type { useHold } from './hold.ts';
import { TableRow } from './row.tsx';
import type { Rows } from './rows.ts';
import { select, toggle } from './rules.ts';
import { useDrawnRows, type Scroller } from './scroller.ts';

interface GridProps<Row> {
  /** The id of the active row. It differs from row to row, so that screen readers notice a move. */
  activeId: string;
  label: string;
  gridRef: RefObject<HTMLTableElement | null>;
  columns: readonly Column<Row>[];
  rows: Rows<Row>;
  scroller: Scroller;
  /** New rows are tinted. */
  steady: boolean;
  /** Handlers for the element that contains the rows. */
  hold: ReturnType<typeof useHold>['handlers'];
  onActivate: ((row: Row) => void) | undefined;
  onKeyDown(event: KeyboardEvent): void;
  onMenu(at: { x: number; y: number }): void;
}

/** Draws the head and the rows in view. Alone redrawn while the user scrolls. */
export function Grid<Row>(props: GridProps<Row>) {
  const { activeId, label, gridRef, columns, rows, scroller, steady, hold, onActivate, onKeyDown, onMenu } =
    props;
  const { shown, order, many, activeIndex } = rows;
  const { first, end } = useDrawnRows(shown, rows.state, scroller);
  const handlers = rowHandlers(rows, onActivate, onMenu);
  const columnCount = columns.length + Number(many);
  const spacer = (count: number) =>
    count > 0 && <Spacer height={count * scroller.rowHeight} columns={columnCount} />;
  return (
    <table
      ref={gridRef}
      role="grid"
      tabIndex={0}
      aria-label={label}
      aria-rowcount={shown.length + 1}
      aria-colcount={columnCount}
      aria-multiselectable={many}
      aria-activedescendant={activeIndex >= first && activeIndex < end ? activeId : undefined}
      onKeyDown={onKeyDown}
    >
      <TableHead columns={columns} rows={rows} />
      <tbody {...hold} {...handlers}>
        {spacer(first)}
        {shown.slice(first, end).map((row, i) => {
          const index = first + i;
          const key = order[index]!;
          return (
            <TableRow
              key={key}
              id={index === activeIndex ? activeId : undefined}
              row={row}
              index={index}
              columns={columns}
              language={locale()}
              many={many}
              selectable={rows.canSelect(row)}
              selected={rows.selection.keys.has(key)}
              gone={rows.gone.has(key)}
              fresh={steady && rows.fresh.has(key)}
            />
          );
        })}
        {spacer(shown.length - end)}
      </tbody>
    </table>
  );
}

/** Selects, ticks and activates the rows that the pointer is used on, and opens their menu. */
function rowHandlers<Row>(
  { shown, order, many, selection, setSelection }: Rows<Row>,
  onActivate: GridProps<Row>['onActivate'],
  onMenu: GridProps<Row>['onMenu'],
) {
  const indexAt = ({ target }: Event) =>
    Number((target as Element).closest('tr[aria-rowindex]')?.ariaRowIndex ?? NaN) - 2;
  return {
    onClick(event: MouseEvent) {
      const key = order[indexAt(event)];
      if (key === undefined || (event.target as Element).closest('button, a, input')) return;
      const keys = { shift: many && event.shiftKey, ctrl: many && event.ctrlKey };
      setSelection(select(selection, order, key, keys));
    },
    onChange(event: Event) {
      const key = order[indexAt(event)];
      if (key !== undefined && (event.target as Element).closest('.tick'))
        setSelection(toggle(selection, key));
    },
    onDblClick(event: MouseEvent) {
      const row = shown[indexAt(event)];
      if (row !== undefined) onActivate?.(row);
    },
    onContextMenu(event: MouseEvent) {
      const key = order[indexAt(event)];
      if (key === undefined) return;
      event.preventDefault();
      if (!selection.keys.has(key)) setSelection({ keys: new Set([key]), active: key, anchor: key });
      onMenu({ x: event.clientX, y: event.clientY });
    },
  };
}

/** Takes the place of rows that are not drawn. */
function Spacer({ height, columns }: { height: number; columns: number }) {
  return (
    <tr aria-hidden="true" class="spacer">
      <td colSpan={columns} style={{ height: `${height}px` }} />
    </tr>
  );
}
