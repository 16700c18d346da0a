// Decides which rows are drawn, and keeps the important one in view.
import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import type { Store } from '../../base/store.ts';
import { useSize, useStore } from '../hooks.ts';
import { change, type TableState } from './memory.ts';
import type { Rows } from './rows.ts';
import { noSelection, rangeToDraw, rowsNear, type Key, type RowRange } from './rules.ts';

export type Scroller = ReturnType<typeof useScroller>;

/** Tracks the scroll position and the size of the table's box. A row is 2.25 rem high (table.css). */
export function useScroller(state: Store<TableState>) {
  const ref = useRef<HTMLDivElement>(null);
  const [{ height, widthRem, rowHeight }, setBox] = useState({ height: 600, widthRem: 60, rowHeight: 36 });
  const onScroll = () => {
    if (ref.current) change(state, { scrollTop: ref.current.scrollTop }); // not for a late event of a closed view
  };
  useSize(ref, () => {
    const { clientHeight, clientWidth } = ref.current!;
    const rem = parseFloat(getComputedStyle(document.documentElement).fontSize);
    const box = { height: clientHeight, widthRem: clientWidth / rem, rowHeight: 2.25 * rem };
    setBox((was) => (was.height === box.height && was.widthRem === box.widthRem ? was : box));
  });
  return {
    ref,
    height,
    rowHeight,
    widthRem,
    onScroll,
    pageRows: Math.max(1, Math.floor(height / rowHeight) - 2),
    isInSight(index: number) {
      const from = state.get().scrollTop ?? 0; // asking the element would force a layout
      return index >= 0 && index * rowHeight >= from && index * rowHeight < from + height - 2 * rowHeight;
    },
    /** Scrolls as little as brings the row into view, below the head, which is as high as a row. */
    reveal(index: number) {
      if (!ref.current) return;
      const { scrollTop, clientHeight } = ref.current;
      const top = index * rowHeight;
      const to = Math.min(top, Math.max(scrollTop, top + 2 * rowHeight - clientHeight));
      if (to !== scrollTop) ref.current.scrollTop = to;
      onScroll(); // draws the rows in the same frame
    },
  };
}

/** Returns the rows to draw. Redraws its component only when scrolling brings rows close that are not drawn. */
export function useDrawnRows(
  shown: readonly unknown[],
  state: Store<TableState>,
  { height, rowHeight }: { height: number; rowHeight: number },
): RowRange {
  const drawn = useRef<{ shown: readonly unknown[]; range: RowRange; top: number }>(undefined);
  return useStore(state, ({ scrollTop }) => {
    const top = scrollTop ?? drawn.current?.top ?? 0; // undefined leaves the box where it is
    const near = rowsNear(top, height, rowHeight, shown.length);
    const last = drawn.current?.shown === shown ? drawn.current.range : undefined;
    const range = rangeToDraw(near, last, shown.length);
    drawn.current = { shown, range, top };
    return range;
  });
}

/** Keeps the active row in view while data changes, and starts over if the rows belong to another subject. */
export function useActiveRow<Row>(
  { rows, rowKey, subject }: { rows: readonly Row[]; rowKey(row: Row): Key; subject?: Key | undefined },
  { state, activeIndex, held, order, setQuery, setSelection }: Rows<Row>,
  { ref, reveal, isInSight }: Scroller,
) {
  // Starts where the user left, or at the row that the user was led to.
  const scrollTop = useStore(state, (one) => (one.scrollTop === undefined ? undefined : 'known'));
  useLayoutEffect(() => {
    if (scrollTop !== undefined) ref.current!.scrollTop = state.get().scrollTop!;
    else if (activeIndex >= 0) reveal(activeIndex);
  }, [state, scrollTop, scrollTop === undefined && activeIndex]);

  // If new data moves the user's row, it stays in view if it was in view before.
  const inSight = useRef(false);
  useLayoutEffect(() => {
    if (inSight.current && activeIndex >= 0) reveal(activeIndex);
  }, [rows, held]);
  useLayoutEffect(() => {
    inSight.current = isInSight(activeIndex);
  });

  // Runs after the effects above, which handle the same rows.
  const lastSubject = useRef(subject);
  useEffect(() => {
    if (subject === lastSubject.current) return;
    const from = rows.map(rowKey).indexOf(lastSubject.current!) < 0 ? undefined : lastSubject.current!;
    lastSubject.current = subject;
    setQuery('');
    setSelection(from === undefined ? noSelection : { keys: new Set([from]), active: from, anchor: from });
    ref.current!.scrollTop = 0;
    if (from !== undefined) reveal(order.indexOf(from));
  }, [subject]);
}
