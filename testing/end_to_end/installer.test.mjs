// The setup program: installs, updates over a running copy, removes. Made by ./dev package; in the prefix it really installs.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { cp, readFile, readdir, rm, stat, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { join } from 'node:path';
import { afterEach, before, beforeEach, test } from 'node:test';
import { promisify } from 'node:util';

import { dialogOf, openView, press, withVarnel } from './harness.mjs';
import { serve, withReleaseServer } from './release_server.mjs';
import * as wine from './wine.mjs';

const { filesBelow, makeFolder, runInPrefix, standIn, startInPrefix, unixPath, until, version, withAway } =
  wine;

const runFile = promisify(execFile);
const kPackage = join(wine.root, 'build/package');
const kSetup = join(kPackage, 'VarnelSetup.exe');
const kInstalled = 'C:\\Program Files\\Varnel';
const kProgram = `${kInstalled}\\bin\\Varnel.exe`;
const kService = 'HKLM\\System\\CurrentControlSet\\Services\\VarnelService';
const kKey = 'HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Varnel';
const kLink = 'C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs\\Varnel.lnk';
const kSettings = '{"language":"en","autoScan":false}';
const kScripts = ['check_updates.ps1', 'update_driver.ps1'];
const kReleased = ['THIRD_PARTY_NOTICES.txt', 'Varnel.exe', 'VarnelService.exe', ...kScripts];
const kFiles = [...kReleased, 'VarnelSetup.exe']
  .map((name) => `bin/${name}`)
  .concat('settings.json', 'uninstall.exe')
  .sort();

await wine.prepareWine();
const installed = unixPath(kInstalled);
const inBin = (name) => join(installed, 'bin', name);
const [kZip] = existsSync(kPackage) ? (await readdir(kPackage)).filter((name) => name.endsWith('.zip')) : [];
const unzip = (...words) =>
  runFile('unzip', words, { cwd: kPackage, encoding: 'buffer', maxBuffer: 1e8 }).then(({ stdout }) => stdout);
// A released file, as the zip has it.
const released = (name) => unzip('-p', kZip, `Varnel/bin/${name}`);
const present = async () =>
  (await filesBelow(installed)).map(({ path }) => path.slice(installed.length + 1)).sort();
const setup = async (...words) => (await runInPrefix(kSetup, words)).code;
const probe = async (...words) => (await runInPrefix(standIn('window_probe.exe'), words)).stdout;
const closeWindow = async () => JSON.parse(await probe('send:16,0,0', 'wait_exit')).exitCode;
const hasKey = async (key) => (await runInPrefix('reg', ['query', key])).code === 0;

const started = [];
function start(...words) {
  started.push(startInPrefix(...words));
  return started.at(-1);
}

// Without a window manager Wine waits two seconds for it whenever a window goes; windows that none manages go at once.
const kManaged = 'HKCU\\Software\\Wine\\X11 Driver';
async function remove() {
  if (existsSync(inBin('VarnelService.exe')))
    await runInPrefix(`${kInstalled}\\bin\\VarnelService.exe`, ['--remove']);
  await rm(installed, { recursive: true, force: true });
  await rm(unixPath(kLink), { force: true });
  await wine.writeRegistry({ [kKey]: null, [kManaged]: null });
}
before(async () => {
  const made = await stat(kSetup).catch(() => undefined);
  const from = await stat(join(wine.buildFolder, 'bin/Varnel.exe'));
  assert.ok(made?.mtimeMs > from.mtimeMs, 'VarnelSetup.exe is missing or old: ./dev package makes it');
});
beforeEach(async () => {
  await remove();
  await wine.writeRegistry({ [kManaged]: { Managed: '"N"' } });
});
afterEach(async () => {
  for (const child of started.splice(0)) child.kill('SIGKILL');
  await remove();
});

test('the package: a zip, the setup, and check sums that are right', async () => {
  assert.equal(kZip, `Varnel-${version}.zip`);
  await runFile('sha256sum', ['--strict', '-c', 'SHA256SUMS'], { cwd: kPackage });
  const summed = (await readFile(join(kPackage, 'SHA256SUMS'), 'utf8')).match(/\S+$/gm);
  assert.deepEqual(summed, [`./${kZip}`, './VarnelSetup.exe']);
  const names = String(await unzip('-Z1', kZip)).match(/.*[^/\n]$/gm);
  assert.deepEqual(
    names.sort(),
    kReleased.map((name) => `Varnel/bin/${name}`),
  );
});

