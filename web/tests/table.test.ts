import assert from 'node:assert/strict';
import { test } from 'node:test';
import {
  filterRows,
  keepExisting,
  kNoSelection,
  moveTo,
  select,
  sortRows,
  toggle,
  toTsv,
  visibleRange,
  type CellValue,
  type Selection,
} from '../src/lib/table.ts';

test('order: by language, numbers by value, rows without a value last in both directions', () => {
  const cases: [name: string, values: CellValue[], descending: boolean, want: CellValue[]][] = [
    [
      'Czech letters',
      ['čep', 'dub', 'chata', 'cena', 'hora', 'Cukr'],
      false,
      ['cena', 'Cukr', 'čep', 'dub', 'hora', 'chata'],
    ],
    ['numbers inside texts', ['app 10', 'app 9', 'App 1'], false, ['App 1', 'app 9', 'app 10']],
    ['numbers', [10, 9, -1, 100], true, [100, 10, 9, -1]],
    ['booleans', [true, false, true], false, [false, true, true]],
    ['nothing last', [null, 2, undefined, 1, NaN], false, [1, 2, null, undefined, NaN]],
    ['nothing last, descending', ['', 'a', 'b'], true, ['b', 'a', '']],
  ];
  for (const [name, values, descending, want] of cases) {
    assert.deepEqual(
      sortRows(values, (value) => value, descending, 'cs-CZ'),
      want,
      name,
    );
  }
  const rows = [
    ['a', 1],
    ['b', 0],
    ['c', 1],
    ['d', 0],
  ] as const;
  const order = (descending: boolean) =>
    sortRows(rows, (row) => row[1], descending, 'cs-CZ')
      .map((row) => row[0])
      .join('');
  assert.deepEqual([order(false), order(true)], ['bdac', 'acbd'], 'equal rows keep their order');
});

test('filter: every word somewhere in the row, without case and accents', () => {
  const rows = [
    ['Čištění disku', 'C:'],
    ['Síť', 'Ethernet'],
    ['disk', 'D:'],
  ];
  const found = (query: string) => filterRows(rows, query, (row) => row).map((row) => row[0]);
  assert.deepEqual(found('  '), ['Čištění disku', 'Síť', 'disk']);
  assert.deepEqual(found('CISTENI'), ['Čištění disku']);
  assert.deepEqual(found('c: disk'), ['Čištění disku']);
  assert.deepEqual(found('síť'), ['Síť']);
  assert.deepEqual(found('disk ethernet'), []);
  assert.deepEqual(found('.*'), []);
});

test('selection: plain, Ctrl and Shift clicks', () => {
  const order = ['a', 'b', 'c', 'd', 'e'];
  const plain = { shift: false, ctrl: false };
  const shift = { shift: true, ctrl: false };
  const ctrl = { shift: false, ctrl: true };
  const both = { shift: true, ctrl: true };
  type Step = [key: string, modifiers: typeof plain];
  const cases: [name: string, steps: Step[], want: string, active: string][] = [
    [
      'plain replaces',
      [
        ['a', plain],
        ['c', plain],
      ],
      'c',
      'c',
    ],
    [
      'Ctrl adds',
      [
        ['a', plain],
        ['c', ctrl],
      ],
      'ac',
      'c',
    ],
    [
      'Ctrl takes away',
      [
        ['a', plain],
        ['a', ctrl],
      ],
      '',
      'a',
    ],
    [
      'Shift extends',
      [
        ['b', plain],
        ['d', shift],
      ],
      'bcd',
      'd',
    ],
    [
      'Shift turns round at the anchor',
      [
        ['c', plain],
        ['e', shift],
        ['a', shift],
      ],
      'abc',
      'a',
    ],
    ['Shift without an anchor', [['c', shift]], 'c', 'c'],
    [
      'Ctrl and Shift add a range',
      [
        ['a', plain],
        ['c', ctrl],
        ['e', both],
      ],
      'acde',
      'e',
    ],
  ];
  for (const [name, steps, want, active] of cases) {
    const end = steps.reduce<Selection>(
      (at, [key, modifiers]) => select(at, order, key, modifiers),
      kNoSelection,
    );
    assert.deepEqual([[...end.keys].sort().join(''), end.active], [want, active], name);
  }
  const before = select(kNoSelection, order, 'a', plain);
  toggle(before, 'b');
  assert.deepEqual([...before.keys], ['a'], 'a selection is never changed in place');
});

test('selection survives new data as far as its rows do', () => {
  const selection: Selection = { keys: new Set([1, 2, 3]), active: 2, anchor: 3 };
  assert.equal(
    keepExisting(selection, [3, 2, 1, 0]),
    selection,
    'unchanged: the same object, so nothing is drawn again',
  );
  assert.deepEqual(keepExisting(selection, [1, 3]), { keys: new Set([1, 3]), active: undefined, anchor: 3 });
  assert.deepEqual(
    keepExisting(selection, [3, 2, 1, 0], [3, 0]),
    { keys: new Set([3]), active: 2, anchor: 3 },
    'a row that cannot be selected can still be the active one',
  );
});

test('keys move within the table', () => {
  const cases: [key: string, index: number, want: number | undefined][] = [
    ['ArrowDown', -1, 0],
    ['ArrowDown', 99, 99],
    ['ArrowUp', -1, 99],
    ['ArrowUp', 0, 0],
    ['Home', 50, 0],
    ['End', 50, 99],
    ['PageDown', -1, 10],
    ['PageDown', 95, 99],
    ['PageUp', 5, 0],
    ['PageUp', 50, 40],
    ['a', 3, undefined],
  ];
  for (const [key, index, want] of cases)
    assert.equal(moveTo(key, index, 100, 10), want, `${key} from ${index}`);
  assert.equal(moveTo('ArrowDown', -1, 0, 10), undefined, 'nowhere to go in an empty table');
});

test('the drawn rows cover what is seen, within the table', () => {
  assert.deepEqual(visibleRange(0, 360, 36, 1000, 12), { first: 0, end: 22 });
  assert.deepEqual(visibleRange(3618, 360, 36, 1000, 12), { first: 88, end: 123 });
  assert.deepEqual(visibleRange(36_000, 360, 36, 1000, 12), { first: 988, end: 1000 });
  const shrunk = visibleRange(36_000, 360, 36, 600, 12);
  assert.ok(
    shrunk.first < 600 && shrunk.end === 600,
    'scrolled far down when a filter makes the table short',
  );
});

test('copied rows keep their columns', () => {
  assert.equal(
    toTsv([
      ['a\tb', 'c\r\nd'],
      ['č', ''],
    ]),
    'a b\tc d\r\nč\t',
  );
});
