// ./dev run: shows the program with its page. With a display, opens windows until one is closed or
// Ctrl+C is pressed. Without one, saves a picture in build/run and prints the live figures. With --once,
// ends after the first complete sample.
import { once } from 'node:events';
import { join } from 'node:path';

import { closeBrowser } from './browser.mjs';
import { Varnel } from './driver.mjs';
import { endWine, root } from './wine.mjs';

const visible = Boolean(process.env.DISPLAY);
const picture = join(root, 'build/run/dashboard.png');
const app = new Varnel({ visible });

const percent = (value) => `${Math.round(value)} %`;
const line = ({ cpu, ram, download, upload, disks }) =>
  [
    `processor ${percent(cpu)} | memory ${percent(ram)}`,
    `down ${download.toFixed(2)} Mb/s | up ${upload.toFixed(2)} Mb/s`,
    ...disks.map(({ drive, percent: used }) => `${drive} ${percent(used)}`),
  ].join(' | ');

// The page requests a sample every three seconds while its dashboard is shown. Load and rates compare
// two samples.
async function show() {
  const { specs } = await app.waitForMessage(({ type }) => type === 'status');
  console.log(Object.values(specs).filter(Boolean).join(' | '));
  for (let count = 2; ; ++count) {
    const samples = () => app.messages.filter(({ type }) => type === 'telemetry');
    await app.until(() => samples().length >= count, 'a sample', Infinity);
    console.log(line(samples().at(-1)));
    await app.page.screenshot({ path: picture });
    if (process.argv.includes('--once')) return;
  }
}

console.log(
  visible
    ? 'Showing Varnel: its window under Wine (a frame without the browser control), its page in Chromium.'
    : `There is no display: running headless. The picture is ${picture}.`,
);
try {
  await app.start();
  const signals = ['SIGINT', 'SIGTERM'].map((name) => once(process, name));
  await Promise.race([show(), ...signals, once(app.page, 'close'), app.exited]);
  await app.stop();
} catch (error) {
  process.exitCode = 1;
  console.error(error.message);
  await app.kill();
}
await closeBrowser();
await endWine();
process.exit();
