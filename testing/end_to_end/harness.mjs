// The functions shared by all end-to-end tests. testing/README.md describes them.
import { mkdir, mkdtemp, rm } from 'node:fs/promises';
import { join } from 'node:path';
import { after } from 'node:test';
import { setTimeout as sleep } from 'node:timers/promises';
import axe from 'axe-core';

import { buildSync } from '../../web/node_modules/esbuild/lib/main.js';
import { closeBrowser } from './browser.mjs';
import { Varnel } from './driver.mjs';
import { endWine, prefix, root } from './wine.mjs';

// The page's own texts and figures, bundled as in the page.
const contents = `import './app/all_texts.ts';
  export { formatBytes } from './base/format.ts';
  export { setLanguage, t } from './base/text.ts';`;
const stdin = { contents, resolveDir: join(root, 'web/src') };
const { outputFiles } = buildSync({ stdin, bundle: true, write: false, format: 'esm' });
const page = await import(`data:text/javascript,${encodeURIComponent(outputFiles[0].text)}`);

// Returns the page's text for a key in a language, with its holes filled: text('en', 'hosts.refused').
export function text(language, key, values = {}) {
  page.setLanguage(language);
  return page.t(key, values);
}

export function inWords(bytes, language = 'en') {
  page.setLanguage(language);
  return page.formatBytes(bytes);
}

after(async () => {
  await closeBrowser();
  await endWine();
});

const kLimitMs = 150_000; // a page that redraws endlessly no longer answers

export async function withVarnel(options, body) {
  const app = new Varnel(options);
  const language = options.language ?? options.settings?.language ?? 'cs';
  app.text = (key, values) => text(language, key, values);
  const run = async () => {
    await app.start();
    await body(app);
    if (app.page && !app.page.isClosed()) await checkAccessibility(app.page);
    await app.stop();
  };
  const limit = async () => {
    await sleep(kLimitMs, undefined, { ref: false });
    throw new Error(`no end within ${kLimitMs / 1000} s`);
  };
  try {
    await Promise.race([run(), limit()]);
  } catch (error) {
    await app.kill();
    if (app.problems.length > 0) error.message += `\nproblems in the page:\n${app.problems.join('\n')}`;
    throw error;
  }
}

// Fails if axe-core finds anything in the current page.
async function checkAccessibility(shown) {
  const run = 'axe.run(document, { resultTypes: ["violations"] })';
  const { violations, passes } = await shown.evaluate(`${axe.source}; ${run}`);
  if (passes.length === 0) throw new Error('axe-core looked at nothing');
  const lines = violations.map(({ id, help, nodes }) => [`${id}: ${help}`, ...nodes.map(({ html }) => html)]);
  if (lines.length > 0) throw new Error(`axe-core found:\n${lines.flat().join('\n  ')}`);
}

export async function look(app, name) {
  await checkAccessibility(app.page);
  await app.page.screenshot({ path: join(root, 'build/screenshots', `${name}.png`) });
}

export async function openView(page, id) {
  await page.click(`[data-nav=${id}]`);
  await page.waitForSelector(`main[data-view=${id}]`);
}

export const press = (scope, name) => scope.getByRole('button', { name, exact: true }).click();

export async function dialogOf(page, name) {
  const dialog = page.getByRole('dialog', { name, exact: true });
  await dialog.waitFor();
  return dialog;
}

// Without the service, any request for it opens its dialog.
export async function closeServiceDialog(page) {
  const name = text(await page.evaluate(() => document.documentElement.lang), 'service.title');
  const dialog = await dialogOf(page, name);
  await page.keyboard.press('Escape');
  await dialog.waitFor({ state: 'detached' });
}

const gridRows = (scope, label) => scope.getByRole('grid', { name: label }).locator('tbody tr');

// Returns the texts of the cells of a grid's rows. A switch is "true" or "false"; tick boxes are left
// out.
export const rowsOf = (scope, label) =>
  gridRows(scope, label).evaluateAll((rows) =>
    rows.map((row) =>
      [...row.cells]
        .filter((cell) => !cell.querySelector('input[type=checkbox]'))
        .map((cell) => cell.querySelector('[role=switch]')?.ariaChecked ?? cell.innerText.trim()),
    ),
  );

// Toggles the tick of the row with a text.
export const tick = (scope, label, row) =>
  gridRows(scope, label).filter({ hasText: row }).getByRole('checkbox').click();

// Returns a notice at the edge of the page. That of a failure is an "alert".
export const toastOf = (page, said, role = 'status') =>
  page.locator('.toasts').getByRole(role).getByText(said);

export const asked = async (app, action) =>
  (await app.serviceRequests()).filter((request) => request.action === action);

// Beside drive C, so that files can be moved there. Wine creates no folder above the bin.
export async function makeHome() {
  const unix = await mkdtemp(join(prefix, 'home-'));
  const share = join(unix, '.local/share');
  await mkdir(share, { recursive: true });
  return { unix, trash: join(share, 'Trash'), remove: () => rm(unix, { recursive: true, force: true }) };
}
