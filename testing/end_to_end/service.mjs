// Runs the real helper service for a test: beside the program, asked by others, with the tools that it
// starts.
import { once } from 'node:events';
import { copyFile, mkdir, rm, writeFile } from 'node:fs/promises';
import { join } from 'node:path';

import { withVarnel } from './harness.mjs';
import * as wine from './wine.mjs';

const { registryText, standIn, startInPrefix, unixPath, writeRegistry } = wine;

export const kEnvironment = 'HKLM\\SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment';

// Runs `body` with the program and the real service beside it. `log()` returns the entries meant for the
// event log; `end()` stops the service.
export function withService(body, options) {
  return withVarnel({ page: false, ...options }, async (app) => {
    const files = ['VarnelService.exe', 'update_driver.ps1'];
    const copies = files.map((name) => [name, join(wine.buildFolder, 'bin', name)]);
    await wine.copyInto(app.binFolder, Object.fromEntries(copies));
    const service = startInPrefix(`${app.folder.windows}\\bin\\VarnelService.exe`, ['--console']);
    const end = () => (service.stdin.end(), service.ended);
    try {
      await wine.until(() => service.output.includes('ready'), 'the service');
      await body(app, () => service.output.replaceAll('\r', ''), end);
    } finally {
      await end();
    }
  });
}

// Returns the service's answer to a program other than Varnel.exe, or to one in its place.
export const kPeer = standIn('pipe_peer.exe');
export async function peer(words, input = '', program = kPeer) {
  const child = startInPrefix(program, words);
  child.stdin.end(input);
  await once(child, 'close');
  return child.output.replaceAll('\r', '').trim();
}
export const line = (action, data = {}) => `${JSON.stringify({ action, data })}\n`;
export const ask = (action, data, program) => peer(['ask'], line(action, data), program);

// Puts the peer in the place of the Varnel.exe beside the service, which then obeys it. Returns its
// path.
export async function takePlace(app) {
  await rm(join(app.binFolder, 'Varnel.exe'));
  await copyFile(kPeer, join(app.binFolder, 'Varnel.exe'));
  return `${app.folder.windows}\\bin\\Varnel.exe`;
}

// Writes a file and creates its folders. Returns its Unix name.
export async function put(windowsPath, text = 'x') {
  const path = unixPath(windowsPath);
  await mkdir(join(path, '..'), { recursive: true });
  await writeFile(path, text);
  return path;
}

// Puts stand-ins into the system's own folder, from which the service starts its tools.
export const kSystem = 'C:\\windows\\system32\\';
export const kShell = 'WindowsPowerShell\\v1.0\\powershell.exe';
const kOverrides = 'HKCU\\Software\\Wine\\DllOverrides';
const kNative = { 'shutdown.exe': '"native"', 'dism.exe': '"native"', 'powershell.exe': '"native"' };

export function withTools(tools, body) {
  const paths = Object.keys(tools).map((name) => kSystem + (name === 'powershell.exe' ? kShell : name));
  const run = async (app, ...more) => {
    const scripts = registryText(`${app.folder.windows}\\tools`);
    await writeRegistry({ [kEnvironment]: { VARNEL_TOOL_SCRIPTS: scripts }, [kOverrides]: kNative });
    for (const path of paths) await copyFile(standIn('console_tool.exe'), unixPath(path));
    await body(app, ...more);
  };
  return wine.withRegistry({ [kEnvironment]: undefined, [kOverrides]: undefined }, () =>
    wine.withAway(paths, () => withService(run, { tools })),
  );
}
