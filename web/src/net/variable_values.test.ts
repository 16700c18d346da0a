import assert from 'node:assert/strict';
import { test } from 'node:test';
import { readService } from './service_report.ts';
import { isList, isRepeated, joinList, nameFault, pathOf, splitList } from './variable_values.ts';

test('lists are split and joined without loss', () => {
  const cases: [value: string, want: string[]][] = [
    ['C:\\a;;C:\\b;', ['C:\\a', '', 'C:\\b', '']],
    ['"C:\\a;b";C:\\c', ['"C:\\a;b"', 'C:\\c']],
    ['"C:\\open;C:\\c', ['"C:\\open;C:\\c']],
  ];
  for (const [value, want] of cases) {
    assert.deepEqual(splitList(value), want, value);
    assert.equal(joinList(splitList(value)), value);
  }
  const lists = ['Path=', 'PATHEXT=.EXE', 'X=a;b', 'X="a;b"', 'MYPATH=a'].map((set) => set.split('='));
  const found = lists.map(([name, value]) => isList(name!, value!));
  assert.deepEqual(found, [true, true, true, false, false]);
});

test('repeated entries are found', () => {
  const entries = ['C:\\Tools', 'c:\\tools\\', '"C:\\Tools"', 'C:\\Tools2', '', ''];
  assert.deepEqual(
    entries.filter((_, i) => isRepeated(entries, i)),
    ['c:\\tools\\', '"C:\\Tools"'],
  );
});

test('an entry yields a path only if that is certain', () => {
  const values = { tools: 'C:\\Tools', deep: '%TOOLS%\\deep', me: '%me%', two: 'C:\\a;C:\\b' };
  const cases: [entry: string, want: string | undefined][] = [
    [' "c:/a/b\\" ', 'c:\\a\\b'],
    ['%Tools%\\bin', 'C:\\Tools\\bin'],
    ['%DEEP%', 'C:\\Tools\\deep'],
    ['%me%\\x', undefined],
    ['%two%', undefined],
    ['C:\\PROGRA~1\\x', undefined],
    ['C:\\a\\..\\b', undefined],
    ['bin', undefined],
    ['\\\\server\\share', undefined],
  ];
  for (const [entry, want] of cases)
    assert.equal(pathOf(entry, new Map(Object.entries(values))), want, entry);
});

test('names of new variables are checked', () => {
  const cases = { ' ': 'empty', 'A=B': 'equals', PATH: 'exists', PATHS: undefined };
  for (const [name, want] of Object.entries(cases)) assert.equal(nameFault(name, ['Path']), want, name);
});

test('any reported service is shown, and controlled only if the report allows it', () => {
  const bare = { status: '', facts: '', commands: [] };
  const db = { service_type: 'db', display_name: 'Database', status: 'running', port: 5432 };
  const cases: [element: unknown, want: ReturnType<typeof readService>][] = [
    [
      { ...db, commands: ['stop', '', 7] },
      { title: 'Database', status: 'running', facts: 'port: 5432', type: 'db', commands: ['stop'] },
    ],
    [{ service_type: 'db' }, { ...bare, title: 'db', type: 'db' }],
    [{ up: true }, { ...bare, title: '{"up":true}', facts: 'up: true' }],
    [null, { ...bare, title: 'null' }],
  ];
  for (const [element, want] of cases) assert.deepEqual(readService(element), want, JSON.stringify(element));
});
