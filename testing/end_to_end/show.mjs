// ./dev run: the program with its page to look at. With a display: windows, until one is closed or Ctrl+C. Without: a picture in
// build/run and the live figures as text. With --once: ends after the first complete sample.
import { mkdir } from 'node:fs/promises';
import { join } from 'node:path';

import { closeBrowser, startVarnel } from './driver.mjs';
import { endWine, root } from './wine.mjs';

const once = process.argv.includes('--once');
const visible = Boolean(process.env.DISPLAY);
const picture = join(root, 'build/run/dashboard.png');

const percent = (value) => `${Math.round(value)} %`.padStart(5);
const rate = (value) => `${value.toFixed(2)} Mb/s`;

// Load and rates compare two samples: the first one has none.
function line({ cpu, ram, download, upload, networkAdapter, disks, battery }, first) {
  const drives = disks.map(({ drive, percent: used }) => `${drive} ${percent(used).trim()}`).join(', ');
  const compared = first
    ? ['processor     —', 'down —', 'up —']
    : [`processor ${percent(cpu)}`, `down ${rate(download)}`, `up ${rate(upload)}`];
  return [
    ...compared,
    `memory ${percent(ram)}`,
    networkAdapter,
    drives,
    battery.hasBattery ? `battery ${percent(battery.percent).trim()}` : 'no battery',
  ].join(' | ');
}

console.log(
  visible
    ? 'Showing Varnel: its own window under Wine (a frame without the browser control) and its page in Chromium.'
    : `There is no display: running headless. The picture is ${picture}.`,
);
const app = await startVarnel({ visible });
const interrupted = new Promise((resolve) => {
  process.once('SIGINT', resolve);
  process.once('SIGTERM', resolve);
});
const closed = new Promise((resolve) => app.page.once('close', resolve));

let failed = false;
try {
  const { specs } = await app.waitForMessage(({ type }) => type === 'status', { what: 'the status' });
  console.log(Object.values(specs).filter(Boolean).join(' | '));
  console.log(once ? 'One round:' : 'Live figures, Ctrl+C ends:');

  // The page asks every three seconds while its dashboard is shown.
  let printed = 0;
  const rounds = (async () => {
    for (;;) {
      const from = printed;
      const sample = await app.waitForMessage(({ type }) => type === 'telemetry', {
        from,
        milliseconds: Infinity,
      });
      printed = app.messages.indexOf(sample) + 1;
      console.log(line(sample, from === 0));
      if (from === 0) continue;
      await mkdir(join(root, 'build/run'), { recursive: true });
      await app.page.screenshot({ path: picture });
      if (once) return;
    }
  })();
  await Promise.race([rounds, interrupted, closed, app.exited]);
} catch (error) {
  failed = true;
  console.error(error.message);
}
await app.stop().catch((error) => {
  failed = true;
  console.error(error.message);
});
await closeBrowser();
await endWine();
process.exit(failed ? 1 : 0);
