// What a program leaves behind: which of it is removed and by whom, and how the user chooses.
import assert from 'node:assert/strict';
import { mkdir, rm, symlink, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

import * as harness from './harness.mjs';
import { job, kAgreed, openList, pressSelected, prints, winget } from './winget.mjs';
import { filesBelow, makeFolder, readRegistry, unixPath, withRegistry } from './wine.mjs';

const { asked, closeServiceDialog, dialogOf, openView, press, tick, withVarnel } = harness;

test('which leftovers are removed, and by whom', async () => {
  const place = await makeFolder('users/varnel-test-'); // elsewhere folders are the service's
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
        ['directory', at('tree'), true], // gone already
        ['directory', at('held'), false],
        ['directory', at('with link'), undefined], // Wine cannot remove a link: only its target is looked at
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
      const items = [['registry', 'HKLM\\Software\\x'], [], ['directory', at('beside')]].map(
        ([type, path]) => (type ? { type, path } : 'neither'),
      );
      assert.equal((await app.request('cleanLeftovers', { items })).success, false, 'the others go');
      const gone = ['tree', 'held/file.txt', 'beside', 'outside/file.txt'].map((name) => !there(name));
      assert.deepEqual(gone, [true, false, true, false]);
      assert.deepEqual(await readRegistry(kKey), { a: '"b"' });
      holder.kill('SIGKILL');

      await app.startService({});
      const kTool = 'C:\\Program Files\\Varnel Žluť';
      for (const answer of [{ reply: { success: true } }, { reply: {} }, { reply: [1] }, {}]) {
        await app.scriptService({ '*': answer });
        assert.equal(await clean('directory', kTool), answer.reply?.success === true);
      }
      assert.deepEqual((await asked(app, 'cleanLeftoverPath'))[0].data, { path: kTool });
      // Last: what it would do to the hive if it did anything.
      assert.equal(await clean('registry', 'HKCU\\'), false);
      assert.ok(await readRegistry('HKCU\\Software'), 'the hive is as it was');
    }),
  );
  await place.remove();
});

