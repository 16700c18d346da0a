import assert from 'node:assert/strict';
import { test } from 'node:test';
import { findAll, nextMatch, toggleComment } from './hosts_edit.ts';
import { countLines, partAround, rangeOf } from './hosts_part.ts';

test('matches are counted, and the search wraps around', () => {
  const matches = findAll('a.B a.b\naxb A.B', 'a.b');
  assert.deepEqual([matches, findAll('a', ''), findAll('a\\n(', '\\n(')], [[0, 4, 12], [], [1]]);
  const steps: [place: number, back: boolean, want: number][] = [
    [1, false, 1],
    [13, false, 0],
    [0, true, 2],
  ];
  for (const [place, back, want] of steps) assert.equal(nextMatch(matches, place, back), want, `${place}`);
});

test('only the selected lines are commented out, and doing it twice restores every byte', () => {
  const cases: [text: string, from: number, to: number, want: string][] = [
    ['a\nb\nc', 2, 2, 'a\n#b\nc'],
    ['a\nb\nc', 1, 3, '#a\n#b\nc'],
    ['# a\n\t#b', 0, 7, '## a\n#\t#b'],
    ['# a\n#\n \n#b', 0, 10, ' a\n#\n \nb'],
    ['##a', 1, 1, '###a'],
  ];
  const toggled = (text: string, from: number, to: number) => {
    const lines = toggleComment(text, from, to);
    return text.slice(0, lines.start) + lines.text + text.slice(lines.end);
  };
  for (const [text, from, to, want] of cases) {
    const once = toggled(text, from, to);
    assert.equal(once, want, JSON.stringify(text));
    const { start, text: lines } = toggleComment(text, from, to);
    assert.equal(toggled(once, start, start + lines.length), text, JSON.stringify(text));
  }
});

test('the parts of a text are whole lines, and joined they are the text', () => {
  for (const count of [1, 2000, 2001, 6000]) {
    const text = Array.from({ length: count }, (_, i) => `${i}`).join('\n');
    const parts = [partAround(text, 0)];
    while (parts.at(-1)!.after > 0) parts.push(partAround(text, parts.at(-1)!.end + 1));
    assert.equal(parts.map(({ start, end }) => text.slice(start, end)).join('\n'), text);
    for (const { start, end, before, after } of parts) {
      assert.equal(before + countLines(text.slice(start, end)) + after, count);
      assert.equal(text.slice(...rangeOf(text, before + 1)), `${before}`);
    }
    assert.deepEqual([parts.length, partAround(text, text.length)], [Math.ceil(count / 2000), parts.at(-1)]);
  }
});
