// Tests which leftovers of a program are removed by whom, and how the user chooses them.
import assert from 'node:assert/strict';
import { mkdir, rm, symlink, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { kAgreed, openList, pressSelected, prints, winget } from './winget.mjs';
import { makeFolder, readRegistry, unixPath, withRegistry } from './wine.mjs';

const { asked, closeServiceDialog, dialogOf, openView, press, tick, withVarnel } = harness;

test('leftovers are removed by the program or by the service', async () => {
  const place = await makeFolder('users/varnel-test-'); // other folders belong to the service
  const at = (name) => `${place.windows}\\${name}`;
  const kKey = 'HKCU\\Software\\VarnelTestMaker';
  for (const name of ['held', 'tree/deep', 'beside', 'outside', 'with link']) {
    await mkdir(join(place.unix, name), { recursive: true });
    await writeFile(join(place.unix, name, 'file.txt'), 'x', { mode: name === 'tree/deep' ? 0o444 : 0o644 });
  }
  await symlink(join(place.unix, 'outside'), join(place.unix, 'link'));
  await symlink(join(place.unix, 'outside'), join(place.unix, 'with link', 'link'));
  const there = (name) => existsSync(join(place.unix, name));
  const holds = { steps: [{ hold: at('held\\file.txt'), text: 'held' }, { delay_ms: 600_000 }] };
  await withRegistry({ [kKey]: { a: '"b"' }, [`${kKey}\\Tool\\Deep`]: { a: '"b"' } }, () =>
    withVarnel({ page: false, tools: { 'holder.exe': holds } }, async (app) => {
      const holder = await app.startTool('holder');
      const clean = async (type, path) =>
        (await app.request('cleanLeftovers', { items: [{ type, path }] })).success;
      for (const [type, path, want] of [
        ['directory', at('tree'), true],
        ['directory', at('tree'), true], // already gone
        ['directory', at('held'), false],
        ['directory', at('with link'), undefined], // Wine cannot remove a link, so only its target is checked
        ['directory', at('link'), undefined],
        ['', at('outside'), false],
        ['file', at('outside'), false],
        ['registry', `${kKey}\\Tool`, true],
        ['registry', `${kKey}\\Tool`, false],
        ['registry', kKey.toLowerCase(), false],
        ['registry', 'HKCR\\VarnelTest', false],
        ['registry', 'HKLM\\Software\\VarnelTestMaker', false],
        ['directory', 'C:\\Program Files\\VarnelTestTool', false],
        ['directory', '', false],
      ]) {
        const got = await clean(type, path);
        if (want !== undefined) assert.equal(got, want, `${type} ${path}`);
      }
      const items = ['neither', { type: 'registry', path: 'HKLM\\Software\\x' }];
      items.push({ type: 'directory', path: at('beside') });
      assert.equal((await app.request('cleanLeftovers', { items })).success, false, 'the others go');
      const gone = ['tree', 'held/file.txt', 'beside', 'outside/file.txt'].map((name) => !there(name));
      assert.deepEqual(gone, [true, false, true, false]);
      assert.deepEqual(await readRegistry(kKey), { a: '"b"' });
      holder.kill('SIGKILL');

      // Last, because of the damage to the hive if it did anything.
      assert.equal(await clean('registry', 'HKCU\\'), false);
      assert.ok(await readRegistry('HKCU\\Software'), 'the hive is as it was');
    }),
  );
  await place.remove();
});

test('a program is uninstalled and its selected leftovers are removed', async () => {
  const user = `C:\\users\\${userInfo().username}\\AppData`;
  const [local, machine] = [`${user}\\Local\\Brook\\TarnSync`, 'C:\\Program Files\\Brook\\Tarn Sync'];
  const stays = [`${user}\\Roaming\\Tarn Sync`, `${user}\\Local\\Brook\\Other`];
  const [inUser, inMachine] = ['HKCU', 'HKLM'].map((hive) => `${hive}\\Software\\Brook\\TarnSync`);
  const [short, otherKey] = ['HKCU\\Software\\TarnSync', 'HKCU\\Software\\Brook\\Other'];
  const isThere = (path) => (path.startsWith('HK') ? readRegistry(path) : existsSync(unixPath(path)));
  for (const folder of [local, machine, ...stays]) {
    const path = unixPath(folder);
    await mkdir(join(path, 'žluť'), { recursive: true });
    await writeFile(join(path, 'žluť', 'cache.bin'), 'x'.repeat(1500), { mode: 0o444 });
  }
  const values = [inUser, inMachine, short, otherKey].map((key) => [`${key}\\Inner`, { a: '"b"' }]);
  const absent = ['HKCU\\Software\\Brook', 'HKLM\\Software\\Brook', short].map((key) => [key, null]);
  const byPublisher = [local, machine, inUser, inMachine];
  const tools = winget({ when: 'uninstall', ...prints('Successfully uninstalled\n') });
  try {
    await withRegistry(Object.fromEntries([...absent, ...values]), () =>
      withVarnel({ language: 'en', tools }, async (app) => {
        const { page, text } = app;
        const leftovers = (of = '[data-leftover]') =>
          page.locator(of).evaluateAll((all) => all.map((one) => one.dataset.leftover).sort());
        const uninstall = async (answer) => {
          await pressSelected(app, 'uninstall', 1);
          await press(await dialogOf(page, text('software.uninstall.title', { n: 1 })), text(answer));
        };
        const calls = async () =>
          (await app.toolCalls('winget')).filter((line) => line.includes('uninstall'));
        await openView(page, 'software');
        await openList(app, 'installed');
        await tick(page, text('software.installed'), 'Tarn Sync');
        await uninstall('app.cancel');
        assert.deepEqual(await calls(), [], 'nothing happens before the user agrees');
        await uninstall('software.uninstall');
        const dialog = await dialogOf(page, text('leftovers.title', { name: 'Tarn Sync' }));
        assert.deepEqual(await calls(), [`winget uninstall --id "Brook.TarnSync" --silent ${kAgreed}`]);
        assert.deepEqual(await leftovers(), [...byPublisher, stays[0], short].sort());
        const ticked = await leftovers('[data-leftover]:has(:checked)');
        assert.deepEqual(ticked, byPublisher.toSorted(), 'what may be shared is not ticked');
        const folder = text('leftovers.directory', { size: harness.inWords(1500) });
        await dialog.getByText(folder).first().waitFor();
        await harness.look(app, 'software-leftovers-en');

        const remove = async (paths) => {
          await press(page, text('leftovers.remove', { n: paths.length }));
          const question = await dialogOf(page, text('leftovers.confirm', { n: paths.length }));
          for (const path of paths) await question.getByText(path, { exact: true }).waitFor();
          await press(question, text('leftovers.verb'));
        };
        await remove(byPublisher);
        // Without the service, only the user's own leftovers are removed; the rest is offered again.
        await closeServiceDialog(page);
        await app.until(async () => (await leftovers()).length === 2, 'what has stayed');
        assert.deepEqual(await leftovers(), [machine, inMachine].sort());
        const gone = await Promise.all(byPublisher.map(isThere));
        assert.deepEqual(gone.map(Boolean), [false, true, false, true]);

        await app.startService({ '*': { reply: { success: true } } });
        await remove([machine, inMachine]);
        const removed = text('leftovers.removed', { n: 2 });
        await page.getByRole('status').filter({ hasText: removed }).waitFor();
        assert.deepEqual((await asked(app, 'cleanLeftoverPath'))[0].data, { path: machine });
        assert.deepEqual((await asked(app, 'cleanHKLMRegistry'))[0].data, { subKey: inMachine.slice(5) });
        for (const path of [...stays, `${short}\\Inner`, otherKey])
          assert.ok(await isThere(path), `${path} stays`);
      }),
    );
  } finally {
    for (const folder of [`${user}\\Local\\Brook`, stays[0], 'C:\\Program Files\\Brook'])
      await rm(unixPath(folder), { recursive: true, force: true });
  }
});
