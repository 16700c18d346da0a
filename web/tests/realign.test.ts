import assert from 'node:assert/strict';
import { test } from 'node:test';
import { obstacleOf, realignApp, realignUpdate, type Obstacle } from '../src/lib/realign.ts';

const asCells = ([name, id, version, available, source]: string[]) => ({
  name: name!,
  id: id!,
  version: version!,
  available: available!,
  source: source!,
});
const asApp = ([name, id, version, source]: string[]) => ({
  name: name!,
  id: id!,
  version: version!,
  source: source!,
});

// Cells as the host cuts them; what it fills in itself is the "winget" or "local" at the end.
test('rows of updates are put back into their columns, from the right', () => {
  const tarn = ['Tarn Sync', 'Brook.TarnSync', '1.0.2', '1.2.0', 'winget'];
  const heron = ['Heron Media Suite 2024 (x64)', 'Heron.MediaSuite', '24.1', '24.3.1', 'winget'];
  const cases: [name: string, input: string[], want: string[] | 'as it came'][] = [
    ['whole', tarn, tarn],
    [
      'whole, of the store',
      ['Copse', '9QX2B4LMN0PR', '3.1', '3.2', 'msstore'],
      ['Copse', '9QX2B4LMN0PR', '3.1', '3.2', 'msstore'],
    ],
    [
      'whole, of a private source',
      ['Copse', 'Wood.Copse', '3.1', '3.2', 'forest'],
      ['Copse', 'Wood.Copse', '3.1', '3.2', 'forest'],
    ],
    [
      'whole, words for versions',
      ['Fen', 'Fen.Viewer', 'Unknown', 'nightly', 'winget'],
      ['Fen', 'Fen.Viewer', 'Unknown', 'nightly', 'winget'],
    ],
    [
      'name and id in one cell',
      ['Heron Media Suite 2024 (x64) Heron.MediaSuite', '24.1', '24.3.1', 'winget', 'winget'],
      heron,
    ],
    [
      'both versions in one cell',
      ['Copse', '9QX2B4LMN0PR', '3.1.0.0 3.2.0.0', 'msstore', 'winget'],
      ['Copse', '9QX2B4LMN0PR', '3.1.0.0', '3.2.0.0', 'msstore'],
    ],
    [
      'a bound as the version',
      ['Rill SDK', 'Rill.SDK', '< 6.0.8 6.0.8', 'winget', 'winget'],
      ['Rill SDK', 'Rill.SDK', '< 6.0.8', '6.0.8', 'winget'],
    ],
    [
      'a bound in its own cell',
      ['Rill SDK', 'Rill.SDK', '< 6.0.8', '6.0.8', 'winget'],
      ['Rill SDK', 'Rill.SDK', '< 6.0.8', '6.0.8', 'winget'],
    ],
    ['id and version in one cell', ['Tarn Sync', 'Brook.TarnSync 1.0.2', '1.2.0', 'winget', 'winget'], tarn],
    [
      'version and source in one cell',
      ['Tarn Sync', 'Brook.TarnSync', '1.0.2', '1.2.0 winget', 'winget'],
      tarn,
    ],
    [
      'two blanks in the name',
      ['Tarn', 'Sync', 'Brook.TarnSync', '1.0.2', '1.2.0'],
      ['Tarn Sync', 'Brook.TarnSync', '1.0.2', '1.2.0', ''],
    ],
    [
      'two blanks in the name, which looks like an id',
      ['Tarn', 'Node.js', 'Brook.TarnSync', '1.0.2', '1.2.0'],
      ['Tarn Node.js', 'Brook.TarnSync', '1.0.2', '1.2.0', ''],
    ],
    [
      'figures begin the id',
      ['8x8 Work 8x8.Work', '7.1', '7.2', 'winget', 'winget'],
      ['8x8 Work', '8x8.Work', '7.1', '7.2', 'winget'],
    ],
    [
      'a version with a word',
      ['Fen Toolkit Fen.Toolkit', '7.0.4', '7.1.0-preview.12', 'winget', 'winget'],
      ['Fen Toolkit', 'Fen.Toolkit', '7.0.4', '7.1.0-preview.12', 'winget'],
    ],
    [
      'cut cells',
      ['Heron Media Suite wit… Heron.MediaSuite.Prof…', '24.1.10031…', '24.3', 'winget', 'winget'],
      ['Heron Media Suite wit…', 'Heron.MediaSuite.Prof…', '24.1.10031…', '24.3', 'winget'],
    ],
    [
      'wide characters',
      ['竹林メモ Chikurin.Memo', '4.0', '4.1', 'winget', 'winget'],
      ['竹林メモ', 'Chikurin.Memo', '4.0', '4.1', 'winget'],
    ],
    ['the headings of a second table', ['Name', 'ID', 'Version', 'Verfügbar', 'Quelle'], 'as it came'],
    ['no installed version', ['Tarn Sync', 'Brook.TarnSync', '1.2.0', 'winget', 'winget'], 'as it came'],
    [
      'a word for a version in a shifted row',
      ['Tarn Sync Brook.TarnSync', 'nightly', '1.2.0', 'winget', 'winget'],
      'as it came',
    ],
    ['no id', ['Tarn', 'Sync', '1.0.2', '1.2.0', 'winget'], 'as it came'],
    ['no name', ['Brook.TarnSync', '1.0.2', '1.2.0', 'winget', 'winget'], 'as it came'],
  ];
  for (const [name, input, want] of cases) {
    const came = want === 'as it came';
    assert.deepEqual(realignUpdate(asCells(input)), { ...asCells(came ? input : want), whole: !came }, name);
  }
});

