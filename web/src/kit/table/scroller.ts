// Which rows are drawn, and how the one that matters stays in sight.
import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import type { Store } from '../../base/store.ts';
import { useSize, useStore } from '../hooks.ts';
import { change, type TableState } from './memory.ts';
import type { Rows } from './rows.ts';
import { noSelection, visibleRange, type Key } from './rules.ts';

const windowedAbove = 100;
const marginRows = 12;
/** Rows that are drawn together, so that not every pixel of scrolling draws. */
const stepRows = 4;

export type Scroller = ReturnType<typeof useScroller>;

/** Scroll position, in steps, and size of the table's box; a row is 2.25 rem high (table.css). */
export function useScroller(count: number, state: Store<TableState>) {
  const ref = useRef<HTMLDivElement>(null);
  const [{ height, widthRem, rowHeight }, setBox] = useState({ height: 600, widthRem: 60, rowHeight: 36 });
  const [step, setStep] = useState(() => Math.floor((state.get().scrollTop ?? 0) / rowHeight / stepRows));
  const top = step * stepRows * rowHeight;
  const onScroll = () => {
    const { scrollTop } = ref.current!;
    change(state, { scrollTop });
    setStep(Math.floor(scrollTop / rowHeight / stepRows));
  };
  useSize(ref, () => {
    const { clientHeight, clientWidth } = ref.current!;
    const rem = parseFloat(getComputedStyle(document.documentElement).fontSize);
    setBox({ height: clientHeight, widthRem: clientWidth / rem, rowHeight: 2.25 * rem });
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
      const from = state.get().scrollTop ?? 0; // asking the element would lay the page out
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

/** Keeps the active row in sight while data changes, and begins anew when the rows are of another subject. */
export function useActiveRow<Row>(
  { rows, rowKey, subject }: { rows: readonly Row[]; rowKey(row: Row): Key; subject?: Key | undefined },
  { state, activeIndex, held, order, setQuery, setSelection }: Rows<Row>,
  { ref, reveal, isInSight }: Scroller,
) {
  // Where the user left it, or at the row that something has led to.
  const scrollTop = useStore(state, (one) => (one.scrollTop === undefined ? undefined : 'known'));
  useLayoutEffect(() => {
    if (scrollTop !== undefined) ref.current!.scrollTop = state.get().scrollTop!;
    else if (activeIndex >= 0) reveal(activeIndex);
  }, [state, scrollTop, scrollTop === undefined && activeIndex]);

  // New data may move the row that the user is at: it stays in sight if it was.
  const inSight = useRef(false);
  useLayoutEffect(() => {
    if (inSight.current && activeIndex >= 0) reveal(activeIndex);
  }, [rows, held]);
  useLayoutEffect(() => {
    inSight.current = isInSight(activeIndex);
  });

  // After the effects above, which have their say about the same rows.
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
