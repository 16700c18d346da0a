// Keeps the user's settings of a table, which outlive the view that shows it.
import { useState } from 'preact/hooks';
import { createStore, type Store } from '../../base/store.ts';
import { useStore } from '../hooks.ts';
import { noSelection, type Key, type Selection, type Sort } from './rules.ts';

export interface TableState {
  query: string;
  selection: Selection;
  /** Pixels; undefined to bring the active row into view. */
  scrollTop: number | undefined;
}

const untouched: TableState = { query: '', selection: noSelection, scrollTop: undefined };
const states = new Map<string, Store<TableState>>();

/** The sorts that the user has chosen, by the tables' names. The page may keep them for longer. */
export const sorts = createStore<Readonly<Record<string, Sort>>>({});

function stateOf(name: string): Store<TableState> {
  return states.get(name) ?? states.set(name, createStore(untouched)).get(name)!;
}

/** Returns the state of the table with that name, or a state of its own for a table without a name. */
export function useTableState(name: string | undefined): Store<TableState> {
  const [own] = useState(() => createStore(untouched));
  return name === undefined ? own : stateOf(name);
}

export const change = (state: Store<TableState>, changes: Partial<TableState>) =>
  state.set({ ...state.get(), ...changes });

/** Returns a table's sort in the form of useState: `first` until the user has chosen one of its columns. */
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
 * Returns the selection of a table for the view that acts on it: `const selection = useSelection('ports')`,
 * then `selection[0].keys`. The name is the table's `remember`.
 */
export function useSelection(name?: string): SelectionState {
  const state = useTableState(name);
  return [useStore(state, ({ selection }) => selection), (selection) => change(state, { selection })];
}

/** Selects one row, removes any filter that hides it, and has the table bring it into view. */
export function leadToRow(name: string, key: Key) {
  const selection = { keys: new Set([key]), active: key, anchor: key };
  change(stateOf(name), { query: '', selection, scrollTop: undefined });
}

/** Shows the rows that match a filter. */
export function leadToRows(name: string, query: string) {
  change(stateOf(name), { query, selection: noSelection, scrollTop: 0 });
}
