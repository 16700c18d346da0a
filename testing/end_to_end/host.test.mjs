// Tests the program's use of the browser control and of Windows: its window, its files, its start
// without a browser.
import assert from 'node:assert/strict';
import { mkdir, readFile } from 'node:fs/promises';
import { join } from 'node:path';
import { test } from 'node:test';
import { isDeepStrictEqual } from 'node:util';

import { withVarnel } from './harness.mjs';
import { buildFolder, makeFolder, prepareWine, withRegistry, writeRegistry } from './wine.mjs';

const kOrigin = 'https://varnel.local';
const kNoPage = { page: false };

test('the control is set up before it navigates to the page', () =>
  withVarnel(kNoPage, async ({ calls }) => {
    assert.match(calls[0][1], /^C:\\users\\[^\\]+\\AppData\\Local\\Varnel\\Varnel\.UserData$/i);
    const wanted = [
      'put_DefaultBackgroundColor,255,13,13,23',
      'put_AreDevToolsEnabled,false',
      'put_AreDefaultContextMenusEnabled,false',
      'put_IsStatusBarEnabled,false',
      `AddWebResourceRequestedFilter,${kOrigin}/*,0`, // of every kind
      `Navigate,${kOrigin}/index.html`,
    ];
    const made = calls.map(String).filter((call) => wanted.includes(call));
    assert.deepEqual(made, wanted);
  }));

test('the executable serves only its own files, a public folder the rest', async () => {
  await prepareWine();
  const folder = await makeFolder();
  await mkdir(join(folder.unix, 'public'));
  const mapped = ({ calls }) => calls.find(([name]) => name === 'SetVirtualHostNameToFolderMapping')[1];
  await withVarnel({ folder, ...kNoPage }, async (app) => {
    for (const [path, type, file = path] of [
      ['/', 'text/html; charset=utf-8', '/index.html'],
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
    for (const path of ['/js/app.js?v=1', '/index.html#top', '/Index.html', '/css', `/${kOrigin}/index.html`])
      assert.equal(await app.resource(kOrigin + path), undefined, path);
    assert.deepEqual(mapped(app), ['varnel.local', `${folder.windows}\\bin\\..\\public`, 1]);
  });
  await mkdir(join(folder.unix, 'bin/public')); // preferred: beside the executable
  await withVarnel({ folder, ...kNoPage }, (app) =>
    assert.deepEqual(mapped(app), ['varnel.local', `${folder.windows}\\bin\\public`, 1]),
  );
  await folder.remove();
});

// --- the window ---

// Window messages and commands as other processes send them.
const [kClose, kHitTest, kSetFocus, kSysCommand, kPostJson] = [16, 132, 7, 274, 1025];
const [kCaption, kMinimize, kRestore] = [2, 0xf020, 0xf120];

const closes = async (app, message) =>
  assert.equal((await app.window(`send:${message},0`, 'wait_exit')).exitCode, 0);

// Takes a step and waits until the control learns what it cannot see as a child window.
async function tells(app, step, call) {
  const from = app.calls.length;
  const window = await app.window(step);
  const wanted = call(window);
  await app.until(() => app.calls.slice(from).some((one) => isDeepStrictEqual(one, wanted)), `${wanted}`);
  return window.place.slice(2);
}

test('the window has a minimum size and its own commands, and informs the control', async () => {
  await withVarnel(kNoPage, async (app) => {
    const [left, top, ...size] = (await app.window('find')).place;
    assert.deepEqual(size, [1400, 900]);
    // The icon's place acts as caption.
    const points = [8, 200].map((x) => ((top + 12) << 16) | ((left + x) & 0xffff));
    const { results } = await app.window(...points.map((point) => `send:${kHitTest},0,${point}`));
    assert.deepEqual(results, [kCaption, kCaption]);

    const bounds = ({ client }) => ['put_Bounds', [0, 0, ...client]];
    assert.deepEqual(await tells(app, 'place:0,0,1300,800', bounds), [1300, 800]);
    assert.deepEqual(await tells(app, 'place:0,0,300,200', bounds), [1250, 700]);
    for (const [step, ...call] of [
      ['place:40,30,1250,700', 'NotifyParentWindowPositionChanged', null],
      [`send:${kSetFocus},0,0`, 'MoveFocus', 0],
      [`send:${kSysCommand},${kMinimize},0`, 'put_IsVisible', false],
      [`send:${kSysCommand},${kRestore},0`, 'put_IsVisible', true],
    ])
      await tells(app, step, () => call);

    const from = app.texts.length;
    await app.window(`send:${kSysCommand},1000,0`, `send:${kSysCommand},1001,0`, `send:${kPostJson},0,0`);
    await app.request('testBridge');
    const posted = ['{"type":"triggerUpdateCheck"}', '{"type":"navigateTab","tab":"settings"}'];
    assert.deepEqual(app.texts.slice(from, -1), posted);
    await closes(app, `${kSysCommand},1002`);
  });
});

// A display of more than 96 dpi. The virtual one has 1600 x 1000 pixels, all of them work area.
test("sizes follow the display's scale up to its work area", async () => {
  const kDesktop = 'HKCU\\Control Panel\\Desktop';
  await withRegistry({ [kDesktop]: undefined }, async () => {
    await writeRegistry({ [kDesktop]: { LogPixels: 'dword:78' } }); // 120 dpi
    await withVarnel(kNoPage, async (app) => {
      for (const [step, size] of Object.entries({ find: [1600, 1000], 'place:0,0,300,200': [1563, 875] }))
        assert.deepEqual((await app.window(step)).place.slice(2), size, step);
    });
  });
});

test('without a browser runtime the window stays and nothing crashes', async () => {
  for (const options of [
    { loader: false },
    { fails: 'environment_created' },
    { fails: 'controller_created' },
  ])
    await withVarnel({ ...options, ...kNoPage }, async (app) => {
      const { title, visible } = await app.window('find', `send:${kPostJson},0,0`);
      const isLed = app.calls.some(([name]) => name === 'Navigate');
      assert.deepEqual([title, visible, isLed], ['Varnel', true, false]);
      await closes(app, `${kClose},0`);
    });
});

// --- the driver ---

test('an error in the page fails its test', async () => {
  const run = withVarnel({}, async ({ page }) => {
    await page.waitForSelector('main[data-view]');
    await page.evaluate(async () => {
      console.error('left behind');
      setTimeout(() => Promise.reject(new Error('lost')));
      await fetch('/missing.js').catch(() => {});
      document.body.setAttribute('style', 'color: red');
      document.querySelector('main').append(document.createElement('button'));
    });
  });
  const { message } = await run.then(assert.fail, (error) => error);
  for (const problem of [
    'axe-core found:\nbutton-name',
    'console: left behind',
    'page error: Error: lost',
    'request failed: https://varnel.local/missing.js',
    'policy report: style-src',
  ])
    assert.ok(message.includes(problem), message);
});
