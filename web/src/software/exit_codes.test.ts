import assert from 'node:assert/strict';
import { test } from 'node:test';
import { codeText } from '../base/format.ts';
import { wordOf, type JobKind } from './exit_codes.ts';

test('exit codes have a meaning per tool', () => {
  const cases: [kind: JobKind, code: number, word: string | undefined, text: string][] = [
    ['update', 2316632107, 'noUpdate', '0x8A15002B'],
    ['uninstall', 0x8a150030, 'uninstaller', '0x8A150030'],
    ['driver', 999, 'refused', '999'],
    ['driver', 5, 'rights', '5'],
    ['driver', 7, 'noAgent', '7'],
    ['update', 5, undefined, '5'],
    ['driver', 0x8a150006, undefined, '0x8A150006'],
  ];
  for (const [kind, code, word, text] of cases)
    assert.deepEqual([wordOf(kind, code), codeText(code)], [word, text], `${kind} ${text}`);
});
