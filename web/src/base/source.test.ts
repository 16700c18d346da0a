import assert from 'node:assert/strict';
import { test } from 'node:test';
import { createSource } from './source.ts';

/** Returns a source whose loads the test ends by hand, in the order in which they began. */
function manual() {
  const loads: Record<'resolve' | 'reject', (end: string) => void>[] = [];
  const load = () => new Promise<string>((resolve, reject) => loads.push({ resolve, reject }));
  const source = createSource(load);
  const state = () => [source.get().phase, source.get().data, source.get().error];
  return { source, loads, state };
}

test('old data stays while new data loads or fails; a second reload joins the first', async () => {
  const { source, loads, state } = manual();
  assert.deepEqual(state(), ['idle', undefined, undefined]);
  const loading = [undefined, 'old', 'old'];
  const before = [undefined, undefined, 'why'];
  const data = ['old', 'old', 'new'];
  const after = [undefined, 'why', undefined];
  for (const [i, end] of (['resolve', 'reject', 'resolve'] as const).entries()) {
    const both = [source.reload(), source.reload()];
    assert.deepEqual(state(), ['loading', loading[i], before[i]]);
    assert.equal(loads.length, i + 1);
    loads[i]![end](after[i] ?? data[i]!);
    await Promise.all(both);
    assert.deepEqual(state(), [after[i] ? 'failed' : 'ready', data[i], after[i]]);
  }
});

test('data from put wins over an earlier load, even a failed one', async () => {
  for (const end of ['resolve', 'reject'] as const) {
    const { source, loads, state } = manual();
    const done = source.reload();
    source.put('pushed');
    loads[0]![end]('stale');
    await done;
    assert.deepEqual(state(), ['ready', 'pushed', undefined]);
  }
});
