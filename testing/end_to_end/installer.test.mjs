// Tests the setup program made by ./dev package: it installs, updates a running copy and removes. It
// really installs into the prefix.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { cp, readFile, rm, stat, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { join } from 'node:path';
import { after, afterEach, beforeEach, test } from 'node:test';
import { promisify } from 'node:util';

import { dialogOf, openView, press, withVarnel } from './harness.mjs';
import * as wine from './wine.mjs';

const { filesBelow, makeFolder, runInPrefix, standIn, startInPrefix, unixPath, until, version } = wine;

const runFile = promisify(execFile);
const kPackage = join(wine.root, 'build/package');
const kZip = `Varnel-${version}.zip`;
const kSetup = join(kPackage, 'VarnelSetup.exe');
const kInstalled = 'C:\\Program Files\\Varnel';
const kProgram = `${kInstalled}\\bin\\Varnel.exe`;
const kUninstaller = `${kInstalled}\\uninstall.exe`;
const kService = 'HKLM\\System\\CurrentControlSet\\Services\\VarnelService';
const kKey = 'HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Varnel';
const kLink = unixPath('C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs\\Varnel.lnk');
const kSettings = '{"language":"en","autoScan":false}';
const kScripts = ['check_updates.ps1', 'update_driver.ps1'];
const kReleased = ['THIRD_PARTY_NOTICES.txt', 'Varnel.exe', 'VarnelService.exe', ...kScripts];
const kBin = [...kReleased, 'VarnelSetup.exe'].map((name) => `bin/${name}`);
const kFiles = [...kBin, 'settings.json', 'uninstall.exe'].sort();

const made = await stat(kSetup).catch(() => undefined);
const from = await stat(join(wine.buildFolder, 'bin/Varnel.exe'));
assert.ok(made?.mtimeMs > from.mtimeMs, 'VarnelSetup.exe is missing or old: ./dev package makes it');
await wine.prepareWine();
const unpacked = await makeFolder();
await runFile('unzip', [join(kPackage, kZip), '-d', unpacked.unix]);
const installed = unixPath(kInstalled);
const inBin = (name) => join(installed, 'bin', name);
const kSettingsFile = join(installed, 'settings.json');
const namesBelow = async (folder) =>
  (await filesBelow(folder)).map(({ path }) => path.slice(folder.length + 1)).sort();
const present = () => namesBelow(installed);
// Returns true if the installed files are those of the zip.
const isReleased = async (name) =>
  (await readFile(inBin(name))).equals(await readFile(join(unpacked.unix, 'Varnel/bin', name)));
const setup = async (words, options) => (await runInPrefix(kSetup, words, options)).code;
const probe = async (...words) => JSON.parse((await runInPrefix(standIn('window_probe.exe'), words)).stdout);
const closeWindow = async () => (await probe('send:16,0,0', 'wait_exit')).exitCode;
const isServing = async () =>
  /STATE.*RUNNING/.test((await runInPrefix('sc', ['query', 'VarnelService'])).stdout);
const hasKey = async (key) => (await runInPrefix('reg', ['query', key])).code === 0;

const started = [];
function start(...words) {
  started.push(startInPrefix(...words));
  return started.at(-1);
}

async function remove() {
  for (const child of started.splice(0)) child.kill('SIGKILL');
  if (existsSync(inBin('VarnelService.exe')))
    await runInPrefix(`${kInstalled}\\bin\\VarnelService.exe`, ['--remove']);
  await rm(installed, { recursive: true, force: true });
  await rm(kLink, { force: true });
  await wine.writeRegistry({ [kKey]: null });
}
after(() => unpacked.remove());
beforeEach(remove);
afterEach(remove);

test('the package holds a zip, the setup and their checksums', async () => {
  await runFile('sha256sum', ['--strict', '-c', 'SHA256SUMS'], { cwd: kPackage });
  const summed = (await readFile(join(kPackage, 'SHA256SUMS'), 'utf8')).match(/\S+$/gm);
  assert.deepEqual(summed, [`./${kZip}`, './VarnelSetup.exe']);
  assert.deepEqual(
    await namesBelow(unpacked.unix),
    kReleased.map((name) => `Varnel/bin/${name}`),
  );
});

