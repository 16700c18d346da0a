// What every end-to-end test file uses.
import { createRequire } from 'node:module';
import { mkdir, mkdtemp, readFile, rm } from 'node:fs/promises';
import { join } from 'node:path';
import { after } from 'node:test';

import { closeBrowser, startVarnel } from './driver.mjs';
import { endWine, prefix, root } from './wine.mjs';

after(async () => {
  await closeBrowser();
  await endWine();
});

const kLimitMs = 150_000; // a page that draws without end answers nothing any more

async function inTime(work) {
  let timer;
  const limit = new Promise((_, reject) => {
    timer = setTimeout(reject, kLimitMs, new Error(`no end within ${kLimitMs / 1000} s`));
  });
  await Promise.race([work, limit]).finally(() => clearTimeout(timer));
}

// Runs `body` with the program and ends it; see startVarnel for the options. Problems in the page fail the test.
export async function withVarnel(options, body) {
  const app = await startVarnel(options);
  try {
    await inTime(body(app));
  } catch (error) {
    await app.kill();
    if (app.problems.length > 0) error.message += `\nproblems in the page:\n${app.problems.join('\n')}`;
    throw error;
  }
  await app.stop();
}

// Fails when axe-core finds anything on what the page shows now.
export async function checkAccessibility(page) {
  // Through the debugger: the page's own policy allows no foreign script.
  const session = await page.context().newCDPSession(page);
  const evaluate = async (expression) => {
    const { result, exceptionDetails } = await session.send('Runtime.evaluate', {
      expression,
      awaitPromise: true,
      returnByValue: true,
    });
    if (exceptionDetails) throw new Error(exceptionDetails.exception?.description ?? exceptionDetails.text);
    return result.value;
  };
  await evaluate(
    `${await readFile(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8')}; undefined`,
  );
  const { violations, passes } = await evaluate('axe.run(document, { resultTypes: ["violations"] })');
  await session.detach();
  if (passes.length === 0) throw new Error('axe-core looked at nothing');
  if (violations.length === 0) return;
  const lines = violations.map(
    ({ id, help, nodes }) => `${id}: ${help}\n  ${nodes.map(({ html }) => html).join('\n  ')}`,
  );
  throw new Error(`axe-core found:\n${lines.join('\n')}`);
}

// Leaves build/screenshots/<name>.png to be looked at.
export async function screenshot(page, name) {
  const folder = join(root, 'build/screenshots');
  await mkdir(folder, { recursive: true });
  await page.screenshot({ path: join(folder, `${name}.png`) });
}

export async function openView(page, id) {
  await page.click(`[data-nav=${id}]`);
  await page.waitForSelector(`main[data-view=${id}]`);
}

// Without the service its dialog opens whenever something asked for it.
export async function closeServiceDialog(page) {
  await page.getByRole('dialog', { name: /helper service is not running|služba neběží/ }).waitFor();
  await page.keyboard.press('Escape');
  await page
    .getByRole('dialog', { name: /helper service is not running|služba neběží/ })
    .waitFor({ state: 'detached' });
}

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
