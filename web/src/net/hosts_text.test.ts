import assert from 'node:assert/strict';
import { test } from 'node:test';
import { checkHosts, restoreLineEnds, withLf } from './hosts_text.ts';

test('problems in a hosts file are found', () => {
  const cases: [line: string, want: string][] = [
    ['# 999.0.0.1 x', ''],
    ['127.0.0.1\tlocalhost  localhost.localdomain # ok', ''],
    ['fe80::1%lo0 localhost', ''],
    ['192.0.2.1 účty.example', ''],
    ['10.0.0.300 a', 'address 10.0.0.300'],
    ['[::1] a', 'address [::1]'],
    ['192.0.2.1 # none', 'noName 192.0.2.1'],
    ['0.0.0.0 *.example ok', 'name *.example'],
  ];
  for (const [line, want] of cases) {
    const found = checkHosts([line]).map(({ kind, word }) => `${kind} ${word}`);
    assert.equal(found.join(), want, JSON.stringify(line));
  }
});

test('a repeated name is found in any case, but allowed once per family', () => {
  const found = checkHosts(['127.0.0.1 a b', '::1 a', '#', '0.0.0.0 B c', '::2 c', '1.1.1.1 c A']);
  const shown = found.map(({ line, word, first }) => `${line} ${word} ${first}`);
  assert.deepEqual(shown, ['4 B 1', '6 c 4', '6 A 1']);
});

test('line ends survive the editor', () => {
  const mixed = '# a\r\n1.1.1.1 x\n\n2.2.2.2 y\r\n\r\n3.3.3.3 z\rlast';
  const cases: [name: string, original: string, edited: string, want: string][] = [
    ['nothing edited', mixed, withLf(mixed), mixed],
    ['changed far apart', 'a\nx\r\ny\nz\r\n', 'b\nx\ny\nzz\n', 'b\nx\r\ny\nzz\r\n'],
    ['a new line takes the common end', 'a\r\nb\r\nc\n', 'a\nb\nnew\nc\n', 'a\r\nb\r\nnew\r\nc\n'],
    ['the last end taken away', 'a\r\nb\r\n', 'a\nb', 'a\r\nb'],
    ['moved up', 'a\nb\r\nc\nd\r\ne\n', 'd\na\nb\nc\ne\n', 'd\na\nb\r\nc\ne\n'],
    ['beside a repeated line', 'x\r\nx\nb\r\nx\n', 'n\nx\nx\nb\nx\nm\n', 'n\r\nx\r\nx\nb\r\nx\nm\r\n'],
  ];
  for (const [name, original, edited, want] of cases)
    assert.equal(restoreLineEnds(original, edited), want, name);
});

test('a block list of a hundred thousand lines keeps its line ends after distant edits', () => {
  const lineAt = (i: number) => `0.0.0.0 host${i % 90_000}.example${i % 3 === 0 ? '\n' : '\r\n'}`;
  const lines = Array.from({ length: 100_000 }, (_, i) => lineAt(i));
  const edited = withLf(lines.join('')).split('\n').with(10, 'first');
  edited.splice(70_000, 5, 'second', 'third');
  const started = process.cpuUsage();
  const saved = restoreLineEnds(lines.join(''), edited.join('\n'));
  const want = lines.with(10, 'first\r\n');
  want.splice(70_000, 5, 'second\r\n', 'third\r\n');
  assert.ok(saved === want.join(''));
  assert.ok(checkHosts(edited).filter(({ kind }) => kind === 'twice').length > 9000);
  assert.ok(process.cpuUsage(started).user < 3_000_000, 'usable while the user waits');
});
