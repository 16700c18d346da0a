import assert from 'node:assert/strict';
import { test } from 'node:test';
import { isDeepStrictEqual } from 'node:util';

import { withVarnel } from './harness.mjs';
import { runInPrefix } from './wine.mjs';

// Window messages and words, as other processes send them.
const kHitTest = 132,
  kSetFocus = 7,
  kMove = 3,
  kSysCommand = 274,
  kClose = 16,
  kPostJson = 1025;
const kCaption = 2;
const kOverlappedWindow = 0x00cf0000;

const position = (x, y) => (y << 16) | (x & 0xffff);

test('the window is what other programs expect', () =>
  withVarnel({ page: false }, async (app) => {
    const window = await app.window('find');
    assert.equal(window.title, 'Varnel');
    assert.equal(window.style & kOverlappedWindow, kOverlappedWindow);
    assert.equal(window.classStyle, 3);
    assert.deepEqual([window.width, window.height], [1400, 900]);
  }));

test('the place of the icon acts as caption', () =>
  withVarnel({ page: false }, async (app) => {
    const { left, top } = await app.window('find');
    const words = [
      [8, 12],
      [200, 12],
    ].map(([x, y]) => `send:${kHitTest},0,${position(left + x, top + y)}`);
    const { results } = await app.window(...words);
    assert.deepEqual(results, [kCaption, kCaption]);
  }));

test('the control follows the window, and the window has its least size', () =>
  withVarnel({ page: false }, async (app) => {
    for (const [asked, want] of [
      [
        [1300, 800],
        [1300, 800],
      ],
      [
        [300, 200],
        [1250, 700],
      ],
    ]) {
      const count = app.recorded.bounds.length;
      const window = await app.window('find', `resize:${asked}`);
      assert.deepEqual([window.width, window.height], want);
      await app.waitUntil(() => app.recorded.bounds.length > count, 'new bounds');
      assert.deepEqual(app.recorded.bounds.at(-1), {
        left: 0,
        top: 0,
        right: window.clientWidth,
        bottom: window.clientHeight,
      });
    }
  }));

test('the control is told of what a child window cannot see', () =>
  withVarnel({ page: false }, async (app) => {
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
      await app.waitUntil(
        () => calls.slice(from).some((call) => isDeepStrictEqual(call, wanted)),
        `the control to be told: ${what}`,
      );
    }
  }));

// A display of more than 96 dpi: the virtual one has 1600 x 1000 pixels, all of them work area.
const kDpi = ['HKCU\\Control Panel\\Desktop', '/v', 'LogPixels', '/f'];

test('the sizes follow the display, but not beyond its work area', async (t) => {
  t.after(() => runInPrefix('reg', ['delete', ...kDpi]));
  for (const [dpi, first, least] of [
    [105, [1531, 984], [1367, 766]],
    [144, [1600, 1000], [1600, 1000]],
  ]) {
    await runInPrefix('reg', ['add', ...kDpi, '/t', 'REG_DWORD', '/d', String(dpi)]);
    await withVarnel({ page: false }, async (app) => {
      const window = await app.window('find');
      assert.deepEqual([window.width, window.height], first, `${dpi} dpi`);
      const smallest = await app.window('find', 'resize:300,200');
      assert.deepEqual([smallest.width, smallest.height], least, `${dpi} dpi`);
    });
  }
});

test('a display of another scale places the window', () =>
  withVarnel({ page: false }, async (app) => {
    const { left, top, width, height } = await app.window('find', 'dpi:60,40,1420,930');
    assert.deepEqual([left, top, width, height], [60, 40, 1420, 930]);
  }));

test('window commands', async () => {
  await withVarnel({ page: false }, async (app) => {
    const from = app.texts.length;
    await app.window(`send:${kSysCommand},1000,0`, `send:${kSysCommand},1001,0`, `send:${kPostJson},0,0`);
    await app.request('testBridge');
    assert.deepEqual(app.texts.slice(from, -1), [
      '{"type":"triggerUpdateCheck"}',
      '{"type":"navigateTab","tab":"settings"}',
    ]);
    assert.equal((await app.window(`send:${kSysCommand},1002,0`, 'wait_exit')).exitCode, 0);
  });
  await withVarnel({ page: false }, async (app) => {
    assert.equal((await app.window(`send:${kClose},0,0`, 'wait_exit')).exitCode, 0);
  });
});
