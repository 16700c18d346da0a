import assert from 'node:assert/strict';
import { mkdir, readFile, writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { test } from 'node:test';

import { withVarnel } from './harness.mjs';
import { buildFolder, copyInto, makeFolder, standIn } from './wine.mjs';

const kOrigin = 'https://varnel.local';

test('the control is set up as the page needs it', () =>
  withVarnel({ page: false }, async (app) => {
    const { recorded } = app;
    assert.match(
      recorded.environment.userDataFolder,
      /^C:\\users\\[^\\]+\\AppData\\Local\\Varnel\\Varnel\.UserData$/i,
    );
    assert.equal(recorded.environment.browserFolder, '');
    assert.equal(recorded.environment.hasOptions, false);
    assert.equal(recorded.controller.parentClass, 'VarnelWebView2Window');
    assert.deepEqual(recorded.settings, {
      areDevToolsEnabled: false,
      areDefaultContextMenusEnabled: false,
      isStatusBarEnabled: false,
    });
    assert.deepEqual(recorded.filters, [{ uri: `${kOrigin}/*`, context: 0 }]);
    assert.deepEqual(recorded.handlers.toSorted(), [
      'NavigationCompleted',
      'WebMessageReceived',
      'WebResourceRequested',
    ]);
    assert.equal(recorded.folder, undefined, 'no folder is mapped that is not there');
    assert.deepEqual(recorded.calls.slice(0, 2), [
      ['put_DefaultBackgroundColor', [255, 13, 13, 23]],
      ['put_IsVisible', true],
    ]);
    assert.deepEqual(recorded.navigations, [`${kOrigin}/index.html`]);
  }));

test('the executable serves its five files and nothing else', () =>
  withVarnel({ page: false }, async (app) => {
    for (const [path, file, type] of [
      ['/', 'index.html', 'text/html; charset=utf-8'],
      ['/index.html', 'index.html', 'text/html; charset=utf-8'],
      ['/css/style.css', 'css/style.css', 'text/css; charset=utf-8'],
      ['/js/app.js', 'js/app.js', 'application/javascript; charset=utf-8'],
      ['/app.png', 'app.png', 'image/png'],
      ['/app.ico', 'app.ico', 'image/x-icon'],
    ]) {
      const answer = await app.resource(kOrigin + path);
      assert.ok(answer, path);
      assert.equal(answer.headers, `Content-Type: ${type}\r\nAccess-Control-Allow-Origin: *`);
      assert.deepEqual([answer.status, answer.reason], [200, 'OK']);
      assert.ok(
        answer.body.equals(await readFile(join(buildFolder, 'web', file))),
        `${path} is not the built ${file}`,
      );
    }
    for (const path of [
      '/js/app.js?v=1',
      '/index.html#top',
      '/Index.html',
      '/css',
      '/index.htm',
      '/index.html/',
      '//index.html',
    ]) {
      assert.equal(await app.resource(kOrigin + path), undefined, path);
    }
    assert.ok(await app.resource(`${kOrigin}/app.png`, 'fetch'), 'the filter is for every context');
    assert.equal(await app.resource('https://example.com/index.html'), undefined);
  }));

test('other paths come from the public folder, the one beside the executable before the one above', async (t) => {
  for (const [inside, wanted] of [
    [['public'], '..\\public'],
    [['public', 'bin/public'], 'public'],
  ]) {
    await t.test(inside.join(' and '), async () => {
      const folder = await makeFolder();
      await copyInto(join(folder.unix, 'bin'), {
        'Varnel.exe': join(buildFolder, 'bin/Varnel.exe'),
        'WebView2Loader.dll': standIn('WebView2Loader.dll'),
      });
      for (const name of inside) {
        await mkdir(join(folder.unix, name));
        await writeFile(join(folder.unix, name, 'extra.txt'), `from ${name}`);
      }
      await withVarnel({ folder }, async (app) => {
        assert.deepEqual(app.recorded.folder, {
          host: 'varnel.local',
          folder: `${folder.windows}\\bin\\${wanted}`,
          access: 1,
        });
        assert.equal(
          await app.page.evaluate(() => fetch('/extra.txt?v=1').then((response) => response.text())),
          `from ${inside.at(-1)}`,
        );
      });
    });
  }
});

test('each load of the page pushes the status', () =>
  withVarnel({}, async (app) => {
    const pushed = () => app.messages.filter(({ type, requestId }) => type === 'status' && requestId === 0);
    await app.waitUntil(() => pushed().length === 1, 'the first status push');
    await app.page.reload();
    await app.waitUntil(() => pushed().length === 2, 'the second status push');
    assert.deepEqual(Object.keys(pushed()[1].specs), [
      'cpu',
      'gpu',
      'motherboard',
      'os',
      'ram',
      'ramTooltip',
    ]);
  }));

test('without a browser runtime the window stays and nothing crashes', async (t) => {
  const kNoRuntime = 0x80070002 - 2 ** 32;
  for (const [name, options] of [
    ['no loader and no installed runtime', { loader: false }],
    ['the environment cannot be made', { environmentError: kNoRuntime }],
    ['the controller cannot be made', { controllerError: kNoRuntime }],
  ]) {
    await t.test(name, async () => {
      await withVarnel({ ...options, page: false }, async (app) => {
        const window = await app.window('find', 'send:1025,0,0');
        assert.equal(window.title, 'Varnel');
        assert.equal(window.visible, true);
        assert.deepEqual(app.recorded.navigations, []);
        assert.deepEqual((await app.window('send:274,1002,0', 'wait_exit')).exitCode, 0);
      });
    });
  }
});

test('--silent-clean is found anywhere in the command line', async () => {
  await withVarnel({ args: ['--quiet', 'x--silent-clean=now', '/y'] }, async (app) => {
    assert.equal(await app.exited, 0);
    assert.equal(app.recorded.environment, undefined);
  });
});
