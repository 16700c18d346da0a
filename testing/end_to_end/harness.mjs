// What every end-to-end test file uses.
import { createRequire } from 'node:module';
import { mkdir, mkdtemp, readFile, rm } from 'node:fs/promises';
import { join } from 'node:path';
import { after } from 'node:test';

import { closeBrowser } from './browser.mjs';
import { Varnel } from './driver.mjs';
import { endWine, prefix, root } from './wine.mjs';

const require = createRequire(import.meta.url);

// The page's own texts, bundled as the page has them.
const { outputFiles } = require('../../web/node_modules/esbuild').buildSync({
  stdin: {
    contents: "import './app/all_texts.ts'; export { setLanguage, t } from './base/text.ts';",
    resolveDir: join(root, 'web/src'),
  },
  bundle: true,
  write: false,
  format: 'esm',
});
const texts = await import(`data:text/javascript,${encodeURIComponent(outputFiles[0].text)}`);

// What the page shows in a language for the key of a text, its holes filled: text('en', 'hosts.refused').
export function text(language, key, values = {}) {
  texts.setLanguage(language);
  return texts.t(key, values);
}

after(async () => {
  await closeBrowser();
  await endWine();
});

const kLimitMs = 150_000; // a page that draws without end answers nothing any more

// Runs `body` with the program and ends it; testing/README.md has the options. Problems in the page, and what
// axe-core finds in what it shows at the end, fail the test. `app.text` is text() in the page's language.
export async function withVarnel(options, body) {
  const app = new Varnel(options);
  const language = options.language ?? options.settings?.language ?? 'cs';
  app.text = (key, values) => text(language, key, values);
  let timer;
  const limit = new Promise((_, reject) => {
    timer = setTimeout(() => reject(new Error(`no end within ${kLimitMs / 1000} s`)), kLimitMs);
  });
  const run = async () => {
    await app.start();
    await body(app);
    if (app.page && !app.page.isClosed()) await checkAccessibility(app.page);
  };
  try {
    await Promise.race([run(), limit]);
  } catch (error) {
    await app.kill();
    if (app.problems.length > 0) error.message += `\nproblems in the page:\n${app.problems.join('\n')}`;
    throw error;
  } finally {
    clearTimeout(timer);
  }
  await app.stop();
}

// Fails if axe-core finds anything on what the page shows now.
async function checkAccessibility(page) {
  // Through the debugger: the page's own policy allows no foreign script.
  const session = await page.context().newCDPSession(page);
  const axe = await readFile(require.resolve('axe-core/axe.min.js'), 'utf8');
  const { result, exceptionDetails } = await session.send('Runtime.evaluate', {
    ...{ expression: `${axe}; axe.run(document, { resultTypes: ["violations"] })` },
    ...{ awaitPromise: true, returnByValue: true },
  });
  await session.detach();
  if (exceptionDetails) throw new Error(exceptionDetails.exception?.description ?? exceptionDetails.text);
  const { violations, passes } = result.value;
  if (passes.length === 0) throw new Error('axe-core looked at nothing');
  const lines = violations.map(({ id, help, nodes }) => [`${id}: ${help}`, ...nodes.map(({ html }) => html)]);
  if (lines.length > 0) throw new Error(`axe-core found:\n${lines.flat().join('\n  ')}`);
}

// Checks what the page shows now with axe-core, and leaves build/screenshots/<name>.png to be looked at.
export async function look(app, name) {
  await checkAccessibility(app.page);
  await app.page.screenshot({ path: join(root, 'build/screenshots', `${name}.png`) });
}

export async function openView(page, id) {
  await page.click(`[data-nav=${id}]`);
  await page.waitForSelector(`main[data-view=${id}]`);
}

export const press = (scope, name) => scope.getByRole('button', { name, exact: true }).click();

// An open dialog, by the page or another of its name.
export async function dialogOf(page, name) {
  const dialog = page.getByRole('dialog', { name, exact: true });
  await dialog.waitFor();
  return dialog;
}

// Without the service its dialog opens whenever something asked for it.
export async function closeServiceDialog(page) {
  const name = text(await page.evaluate(() => document.documentElement.lang), 'service.title');
  const dialog = await dialogOf(page, name);
  await page.keyboard.press('Escape');
  await dialog.waitFor({ state: 'detached' });
}

// Texts of the cells of a grid's rows: a switch is "true" or "false", and boxes to tick are left out.
export const rowsOf = (scope, label) =>
  scope
    .getByRole('grid', { name: label })
    .locator('tbody tr')
    .evaluateAll((rows) =>
      rows.map((row) =>
        [...row.cells]
          .filter((cell) => !cell.querySelector('input[type=checkbox]'))
          .map((cell) => cell.querySelector('[role=switch]')?.ariaChecked ?? cell.innerText.trim()),
      ),
    );

// Ticks the row with a text, or takes its tick away.
export const tick = (scope, label, row) =>
  scope
    .getByRole('grid', { name: label })
    .getByRole('row')
    .filter({ hasText: row })
    .getByRole('checkbox')
    .click();

// A message at the edge of the page; one of a failure is an "alert".
export const toastOf = (page, said, role = 'status') =>
  page.locator('.toasts').getByRole(role).getByText(said);

// The service's requests of one action so far.
export const asked = async (app, action) =>
  (await app.serviceRequests()).filter((request) => request.action === action);

// Bytes as the page is to write them: three digits of the largest unit that gives at least 1.
export function inWords(bytes, language = 'en') {
  const units = ['B', 'kB', 'MB', 'GB', 'TB'];
  let unit = 0;
  for (; bytes >= 999.5; bytes /= 1024) ++unit;
  const digits = unit === 0 || bytes >= 99.95 ? 0 : bytes >= 9.995 ? 1 : 2;
  return `${bytes.toLocaleString(language, { minimumFractionDigits: digits, maximumFractionDigits: digits })}\u00a0${units[unit]}`;
}

// A home folder for a program that recycles: Wine's recycle bin is in it. Beside drive C, so that files can be
// moved there; Wine makes nothing above the bin.
export async function makeHome() {
  const unix = await mkdtemp(join(prefix, 'home-'));
  await mkdir(join(unix, '.local/share'), { recursive: true });
  return {
    unix,
    trash: join(unix, '.local/share/Trash'),
    remove: () => rm(unix, { recursive: true, force: true }),
  };
}
