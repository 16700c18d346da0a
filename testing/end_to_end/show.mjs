// ./dev run: the program with its page to look at. With a display: windows, until one is closed or Ctrl+C.
// Without: a picture in build/run and the live figures as text. With --once: ends after the first complete sample.
import { join } from 'node:path';

import { closeBrowser } from './browser.mjs';
import { Varnel } from './driver.mjs';
import { endWine, root } from './wine.mjs';

const once = process.argv.includes('--once');
const visible = Boolean(process.env.DISPLAY);
const picture = join(root, 'build/run/dashboard.png');

const percent = (value) => `${Math.round(value)} %`;

// Load and rates compare two samples: the first one has none.
function line({ cpu, ram, download, upload, networkAdapter, disks, battery }, isFirst) {
  const rates = `down ${download.toFixed(2)} Mb/s | up ${upload.toFixed(2)} Mb/s`;
  const drives = disks.map(({ drive, percent: used }) => `${drive} ${percent(used)}`).join(', ');
  const power = battery.hasBattery ? `battery ${percent(battery.percent)}` : 'no battery';
  const compared = isFirst ? [] : [`processor ${percent(cpu)}`, rates];
  return [...compared, `memory ${percent(ram)}`, networkAdapter, drives, power].join(' | ');
}

const app = new Varnel({ visible });

// The page asks every three seconds while its dashboard is shown.
async function show() {
  const { specs } = await app.waitForMessage(({ type }) => type === 'status');
  console.log(Object.values(specs).filter(Boolean).join(' | '));
  console.log(once ? 'One round:' : 'Live figures, Ctrl+C ends:');
  const isSample = ({ type }) => type === 'telemetry';
  for (let from = 0; ;) {
    const sample = await app.waitForMessage(isSample, { from, milliseconds: Infinity });
    console.log(line(sample, from === 0));
    if (from > 0) await app.page.screenshot({ path: picture });
    if (from > 0 && once) return;
    from = app.messages.indexOf(sample) + 1;
  }
}

console.log(
  visible
    ? 'Showing Varnel: its own window under Wine (a frame without the browser control) and its page in Chromium.'
    : `There is no display: running headless. The picture is ${picture}.`,
);
const fail = (error) => {
  process.exitCode = 1;
  console.error(error.message);
};
const interrupted = new Promise((resolve) => {
  for (const signal of ['SIGINT', 'SIGTERM']) process.once(signal, resolve);
});
try {
  await app.start();
  const closed = new Promise((resolve) => app.page.once('close', resolve));
  await Promise.race([show(), interrupted, closed, app.exited]);
} catch (error) {
  fail(error);
}
await app.stop().catch(fail);
await closeBrowser();
await endWine();
process.exit();
