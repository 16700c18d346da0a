// Which rows are drawn, and how the one that matters stays in sight.
import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import { useSize } from '../hooks.ts';
import type { Rows } from './rows.ts';
import { noSelection, visibleRange, type Key } from './rules.ts';

const windowedAbove = 500;
const marginRows = 12;

export type Scroller = ReturnType<typeof useScroller>;

/** Scroll position and size of the table's box; a row is 2.25 rem high (table.css). */
export function useScroller(count: number) {
  const ref = useRef<HTMLDivElement>(null);
  const [box, setBox] = useState({ top: 0, height: 600, rowHeight: 36 });
  const measure = () => {
    const { scrollTop: top, clientHeight: height } = ref.current!;
    setBox({
      top,
      height,
      rowHeight: 2.25 * parseFloat(getComputedStyle(document.documentElement).fontSize),
    });
  };
  useSize(ref, measure);
  const { top, height, rowHeight } = box;
  const range =
    count > windowedAbove
      ? visibleRange(top, height, rowHeight, count, marginRows)
      : { first: 0, end: count };
  return {
    ref,
    rowHeight,
    ...range,
    measure,
    pageRows: Math.max(1, Math.floor(height / rowHeight) - 2),
    isInSight: (index: number) =>
      index >= 0 && index * rowHeight >= top && index * rowHeight < top + height - 2 * rowHeight,
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
  { activeIndex, held, order, setQuery, setSelection }: Rows<Row>,
  { ref, reveal, isInSight }: Scroller,
) {
  // A view that leads to a row selects it beforehand.
  useLayoutEffect(() => {
    if (activeIndex >= 0) reveal(activeIndex);
  }, []);

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
