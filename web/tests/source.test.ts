import assert from 'node:assert/strict';
import { test } from 'node:test';
import { createSource } from '../src/lib/source.ts';

/** A source whose loads the test ends by hand, in the order they began. */
function manual() {
  const loads: Record<'resolve' | 'reject', (end: string) => void>[] = [];
  const source = createSource(
    () => new Promise<string>((resolve, reject) => loads.push({ resolve, reject })),
  );
  const state = () => ({ phase: source.get().phase, data: source.get().data, error: source.get().error });
  return { source, loads, state };
}

test('old data stays while new data loads, and after that fails', async () => {
  const { source, loads, state } = manual();
  assert.deepEqual(state(), { phase: 'idle', data: undefined, error: undefined });
  let done = source.reload();
  assert.deepEqual(state(), { phase: 'loading', data: undefined, error: undefined });
  loads[0]!.resolve('old');
  await done;
  assert.deepEqual(state(), { phase: 'ready', data: 'old', error: undefined });

  done = source.reload();
  assert.equal(state().data, 'old');
  loads[1]!.reject('why');
  await done;
  assert.deepEqual(state(), { phase: 'failed', data: 'old', error: 'why' });

  done = source.reload();
  assert.deepEqual(state(), { phase: 'loading', data: 'old', error: 'why' });
  loads[2]!.resolve('new');
  await done;
  assert.deepEqual(state(), { phase: 'ready', data: 'new', error: undefined });
});

test('a second reload joins the one that runs', async () => {
  const { source, loads } = manual();
  const both = [source.reload(), source.reload()];
  assert.equal(loads.length, 1);
  loads[0]!.resolve('x');
  await Promise.all(both);
  void source.reload();
  assert.equal(loads.length, 2);
});

test('data that was put wins over a load that began before it, also when that fails', async () => {
  for (const end of ['resolve', 'reject'] as const) {
    const { source, loads, state } = manual();
    const done = source.reload();
    source.put('pushed');
    loads[0]![end]('stale');
    await done;
    assert.deepEqual(state(), { phase: 'ready', data: 'pushed', error: undefined });
  }
});
