import { t } from '../../base/text.ts';
import { Pure } from '../pure.ts';
import { textOf, type Column } from './column.ts';

interface TableRowProps<Row> {
  /** Only the active row has one. */
  id: string | undefined;
  row: Row;
  index: number;
  columns: readonly Column<Row>[];
  language: string;
  many: boolean;
  selectable: boolean;
  selected: boolean;
  gone: boolean;
  fresh: boolean;
}

/** Redraws only if something that it shows has changed. The grid handles its events. */
export class TableRow<Row> extends Pure<TableRowProps<Row>> {
  override render(props: TableRowProps<Row>) {
    const { id, row, index, columns, many, selectable, selected, gone, fresh } = props;
    const classes = [id && 'active', gone && 'gone', fresh && 'fresh'].filter(Boolean).join(' ');
    return (
      <tr
        id={id}
        class={classes || undefined}
        aria-rowindex={index + 2}
        aria-selected={selectable ? selected : undefined}
      >
        {many && (
          <td class="tick">
            <input
              type="checkbox"
              tabIndex={-1}
              aria-label={t('table.selectRow', { name: textOf(columns[0]!, row) })}
              checked={selected}
              disabled={!selectable}
            />
          </td>
        )}
        {columns.map((column) => cellOf(column, row))}
      </tr>
    );
  }
}

function cellOf<Row>(column: Column<Row>, row: Row) {
  const heat = column.heat?.(row);
  const text = column.cell ? undefined : textOf(column, row);
  return (
    <td
      key={column.id}
      class={column.numeric ? 'numeric' : undefined}
      title={column.numeric ? undefined : text}
      style={heat ? { '--heat': `${Math.round(heat * 8) * 5}%` } : undefined}
    >
      {column.cell ? column.cell(row) : text}
    </td>
  );
}
