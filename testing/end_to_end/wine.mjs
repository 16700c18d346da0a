// The display and the Wine prefix that the program runs in, and what a test does inside the prefix.
import { spawn, execFile } from 'node:child_process';
import { once } from 'node:events';
import { cp, lstat, mkdir, mkdtemp, readFile, readdir, rm, unlink } from 'node:fs/promises';
import { existsSync, readdirSync } from 'node:fs';
import { join, basename, normalize } from 'node:path';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';

export const root = fileURLToPath(new URL('../..', import.meta.url));
export const buildFolder = process.env.VARNEL_BUILD ?? join(root, 'build/mingw');
export const prefix = process.env.WINEPREFIX ?? process.env.VARNEL_WINEPREFIX ?? join(root, 'build/wine');
export const driveC = join(prefix, 'drive_c');

const runFile = promisify(execFile);
let display; // the Xvfb process, when it is ours

// A virtual display on a free number, unless there is a display and the caller wants to be seen.
async function ensureDisplay({ visible }) {
  if (display || (visible && process.env.DISPLAY)) return;
  display = spawn('Xvfb', ['-displayfd', '3', '-screen', '0', '1600x1000x24', '-nolisten', 'tcp'], {
    stdio: ['ignore', 'ignore', 'ignore', 'pipe'],
    detached: true,
  });
  process.on('exit', () => display?.kill());
  const [number] = await Promise.race([
    once(display.stdio[3], 'data'),
    once(display, 'exit').then(() => {
      throw new Error('Xvfb did not start');
    }),
  ]);
  process.env.DISPLAY = `:${String(number).trim()}`;
}

export function wineEnvironment(extra = {}) {
  return {
    ...process.env,
    WINEPREFIX: prefix,
    WINEDEBUG: '-all',
    WINEDLLOVERRIDES: 'mscoree,mshtml=',
    LC_ALL: 'C.UTF-8',
    ...extra,
  };
}

export async function prepareWine({ visible = false } = {}) {
  await ensureDisplay({ visible });
  if (!existsSync(join(prefix, 'system.reg'))) {
    await mkdir(prefix, { recursive: true });
    await runFile('wineboot', ['-u'], { env: wineEnvironment() });
  }
  await keepHomeOut();
}

// Wine links the user's Downloads, Documents and so on to the home folder of whoever runs it: no test may delete there.
async function keepHomeOut() {
  const users = join(driveC, 'users');
  for (const entry of await readdir(users, { recursive: true, withFileTypes: true })) {
    if (!entry.isSymbolicLink()) continue;
    const path = join(entry.path, entry.name);
    await unlink(path);
    await mkdir(path);
  }
}

// Ends our display and, with it, every process of the prefix.
export async function endWine() {
  if (!display) return;
  await runFile('wineserver', ['-k'], { env: wineEnvironment() }).catch(() => {});
  display.kill();
  await once(display, 'exit');
  display = undefined;
}

// A folder on drive C that is gone after remove(). `windows` and `unix` are its two names.
export async function makeFolder(name = 'varnel-test-') {
  await mkdir(driveC, { recursive: true });
  const unix = await mkdtemp(join(driveC, name));
  return { unix, windows: `C:\\${basename(unix)}`, remove: () => rm(unix, { recursive: true, force: true }) };
}

// The Unix name of an absolute Windows path (drives C and Z), resolved as Windows does it: what exists in other letter case is
// that entry.
export function unixPath(windowsPath) {
  const [, drive, rest] = /^([CZ]):\\?(.*)$/i.exec(windowsPath) ?? [];
  if (!drive) throw new Error(`not a path of drive C or Z: ${windowsPath}`);
  let path = drive.toUpperCase() === 'C' ? driveC : '/';
  for (const name of normalize(rest.replaceAll('\\', '/')).split('/')) {
    const exact = join(path, name);
    const same =
      existsSync(exact) || !existsSync(path)
        ? undefined
        : readdirSync(path).find((entry) => entry.toLowerCase() === name.toLowerCase());
    path = same ? join(path, same) : exact;
  }
  return path;
}

// Every file in a folder and below it, {path, size}; links are neither listed nor followed.
export async function filesBelow(unix) {
  const entries = existsSync(unix) ? await readdir(unix, { withFileTypes: true }) : [];
  const found = await Promise.all(
    entries.map(async (entry) => {
      const path = join(unix, entry.name);
      if (entry.isDirectory()) return filesBelow(path);
      return entry.isFile() ? [{ path, size: (await lstat(path)).size }] : [];
    }),
  );
  return found.flat();
}

// In a process group of its own: Ctrl+C in the terminal is for the driver, which ends the program in order.
export function startInPrefix(program, args = [], { env = {}, cwd } = {}) {
  return spawn('wine', [program, ...args], {
    stdio: ['pipe', 'pipe', 'ignore'],
    env: wineEnvironment(env),
    cwd,
    detached: true,
  });
}

// Runs a Windows program to its end: {code, stdout}. Programs of Windows by bare name, stand-ins by path.
export async function runInPrefix(program, args = [], options = {}) {
  const child = startInPrefix(program, args, options);
  child.stdin.end();
  let stdout = '';
  child.stdout.setEncoding('utf8').on('data', (text) => {
    stdout += text;
  });
  const [code] = await once(child, 'close');
  return { code, stdout: stdout.replaceAll('\r\n', '\n') };
}

// Values of a registry key as its exported text has them, {name: 'hex:02,00' or '"text"'}, with text that Windows expands as
// 'expand:text'; undefined when there is no such key.
export async function readRegistry(key) {
  const file = await makeFolder('registry-');
  const { code } = await runInPrefix('reg', ['export', key, `${file.windows}\\key.reg`, '/y']);
  const text = code === 0 ? await readFile(join(file.unix, 'key.reg'), 'utf16le') : undefined;
  await file.remove();
  const expand = (hex) =>
    `expand:${Buffer.from(hex.replaceAll(',', ''), 'hex').toString('utf16le').replace(/\0$/, '')}`;
  const lines = text?.replace(/\\\r?\n */g, '').matchAll(/^"((?:[^"\\]|\\.)*)"=(.*?)\r?$/gm);
  return (
    lines &&
    Object.fromEntries(
      [...lines].map(([, name, data]) => [
        name.replace(/\\(.)/g, '$1'),
        data.replace(/^hex\(2\):(.*)$/, (_, hex) => expand(hex)),
      ]),
    )
  );
}

export const standIn = (name) => join(buildFolder, 'stand_ins', name);

export async function copyInto(folder, files) {
  await mkdir(folder, { recursive: true });
  for (const [name, source] of Object.entries(files)) await cp(source, join(folder, name));
}