test('a silent installation installs everything, and a silent removal removes only that', async () => {
  const tools = await makeFolder();
  const env = { VARNEL_TOOL_SCRIPTS: tools.windows, WINEDLLOVERRIDES: `icacls.exe=n;${wine.kOverrides}` };
  const kIcacls = 'C:\\windows\\system32\\icacls.exe';
  await writeFile(join(tools.unix, 'icacls.json'), '{}');
  await wine.withAway([kIcacls], async () => {
    await cp(standIn('console_tool.exe'), unixPath(kIcacls));
    assert.equal(await setup(['/S'], { env }), 0);
  });
  assert.deepEqual(await present(), kFiles);
  assert.ok(await isServing());
  for (const name of kReleased) assert.ok(await isReleased(name), name);
  assert.equal((await stat(kSettingsFile)).size, 0, 'the defaults hold');
  // Wine has no access lists, so the right of ordinary users to write shows only in the tool's command
  // line.
  const [granted] = (await readFile(join(tools.unix, 'icacls.log'), 'utf8')).split('\n');
  assert.equal(granted, `"${kIcacls}" "${kInstalled}\\settings.json" /grant *S-1-5-32-545:M`);
  assert.equal((await wine.readRegistry(kKey)).DisplayVersion, `"${version}"`);
  assert.ok((await readFile(kLink)).includes(kProgram), 'the Start menu leads to the program');

  // Installs over the existing copy: settings stay, and a file that cannot be replaced is reported.
  await writeFile(kSettingsFile, kSettings);
  for (const name of kScripts) await writeFile(inBin(name), 'older'); // the files that are not running
  const steps = [{ hold: `${kInstalled}\\bin\\update_driver.ps1`, text: 'held' }, { delay_ms: 600_000 }];
  await cp(standIn('console_tool.exe'), join(tools.unix, 'holder.exe'));
  await writeFile(join(tools.unix, 'holder.json'), JSON.stringify({ steps }));
  const holder = start(`${tools.windows}\\holder.exe`, [], { env });
  await until(() => holder.output.includes('held'), 'the file to be held');
  assert.equal(await setup(['/S', '/D=C:\\elsewhere']), 3);
  holder.kill('SIGKILL');
  await holder.ended;
  assert.ok(await isReleased('check_updates.ps1'));
  assert.equal(await readFile(kSettingsFile, 'utf8'), kSettings);
  assert.equal(existsSync(unixPath('C:\\elsewhere')), false, 'what is installed stays where it is');
  assert.ok(await isServing(), 'the service that was stopped for it runs again');

  await writeFile(inBin('notes.txt'), 'mine');
  assert.equal((await runInPrefix(`${kInstalled}\\bin\\VarnelSetup.exe`, ['--uninstall', '/S'])).code, 0);
  await until(async () => !existsSync(kLink) && (await present()).length === 1, 'the removal');
  await until(async () => !(await hasKey(kKey)), 'the entry to go');
  assert.equal(await hasKey(kService), false, 'the service has gone with its file');
  assert.deepEqual(await present(), ['bin/notes.txt']);
  await tools.remove();
});

test('a service that cannot be stopped is removed all the same, with what belongs to it', async () => {
  const kOwn = 'HKLM\\Software\\Varnel';
  await wine.writeRegistry({ [kOwn]: { RequireElevation: 'dword:00000000' } });
  const kSilent = '"C:\\windows\\system32\\ping.exe" -n 10 127.0.0.1'; // never reports that it has started
  await runInPrefix('sc', ['create', 'VarnelService', 'binPath=', kSilent, 'start=', 'demand']);
  const starting = start('sc', ['start', 'VarnelService']);
  await until(async () => /PENDING/.test((await runInPrefix('sc', ['query', 'VarnelService'])).stdout), 'it');
  assert.equal((await runInPrefix(join(wine.buildFolder, 'bin/VarnelService.exe'), ['--remove'])).code, 1);
  assert.equal(await hasKey(kOwn), false);
  await starting.ended;
  assert.equal(await hasKey(kService), false);
});

test('a program that keeps running is neither replaced nor removed; one that ends is replaced', async () => {
  assert.equal(await setup(['/S']), 0);
  assert.equal(await setup(['/S', '/NOSERVICE']), 0);
  assert.equal(await hasKey(kService), false, 'left out, the service that was there goes');
  await writeFile(inBin('check_updates.ps1'), 'older');
  const program = start(kProgram);
  await probe('find');
  const began = Date.now();
  // Runs the uninstaller in place, not as a temporary copy that continues independently.
  const waiting = [
    start(kSetup, ['--update-restart']),
    start(kUninstaller, ['/S', ...`_?=${kInstalled}`.split(' ')]),
  ];
  assert.deepEqual(await Promise.all(waiting.map(({ ended }) => ended)), [2, 2]);
  assert.ok(Date.now() - began >= 30_000, 'they wait for half a minute');
  assert.deepEqual(
    await present(),
    kFiles.filter((path) => path !== 'bin/VarnelService.exe'),
  );
  assert.equal(await readFile(inBin('check_updates.ps1'), 'utf8'), 'older');
  assert.equal(program.code, undefined);
  assert.equal(await closeWindow(), 0);
  const update = start(kSetup, ['--update-restart']);
  assert.equal(await closeWindow(), 0, 'the update before has given the user the program back');
  assert.equal(await update.ended, 0);
  assert.ok(await isReleased('check_updates.ps1'));
  assert.equal(await closeWindow(), 0, 'the new program has been started');
});

test('the page has the setup remove the program', () =>
  withVarnel({ language: 'en', tools: { 'VarnelSetup.exe': {} } }, async (app) => {
    const { page, text } = app;
    await openView(page, 'maintenance');
    // Wine crashes if it ends a process that queries the graphics.
    await app.waitForMessage(({ type, requestId }) => type === 'status' && requestId === 0);
    await press(page, text('remove.verb'));
    await press(await dialogOf(page, text('remove.confirm')), text('remove.verb'));
    assert.equal(await app.exited, 0);
    const calls = await until(async () => (await app.toolCalls('VarnelSetup')).join() || false, 'the setup');
    assert.match(calls, /VarnelSetup\.exe"? --uninstall$/);
  }));