test('a silent installation puts everything in place, a silent removal takes it away and nothing else', async () => {
  const tools = await makeFolder();
  const env = { VARNEL_TOOL_SCRIPTS: tools.windows, WINEDLLOVERRIDES: 'icacls.exe=n;mscoree,mshtml=' };
  const kIcacls = 'C:\\windows\\system32\\icacls.exe';
  await writeFile(join(tools.unix, 'icacls.json'), '{}');
  await withAway([kIcacls], async () => {
    await cp(standIn('console_tool.exe'), unixPath(kIcacls));
    assert.equal((await runInPrefix(kSetup, ['/S'], { env })).code, 0);
  });
  assert.deepEqual(await present(), kFiles);
  assert.ok(await hasKey(kService));
  for (const name of kReleased) assert.deepEqual(await readFile(inBin(name)), await released(name), name);
  assert.deepEqual(await readFile(inBin('VarnelSetup.exe')), await readFile(kSetup));
  assert.equal((await stat(join(installed, 'settings.json'))).size, 0, 'the defaults hold');
  // Wine keeps no access lists: what would give ordinary users the right to write is seen as the tool's command line.
  const [granted] = (await readFile(join(tools.unix, 'icacls.log'), 'utf8')).split('\n');
  assert.equal(granted, `"${kIcacls}" "${kInstalled}\\settings.json" /grant *S-1-5-32-545:M`);
  const { EstimatedSize, ...values } = await wine.readRegistry(kKey);
  const kilobytes = (await filesBelow(installed)).reduce((sum, { size }) => sum + size, 0) / 1024;
  const estimate = Number.parseInt(EstimatedSize.replace('dword:', ''), 16);
  assert.ok(Math.abs(estimate - kilobytes) <= kFiles.length, `${EstimatedSize} of ${kilobytes} kB`);
  const texts = {
    DisplayName: 'Varnel',
    DisplayVersion: version,
    DisplayIcon: kProgram,
    Publisher: 'Varnel',
    InstallLocation: kInstalled,
    UninstallString: `"${kInstalled}\\uninstall.exe"`,
    QuietUninstallString: `"${kInstalled}\\uninstall.exe" /S`,
  };
  assert.deepEqual(values, {
    ...Object.fromEntries(Object.entries(texts).map(([name, text]) => [name, wine.registryText(text)])),
    NoModify: 'dword:00000001',
    NoRepair: 'dword:00000001',
  });
  assert.ok((await readFile(unixPath(kLink))).includes(kProgram), 'the Start menu leads to the program');

  // Again, over what is there: settings stay, and a file that cannot be replaced is not passed over in silence.
  await writeFile(join(installed, 'settings.json'), kSettings);
  for (const name of kScripts) await writeFile(inBin(name), 'older'); // not what runs
  const steps = [{ hold: `${kInstalled}\\bin\\update_driver.ps1`, text: 'held' }, { delay_ms: 600_000 }];
  await cp(standIn('console_tool.exe'), join(tools.unix, 'holder.exe'));
  await writeFile(join(tools.unix, 'holder.json'), JSON.stringify({ steps }));
  const holder = start(`${tools.windows}\\holder.exe`, [], { env });
  await until(() => holder.output.includes('held'), 'the file to be held');
  assert.equal(await setup('/S', '/D=C:\\elsewhere'), 3);
  holder.kill('SIGKILL');
  await holder.ended;
  assert.deepEqual(await readFile(inBin('check_updates.ps1')), await released('check_updates.ps1'));
  assert.equal(await readFile(join(installed, 'settings.json'), 'utf8'), kSettings);
  assert.equal(existsSync(unixPath('C:\\elsewhere')), false, 'what is installed stays where it is');

  await writeFile(inBin('notes.txt'), 'mine');
  assert.equal((await runInPrefix(`${kInstalled}\\bin\\VarnelSetup.exe`, ['--uninstall', '/S'])).code, 0);
  await until(async () => !existsSync(unixPath(kLink)) && (await present()).length === 1, 'the removal');
  await until(async () => !(await hasKey(kKey)), 'the entry to go');
  assert.equal(await hasKey(kService), false, 'the service has gone with its file');
  assert.deepEqual(await present(), ['bin/notes.txt']);
  assert.equal(await setup('--uninstall', '/S'), 1);
  await tools.remove();
});

