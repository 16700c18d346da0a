import assert from 'node:assert/strict';
import { mock, test } from 'node:test';
import { fold } from '../../base/fold.ts';
import { Hold } from './hold.ts';
import type { CellValue, Selection } from './rules.ts';
import * as table from './rules.ts';

test('rows sort by language and by value; those without a value come last in both directions', () => {
  const cases: [name: string, values: CellValue[], descending: boolean, want: CellValue[]][] = [
    ['Czech letters', ['čep', 'chata', 'Cukr', 'hora'], false, ['Cukr', 'čep', 'hora', 'chata']],
    ['numbers inside texts', ['app 10', 'app 9', 'App 1'], false, ['App 1', 'app 9', 'app 10']],
    ['nothing last', [null, 2, undefined, 1, NaN], false, [1, 2, null, undefined, NaN]],
    ['nothing last, descending', ['', 'a', 'b'], true, ['b', 'a', '']],
    ['equal ones keep their order', ['b', 'A', 'B', 'a'], true, ['b', 'B', 'A', 'a']],
  ];
  for (const [name, values, descending, want] of cases) {
    const sorted = table.sortRows(values, (value) => value, descending, 'cs-CZ');
    assert.deepEqual(sorted, want, name);
  }
});

test('the filter finds every word anywhere in the row, ignoring case and accents', () => {
  const rows = ['Čištění disku;C:', 'Síť;Ethernet', 'disk;D:'];
  const cases = { '  ': '012', CISTENI: '0', 'c: disk': '0', 'disk ethernet': '', '.*': '' };
  for (const [query, want] of Object.entries(cases)) {
    const found = table.filterRows(rows, query, fold);
    assert.equal(found.map((row) => rows.indexOf(row)).join(''), want, query);
  }
});

test('plain, Ctrl (^) and Shift (+) clicks select', () => {
  const cases: [name: string, clicks: string, want: string, active: string][] = [
    ['plain replaces, Ctrl adds', 'b a ^c', 'ac', 'c'],
    ['Ctrl takes away', 'a ^a', '', 'a'],
    ['Shift turns round at the anchor', 'c +e +a', 'abc', 'a'],
    ['Shift without an anchor', '+c', 'c', 'c'],
    ['Ctrl and Shift add a range', 'a ^c ^+e', 'acde', 'e'],
  ];
  for (const [name, clicks, want, active] of cases) {
    const end = clicks.split(' ').reduce<Selection>((at, click) => {
      const modifiers = { ctrl: click.includes('^'), shift: click.includes('+') };
      return table.select(at, ['a', 'b', 'c', 'd', 'e'], click.at(-1)!, modifiers);
    }, table.noSelection);
    assert.deepEqual([[...end.keys].sort().join(''), end.active], [want, active], name);
  }
});

test('the selection survives new data as far as its rows do', () => {
  const selection: Selection = { keys: new Set([1, 2, 3]), active: 2, anchor: 3 };
  const gone = { keys: new Set([1, 3]), active: undefined, anchor: 3 };
  const locked = { keys: new Set([3]), active: 2, anchor: 3 };
  assert.deepEqual(table.keepExisting(selection, [1, 3]), gone);
  assert.deepEqual(table.keepExisting(selection, [3, 2, 1, 0], [3, 0]), locked, 'an active row stays');
});

test('keys move within the table', () => {
  const cases: [key: string, index: number, want: number | undefined][] = [
    ['ArrowDown', -1, 0],
    ['ArrowDown', 99, 99],
    ['ArrowUp', -1, 99],
    ['PageUp', 5, 0],
    ['a', 3, undefined],
  ];
  for (const [key, at, want] of cases)
    assert.equal(table.moveTo(key, at, 100, 10), want, `${key} from ${at}`);
});

test('the drawn rows cover the visible part of the table', () => {
  const near = table.rowsNear(3618, 360, 36, 1000);
  assert.deepEqual(near, { first: 88, end: 123 });
  const shrunk = table.rowsNear(36_000, 360, 36, 600);
  assert.ok(shrunk.first < 600 && shrunk.end === 600, 'scrolled far down, then filtered');
  const down = table.rangeToDraw(near, { first: 80, end: 122 }, 130);
  assert.deepEqual(down, { first: 88, end: 130 });
  assert.equal(table.rangeToDraw(near, down, 130), down, 'nothing new');
  assert.deepEqual(table.rangeToDraw(near, { first: 89, end: 140 }, 130), { first: 72, end: 123 });
});

test('new data takes the places of the old', () => {
  const cases: [name: string, before: string, now: string, want: string][] = [
    ['another order', 'abc', 'CBA', 'ABC '],
    ['new ones last', 'bc', 'AXBC', 'BCAX '],
    ['gone ones keep place and data', 'abc', 'CA', 'AbC b'],
  ];
  for (const [name, before, now, want] of cases) {
    const { rows, gone } = table.keepPlaces([...before], [...now], (row) => row.toLowerCase());
    assert.equal(`${rows.join('')} ${[...gone].join('')}`, want, name);
  }
});

test('columns are dropped by rank until the rest fits; those without a rank stay', () => {
  const columns = [{}, { width: '5rem', drop: 1 }, { width: '8rem', drop: 2 }, { width: '30%' }];
  for (const [rem, want] of Object.entries({ 33: '0123', 32: '013', 5: '03' })) {
    const kept = table.fittingColumns(columns, Number(rem)).map((one) => columns.indexOf(one));
    assert.equal(kept.join(''), want, `${rem} rem`);
  }
});

test('rows are held for 3 s after the pointer, and longer while it is pressed or a menu is open', () => {
  mock.timers.enable({ apis: ['setTimeout'] });
  let held = false;
  const hold = new Hold((now) => (held = now));
  const steps: [act: () => void, seconds: number, want: boolean][] = [
    [hold.moved, 2.9, true],
    [hold.moved, 2.9, true],
    [() => hold.keep('pressed', true), 60, true],
    [hold.left, 0, true],
    [() => hold.keep('pressed', false), 2.9, true],
    [hold.left, 0, false],
    [() => hold.keep('menu', true), 60, true],
    [() => hold.keep('menu', false), 3.1, false],
  ];
  for (const [i, [act, seconds, want]] of steps.entries()) {
    act();
    mock.timers.tick(seconds * 1000);
    assert.equal(held, want, `step ${i}`);
  }
  mock.timers.reset();
});

test('copied rows keep their columns', () => {
  assert.equal(table.toTsv([['a\tb', 'c\r\nd'], ['č']]), 'a b\tc d\r\nč');
});
