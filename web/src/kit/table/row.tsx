import { useMemo, useRef } from 'preact/hooks';
import { locale, t } from '../../base/text.ts';
import { textOf, type Column } from './column.ts';
import type { Rows } from './rows.ts';
import { select, toggle } from './rules.ts';

interface TableRowProps<Row> {
  id: string;
  row: Row;
  index: number;
  columns: readonly Column<Row>[];
  rows: Rows<Row>;
  /** The current rows at the time of an action on one of them. */
  latest: { current: Rows<Row> };
  fresh: boolean;
  onActivate: ((row: Row) => void) | undefined;
  onMenu(at: { x: number; y: number }): void;
}

/** Redraws only if something that it shows has changed. */
export function TableRow<Row>({
  id,
  row,
  index,
  columns,
  rows,
  latest,
  fresh,
  onActivate,
  onMenu,
}: TableRowProps<Row>) {
  const { order, gone, many, activeIndex, selection, canSelect } = rows;
  const key = order[index]!;
  const selected = selection.keys.has(key);
  const selectable = canSelect(row);
  const state = [index === activeIndex && 'active', gone.has(key) && 'gone', fresh && 'fresh'];
  const classes = state.filter(Boolean).join(' ');
  const activate = useRef(onActivate);
  activate.current = onActivate;
  return useMemo(
    () => (
      <tr
        id={id}
        class={classes || undefined}
        aria-rowindex={index + 2}
        aria-selected={selectable ? selected : undefined}
        onClick={(event) => {
          if (event.target instanceof Element && event.target.closest('button, a, input')) return;
          const keys = { shift: many && event.shiftKey, ctrl: many && event.ctrlKey };
          const now = latest.current;
          now.setSelection(select(now.selection, now.order, key, keys));
        }}
        onDblClick={() => activate.current?.(row)}
        onContextMenu={(event) => {
          event.preventDefault();
          const now = latest.current;
          if (!now.selection.keys.has(key))
            now.setSelection({ keys: new Set([key]), active: key, anchor: key });
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
              disabled={!selectable}
              onChange={() => latest.current.setSelection(toggle(latest.current.selection, key))}
            />
          </td>
        )}
        {columns.map((column) => (
          <Cell key={column.id} column={column} row={row} />
        ))}
      </tr>
    ),
    [id, row, index, columns, key, classes, selected, selectable, many, locale()],
  );
}

function Cell<Row>({ column, row }: { column: Column<Row>; row: Row }) {
  const heat = column.heat?.(row);
  return (
    <td
      class={column.numeric ? 'numeric' : undefined}
      title={column.cell ? undefined : textOf(column, row)}
      style={heat ? { '--heat': `${Math.round(heat * 8) * 5}%` } : undefined}
    >
      {column.cell ? column.cell(row) : textOf(column, row)}
    </td>
  );
}
