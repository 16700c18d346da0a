// The part above the rows: the filter with its count, and the head of the grid.
import type { ComponentChildren } from 'preact';
import { t } from '../../base/text.ts';
import { Icon } from '../icon.tsx';
import { Pure } from '../pure.ts';
import type { Column } from './column.ts';
import type { Rows } from './rows.ts';
import type { Sort } from './rules.ts';

interface BarProps<Row> {
  label: string;
  rows: Rows<Row>;
  tools: ComponentChildren;
  /** Moves from the filter to the rows. */
  onLeave(): void;
}

export function TableBar<Row>({ label, rows, tools, onLeave }: BarProps<Row>) {
  const { query, setQuery, shown, gone, total, many, selection, hidden, held } = rows;
  const count = shown.length - gone.size;
  return (
    <div class="table-bar line">
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
            else if (event.key === 'ArrowDown') onLeave();
            else return;
            event.preventDefault();
          }}
        />
      </div>
      <span class="muted" role="status">
        {count === total ? t('table.rows', { n: total }) : t('table.count', { shown: count, total })}
        {many && selection.keys.size > 0 && `, ${t('table.selected', { n: selection.keys.size })}`}
        {hidden > 0 && ` (${t('table.hidden', { n: hidden })})`}
      </span>
      {held && <span class="held muted small">{t('table.held')}</span>}
      <div class="table-tools line">{tools}</div>
    </div>
  );
}

interface HeadProps<Row> {
  columns: readonly Column<Row>[];
  rows: Rows<Row>;
}

/** Not redrawn while the user scrolls. */
export class TableHead<Row> extends Pure<HeadProps<Row>> {
  override render({ columns, rows }: HeadProps<Row>) {
    const { many, sort, setSort } = rows;
    return (
      <thead>
        <tr aria-rowindex={1}>
          {many && <SelectAll {...rows} />}
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
    );
  }
}

function SelectAll<Row>({ order, tickable, selection, setSelection, hidden }: Rows<Row>) {
  const allTicked = tickable.length > 0 && tickable.every((key) => selection.keys.has(key));
  return (
    <th class="tick" scope="col">
      <input
        type="checkbox"
        aria-label={t('table.selectAll')}
        checked={allTicked}
        disabled={tickable.length === 0}
        indeterminate={!allTicked && selection.keys.size > hidden}
        onChange={() => {
          const keys = new Set(selection.keys);
          for (const key of order) allTicked ? keys.delete(key) : keys.add(key);
          setSelection({ ...selection, keys });
        }}
      />
    </th>
  );
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
      <button type="button" class="line" onClick={onSort}>
        {t(column.title)}
        {sorted && <Icon name={sort.descending ? 'arrowDown' : 'arrowUp'} />}
      </button>
    </th>
  );
}
