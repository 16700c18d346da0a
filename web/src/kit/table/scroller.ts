// Decides which rows are drawn, and keeps the important one in view.
import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import type { Store } from '../../base/store.ts';
import { useSize, useStore } from '../hooks.ts';
import { change, type TableState } from './memory.ts';
import type { Rows } from './rows.ts';
import { noSelection, visibleRange, type Key } from './rules.ts';

const windowedAbove = 100;
const marginRows = 12;
/** Rows are drawn in groups, so that not every pixel of scrolling redraws. */
const stepRows = 4;

export type Scroller = ReturnType<typeof useScroller>;

/**
 * Tracks the scroll position, in steps, and the size of the table's box. A row is 2.25 rem high
 * (table.css).
 */
export function useScroller(count: number, state: Store<TableState>) {
  const ref = useRef<HTMLDivElement>(null);
  const [{ height, widthRem, rowHeight }, setBox] = useState({ height: 600, widthRem: 60, rowHeight: 36 });
  const [step, setStep] = useState(() => Math.floor((state.get().scrollTop ?? 0) / rowHeight / stepRows));
  const top = step * stepRows * rowHeight;
  const onScroll = () => {
    if (!ref.current) return; // a late event of a closed view
    const { scrollTop } = ref.current;
    change(state, { scrollTop });
    setStep(Math.floor(scrollTop / rowHeight / stepRows));
  };
  useSize(ref, () => {
    const { clientHeight, clientWidth } = ref.current!;
    const rem = parseFloat(getComputedStyle(document.documentElement).fontSize);
    const box = { height: clientHeight, widthRem: clientWidth / rem, rowHeight: 2.25 * rem };
    setBox((was) => (was.height === box.height && was.widthRem === box.widthRem ? was : box));
  });
  const range =
    count > windowedAbove
      ? visibleRange(top, height, rowHeight, count, marginRows + stepRows)
      : { first: 0, end: count };
  return {
    ref,
    rowHeight,
    widthRem,
    ...range,
    onScroll,
    pageRows: Math.max(1, Math.floor(height / rowHeight) - 2),
    isInSight(index: number) {
      const from = state.get().scrollTop ?? 0; // asking the element would force a layout
      return index >= 0 && index * rowHeight >= from && index * rowHeight < from + height - 2 * rowHeight;
    },
    reveal(index: number) {
      const element = ref.current;
      if (!element) return;
      const head = element.querySelector('thead')?.offsetHeight ?? 0;
      const rowTop = index * rowHeight;
      if (rowTop < element.scrollTop) element.scrollTop = rowTop;
      else if (rowTop + rowHeight + head > element.scrollTop + element.clientHeight)
        element.scrollTop = rowTop + rowHeight + head - element.clientHeight;
    },
  };
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
