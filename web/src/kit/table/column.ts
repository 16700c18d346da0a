import type { ComponentChildren } from 'preact';
import { formatNumber, type PlainKey } from '../../base/text.ts';
import type { CellValue } from './rules.ts';

/** Columns are constants of their module: what changes comes with the row. */
export interface Column<Row> {
  id: string;
  /** Key of the text above the column. */
  title: PlainKey;
  /** What the column is sorted by. */
  value(row: Row): CellValue;
  /** What the filter searches and copying takes; the value in words when left out. */
  text?(row: Row): string;
  /** What the cell shows; the text when left out. */
  cell?(row: Row): ComponentChildren;
  /** Aligned right, with figures of equal width. */
  numeric?: boolean;
  /** CSS width, best in rem; columns without one share what is left. */
  width?: string;
  /** Rank in which columns go when the table is too narrow, the highest first; without one it stays. */
  drop?: number;
  /** 0 to 1: how much the cell stands out. */
  heat?(row: Row): number;
}

export function textOf<Row>(column: Column<Row>, row: Row): string {
  const value = column.value(row);
  return column.text?.(row) ?? (typeof value === 'number' ? formatNumber(value) : String(value ?? ''));
}
