import assert from 'node:assert/strict';
import { test } from 'node:test';
import { readService } from '../src/lib/services.ts';
import { isList, isRepeated, joinList, nameFault, pathOf, splitList } from '../src/lib/variables.ts';

test('lists come apart and together again', () => {
  const cases: [value: string, want: string[]][] = [
    ['C:\\Windows;%USERPROFILE%\\bin', ['C:\\Windows', '%USERPROFILE%\\bin']],
    ['', ['']],
    ['C:\\a;;C:\\b;', ['C:\\a', '', 'C:\\b', '']],
    ['"C:\\a;b";C:\\c', ['"C:\\a;b"', 'C:\\c']],
    ['"C:\\open;C:\\c', ['"C:\\open;C:\\c']],
    [' C:\\a ; C:\\b', [' C:\\a ', ' C:\\b']],
  ];
  for (const [value, want] of cases) {
    assert.deepEqual(splitList(value), want, value);
    assert.equal(joinList(splitList(value)), value);
  }
  assert.deepEqual(
    [
      ['Path', ''],
      ['PATHEXT', '.EXE'],
      ['X', 'a;b'],
      ['X', '"a;b"'],
      ['MYPATH', 'a'],
    ].map(([name, value]) => isList(name!, value!)),
    [true, true, true, false, false],
  );
});

test('entries that say the same again', () => {
  const entries = ['C:\\Tools', 'c:\\tools\\', '"C:\\Tools"', 'C:\\Tools2', '', ''];
  assert.deepEqual(
    entries.map((_, i) => isRepeated(entries, i)),
    [false, true, true, false, false, false],
  );
});

test('what an entry names on the disk, where that is certain', () => {
  const values = new Map([
    ['tools', 'C:\\Tools'],
    ['deep', '%TOOLS%\\deep'],
    ['me', '%me%'],
    ['two', 'C:\\a;C:\\b'],
  ]);
  const cases: [entry: string, want: string | undefined][] = [
    ['C:\\Program Files\\x', 'C:\\Program Files\\x'],
    [' "c:/a/b\\" ', 'c:\\a\\b'],
    ['%Tools%\\bin', 'C:\\Tools\\bin'],
    ['%DEEP%', 'C:\\Tools\\deep'],
    ['%SystemRoot%\\system32', undefined],
    ['%me%\\x', undefined],
    ['%two%', undefined],
    ['C:\\PROGRA~1\\x', undefined],
    ['C:\\a\\..\\b', undefined],
    ['C:\\a.\\b', undefined],
    ['C:\\', undefined],
    ['bin', undefined],
    ['\\\\server\\share', undefined],
    ['.EXE', undefined],
  ];
  for (const [entry, want] of cases) assert.equal(pathOf(entry, values), want, entry);
});

test('names of new variables', () => {
  const names = ['Path', 'TEMP'];
  assert.deepEqual(
    ['', ' ', 'A=B', 'PATH', 'PATHS', '=C:'].map((name) => nameFault(name, names)),
    ['empty', 'empty', 'equals', 'exists', undefined, 'equals'],
  );
});

test('services as reported: shown whatever they are, acted on only with what is there', () => {
  const cases: [element: unknown, want: ReturnType<typeof readService>][] = [
    [
      {
        service_type: 'db',
        display_name: 'Database',
        status: 'running',
        port: 5432,
        commands: ['stop', '', 7, 'restart'],
      },
      {
        title: 'Database',
        status: 'running',
        facts: 'port: 5432',
        type: 'db',
        commands: ['stop', 'restart'],
      },
    ],
    [{ service_type: 'db' }, { title: 'db', status: '', facts: '', type: 'db', commands: [] }],
    [
      { name: 'X', commands: 'start', status: 4 },
      { title: 'X', status: '', facts: 'status: 4', commands: [] },
    ],
    [{ up: true }, { title: '{"up":true}', status: '', facts: 'up: true', commands: [] }],
    ['db', { title: 'db', status: '', facts: '', commands: [] }],
    [null, { title: 'null', status: '', facts: '', commands: [] }],
  ];
  for (const [element, want] of cases) assert.deepEqual(readService(element), want, JSON.stringify(element));
});
