import assert from 'node:assert/strict';
import { test } from 'node:test';
import { obstacleOf, parseApp, parseUpdate } from './package_rows.ts';

/** Splits "name | id | version | available | source" into cells. */
const update = (row: string) => {
  const [name = '', id = '', version = '', available = '', source = ''] = row.split(' | ');
  return { name, id, version, available, source };
};

// Cells as the host cuts them. The final "winget" or "local" is the host's own default.
test('rows of updates are realigned with their columns from the right', () => {
  const cases: [cells: string, want: string][] = [
    ['Tarn | Brook.Tarn 1.0 | 1.2 | winget | winget', 'Tarn | Brook.Tarn | 1.0 | 1.2 | winget'],
    ['Tarn | Brook.Tarn | 1.0 | 1.2 winget | winget', 'Tarn | Brook.Tarn | 1.0 | 1.2 | winget'],
    ['Copse | 9QX2B4LMN0PR | 3.1 3.2 | msstore | winget', 'Copse | 9QX2B4LMN0PR | 3.1 | 3.2 | msstore'],
    ['Rill | Rill.SDK | < 6.0 6.0 | winget | winget', 'Rill | Rill.SDK | < 6.0 | 6.0 | winget'],
    ['Tarn | Node.js | Brook.Tarn | 1.0 | 1.2', 'Tarn Node.js | Brook.Tarn | 1.0 | 1.2 | '],
    ['8x8 Work 8x8.W | 7.0 | 7.1-pre.12 | winget | winget', '8x8 Work | 8x8.W | 7.0 | 7.1-pre.12 | winget'],
  ];
  const inPlace = [
    'Tarn | Brook.Tarn | 1.0 | 1.2 | winget',
    'Copse | Wood.Copse | 3.1 | 3.2 | forest',
    'Fen | Fen.Viewer | Unknown | nightly | winget',
  ];
  const lost: Record<string, string> = {
    'the headings of a second table': 'Name | ID | Version | Verfügbar | Quelle',
    'no installed version': 'Tarn Sync | Brook.Tarn | 1.2.0 | winget | winget',
    'a word for a version in a shifted row': 'Tarn Brook.Tarn | nightly | 1.2 | winget | winget',
    'no id': 'Tarn | Sync | 1.0 | 1.2 | winget',
  };
  for (const [cells, want] of [...cases, ...inPlace.map((row) => [row, row] as const)])
    assert.deepEqual(parseUpdate(update(cells)), { ...update(want), whole: true }, cells);
  for (const name in lost)
    assert.deepEqual(parseUpdate(update(lost[name]!)), { ...update(lost[name]!), whole: false }, name);
});

test('rows of installed programs have three to five values', () => {
  const cases: [cells: string, want: string, whole?: false][] = [
    ['Peat | ARP\\X64\\{0F3C} | 6.0 | local', 'Peat | ARP\\X64\\{0F3C} | 6.0 |  | local'],
    ['Tarn Brook.Tarn | 1.2 | 1.3 | local', 'Tarn | Brook.Tarn | 1.2 | 1.3 | local'],
    ['Rill | Rill.SDK | < 6.0 6.0 | winget', 'Rill | Rill.SDK | < 6.0 | 6.0 | winget'],
    ['Tarn | Sync | Brook.Tarn | local', 'Tarn | Sync | Brook.Tarn |  | local', false],
  ];
  for (const [cells, want, whole = true] of cases) {
    const [name = '', id = '', version = '', source = ''] = cells.split(' | ');
    assert.deepEqual(parseApp({ name, id, version, source }), { ...update(want), whole }, cells);
  }
});

test('a package that cannot be changed says why', () => {
  const cases: [id: string, whole: boolean, want: string | undefined][] = [
    ['Peat.Tool_2-x64', true, undefined],
    ['Brook.TarnS…', true, 'cut'],
    ['Peat.Peat++', true, 'characters'],
    ['MSIX\\Podzim.Poznamky_2.1.0.0_x6…', true, 'windows'],
    ['24.1', false, 'shifted'],
  ];
  const cells = update('x | x | 1 | 2 | winget');
  for (const [id, whole, want] of cases) assert.equal(obstacleOf({ ...cells, id, whole }), want, id);
});
