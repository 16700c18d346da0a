// What the program asks of the browser control and of Windows: its window, its files, its start without a browser.
import assert from 'node:assert/strict';
import { mkdir, readFile, writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { test } from 'node:test';
import { isDeepStrictEqual } from 'node:util';

import { withVarnel } from './harness.mjs';
import { buildFolder, makeFolder, prepareWine, withRegistry, writeRegistry } from './wine.mjs';

const kOrigin = 'https://varnel.local';
const kNoPage = { page: false };

test('the control is set up as the page needs it, and only then led to it', () =>
  withVarnel(kNoPage, async ({ calls }) => {
    const [, [folder, data, hasOptions]] = calls[0];
    assert.deepEqual([folder, hasOptions], ['', false]);
    assert.match(data, /^C:\\users\\[^\\]+\\AppData\\Local\\Varnel\\Varnel\.UserData$/i);
    assert.deepEqual(
      calls.map(([name, argument]) => (name === 'put_Bounds' ? name : [name, argument])).slice(1, 13),
      [
        ['CreateCoreWebView2Controller', 'VarnelWebView2Window'],
        ['put_DefaultBackgroundColor', [255, 13, 13, 23]],
        ['put_AreDevToolsEnabled', false],
        ['put_AreDefaultContextMenusEnabled', false],
        ['put_IsStatusBarEnabled', false],
        ['put_IsVisible', true],
        'put_Bounds',
        ['AddWebResourceRequestedFilter', [`${kOrigin}/*`, 0]], // of every kind
        ['add_WebResourceRequested', null],
        ['add_WebMessageReceived', null],
        ['add_NavigationCompleted', null],
        ['Navigate', `${kOrigin}/index.html`],
      ],
    );
  }));

test('the executable serves its five files and nothing else', () =>
  withVarnel(kNoPage, async (app) => {
    for (const [path, type, file = path.slice(1)] of [
      ['/', 'text/html; charset=utf-8', 'index.html'],
      ['/index.html', 'text/html; charset=utf-8'],
      ['/css/style.css', 'text/css; charset=utf-8'],
      ['/js/app.js', 'application/javascript; charset=utf-8'],
      ['/app.png', 'image/png'],
      ['/app.ico', 'image/x-icon'],
    ]) {
      const { body, ...answer } = await app.resource(kOrigin + path);
      const headers = `Content-Type: ${type}\r\nAccess-Control-Allow-Origin: *`;
      assert.deepEqual(answer, { status: 200, reason: 'OK', headers }, path);
      assert.ok(body.equals(await readFile(join(buildFolder, 'web', file))), `${path} is not the built file`);
    }
    const others = [
      '/js/app.js?v=1',
      '/index.html#top',
      '/Index.html',
      '/css',
      '/index.html/',
      '//index.html',
    ];
    for (const uri of [...others, `/${kOrigin}/index.html`].map((path) => kOrigin + path))
      assert.equal(await app.resource(uri), undefined, uri);
  }));

test('other paths come from the public folder, the one beside the executable before the one above', async () => {
  await prepareWine();
  const folder = await makeFolder();
  for (const [name, windows] of [
    ['public', '..\\public'],
    ['bin/public', 'public'],
  ]) {
    await mkdir(join(folder.unix, name));
    await writeFile(join(folder.unix, name, 'extra.txt'), `from ${name}`);
    await withVarnel({ folder }, async (app) => {
      const mapping = app.calls.find(([call]) => call === 'SetVirtualHostNameToFolderMapping')[1];
      const wanted = { host: 'varnel.local', folder: `${folder.windows}\\bin\\${windows}`, access: 1 };
      assert.deepEqual(mapping, wanted);
      const text = () => fetch('/extra.txt?v=1').then((response) => response.text());
      assert.equal(await app.page.evaluate(text), `from ${name}`);
    });
  }
  await folder.remove();
});

// --- the window -------------------------------------------------------------------------------------------------------

// Window messages and words, as other processes send them.
const [kClose, kHitTest, kMove, kSetFocus, kSysCommand, kPostJson] = [16, 132, 3, 7, 274, 1025];
const kCaption = 2;
const kOverlappedWindow = 0x00cf0000;
const sizeOf = ({ width, height }) => [width, height];

test('the window, its least size, and its own commands', async () => {
  await withVarnel(kNoPage, async (app) => {
    const { title, style, classStyle, left, top, ...size } = await app.window('find');
    assert.deepEqual([title, style & kOverlappedWindow, classStyle], ['Varnel', kOverlappedWindow, 3]);
    assert.deepEqual(sizeOf(size), [1400, 900]);
    // The place of the icon acts as caption.
    const points = [8, 200].map((x) => ((top + 12) << 16) | ((left + x) & 0xffff));
    const { results } = await app.window(...points.map((point) => `send:${kHitTest},0,${point}`));
    assert.deepEqual(results, [kCaption, kCaption]);

    for (const [asked, want] of [
      ['1300,800', [1300, 800]],
      ['300,200', [1250, 700]],
    ]) {
      const window = await app.window('find', `resize:${asked}`);
      assert.deepEqual(sizeOf(window), want);
      await told(app, ['put_Bounds', [0, 0, window.clientWidth, window.clientHeight]]);
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

// Waits for a call of the control.
const told = (app, wanted, from = 0) =>
  app.until(
    () => app.calls.slice(from).some((call) => isDeepStrictEqual(call, wanted)),
    `the control: ${wanted}`,
  );

test('the control is told of what a child window cannot see', () =>
  withVarnel(kNoPage, async (app) => {
    const [kMinimize, kRestore] = [0xf020, 0xf120];
    const kMoved = ['NotifyParentWindowPositionChanged', null];
    for (const [step, wanted] of [
      [`send:${kSetFocus},0,0`, ['MoveFocus', 0]],
      [`send:${kMove},0,0`, kMoved],
      [`move:40,30`, kMoved],
      [`send:${kSysCommand},${kMinimize},0`, ['put_IsVisible', false]],
      [`send:${kSysCommand},${kRestore},0`, ['put_IsVisible', true]],
    ]) {
      const from = app.calls.length;
      await app.window('find', step);
      await told(app, wanted, from);
    }
    const { left, top, width, height } = await app.window('find', 'dpi:60,40,1420,930');
    assert.deepEqual(
      [left, top, width, height],
      [60, 40, 1420, 930],
      'the place on a display of another scale',
    );
  }));

// A display of more than 96 dpi: the virtual one has 1600 x 1000 pixels, all of them work area.
const kDesktop = 'HKCU\\Control Panel\\Desktop';

test('the sizes follow the display, but not beyond its work area', async () => {
  for (const [dpi, first, least] of [
    [105, [1531, 984], [1367, 766]],
    [144, [1600, 1000], [1600, 1000]],
  ]) {
    const sized = async (app) => {
      assert.deepEqual(sizeOf(await app.window('find')), first, `${dpi} dpi`);
      assert.deepEqual(sizeOf(await app.window('find', 'resize:300,200')), least, `${dpi} dpi`);
    };
    await withRegistry({ [kDesktop]: undefined }, async () => {
      await writeRegistry({ [kDesktop]: { LogPixels: `dword:${dpi.toString(16)}` } });
      await withVarnel(kNoPage, sized);
    });
  }
});

test('without a browser runtime the window stays and nothing crashes', async () => {
  const error = 0x80070002 - 2 ** 32;
  for (const options of [{ loader: false }, { environmentError: error }, { controllerError: error }]) {
    await withVarnel({ ...options, ...kNoPage }, async (app) => {
      const { title, visible } = await app.window('find', `send:${kPostJson},0,0`);
      const isLed = app.calls.some(([name]) => name === 'Navigate');
      assert.deepEqual([title, visible, isLed], ['Varnel', true, false]);
      assert.equal((await app.window(`send:${kClose},0,0`, 'wait_exit')).exitCode, 0);
    });
  }
});

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
