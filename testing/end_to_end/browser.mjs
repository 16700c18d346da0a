// Runs the Chromium that shows the program's page.
import { chromium } from 'playwright-core';

let browser;

export async function closeBrowser() {
  await browser?.close();
  browser = undefined;
}

function launch(visible) {
  return chromium.launch({
    executablePath: '/usr/bin/chromium',
    args: ['--disable-gpu', ...(process.getuid() === 0 ? ['--no-sandbox'] : [])],
    headless: !visible,
    // Ctrl+C belongs to the driver, which closes the browser in order.
    ...{ handleSIGINT: false, handleSIGTERM: false, handleSIGHUP: false },
  });
}

// Provides window.chrome.webview. Runs in the page before its own scripts.
function installWebview() {
  const webview = new EventTarget();
  webview.postMessage = (message) => window.varnelPost(typeof message === 'string' ? message : null);
  window.chrome = Object.assign(window.chrome ?? {}, { webview });
  window.varnelDeliver = (text) =>
    webview.dispatchEvent(new MessageEvent('message', { data: JSON.parse(text) }));
  document.addEventListener('securitypolicyviolation', (event) => {
    window.varnelProblem(`policy report: ${event.violatedDirective} ${event.blockedURI}`);
  });
}

// Returns a page. `post` receives its messages (null for one that is no string), and `report` its
// errors.
export async function newPage({ viewport = { width: 1400, height: 900 }, visible }, report, post) {
  browser ??= await launch(visible);
  const look = visible ? { viewport: null } : { viewport, reducedMotion: 'reduce' };
  const page = await (await browser.newContext({ ...look, locale: 'cs-CZ' })).newPage();
  page.on('console', (line) => line.type() === 'error' && report(`console: ${line.text()}`));
  page.on('pageerror', (error) => report(`page error: ${error.stack ?? error.message}`));
  page.on('requestfailed', (request) => report(`request failed: ${request.url()}`));
  await page.exposeFunction('varnelPost', post);
  await page.exposeFunction('varnelProblem', report);
  await page.addInitScript(installWebview);
  return page;
}
