// What the program asks of the browser control and of Windows: its window, its files, its start without a browser.
import assert from 'node:assert/strict';
import { mkdir, readFile, writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { test } from 'node:test';
import { isDeepStrictEqual } from 'node:util';

import { withVarnel } from './harness.mjs';
import { buildFolder, copyInto, makeFolder, standIn, withRegistry, writeRegistry } from './wine.mjs';

const kOrigin = 'https://varnel.local';
const kNoPage = { page: false };

test('the control is set up as the page needs it', () =>
  withVarnel(kNoPage, async (app) => {
    const { recorded } = app;
    assert.match(
      recorded.environment.userDataFolder,
      /^C:\\users\\[^\\]+\\AppData\\Local\\Varnel\\Varnel\.UserData$/i,
    );
    assert.deepEqual(
      [recorded.environment.browserFolder, recorded.environment.hasOptions, recorded.controller.parentClass],
      ['', false, 'VarnelWebView2Window'],
    );
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
  withVarnel(kNoPage, async (app) => {
    for (const [path, file, type] of [
      ['/', 'index.html', 'text/html; charset=utf-8'],
      ['/index.html', 'index.html', 'text/html; charset=utf-8'],
      ['/css/style.css', 'css/style.css', 'text/css; charset=utf-8'],
      ['/js/app.js', 'js/app.js', 'application/javascript; charset=utf-8'],
      ['/app.png', 'app.png', 'image/png'],
      ['/app.ico', 'app.ico', 'image/x-icon'],
    ]) {
      const { body, ...answer } = await app.resource(kOrigin + path);
      const headers = `Content-Type: ${type}\r\nAccess-Control-Allow-Origin: *`;
      assert.deepEqual(answer, { ...answer, status: 200, reason: 'OK', headers }, path);
      assert.ok(
        body.equals(await readFile(join(buildFolder, 'web', file))),
        `${path} is not the built ${file}`,
      );
    }
    for (const path of [
      '/js/app.js?v=1',
      '/index.html#top',
      '/Index.html',
      '/css',
      '/index.html/',
      '//index.html',
    ])
      assert.equal(await app.resource(kOrigin + path), undefined, path);
    assert.equal(await app.resource(`https://example.com/?${kOrigin}/index.html`), undefined);
    assert.equal(await app.resource(`${kOrigin}/${kOrigin}/index.html`), undefined);
    assert.ok(await app.resource(`${kOrigin}/app.png`, 'fetch'), 'the filter is for every context');
  }));

test('other paths come from the public folder, the one beside the executable before the one above', async () => {
  for (const [inside, wanted] of [
    [['public'], '..\\public'],
    [['public', 'bin/public'], 'public'],
  ]) {
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
      const windows = `${folder.windows}\\bin\\${wanted}`;
      assert.deepEqual(app.recorded.folder, { host: 'varnel.local', folder: windows, access: 1 });
      const text = () => fetch('/extra.txt?v=1').then((response) => response.text());
      assert.equal(await app.page.evaluate(text), `from ${inside.at(-1)}`);

      const pushed = () => app.messages.filter(({ type, requestId }) => type === 'status' && requestId === 0);
      await app.until(() => pushed().length === 1, 'the first status push');
      await app.page.reload();
      await app.until(() => pushed().length === 2, 'the second status push');
    });
  }
});

// --- the window -------------------------------------------------------------------------------------------------------

// Window messages and words, as other processes send them.
const kClose = 16,
  kHitTest = 132,
  kMove = 3,
  kSetFocus = 7,
  kSysCommand = 274,
  kPostJson = 1025;
const kCaption = 2;
const kOverlappedWindow = 0x00cf0000;

test('the window, its least size, and its own commands', async () => {
  await withVarnel(kNoPage, async (app) => {
    const { title, style, classStyle, width, height, left, top } = await app.window('find');
    assert.deepEqual([title, style & kOverlappedWindow, classStyle], ['Varnel', kOverlappedWindow, 3]);
    assert.deepEqual([width, height], [1400, 900]);
    // The place of the icon acts as caption.
    const points = [8, 200].map((x) => ((top + 12) << 16) | ((left + x) & 0xffff));
    const { results } = await app.window(...points.map((point) => `send:${kHitTest},0,${point}`));
    assert.deepEqual(results, [kCaption, kCaption]);

    for (const [asked, want] of [
      ['1300,800', [1300, 800]],
      ['300,200', [1250, 700]],
    ]) {
      const count = app.recorded.bounds.length;
      const window = await app.window('find', `resize:${asked}`);
      assert.deepEqual([window.width, window.height], want);
      await app.until(() => app.recorded.bounds.length > count, 'new bounds');
      const [right, bottom] = [window.clientWidth, window.clientHeight];
      assert.deepEqual(app.recorded.bounds.at(-1), { left: 0, top: 0, right, bottom });
    }

    const from = app.texts.length;
    await app.window(`send:${kSysCommand},1000,0`, `send:${kSysCommand},1001,0`, `send:${kPostJson},0,0`);
    await app.request('testBridge');
    assert.deepEqual(app.texts.slice(from, -1), [
      '{"type":"triggerUpdateCheck"}',
      '{"type":"navigateTab","tab":"settings"}',
    ]);
    assert.equal((await app.window(`send:${kSysCommand},1002,0`, 'wait_exit')).exitCode, 0);
  });
  await withVarnel(kNoPage, async (app) => {
    assert.equal((await app.window(`send:${kClose},0,0`, 'wait_exit')).exitCode, 0);
  });
});

test('the control is told of what a child window cannot see', () =>
  withVarnel(kNoPage, async (app) => {
    const { calls } = app.recorded;
    const [kMinimize, kRestore] = [0xf020, 0xf120];
    const kMoved = ['NotifyParentWindowPositionChanged', null];
    for (const [what, step, wanted] of [
      ['focus', `send:${kSetFocus},0,0`, ['MoveFocus', 0]],
      ['moved', `send:${kMove},0,0`, kMoved],
      ['dragged', `move:40,30`, kMoved],
      ['minimized', `send:${kSysCommand},${kMinimize},0`, ['put_IsVisible', false]],
      ['restored', `send:${kSysCommand},${kRestore},0`, ['put_IsVisible', true]],
    ]) {
      const from = calls.length;
      await app.window('find', step);
      await app.until(
        () => calls.slice(from).some((call) => isDeepStrictEqual(call, wanted)),
        `the control to be told: ${what}`,
      );
    }
  }));

// A display of more than 96 dpi: the virtual one has 1600 x 1000 pixels, all of them work area.
const kDesktop = 'HKCU\\Control Panel\\Desktop';

test('the sizes follow the display, but not beyond its work area', async () => {
  for (const [dpi, first, least] of [
    [105, [1531, 984], [1367, 766]],
    [144, [1600, 1000], [1600, 1000]],
  ]) {
    const sized = async (app) => {
      const window = await app.window('find');
      assert.deepEqual([window.width, window.height], first, `${dpi} dpi`);
      const smallest = await app.window('find', 'resize:300,200');
      assert.deepEqual([smallest.width, smallest.height], least, `${dpi} dpi`);
    };
    await withRegistry({ [kDesktop]: undefined }, async () => {
      await writeRegistry({ [kDesktop]: { LogPixels: `dword:${dpi.toString(16)}` } });
      await withVarnel(kNoPage, sized);
    });
  }
});

test('a display of another scale places the window', () =>
  withVarnel(kNoPage, async (app) => {
    const { left, top, width, height } = await app.window('find', 'dpi:60,40,1420,930');
    assert.deepEqual([left, top, width, height], [60, 40, 1420, 930]);
  }));

test('without a browser runtime the window stays and nothing crashes', async () => {
  const kNoRuntime = 0x80070002 - 2 ** 32;
  for (const [name, options] of Object.entries({
    'no loader and no installed runtime': { loader: false },
    'the environment cannot be made': { environmentError: kNoRuntime },
    'the controller cannot be made': { controllerError: kNoRuntime },
  })) {
    await withVarnel({ ...options, ...kNoPage }, async (app) => {
      const window = await app.window('find', `send:${kPostJson},0,0`);
      assert.deepEqual([window.title, window.visible, app.recorded.navigations], ['Varnel', true, []], name);
      assert.equal((await app.window(`send:${kClose},0,0`, 'wait_exit')).exitCode, 0, name);
    });
  }
});

test('--silent-clean is found anywhere in the command line', () =>
  withVarnel({ args: ['--quiet', 'x--silent-clean=now', '/y'] }, async (app) => {
    assert.equal(await app.exited, 0);
    assert.equal(app.recorded.environment, undefined);
  }));

// --- the driver -------------------------------------------------------------------------------------------------------

test('what goes wrong in the page fails the test that has it', () =>
  assert.rejects(
    withVarnel({}, async ({ page }) => {
      await page.waitForSelector('main[data-view]');
      await page.evaluate(async () => {
        console.error('left behind');
        setTimeout(() => Promise.reject(new Error('lost')));
        await fetch('/missing.js').catch(() => {});
        document.body.setAttribute('style', 'color: red');
        document.querySelector('main').append(document.createElement('button'));
      });
    }),
    ({ message }) =>
      [
        /axe-core found:\nbutton-name/,
        /console: left behind/,
        /page error: Error: lost/,
        /request failed: https:\/\/varnel\.local\/missing\.js/,
        /policy report: style-src/,
      ].every((problem) => problem.test(message) || assert.fail(`${problem} is not in ${message}`)),
  ));
