// What the user has set on a table: it outlives the view that shows the table.
import { useState } from 'preact/hooks';
import { createStore, type Store } from '../../base/store.ts';
import { useStore } from '../hooks.ts';
import { noSelection, type Key, type Selection, type Sort } from './rules.ts';

export interface TableState {
  query: string;
  selection: Selection;
  /** Pixels; undefined: the active row is to be brought into sight. */
  scrollTop: number | undefined;
}

const untouched: TableState = { query: '', selection: noSelection, scrollTop: undefined };
const states = new Map<string, Store<TableState>>();

/** The sort of each named table as far as the user has chosen it; whoever starts the page may keep it for longer. */
export const sorts = createStore<Readonly<Record<string, Sort>>>({});

function stateOf(name: string): Store<TableState> {
  return states.get(name) ?? states.set(name, createStore(untouched)).get(name)!;
}

/** The state of the table of that name; of this table alone without a name. */
export function useTableState(name: string | undefined): Store<TableState> {
  const [own] = useState(() => createStore(untouched));
  return name === undefined ? own : stateOf(name);
}

export const change = (state: Store<TableState>, changes: Partial<TableState>) =>
  state.set({ ...state.get(), ...changes });

/** The sort of a table, as useState gives it; `first` until the user has chosen one of its columns. */
export function useSort(name: string | undefined, first: Sort, columns: readonly { id: string }[]) {
  const [own, setOwn] = useState(first);
  const kept = useStore(sorts, (all) => {
    const chosen = name === undefined ? undefined : all[name];
    return chosen && columns.some(({ id }) => id === chosen.column) ? chosen : own;
  });
  const set = (sort: Sort) =>
    name === undefined ? setOwn(sort) : sorts.set({ ...sorts.get(), [name]: sort });
  return [kept, set] as const;
}

export type SelectionState = readonly [Selection, (next: Selection) => void];

/**
 * Selection of a table, kept by the view that acts on it: `const selection = useSelection('ports')`, then
 * `selection[0].keys`. The name is the table's `remember`.
 */
export function useSelection(name?: string): SelectionState {
  const state = useTableState(name);
  return [useStore(state, ({ selection }) => selection), (selection) => change(state, { selection })];
}

/** Leads to one row: it is selected, nothing hides it, and the table brings it into sight. */
export function leadToRow(name: string, key: Key) {
  const selection = { keys: new Set([key]), active: key, anchor: key };
  change(stateOf(name), { query: '', selection, scrollTop: undefined });
}

/** Leads to the rows that a filter finds. */
export function leadToRows(name: string, query: string) {
  change(stateOf(name), { query, selection: noSelection, scrollTop: 0 });
}
