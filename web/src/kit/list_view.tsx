import type { ComponentChildren } from 'preact';
import type { Readable } from '../base/source.ts';
import { DataView } from './data_view.tsx';
import { Table, type TableProps } from './table/table.tsx';

interface Props<Row> extends Omit<TableProps<Row>, 'rows'> {
  source: Readable<Row[]>;
  /** Shown instead of a table without rows. */
  nothing?: ComponentChildren;
}

/** Shows a source whose data is a list as a table. */
export function ListView<Row>({ source, nothing, ...table }: Props<Row>) {
  return (
    <DataView source={source} nothing={nothing}>
      {(rows) => <Table rows={rows} {...table} />}
    </DataView>
  );
}
