// The display and the Wine prefix that the program runs in, and what a test does inside the prefix.
import { spawn, execFile } from 'node:child_process';
import { once } from 'node:events';
import { existsSync, readFileSync, readdirSync } from 'node:fs';
import {
  cp,
  lstat,
  mkdir,
  mkdtemp,
  readFile,
  readdir,
  rename,
  rm,
  unlink,
  writeFile,
} from 'node:fs/promises';
import { createServer } from 'node:net';
import { dirname, join, normalize } from 'node:path';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';

export const root = fileURLToPath(new URL('../..', import.meta.url));
export const buildFolder = process.env.VARNEL_BUILD ?? join(root, 'build/mingw');

// Whether nobody else holds a name, which this process then keeps to its end: a lock that no crash leaves behind.
export function holds(name) {
  const server = createServer().unref();
  return new Promise((resolve) => {
    server.once('error', () => resolve(false)).listen(`\0${name}`, () => resolve(true));
  });
}

// Two test files may run beside each other: each has a prefix of its own.
const kPrefix = process.env.WINEPREFIX ?? process.env.VARNEL_WINEPREFIX ?? join(root, 'build/wine');
export const prefix = (await holds(kPrefix)) ? kPrefix : `${kPrefix}2`;
// What a release changes, and all the rest follows.
export const [, version] = /^project\(Varnel VERSION ([\d.]+)/m.exec(
  readFileSync(join(root, 'CMakeLists.txt'), 'utf8'),
);
export const driveC = join(prefix, 'drive_c');
export const kHosts = join(driveC, 'windows/system32/drivers/etc/hosts');

const runFile = promisify(execFile);
let display; // the Xvfb process, when it is ours

// A virtual display on a free number, unless there is a display and the caller wants to be seen.
async function ensureDisplay(visible) {
  if (display || (visible && process.env.DISPLAY)) return;
  const args = ['-displayfd', '3', '-screen', '0', '1600x1000x24', '-nolisten', 'tcp'];
  display = spawn('Xvfb', args, { stdio: ['ignore', 'ignore', 'ignore', 'pipe'], detached: true });
  process.on('exit', () => display?.kill());
  const [number] = await once(display.stdio[3], 'data');
  process.env.DISPLAY = `:${String(number).trim()}`;
}

const kWaitMs = 30_000; // for what must happen; nothing waits longer than it needs

// Looks again and again, at the latest when `woken` settles, until `look` gives something other than undefined
// or false: that.
export async function until(look, what, milliseconds = kWaitMs, woken = () => undefined) {
  for (const late = Date.now() + milliseconds; ;) {
    const value = await look();
    if (value !== undefined && value !== false) return value;
    if (Date.now() > late) throw new Error(`waited ${milliseconds} ms for ${what}`);
    await Promise.race([woken(), new Promise((resolve) => setTimeout(resolve, 20))].filter(Boolean));
  }
}

const kEnvironment = {
  ...{ WINEPREFIX: prefix, WINEDEBUG: '-all', WINEDLLOVERRIDES: 'mscoree,mshtml=', LC_ALL: 'C.UTF-8' },
};
// Not before it is needed: the display may come later.
const wineEnvironment = (extra) => ({ ...process.env, ...kEnvironment, ...extra });

export async function prepareWine({ visible = false } = {}) {
  await ensureDisplay(visible);
  if (!existsSync(join(prefix, 'system.reg'))) {
    await mkdir(prefix, { recursive: true });
    await runFile('wineboot', ['-u'], { env: wineEnvironment() });
  }
  await keepHomeOut();
  // Windows always has a hosts file; without one the program asks the helper service for it.
  await mkdir(dirname(kHosts), { recursive: true });
  await writeFile(kHosts, '', { flag: 'a' });
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

// A folder on drive C that is gone after remove(). `windows` and `unix` are its two names; `name` may say where.
export async function makeFolder(name = 'varnel-test-') {
  await mkdir(driveC, { recursive: true });
  const unix = await mkdtemp(join(driveC, name));
  const windows = `C:\\${unix.slice(driveC.length + 1).replaceAll('/', '\\')}`;
  return { unix, windows, remove: () => rm(unix, { recursive: true, force: true }) };
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
  const entries = existsSync(unix) ? await readdir(unix, { withFileTypes: true, recursive: true }) : [];
  const paths = entries.filter((entry) => entry.isFile()).map(({ path, name }) => join(path, name));
  return Promise.all(paths.map(async (path) => ({ path, size: (await lstat(path)).size })));
}

// Starts a Windows program; `output` is what it has written so far, `ended` settles with its exit code (or signal),
// which is its `code` then.
export function startInPrefix(program, args = [], { env, cwd } = {}) {
  // In a process group of its own: Ctrl+C in the terminal is for the driver, which ends the program in order.
  const options = { stdio: ['pipe', 'pipe', 'ignore'], env: wineEnvironment(env), cwd, detached: true };
  const child = spawn('wine', [program, ...args], options);
  child.output = '';
  child.stdout.setEncoding('utf8').on('data', (text) => (child.output += text));
  child.ended = once(child, 'exit').then(([code, signal]) => (child.code = signal ?? code));
  return child;
}

// Runs a Windows program to its end: {code, stdout}. Programs of Windows by bare name, stand-ins by path.
export async function runInPrefix(program, args = [], options = {}) {
  const child = startInPrefix(program, args, options);
  child.stdin.end();
  const [code] = await once(child, 'close');
  return { code, stdout: child.output.replaceAll('\r\n', '\n') };
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

const kHives = { HKCU: 'HKEY_CURRENT_USER', HKLM: 'HKEY_LOCAL_MACHINE' };

async function reg(...words) {
  const { code } = await runInPrefix('reg', words);
  if (code !== 0) throw new Error(`reg ${words.join(' ')} ended with ${code}`);
}

// A text as an exported key has it.
export const registryText = (text) => `"${text.replace(/["\\]/g, '\\$&')}"`;

// Writes values of keys, {key: {name: data}}, with data as readRegistry gives them; undefined deletes the value,
// and null in the place of all values deletes the key.
export async function writeRegistry(keys) {
  const expand = (text) =>
    `hex(2):${Buffer.from(`${text}\0`, 'utf16le')
      .toString('hex')
      .replace(/..(?!$)/g, '$&,')}`;
  const lines = Object.entries(keys).flatMap(([key, values]) => [
    `[${values ? '' : '-'}${key.replace(/^\w+/, (hive) => kHives[hive] ?? hive)}]`,
    ...Object.entries(values ?? {}).map(
      ([name, data = '-']) =>
        `${name === '' ? '@' : registryText(name)}=${data.replace(/^expand:(.*)$/s, (_, text) => expand(text))}`,
    ),
  ]);
  const file = await makeFolder('registry-');
  const text = ['\ufeffWindows Registry Editor Version 5.00', ...lines, ''].join('\r\n');
  await writeFile(join(file.unix, 'keys.reg'), text, 'utf16le');
  await reg('import', `${file.windows}\\keys.reg`);
  await file.remove();
}

// Runs `body` with keys as `keys` says: an object of values is all that is there, null is no key, undefined
// leaves it as it is. Afterwards they are what they were before.
export async function withRegistry(keys, body) {
  await prepareWine();
  const kept = await makeFolder('registry-');
  const saved = [];
  for (const [i, key] of Object.keys(keys).entries()) {
    const file = `${kept.windows}\\${i}.reg`;
    if ((await runInPrefix('reg', ['export', key, file, '/y'])).code === 0) saved.push(file);
  }
  const none = (names) => Object.fromEntries(names.map((key) => [key, null]));
  try {
    await writeRegistry(none(Object.keys(keys).filter((key) => keys[key] !== undefined)));
    await writeRegistry(Object.fromEntries(Object.entries(keys).filter(([, values]) => values)));
    return await body();
  } finally {
    await writeRegistry(none(Object.keys(keys)));
    for (const file of saved) await reg('import', file);
    await kept.remove();
  }
}

// Runs `body` while files of the prefix, Windows paths, are away; what stands in their place meanwhile goes.
export async function withAway(paths, body) {
  const moved = paths.map(unixPath).filter((path) => existsSync(path));
  if (moved.length === 0) throw new Error(`none of ${paths.join(', ')} is there`);
  for (const path of moved) await rename(path, `${path}.away`);
  try {
    return await body();
  } finally {
    for (const path of moved) await rename(`${path}.away`, path);
  }
}

export const standIn = (name) => join(buildFolder, 'stand_ins', name);

export async function copyInto(folder, files) {
  await mkdir(folder, { recursive: true });
  for (const [name, source] of Object.entries(files)) await cp(source, join(folder, name));
}
