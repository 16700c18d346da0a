import type { ComponentChildren } from 'preact';
import { useId, useMemo, useRef, useState } from 'preact/hooks';
import { fold } from '../../base/fold.ts';
import { t } from '../../base/text.ts';
import { Button } from '../button.tsx';
import { copyText } from '../clipboard.ts';
import { Menu, type MenuItem } from '../menu.tsx';
import { textOf, type Column } from './column.ts';
import { Grid } from './grid.tsx';
import { TableBar } from './header.tsx';
import { useHold } from './hold.ts';
import { useRows, type Rows, type RowsProps } from './rows.ts';
import { fittingColumns, moveTo, select, toggle, toTsv, type Key } from './rules.ts';
import { useActiveRow, useScroller, type Scroller } from './scroller.ts';

const tickRem = 2.75; // table.css
const typingMs = 1000;

export interface TableProps<Row> extends RowsProps<Row> {
  /** Accessible name; also in the label of the filter. */
  label: string;
  /** Items of the context menu for the given rows. Copying is always available. */
  menu?(rows: Row[]): MenuItem[];
  /**
   * The subject of the rows, for example a folder. If it changes, the table starts over, at the row of the
   * previous subject if there is one.
   */
  subject?: Key;
  /**
   * For rows that reload continuously: they keep their order while the pointer moves over them, and new
   * ones are tinted.
   */
  steady?: boolean;
  /** Called on Enter or a double-click on a row. */
  onActivate?(row: Row): void;
  /** Called on the Delete key with the affected rows. */
  onDelete?(rows: Row[]): void;
  /**
   * Shown beside the filter. A function receives the ticked rows in the order of the screen, including
   * those that the filter hides.
   */
  tools?: ComponentChildren | ((ticked: Row[]) => ComponentChildren);
}

export function Table<Row>(props: TableProps<Row>) {
  const { label, columns: all, menu, steady = false, onActivate, onDelete, tools } = props;
  const [menuAt, setMenuAt] = useState<{ x: number; y: number }>();
  const hold = useHold(steady, menuAt !== undefined);
  const rows = useRows(props, hold.held);
  const { shown, many, activeIndex, query, setQuery, chosen } = rows;
  const activeId = `${useId()}-${activeIndex}`;
  const grid = useRef<HTMLTableElement>(null);
  const scroller = useScroller(rows.state);
  const { widthRem } = scroller;
  const columns = useMemo(() => fittingColumns(all, widthRem - (many ? tickRem : 0)), [all, widthRem, many]);
  useActiveRow(props, rows, scroller);
  const typed = useTypeAhead(rows, scroller, all[0]!);

  function copy() {
    const lines = chosen().map((row) => all.map((column) => textOf(column, row)));
    // A single row needs no header.
    const head = lines.length > 1 ? [all.map((column) => t(column.title))] : [];
    if (lines.length > 0) void copyText(toTsv([...head, ...lines]));
  }

  function menuItems(): MenuItem[] {
    const marked = chosen();
    const name = marked.length === 1 && textOf(all[0]!, marked[0]!);
    const copyName = () => void copyText(name || '');
    return [
      ...(menu?.(marked) ?? []),
      ...(name ? [{ label: t('table.copyName', { name }), icon: 'copy' as const, run: copyName }] : []),
      { label: t('table.copyRows'), icon: 'copy', run: copy },
    ];
  }

  function act({ key, shiftKey, ctrlKey }: KeyboardEvent): boolean {
    const active = shown[activeIndex];
    if (ctrlKey && key.toLowerCase() === 'c') copy();
    else if (key === 'Enter' && active && onActivate) onActivate(active);
    else if (key === 'Delete' && onDelete && chosen().length > 0) onDelete(chosen());
    else if (key === 'ContextMenu' || (shiftKey && key === 'F10')) {
      const row = document.getElementById(activeId)?.getBoundingClientRect();
      if (row && chosen().length > 0) setMenuAt({ x: row.left + 24, y: row.bottom });
    } else return false;
    return true;
  }

  function onKeyDown(event: KeyboardEvent) {
    if (event.target !== grid.current) return; // a control inside a row handles its own keys
    if (act(event) || selectByKey(event, rows, scroller) || typed(event)) event.preventDefault();
  }

  return (
    <div class="table">
      <TableBar
        label={label}
        rows={rows}
        tools={typeof tools === 'function' ? tools(rows.ticked()) : tools}
        onLeave={() => grid.current?.focus()}
      />
      <div class="table-scroll" ref={scroller.ref} onScroll={scroller.onScroll}>
        <Grid
          activeId={activeId}
          label={label}
          gridRef={grid}
          columns={columns}
          rows={rows}
          scroller={scroller}
          steady={steady}
          hold={hold.handlers}
          onActivate={onActivate}
          onKeyDown={onKeyDown}
          onMenu={setMenuAt}
        />
        {shown.length === 0 && (
          <div class="table-none">
            <p class="muted">{t(query === '' ? 'table.empty' : 'table.noMatch')}</p>
            {query !== '' && <Button onClick={() => setQuery('')}>{t('table.clearFilter')}</Button>}
          </div>
        )}
      </div>
      {menuAt && (
        <Menu
          label={t('table.menu')}
          {...menuAt}
          items={menuItems()}
          onClose={() => {
            setMenuAt(undefined);
            grid.current?.focus();
          }}
        />
      )}
    </div>
  );
}

/** Moves to a row, ticks it, or ticks all. Returns false for any other key. */
function selectByKey<Row>(
  { key, shiftKey: shift, ctrlKey: ctrl }: KeyboardEvent,
  { many, order, activeIndex, selection, setSelection }: Rows<Row>,
  { pageRows, reveal }: Scroller,
): boolean {
  const active = order[activeIndex];
  const target = moveTo(key, activeIndex, order.length, pageRows);
  if (target !== undefined) {
    const to = order[target]!;
    if (many && ctrl && !shift) setSelection({ ...selection, active: to });
    else setSelection(select(selection, order, to, { shift: many && shift, ctrl: many && ctrl }));
    reveal(target);
  } else if (key === ' ' && active !== undefined) {
    const alone = () => select(selection, order, active, { shift: false, ctrl: false });
    setSelection(many ? toggle(selection, active) : alone());
  } else if (many && ctrl && key.toLowerCase() === 'a') {
    setSelection({ ...selection, keys: new Set([...selection.keys, ...order]) });
  } else return false;
  return true;
}

/** Jumps to the next row whose name begins with the typed letters. */
function useTypeAhead<Row>(
  { shown, order, activeIndex, selection, setSelection }: Rows<Row>,
  { reveal }: Scroller,
  named: Column<Row>,
) {
  const typed = useRef({ text: '', at: 0 });
  return ({ key, ctrlKey, altKey, metaKey, timeStamp }: KeyboardEvent): boolean => {
    if ([...key].length !== 1 || key === ' ' || key === '?' || ctrlKey || altKey || metaKey) return false;
    const before = timeStamp - typed.current.at < typingMs ? typed.current.text : '';
    const text = before + fold(key);
    typed.current = { text, at: timeStamp };
    const from = before === '' ? activeIndex + 1 : Math.max(activeIndex, 0);
    const isIt = (row: Row) => fold(textOf(named, row)).startsWith(text);
    const later = shown.findIndex((row, i) => i >= from && isIt(row));
    const found = later < 0 ? shown.findIndex(isIt) : later;
    const to = order[found];
    if (to === undefined) return true;
    setSelection(select(selection, order, to, { shift: false, ctrl: false }));
    reveal(found);
    return true;
  };
}
