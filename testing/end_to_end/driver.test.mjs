// The other tests are worth nothing when the driver overlooks what is wrong.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { startVarnel } from './driver.mjs';
import { checkAccessibility, withVarnel } from './harness.mjs';

test('what goes wrong in the page is seen', async () => {
  const app = await startVarnel();
  try {
    for (const [name, cause, want] of [
      ['a console error', () => console.error('wrong figure'), /^console: wrong figure/],
      [
        'an exception',
        () =>
          setTimeout(() => {
            throw new Error('lost');
          }),
        /^page error: Error: lost/,
      ],
      [
        'a missing file',
        () => fetch('/missing.js').catch(() => {}),
        /^request failed: https:\/\/varnel\.local\/missing\.js/,
      ],
      [
        'another host',
        () => fetch('https://example.com/').catch(() => {}),
        /^policy report: connect-src https:\/\/example\.com/,
      ],
      [
        'a style in the markup',
        () => document.body.setAttribute('style', 'color: red'),
        /^policy report: style-src/,
      ],
      [
        'markup from text',
        () => {
          try {
            document.body.innerHTML += '<b>x</b>';
          } catch {
            /* refused */
          }
        },
        /^policy report: require-trusted-types-for/,
      ],
    ]) {
      await app.page.evaluate(cause);
      await app.waitUntilShown(
        () => app.problems.some((problem) => want.test(problem)),
        `${name} to be seen`,
      );
    }
  } finally {
    await app.kill();
  }
});

test('a problem fails the test that has it', async () => {
  await assert.rejects(
    withVarnel({}, ({ page }) => page.evaluate(() => console.error('left behind'))),
    /problems in the page:\nconsole: left behind/,
  );
});

test('an accessibility fault is seen', () =>
  withVarnel({}, async ({ page }) => {
    await page.waitForSelector('[data-nav=dashboard]');
    await page.evaluate(() => document.querySelector('main').append(document.createElement('button')));
    await assert.rejects(checkAccessibility(page), /button-name/);
  }));