test('a program is uninstalled and what is left of it goes by choice', async () => {
  const user = `C:\\users\\${userInfo().username}\\AppData`;
  const folders = {
    local: `${user}\\Local\\Brook\\TarnSync`,
    roaming: `${user}\\Roaming\\Tarn Sync`,
    machine: 'C:\\Program Files\\Brook\\Tarn Sync',
  };
  const others = [`${user}\\Local\\Brook\\Other`, 'C:\\Program Files\\Brook\\Other'];
  const [inUser, inMachine] = ['HKCU', 'HKLM'].map((hive) => `${hive}\\Software\\Brook\\TarnSync`);
  const keys = { user: inUser, machine: inMachine, short: 'HKCU\\Software\\TarnSync' };
  const kOtherKey = 'HKCU\\Software\\Brook\\Other';
  const isThere = (path) => (path.startsWith('HK') ? readRegistry(path) : existsSync(unixPath(path)));
  const outside = await makeFolder('varnel-canary-');
  await writeFile(join(outside.unix, 'canary'), 'alive');
  for (const folder of [...Object.values(folders), ...others]) {
    const path = unixPath(folder);
    await mkdir(join(path, 'žluť'), { recursive: true });
    await writeFile(join(path, 'žluť', 'cache.bin'), 'x'.repeat(1500), { mode: 0o444 });
    await symlink(outside.unix, join(path, 'link'));
  }
  const shared = ['HKCU\\Software\\Brook', 'HKLM\\Software\\Brook', keys.short];
  const values = [...Object.values(keys), kOtherKey].map((key) => [`${key}\\Inner`, { a: '"b"' }]);
  const shown = [...Object.values(folders), ...Object.values(keys)];
  const byPublisher = [folders.local, folders.machine, keys.user, keys.machine];
  const tools = winget(
    { when: 'uninstall --id "Heron', ...prints('No\n', 1) },
    { when: 'uninstall', ...prints('Successfully uninstalled\n') },
  );
  const absent = Object.fromEntries(shared.map((key) => [key, null]));
  try {
    await withRegistry({ ...absent, ...Object.fromEntries(values) }, () =>
      withVarnel({ language: 'en', tools }, async (app) => {
        const { page, text } = app;
        const leftovers = (of = '[data-leftover]') =>
          page.locator(of).evaluateAll((all) => all.map((one) => one.dataset.leftover));
        const uninstall = async (name, agree) => {
          await tick(page, text('software.installed'), name);
          await pressSelected(app, 'uninstall', 1);
          const question = await dialogOf(page, text('software.uninstall.title', { n: 1 }));
          await press(question, text(agree ? 'software.uninstall' : 'app.cancel'));
          await question.waitFor({ state: 'detached' });
        };
        await openView(page, 'software');
        await openList(app, 'installed');
        await uninstall('Tarn Sync', false);
        const asksOnly = (await app.toolCalls('winget')).every((line) => !line.includes('uninstall'));
        assert.ok(asksOnly, 'nothing happens before the user agrees');
        await tick(page, text('software.installed'), 'Tarn Sync');
        await uninstall('Heron', true);
        await job(page, 'Heron.MediaSuite', 'failed');
        const looked = app.messages.some(({ type }) => type === 'findLeftovers');
        assert.equal(looked, false, 'nothing is looked for after a program that is still there');
        await uninstall('Tarn Sync', true);
        const dialog = await dialogOf(page, text('leftovers.title', { name: 'Tarn Sync' }));
        const calls = (await app.toolCalls('winget')).filter((line) => line.includes('Tarn'));
        assert.deepEqual(calls, [`winget uninstall --id "Brook.TarnSync" --silent ${kAgreed}`]);
        assert.deepEqual((await leftovers()).toSorted(), shown.toSorted());
        const ticked = (await leftovers('[data-leftover]:has(:checked)')).toSorted();
        assert.deepEqual(ticked, byPublisher.toSorted(), 'what may be shared is not ticked');
        const folder = text('leftovers.directory', { size: harness.inWords(1500) });
        await dialog.getByText(folder).first().waitFor();
        await harness.look(app, 'software-leftovers-en');

        const remove = async (n) => {
          await press(page, text('leftovers.remove', { n }));
          const question = await dialogOf(page, text('leftovers.confirm', { n }));
          for (const path of n === 4 ? byPublisher : [])
            await question.getByText(path, { exact: true }).waitFor();
          await press(question, text('leftovers.verb'));
        };
        await remove(4);
        // Without the service only what is the user's own goes; the rest is offered again.
        await closeServiceDialog(page);
        await app.until(async () => (await leftovers()).length === 2, 'what has stayed');
        assert.equal(await page.getByRole('dialog', { name: text('service.title') }).count(), 0, 'said once');
        assert.deepEqual(await leftovers(), [folders.machine, keys.machine]);
        const gone = await Promise.all(byPublisher.map(isThere));
        assert.deepEqual(gone.map(Boolean), [false, true, false, true]);

        await app.startService({ '*': { reply: { success: true } } });
        await remove(2);
        const removed = text('leftovers.removed', { n: 2 });
        await page.getByRole('status').filter({ hasText: removed }).waitFor();
        const data = async (action) => (await asked(app, action)).map((request) => request.data);
        assert.deepEqual(await data('cleanLeftoverPath'), [{ path: folders.machine }]);
        assert.deepEqual(await data('cleanHKLMRegistry'), [{ subKey: keys.machine.slice(5) }]);
        for (const path of [folders.machine, folders.roaming, ...others, `${keys.short}\\Inner`, kOtherKey])
          assert.ok(await isThere(path), `${path} stays`);
        assert.equal((await filesBelow(outside.unix)).length, 1, 'what a link leads to is untouched');
      }),
    );
  } finally {
    for (const folder of [`${user}\\Local\\Brook`, folders.roaming, 'C:\\Program Files\\Brook'])
      await rm(unixPath(folder), { recursive: true, force: true });
    await outside.remove();
  }
});
