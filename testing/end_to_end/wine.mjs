// Manages the display and the Wine prefix of the program, and runs things inside the prefix.
import { execFile, spawn } from 'node:child_process';
import { once } from 'node:events';
import { existsSync, readFileSync, readdirSync } from 'node:fs';
import * as fs from 'node:fs/promises';
import { createServer } from 'node:net';
import { dirname, join, normalize } from 'node:path';
import { promisify } from 'node:util';

export const root = join(import.meta.dirname, '../..');
export const buildFolder = process.env.VARNEL_BUILD ?? join(root, 'build/mingw');
export const standIn = (name) => join(buildFolder, 'stand_ins', name);
// A release changes this and nothing else.
export const [, version] = /^project\(Varnel VERSION ([\d.]+)/m.exec(
  readFileSync(join(root, 'CMakeLists.txt'), 'utf8'),
);

// Returns true if no other process holds a name, which this process then keeps until it ends: a lock
// that no crash leaves behind.
export function holds(name) {
  const server = createServer().unref();
  return new Promise((resolve) => {
    server.once('error', () => resolve(false)).listen(`\0${name}`, () => resolve(true));
  });
}

// Two test files may run in parallel, each in a prefix of its own.
const kPrefix = process.env.WINEPREFIX ?? join(root, 'build/wine');
export const prefix = (await holds(kPrefix)) ? kPrefix : `${kPrefix}2`;
export const driveC = join(prefix, 'drive_c');
export const kHosts = join(driveC, 'windows/system32/drivers/etc/hosts');

const runFile = promisify(execFile);
export const kOverrides = 'mscoree,mshtml,winedbg.exe='; // Wine must not download anything or ask
const kEnvironment = { WINEPREFIX: prefix, WINEDEBUG: '-all', WINEDLLOVERRIDES: kOverrides };
// Evaluated only when needed: the display may come later.
const wineEnvironment = (extra) => ({ ...process.env, LC_ALL: 'C.UTF-8', ...kEnvironment, ...extra });

const kWaitMs = 30_000; // for expected events; nothing waits longer than necessary

export async function until(look, what, milliseconds = kWaitMs, woken = () => undefined) {
  for (const late = Date.now() + milliseconds; ;) {
    const value = await look();
    if (value !== undefined && value !== false) return value;
    if (Date.now() > late) throw new Error(`waited ${milliseconds} ms for ${what}`);
    await Promise.race([woken(), new Promise((resolve) => setTimeout(resolve, 20))].filter(Boolean));
  }
}

let display; // the Xvfb process, if it belongs to this one

// Creates the prefix, and a virtual display on a free number unless there is a display and the caller
// wants visible windows.
export async function prepareWine({ visible = false } = {}) {
  if (!display && !(visible && process.env.DISPLAY)) {
    const args = ['-displayfd', '3', '-screen', '0', '1600x1000x24', '-nolisten', 'tcp'];
    display = spawn('Xvfb', args, { stdio: ['ignore', 'ignore', 'ignore', 'pipe'], detached: true });
    process.on('exit', () => display?.kill());
    process.env.DISPLAY = `:${String(await once(display.stdio[3], 'data')).trim()}`;
  }
  if (!existsSync(join(prefix, 'system.reg'))) {
    await fs.mkdir(prefix, { recursive: true });
    await runFile('wineboot', ['-u'], { env: wineEnvironment() });
  }
  // Windows always has a hosts file; without one, the program asks the helper service for it.
  await fs.mkdir(dirname(kHosts), { recursive: true });
  await fs.writeFile(kHosts, '', { flag: 'a' });
  // Wine links Downloads, Documents and so on to the user's home folder, where no test may delete
  // anything. The tests' own links stay inside drive C.
  const users = await fs.readdir(join(driveC, 'users'), { recursive: true, withFileTypes: true });
  for (const entry of users.filter((one) => one.isSymbolicLink())) {
    const link = join(entry.path, entry.name);
    if ((await fs.readlink(link)).startsWith(driveC)) continue;
    await fs.unlink(link);
    await fs.mkdir(link);
  }
}

// Ends the virtual display and, with it, every process of the prefix.
export async function endWine() {
  if (!display) return;
  await runFile('wineserver', ['-k'], { env: wineEnvironment() }).catch(() => {});
  display.kill();
  await once(display, 'exit');
  display = undefined;
}

// --- files ---

// Creates a folder on drive C, deleted by remove(). `windows` and `unix` are its two names; `name` may
// be a path.
export async function makeFolder(name = 'varnel-test-') {
  await fs.mkdir(driveC, { recursive: true });
  const unix = await fs.mkdtemp(join(driveC, name));
  const windows = `C:\\${unix.slice(driveC.length + 1).replaceAll('/', '\\')}`;
  return { unix, windows, remove: () => fs.rm(unix, { recursive: true, force: true }) };
}

// Returns the Unix name of an absolute Windows path (drives C and Z), resolved as Windows does: an
// existing entry matches in any letter case.
export function unixPath(windowsPath) {
  const [, drive, rest] = /^([CZ]):\\?(.*)$/i.exec(windowsPath);
  let path = drive.toUpperCase() === 'C' ? driveC : '/';
  for (const name of normalize(rest.replaceAll('\\', '/')).split('/')) {
    const isKnown = existsSync(join(path, name)) || !existsSync(path);
    const isSame = (entry) => entry.toLowerCase() === name.toLowerCase();
    path = join(path, (isKnown ? undefined : readdirSync(path).find(isSame)) ?? name);
  }
  return path;
}

// Returns every file in a folder and below it, {path, size}. Links are neither listed nor followed.
export async function filesBelow(unix) {
  const entries = existsSync(unix) ? await fs.readdir(unix, { withFileTypes: true, recursive: true }) : [];
  const paths = entries.filter((entry) => entry.isFile()).map(({ path, name }) => join(path, name));
  return Promise.all(paths.map(async (path) => ({ path, size: (await fs.lstat(path)).size })));
}

export async function copyInto(folder, files) {
  await fs.mkdir(folder, { recursive: true });
  for (const [name, source] of Object.entries(files)) await fs.cp(source, join(folder, name));
}

export async function withAway(paths, body) {
  const moved = paths.map(unixPath).filter((path) => existsSync(path));
  if (moved.length === 0) throw new Error(`none of ${paths.join(', ')} is there`);
  for (const path of moved) await fs.rename(path, `${path}.away`);
  try {
    return await body();
  } finally {
    for (const path of paths.map(unixPath)) await fs.rm(path, { force: true });
    for (const path of moved) await fs.rename(`${path}.away`, path);
  }
}

// --- programs ---

export function startInPrefix(program, args = [], { env, cwd } = {}) {
  // Runs in a process group of its own: Ctrl+C in the terminal belongs to the driver, which ends the
  // program in order.
  const options = { stdio: ['pipe', 'pipe', 'ignore'], env: wineEnvironment(env), cwd, detached: true };
  const child = spawn('wine', [program, ...args], options);
  child.output = '';
  child.stdin.on('error', () => {}); // it may have ended
  child.stdout.setEncoding('utf8').on('data', (text) => (child.output += text));
  child.ended = once(child, 'exit').then(([code, signal]) => (child.code = signal ?? code));
  return child;
}

export async function runInPrefix(program, args = [], options = {}) {
  const child = startInPrefix(program, args, options);
  child.stdin.end();
  const [code] = await once(child, 'close');
  return { code, stdout: child.output.replaceAll('\r\n', '\n') };
}

// --- the registry ---

// Returns the text of an exported key, or undefined if there is no such key.
async function exportKey(key) {
  const file = await makeFolder('registry-');
  const { code } = await runInPrefix('reg', ['export', key, `${file.windows}\\key.reg`, '/y']);
  const text = code === 0 ? await fs.readFile(join(file.unix, 'key.reg'), 'utf16le') : undefined;
  await file.remove();
  return text;
}

async function importKeys(text) {
  const file = await makeFolder('registry-');
  await fs.writeFile(join(file.unix, 'keys.reg'), text, 'utf16le');
  const { code } = await runInPrefix('reg', ['import', `${file.windows}\\keys.reg`]);
  await file.remove();
  if (code !== 0) throw new Error(`reg ended with ${code} at ${text}`);
}

export async function readRegistry(key) {
  const text = await exportKey(key);
  const expand = (_, hex) =>
    `expand:${Buffer.from(hex.replaceAll(',', ''), 'hex').toString('utf16le').replace(/\0$/, '')}`;
  const values = {};
  const lines = text?.replace(/\\\r?\n */g, '').matchAll(/^"((?:[^"\\]|\\.)*)"=(.*?)\r?$/gm);
  for (const [, name, data] of lines ?? [])
    values[name.replace(/\\(.)/g, '$1')] = data.replace(/^hex\(2\):(.*)$/, expand);
  return text && values;
}