test('a program that does not end is neither replaced nor removed', async () => {
  assert.equal(await setup('/S'), 0);
  assert.equal(await setup('/S', '/NOSERVICE'), 0);
  assert.equal(await hasKey(kService), false, 'left out, the service that was there goes');
  await writeFile(inBin('check_updates.ps1'), 'older');
  const program = start(kProgram);
  await probe('find');
  const began = Date.now();
  // The uninstaller in its own place, and not as a copy that goes on for itself.
  const waiting = [
    start(kSetup, ['--update-restart']),
    start(`${kInstalled}\\uninstall.exe`, ['/S', ...`_?=${kInstalled}`.split(' ')]),
  ];
  assert.deepEqual(await Promise.all(waiting.map(({ ended }) => ended)), [2, 2]);
  assert.ok(Date.now() - began >= 30_000, 'they wait for half a minute');
  assert.deepEqual(
    await present(),
    kFiles.filter((path) => path !== 'bin/VarnelService.exe'),
  );
  assert.equal(await readFile(inBin('check_updates.ps1'), 'utf8'), 'older');
  assert.equal(program.code, undefined);
  for (const which of ['one of the two', 'the other: the update has given the user the program back'])
    assert.equal(await closeWindow(), 0, which);
});

test('the page updates the installed program while it runs, and hands its removal to the setup', async () => {
  assert.equal(await setup('/S'), 0);
  // The program that is to be replaced asks the test for its updates.
  await cp(standIn('Varnel_loopback.exe'), inBin('Varnel.exe'));
  await writeFile(inBin('update_driver.ps1'), 'older');
  await writeFile(join(installed, 'settings.json'), kSettings);
  await cp(standIn('WebView2Loader.dll'), inBin('WebView2Loader.dll'));
  const options = { language: 'en', folder: { unix: installed, windows: kInstalled } };
  const answers = {
    '/version.json': serve('{"version":"99.0.0"}'),
    '/VarnelSetup.exe': serve(await readFile(kSetup), 200, 'application/octet-stream'),
  };
  const update = async (app) => {
    const { page, text } = app;
    await openView(page, 'maintenance');
    await press(page, text('update.install'));
    await press(await dialogOf(page, text('update.confirm', { version: '99.0.0' })), text('update.install'));
    assert.equal(await app.exited, 0);
  };
  await withReleaseServer(answers, () => withVarnel(options, update));
  const program = await released('Varnel.exe');
  const isNew = async () => (await readFile(inBin('Varnel.exe')).catch(() => Buffer.of())).equals(program);
  await until(isNew, 'the new program');
  await until(async () => JSON.parse(await probe()).found, 'the new program to start');
  assert.deepEqual(await readFile(inBin('update_driver.ps1')), await released('update_driver.ps1'));
  assert.equal(await readFile(join(installed, 'settings.json'), 'utf8'), kSettings);
  await closeWindow();

  // A stand-in takes the place of the setup, which would ask in a window of its own.
  await cp(standIn('console_tool.exe'), inBin('VarnelSetup.exe'));
  const scripts = await makeFolder();
  await writeFile(join(scripts.unix, 'VarnelSetup.json'), '{}');
  await withVarnel({ ...options, env: { VARNEL_TOOL_SCRIPTS: scripts.windows } }, async (app) => {
    const { page, text } = app;
    await openView(page, 'maintenance');
    await app.waitForMessage(({ type, requestId }) => type === 'status' && requestId === 0); // Wine ends no process well while it looks at the graphics
    await press(page, text('remove.verb'));
    await press(await dialogOf(page, text('remove.confirm')), text('remove.verb'));
    assert.equal(await app.exited, 0);
  });
  const log = () => readFile(join(scripts.unix, 'VarnelSetup.log'), 'utf8').catch(() => '');
  await until(log, 'the setup to be started');
  assert.match(await log(), /VarnelSetup\.exe"? --uninstall\n$/);
  await scripts.remove();
});
