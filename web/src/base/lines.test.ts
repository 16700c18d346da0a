import assert from 'node:assert/strict';
import { test } from 'node:test';
import { appendLines, type Incoming, type Line } from './lines.ts';

const texts = (lines: readonly Line[]) => lines.map((line) => line.text);
const progress = (text: string): Incoming => ({ text, isProgress: true });

test('a line replaces the previous one only if both look like a redraw', () => {
  const cases: [name: string, incoming: Incoming[], want: string[]][] = [
    ['bars', [progress('██▒▒ 12.0 MB / 80.1 MB'), progress('███▒ 40%')], ['███▒ 40%']],
    ['sizes alone', [progress('1024 KB / 5.00 MB'), progress('2.00 MB / 5.00 MB')], ['2.00 MB / 5.00 MB']],
    ['spinner', [progress('-'), progress('\\'), progress('|'), progress('/')], ['/']],
    ['an ordinary line after a bar', [progress('██ 100%'), progress('Installed')], ['██ 100%', 'Installed']],
    ['after a line that was not marked', [{ text: '50%' }, progress('60%')], ['50%', '60%']],
    ['a spinner goes', [progress('Found'), progress('-'), { text: 'Done' }], ['Found', 'Done']],
    ['redraws in a line', [{ text: '\r   - \r     \rFound' }, { text: ' \r ' }], ['Found', ' \r ']],
  ];
  for (const [name, incoming, want] of cases) {
    assert.deepEqual(texts(appendLines([], incoming)), want, `${name}, at once`);
    const oneByOne = incoming.reduce<Line[]>((lines, line) => appendLines(lines, [line]), []);
    assert.deepEqual(texts(oneByOne), want, `${name}, one by one`);
  }
});

test('a redraw keeps the identity of its line, and a class is one plain word', () => {
  const lines = appendLines([], [progress('10%'), progress('20%'), { text: 't', style: 'stderr-line' }]);
  const odd = appendLines(lines, [{ text: 't' }, { text: 't', style: '' }, { text: 't', style: 'a b' }]);
  const shown = odd.map(({ id, style }) => `${id} ${style}`);
  const kept = ['1 system-line', '2 stderr-line', '3 system-line', '4 system-line', '5 system-line'];
  assert.deepEqual(shown, kept);
});

test('the oldest lines are dropped, and numbering continues', () => {
  const incoming = Array.from({ length: 2500 }, (_, i) => ({ text: String(i) }));
  const lines = appendLines([], incoming);
  const ends = [lines.length, lines[0]!.text, lines.at(-1)!.text, lines.at(-1)!.id];
  assert.deepEqual(ends, [2000, '500', '2499', 2500]);
});