export const registryText = (text) => `"${text.replace(/["\\]/g, '\\$&')}"`;

const kHives = { HKCU: 'HKEY_CURRENT_USER', HKLM: 'HKEY_LOCAL_MACHINE' };

export async function writeRegistry(keys) {
  const bytes = (_, text) => `hex(2):${Buffer.from(`${text}\0`, 'utf16le').toString('hex').match(/../g)}`;
  const lines = Object.entries(keys).flatMap(([key, values]) => [
    `[${values ? '' : '-'}${key.replace(/^\w+/, (hive) => kHives[hive] ?? hive)}]`,
    ...Object.entries(values ?? {}).map(([name, data = '-']) => {
      return `${name === '' ? '@' : registryText(name)}=${data.replace(/^expand:(.*)$/s, bytes)}`;
    }),
  ]);
  await importKeys(['\ufeffWindows Registry Editor Version 5.00', ...lines, ''].join('\r\n'));
}

export async function withRegistry(keys, body) {
  await prepareWine();
  const names = Object.keys(keys);
  const saved = [];
  for (const key of names) saved.push(await exportKey(key));
  const remove = (some) => writeRegistry(Object.fromEntries(some.map((key) => [key, null])));
  try {
    await remove(names.filter((key) => keys[key] !== undefined));
    await writeRegistry(Object.fromEntries(Object.entries(keys).filter(([, values]) => values)));
    return await body();
  } finally {
    await remove(names);
    for (const text of saved) if (text) await importKeys(text);
  }
}