test('rows of installed programs have three to five values', () => {
  const cases: [name: string, input: string[], want: string[] | 'as it came', available?: string][] = [
    [
      'all five',
      ['Tarn Sync', 'Brook.TarnSync', '1.2.0', 'winget'],
      ['Tarn Sync', 'Brook.TarnSync', '1.2.0', 'winget'],
    ],
    [
      'of Windows',
      ['Peat Audio', 'ARP\\Machine\\X64\\{0F3C}', '6.0.1', 'local'],
      ['Peat Audio', 'ARP\\Machine\\X64\\{0F3C}', '6.0.1', 'local'],
    ],
    ['a bound', ['Rill SDK', 'Rill.SDK', '> 4.1', 'winget'], ['Rill SDK', 'Rill.SDK', '> 4.1', 'winget']],
    [
      'name and id in one cell, then the source',
      ['Tarn Sync Brook.TarnSync', '1.2.0', 'winget', 'local'],
      ['Tarn Sync', 'Brook.TarnSync', '1.2.0', 'winget'],
    ],
    [
      'name and id in one cell, then the available version',
      ['Heron 24 (x64) Heron.MediaSuite', '24.1', '24.3.1', 'local'],
      ['Heron 24 (x64)', 'Heron.MediaSuite', '24.1', 'local'],
      '24.3.1',
    ],
    [
      'id and version in one cell',
      ['Tarn', 'MSIX\\Podzim_2.1.0.0_x64__h4k9 2.1.0.0', 'winget', 'local'],
      ['Tarn', 'MSIX\\Podzim_2.1.0.0_x64__h4k9', '2.1.0.0', 'winget'],
    ],
    [
      'versions in one cell',
      ['Rill SDK', 'Rill.SDK', '< 6.0.8 6.0.8', 'winget'],
      ['Rill SDK', 'Rill.SDK', '< 6.0.8', 'winget'],
      '6.0.8',
    ],
    ['two blanks in the name', ['Tarn', 'Sync', 'Brook.TarnSync', 'local'], 'as it came'],
  ];
  for (const [name, input, want, available = ''] of cases) {
    const came = want === 'as it came';
    assert.deepEqual(
      realignApp(asApp(input)),
      { ...asApp(came ? input : want), available, whole: !came },
      name,
    );
  }
});

test('what cannot be acted on says why', () => {
  const cases: [id: string, whole: boolean, want: Obstacle | undefined][] = [
    ['Brook.TarnSync', true, undefined],
    ['Peat.Tool_2-x64', true, undefined],
    ['Brook.TarnS…', true, 'cut'],
    ['Peat.Peat++', true, 'characters'],
    ['ARP\\Machine\\X64\\{0F3C}', true, 'windows'],
    ['MSIX\\Podzim.Poznamky_2.1.0.0_x6…', true, 'windows'],
    ['24.1', false, 'shifted'],
  ];
  for (const [id, whole, want] of cases) {
    assert.equal(
      obstacleOf({ name: 'x', id, version: '1', available: '2', source: 'winget', whole }),
      want,
      id,
    );
  }
});
