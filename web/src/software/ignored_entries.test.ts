import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { Ignored } from '../shell/settings_document.ts';
import { isIgnoredBy, withIgnored } from './ignored_entries.ts';

test('a package or one of its versions can be ignored and restored', () => {
  const driver: Ignored = { id: 'a', type: 'driver' };
  const old = { id: 'a', available: '1.2.0' };
  const later = { id: 'a', available: '1.3.0' };
  const of = (list: readonly Ignored[]) => [old, later, { ...old, id: 'b' }].map(isIgnoredBy(list));
  const skipped = withIgnored([driver], [old], 'version');
  const always = withIgnored(skipped, [old], 'always');
  assert.deepEqual(of([driver]), [false, false, false]);
  assert.deepEqual(skipped, [driver, { id: 'a', type: 'software', version: '1.2.0' }]);
  assert.deepEqual(of(skipped), [true, false, false]);
  assert.deepEqual(of(always), [true, true, false]);
  assert.deepEqual(withIgnored(always, [later], 'never'), [driver]);
});
