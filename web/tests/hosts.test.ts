import assert from 'node:assert/strict';
import { test } from 'node:test';
import { checkHosts, restoreLineEnds, withLf } from '../src/lib/hosts.ts';

test('what is wrong in a hosts file', () => {
  const cases: [line: string, want: string][] = [
    ['', ''],
    ['\t  ', ''],
    ['# 999.0.0.1 x', ''],
    ['127.0.0.1\tlocalhost  localhost.localdomain # ok', ''],
    ['::1 localhost', ''],
    ['fe80::1%lo0 localhost', ''],
    ['::ffff:192.0.2.1 mapped', ''],
    [' 0.0.0.0 Under_Score.example.', ''],
    ['192.0.2.1 účty.example', ''],
    ['10.0.0.300 a', 'address 10.0.0.300'],
    ['10.0.0 a', 'address 10.0.0'],
    ['10.0.0.1. a', 'address 10.0.0.1.'],
    ['1.2.3.4.5 a', 'address 1.2.3.4.5'],
    ['fe80:::1 a', 'address fe80:::1'],
    ['[::1] a', 'address [::1]'],
    ['name.example 127.0.0.1', 'address name.example'],
    ['192.0.2.1 # none', 'noName 192.0.2.1'],
    ['0.0.0.0 *.example ok', 'name *.example'],
    ['0.0.0.0 http://a.example/', 'name http://a.example/'],
    ['0.0.0.0 a..b', 'name a..b'],
  ];
  for (const [line, want] of cases) {
    assert.equal(
      checkHosts([line])
        .map(({ kind, word }) => `${kind} ${word}`)
        .join(),
      want,
      JSON.stringify(line),
    );
  }
});

test('a name given twice: in any case, but once in each family', () => {
  const found = checkHosts(['127.0.0.1 a b', '::1 a', '#', '0.0.0.0 B c', '::2 c', '1.1.1.1 c A']);
  assert.deepEqual(
    found.map(({ line, word, first }) => `${line} ${word} ${first}`),
    ['4 B 1', '6 c 4', '6 A 1'],
  );
});

test('line ends survive the editor', () => {
  const mixed = '# a\r\n1.1.1.1 x\n\n2.2.2.2 y\r\n\r\n3.3.3.3 z\rlast';
  const cases: [name: string, original: string, edit: (text: string) => string, want: string][] = [
    ['nothing edited', mixed, (text) => text, mixed],
    ['empty', '', (text) => text, ''],
    ['only ends', '\n\r\n\n', (text) => text, '\n\r\n\n'],
    [
      'changed in place, with its own end',
      mixed,
      (text) => text.replace('x', 'xx'),
      mixed.replace('x', 'xx'),
    ],
    [
      'two changes far apart',
      mixed,
      (text) => text.replace('a', 'b').replace('z', 'zz'),
      mixed.replace('a', 'b').replace('z', 'zz'),
    ],
    [
      'new lines take the common end',
      'a\r\nb\r\nc\n',
      (text) => text.replace('b', 'b\nnew'),
      'a\r\nb\r\nnew\r\nc\n',
    ],
    ['in a file of LF', 'a\nb\n', (text) => `${text}c\n`, 'a\nb\nc\n'],
    ['text into an empty file', '', () => 'a\nb', 'a\r\nb'],
    ['after a last line without an end', 'a\nb\nc', (text) => `${text}\nd`, 'a\nb\nc\nd'],
    ['the last end taken away', 'a\r\nb\r\n', (text) => text.slice(0, -1), 'a\r\nb'],
    [
      'removed in the middle',
      mixed,
      (text) => text.replace('1.1.1.1 x\n', ''),
      mixed.replace('1.1.1.1 x\n', ''),
    ],
    ['removed at two places', 'a\nb\r\nc\nd\r\ne\nf\r\n', () => 'a\nc\nd\nf\n', 'a\nc\nd\r\nf\r\n'],
    ['moved up', 'a\nb\r\nc\nd\r\ne\n', () => 'd\na\nb\nc\ne\n', 'd\na\nb\r\nc\ne\n'],
    [
      'inserted before and after a repeated line',
      'x\r\nx\nb\r\nx\n',
      () => 'n\nx\nx\nb\nx\nm\n',
      'n\r\nx\r\nx\nb\r\nx\nm\r\n',
    ],
  ];
  for (const [name, original, edit, want] of cases)
    assert.equal(restoreLineEnds(original, edit(withLf(original))), want, name);
});

test('a block list of a hundred thousand lines with edits far apart', () => {
  const lines = Array.from(
    { length: 100_000 },
    (_, i) => `0.0.0.0 host${i % 90_000}.example${i % 3 === 0 ? '\n' : '\r\n'}`,
  );
  const edited = withLf(lines.join('')).split('\n').with(10, 'first');
  edited.splice(70_000, 5, 'second', 'third');
  const started = performance.now();
  const saved = restoreLineEnds(lines.join(''), edited.join('\n'));
  const want = [
    ...lines.with(10, 'first\r\n').slice(0, 70_000),
    'second\r\n',
    'third\r\n',
    ...lines.slice(70_005),
  ].join('');
  assert.ok(saved === want);
  assert.equal(checkHosts(edited).filter(({ kind }) => kind === 'twice').length > 9000, true);
  assert.ok(performance.now() - started < 3000, 'usable while the user waits');
});
