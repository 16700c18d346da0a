import assert from 'node:assert/strict';
import { test } from 'node:test';
import { appendLines, type Incoming, type Line } from '../src/lib/terminal.ts';

const texts = (lines: readonly Line[]) => lines.map((line) => line.text);
const progress = (text: string): Incoming => ({ text, is_progress: true });

test('a line replaces the one before it only when both look like a redraw', () => {
  const cases: [name: string, incoming: Incoming[], want: string[]][] = [
    [
      'bars',
      [progress('██▒▒  12.0 MB / 80.1 MB'), progress('███▒  40.3 MB / 80.1 MB')],
      ['███▒  40.3 MB / 80.1 MB'],
    ],
    [
      'sizes without a bar',
      [progress('1024 KB / 5.00 MB'), progress('2.00 MB / 5.00 MB')],
      ['2.00 MB / 5.00 MB'],
    ],
    ['spinner', [progress('-'), progress('\\'), progress('|'), progress('/')], ['/']],
    [
      'percent',
      [progress('Verification 10% complete.'), progress('Verification 20% complete.')],
      ['Verification 20% complete.'],
    ],
    [
      'ordinary lines that ended with CR LF',
      [progress('Found Tarn Sync'), progress('Downloading')],
      ['Found Tarn Sync', 'Downloading'],
    ],
    [
      'a bar after an ordinary line',
      [progress('Downloading'), progress('█▒ 50%')],
      ['Downloading', '█▒ 50%'],
    ],
    ['an ordinary line after a bar', [progress('██ 100%'), progress('Installed')], ['██ 100%', 'Installed']],
    ['a line that was not marked', [progress('50%'), { text: '60%' }], ['50%', '60%']],
    ['after a line that was not marked', [{ text: '50%' }, progress('60%')], ['50%', '60%']],
    [
      'a spinner goes with what comes after it',
      [
        progress('Found'),
        progress('-'),
        progress('|'),
        progress('Installing'),
        progress('/'),
        { text: 'Done' },
      ],
      ['Found', 'Installing', 'Done'],
    ],
    [
      'redraws inside a line',
      [{ text: `\r   - \r   | \r${' '.repeat(120)}\rFound Tarn Sync` }, { text: 'Done\r' }, { text: ' \r ' }],
      ['Found Tarn Sync', 'Done', ' \r '],
    ],
    ['a path is no spinner', [progress('C:\\Windows'), progress('a/b')], ['C:\\Windows', 'a/b']],
  ];
  for (const [name, incoming, want] of cases) {
    assert.deepEqual(texts(appendLines([], incoming)), want, `${name}, at once`);
    const one_by_one = incoming.reduce<Line[]>((lines, line) => appendLines(lines, [line]), []);
    assert.deepEqual(texts(one_by_one), want, `${name}, one by one`);
  }
});

test('a redraw keeps the identity of its line, a new line gets a new one', () => {
  const lines = appendLines([], [progress('10%'), progress('20%'), { text: 'done' }]);
  assert.deepEqual(
    lines.map((line) => line.id),
    [1, 2],
  );
});

test('the class of a line is one plain word, or the default', () => {
  const styles = ['stderr-line', '', 'a b', 'x"onclick=', undefined];
  const lines = appendLines(
    [],
    styles.map((style) => ({ text: 't', ...(style !== undefined && { style }) })),
  );
  assert.deepEqual(
    lines.map((line) => line.style),
    ['stderr-line', 'system-line', 'system-line', 'system-line', 'system-line'],
  );
});

test('the oldest lines fall out, and numbering goes on', () => {
  const lines = appendLines(
    [],
    Array.from({ length: 2500 }, (_, i) => ({ text: String(i) })),
  );
  assert.equal(lines.length, 2000);
  assert.deepEqual([lines[0]!.text, lines.at(-1)!.text, lines.at(-1)!.id], ['500', '2499', 2500]);
});
