import type { ComponentChildren } from 'preact';
import { formatNumber, type PlainKey } from '../../base/text.ts';
import type { CellValue } from './rules.ts';

/** A column is a constant of its module. Values that change come with the row. */
export interface Column<Row> {
  id: string;
  /** Key of the text above the column. */
  title: PlainKey;
  /** The value that the column is sorted by. */
  value(row: Row): CellValue;
  /** The text that the filter searches and copying takes; by default, the value in words. */
  text?(row: Row): string;
  /** The content of the cell; by default, the text. */
  cell?(row: Row): ComponentChildren;
  /** Aligns the cells right, with figures of equal width. */
  numeric?: boolean;
  /** CSS width, preferably in rem. Columns without a width share the remaining space. */
  width?: string;
  /** Rank for dropping columns from a narrow table, the highest first. A column without a rank stays. */
  drop?: number;
  /** Returns 0 to 1: how much the cell stands out. */
  heat?(row: Row): number;
}

export function textOf<Row>(column: Column<Row>, row: Row): string {
  const value = column.value(row);
  return column.text?.(row) ?? (typeof value === 'number' ? formatNumber(value) : String(value ?? ''));
}
