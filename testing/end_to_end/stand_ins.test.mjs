// Other tests rely on the console tool: a fault in it would look like one of the program.
import assert from 'node:assert/strict';
import { readFile, writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { test } from 'node:test';

import { withVarnel } from './harness.mjs';
import { copyInto, makeFolder, prepareWine, runInPrefix, standIn } from './wine.mjs';

test('the console tool does what its script says', async () => {
  await prepareWine();
  const folder = await makeFolder();
  try {
    await copyInto(folder.unix, { 'winget.exe': standIn('console_tool.exe') });
    const run = async (script, ...args) => {
      await writeFile(join(folder.unix, 'winget.json'), JSON.stringify(script));
      return runInPrefix(`${folder.windows}\\winget.exe`, args, {
        env: { VARNEL_TOOL_SCRIPTS: folder.windows },
      });
    };
    assert.deepEqual(
      await run({
        steps: [{ text: 'a\r\n' }, { hex: 'c5be', repeat: 2, delay_ms: 5 }, { text: 'hidden', stderr: true }],
        exit: 7,
      }),
      { code: 7, stdout: 'a\nžž' },
    );
    const cases = {
      cases: [
        { when: 'list', steps: [{ text: 'list' }] },
        { when: 'upgrade', exit: 3 },
      ],
      steps: [{ text: 'else' }],
    };
    assert.deepEqual(await run(cases, 'upgrade', '--id', 'x y'), { code: 3, stdout: '' });
    assert.deepEqual(await run(cases, 'list'), { code: 0, stdout: 'list' });
    assert.deepEqual(await run(cases, 'other'), { code: 0, stdout: 'else' });

    const started = Date.now();
    assert.deepEqual(await run({ steps: [{ text: 'x', grandchild_ms: 700 }] }), { code: 0, stdout: 'x' });
    assert.ok(Date.now() - started >= 700, 'the grandchild keeps the pipe open');

    const lines = (await readFile(join(folder.unix, 'winget.log'), 'utf8')).split('\n');
    assert.equal(lines.length, 6);
    assert.match(lines[1], /winget\.exe"? upgrade --id "x y"$/);
  } finally {
    await folder.remove();
  }
});

test('the program starts the tool that stands beside it', () =>
  withVarnel(
    {
      page: false,
      tools: { 'shutdown.exe': { steps: [{ text: 'bye' }], exit: 5 } },
    },
    async (app) => {
      assert.equal((await app.request('reboot')).success, true);
      assert.deepEqual(await app.toolCalls('shutdown'), ['shutdown /r /t 0']);
    },
  ));
