// The setup program: installs, updates over a running copy, removes. Made by ./dev package; in the prefix it really installs.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { once } from 'node:events';
import { cp, mkdir, readFile, readdir, rename, rm, stat, writeFile } from 'node:fs/promises';
import { existsSync } from 'node:fs';
import { join } from 'node:path';
import { afterEach, before, beforeEach, test } from 'node:test';
import { promisify } from 'node:util';

import { openView, screenshot, withVarnel } from './harness.mjs';
import { serve, startReleaseServer } from './release_server.mjs';
import {
  buildFolder,
  filesBelow,
  makeFolder,
  prepareWine,
  root,
  runInPrefix,
  standIn,
  startInPrefix,
  unixPath,
  version,
} from './wine.mjs';

const runFile = promisify(execFile);
const kPackage = join(root, 'build/package');
const kSetup = join(kPackage, 'VarnelSetup.exe');
const kInstalled = 'C:\\Program Files\\Varnel';
const kProgram = `${kInstalled}\\bin\\Varnel.exe`;
const kKey = 'HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Varnel';
const kRuntimeKey =
  'HKLM\\Software\\Microsoft\\EdgeUpdate\\ClientState\\{F3017226-FE2A-4295-8BDF-00C3A9A7E4C5}';
const kLink = 'C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs\\Varnel.lnk';
const kReleased = ['Varnel.exe', 'check_updates.ps1', 'update_driver.ps1'];
const kFiles = [
  'bin/Varnel.exe',
  'bin/VarnelSetup.exe',
  'bin/check_updates.ps1',
  'bin/update_driver.ps1',
  'settings.json',
  'uninstall.exe',
];

await prepareWine();
const installed = unixPath(kInstalled);
const [kZip] = existsSync(kPackage) ? (await readdir(kPackage)).filter((name) => name.endsWith('.zip')) : [];
// A released file, as the zip has it.
const released = async (name) =>
  (
    await runFile('unzip', ['-p', kZip, `Varnel/bin/${name}`], {
      cwd: kPackage,
      encoding: 'buffer',
      maxBuffer: 1e8,
    })
  ).stdout;
const present = async () =>
  (await filesBelow(installed)).map(({ path }) => path.slice(installed.length + 1)).sort();
const entry = async () =>
  Object.fromEntries(
    [...(await runInPrefix('reg', ['query', kKey])).stdout.matchAll(/^ +(\w+) +REG_\w+ +(.*)$/gm)].map(
      ([, name, value]) => [name, value],
    ),
  );
const sleep = (ms) =>
  new Promise((resolve) => {
    setTimeout(resolve, ms);
  });

async function until(look, what) {
  for (const late = Date.now() + 20_000; Date.now() < late; await sleep(100)) if (await look()) return;
  throw new Error(`waited in vain for ${what}`);
}

// The texts of the dialog that shows `text`, after pressing its button (1: the one that goes on, 2: Cancel).
async function dialog(text, button) {
  const { code, stdout } = await runInPrefix(standIn('dialog_probe.exe'), [
    text,
    ...(button ? [String(button)] : []),
  ]);
  assert.equal(code, 0, `no dialog with ${text}`);
  return JSON.parse(stdout).map((line) => line.replaceAll('\r\n', '\n'));
}

const started = [];
const start = (program, args, env) => {
  const child = startInPrefix(program, args, { env });
  started.push(child);
  child.stdout.resume();
  child.ended = once(child, 'exit').then(([code]) => code);
  return child;
};
const setup = async (...args) => (await runInPrefix(kSetup, args)).code;
const probe = async (...words) => (await runInPrefix(standIn('window_probe.exe'), words)).stdout;
const closeWindow = () => probe('send:16,0,0', 'wait_exit');

async function remove() {
  await rm(installed, { recursive: true, force: true });
  await rm(unixPath(kLink), { force: true });
  await runInPrefix('reg', ['delete', kKey, '/f']);
}
// Without a window manager Wine waits two seconds for it whenever a window goes; windows that none manages go at once.
const kManaged = ['HKCU\\Software\\Wine\\X11 Driver', '/v', 'Managed', '/f'];
before(async () => {
  const [made, from] = await Promise.all([
    stat(kSetup).catch(() => undefined),
    stat(join(buildFolder, 'bin/Varnel.exe')),
  ]);
  assert.ok(made && made.mtimeMs > from.mtimeMs, 'VarnelSetup.exe is missing or old: ./dev package makes it');
});
beforeEach(async () => {
  await remove();
  await runInPrefix('reg', ['add', ...kManaged, '/d', 'N']);
});
afterEach(async () => {
  for (const child of started.splice(0)) if (child.exitCode === null) child.kill('SIGKILL');
  await remove();
  await runInPrefix('reg', ['delete', ...kManaged]);
});

test('the package: a zip, the setup, and check sums that are right', async () => {
  assert.equal(kZip, `Varnel-${version}.zip`);
  assert.equal(
    (await runFile('sha256sum', ['-c', 'SHA256SUMS'], { cwd: kPackage })).stdout,
    `./${kZip}: OK\n./VarnelSetup.exe: OK\n`,
  );
  const { stdout } = await runFile('unzip', ['-Z1', kZip], { cwd: kPackage });
  assert.deepEqual(
    stdout
      .split('\n')
      .filter((name) => /[^/]$/.test(name))
      .sort(),
    kReleased.map((name) => `Varnel/bin/${name}`),
  );
});

test('a silent installation puts everything in place, a silent removal takes it away and nothing else', async () => {
  const tools = await makeFolder();
  const env = { VARNEL_TOOL_SCRIPTS: tools.windows, WINEDLLOVERRIDES: 'icacls.exe=n;mscoree,mshtml=' };
  const icacls = unixPath('C:\\windows\\system32\\icacls.exe');
  await rename(icacls, `${icacls}.away`);
  try {
    await cp(standIn('console_tool.exe'), icacls);
    await writeFile(join(tools.unix, 'icacls.json'), '{}');
    assert.equal((await runInPrefix(kSetup, ['/S'], { env })).code, 0);
    assert.deepEqual(await present(), kFiles);
    for (const name of kReleased)
      assert.deepEqual(await readFile(join(installed, 'bin', name)), await released(name), name);
    assert.deepEqual(await readFile(join(installed, 'bin/VarnelSetup.exe')), await readFile(kSetup));
    assert.equal((await stat(join(installed, 'settings.json'))).size, 0, 'the defaults hold');
    // Wine keeps no access lists: what would give ordinary users the right to write is seen as the tool's command line.
    const [granted] = (await readFile(join(tools.unix, 'icacls.log'), 'utf8')).split('\n');
    assert.equal(
      granted,
      '"C:\\windows\\system32\\icacls.exe" "C:\\Program Files\\Varnel\\settings.json" /grant *S-1-5-32-545:M',
    );
  } finally {
    await rename(`${icacls}.away`, icacls);
  }
  const kilobytes = Math.ceil((await filesBelow(installed)).reduce((sum, { size }) => sum + size, 0) / 1024);
  const { EstimatedSize, ...values } = await entry();
  assert.ok(
    Math.abs(Number(EstimatedSize) - kilobytes) <= kFiles.length,
    `${EstimatedSize} of ${kilobytes} kB`,
  );
  assert.deepEqual(values, {
    DisplayName: 'Varnel',
    DisplayVersion: version,
    DisplayIcon: kProgram,
    Publisher: 'Varnel',
    InstallLocation: kInstalled,
    UninstallString: `"${kInstalled}\\uninstall.exe"`,
    QuietUninstallString: `"${kInstalled}\\uninstall.exe" /S`,
    NoModify: '0x1',
    NoRepair: '0x1',
  });
  assert.ok((await readFile(unixPath(kLink))).includes(kProgram), 'the Start menu leads to the program');

  // Again, over what is there: settings stay, and a file that cannot be replaced is not passed over in silence.
  await writeFile(join(installed, 'settings.json'), '{"language":"en"}');
  for (const name of ['check_updates.ps1', 'update_driver.ps1'])
    await writeFile(join(installed, 'bin', name), 'older');
  await cp(standIn('console_tool.exe'), join(tools.unix, 'holder.exe'));
  await writeFile(
    join(tools.unix, 'holder.json'),
    JSON.stringify({
      steps: [{ hold: `${kInstalled}\\bin\\update_driver.ps1`, text: 'held' }, { delay_ms: 600_000 }],
    }),
  );
  const holder = startInPrefix(`${tools.windows}\\holder.exe`, [], { env });
  await once(holder.stdout, 'data');
  assert.equal(await setup('/S', '/D=C:\\elsewhere'), 3);
  holder.kill('SIGKILL');
  await once(holder, 'exit');
  assert.deepEqual(
    await readFile(join(installed, 'bin/check_updates.ps1')),
    await released('check_updates.ps1'),
  );
  assert.equal(await readFile(join(installed, 'settings.json'), 'utf8'), '{"language":"en"}');
  assert.equal(existsSync(unixPath('C:\\elsewhere')), false, 'what is installed stays where it is');

  await writeFile(join(installed, 'bin/notes.txt'), 'mine');
  assert.equal((await runInPrefix(`${kInstalled}\\bin\\VarnelSetup.exe`, ['--uninstall', '/S'])).code, 0);
  await until(async () => !existsSync(unixPath(kLink)) && (await present()).length === 1, 'the removal');
  await until(async () => (await runInPrefix('reg', ['query', kKey])).code !== 0, 'the entry to go');
  assert.deepEqual(await present(), ['bin/notes.txt']);
  assert.equal(await setup('--uninstall', '/S'), 1);
  await tools.remove();
});

test('installing by hand says in both languages what the program needs', async () => {
  const install = async (language, { welcome, folder, missing, done }) => {
    const child = start(kSetup, [], { LC_ALL: language });
    await dialog(welcome, 1);
    if (folder) assert.ok((await dialog(folder, 1)).includes(kInstalled));
    if (missing) assert.ok((await dialog('WebView2', 1)).includes(missing));
    await dialog(done, 1);
    assert.equal(await child.ended, 0);
    await until(async () => JSON.parse(await probe()).found, 'the program that the last page starts');
    await closeWindow();
  };
  const english = { welcome: 'Welcome to Varnel Setup', done: 'Completing Varnel Setup' };
  await install('cs_CZ.UTF-8', {
    welcome: 'instalace programu Varnel',
    folder: kInstalled,
    missing:
      'Varnel zobrazuje své okno pomocí součásti Microsoft Edge WebView2 Runtime, která v tomto počítači není nainstalovaná.\n\n' +
      'Nainstalujte bezplatný "Evergreen WebView2 Runtime" (x64) od společnosti Microsoft a potom Varnel spusťte.',
    done: 'byl nainstalov',
  });
  await install('C.UTF-8', {
    ...english,
    missing:
      'Varnel shows its window with the Microsoft Edge WebView2 Runtime, which is not installed on this computer.\n\n' +
      'Install the free "Evergreen WebView2 Runtime" (x64) from Microsoft, then start Varnel.',
  });
  await runInPrefix('reg', [
    'add',
    kRuntimeKey,
    '/v',
    'EBWebView',
    '/d',
    'C:\\Runtime\\120.0.1',
    '/f',
    '/reg:32',
  ]);
  try {
    await install('C.UTF-8', english);
  } finally {
    await runInPrefix('reg', ['delete', kRuntimeKey, '/f', '/reg:32']);
  }
});

test('a program that does not end is neither replaced nor removed', async () => {
  assert.equal(await setup('/S'), 0);
  await writeFile(join(installed, 'bin/check_updates.ps1'), 'older');
  const program = start(kProgram, []);
  await probe('find');
  const before = Date.now();
  // The uninstaller in its own place, and not as a copy that goes on for itself.
  const waiting = [
    start(kSetup, ['--update-restart']),
    start(`${kInstalled}\\uninstall.exe`, ['/S', ...`_?=${kInstalled}`.split(' ')]),
  ];
  const asked = start(kSetup, [], { LC_ALL: 'cs_CZ.UTF-8' });
  await dialog('instalace programu Varnel', 1);
  assert.ok((await dialog('Ukon', 2)).includes('Varnel je stále spuštěný. Ukončete ho a zkuste to znovu.'));
  assert.equal(await asked.ended, 2);
  assert.deepEqual(await Promise.all(waiting.map(({ ended }) => ended)), [2, 2]);
  assert.ok(Date.now() - before >= 30_000, 'they wait for half a minute');
  assert.deepEqual(await present(), kFiles);
  assert.equal(await readFile(join(installed, 'bin/check_updates.ps1'), 'utf8'), 'older');
  assert.equal(program.exitCode, null);

  const again = start(kSetup, []);
  await dialog('Welcome to Varnel Setup', 1);
  await dialog('Varnel is still running. Close it, then try again.');
  for (const which of ['one of the two', 'the other: the update has given the user the program back'])
    assert.equal(JSON.parse(await closeWindow()).exitCode, 0, which);
  assert.equal(await program.ended, 0);
  await dialog('still running', 4); // Retry
  await dialog('WebView2', 1);
  await dialog('Completing Varnel Setup', 1);
  assert.equal(await again.ended, 0);
  assert.deepEqual(
    await readFile(join(installed, 'bin/check_updates.ps1')),
    await released('check_updates.ps1'),
  );
  await probe('find');
  await closeWindow();
});

test('a setup that arrived cut off changes nothing', async () => {
  assert.equal(await setup('/S'), 0);
  const before = await entry();
  await writeFile(join(installed, 'bin/check_updates.ps1'), 'older');
  const folder = await makeFolder();
  const whole = await readFile(kSetup);
  await writeFile(join(folder.unix, 'VarnelUpdate.exe'), whole.subarray(0, whole.length / 2));
  const update = start(`${folder.windows}\\VarnelUpdate.exe`, ['--update-restart']);
  await dialog('integrity', 1);
  assert.notEqual(await update.ended, 0);
  assert.deepEqual(
    [await present(), await entry(), await readFile(join(installed, 'bin/check_updates.ps1'), 'utf8')],
    [kFiles, before, 'older'],
  );
  await folder.remove();
});

test('the page updates the installed program while it runs, and removes it', async () => {
  assert.equal(await setup('/S'), 0);
  // The program that is to be replaced asks the test for its updates.
  await cp(standIn('Varnel_loopback.exe'), join(installed, 'bin/Varnel.exe'));
  await writeFile(join(installed, 'bin/update_driver.ps1'), 'older');
  await writeFile(join(installed, 'settings.json'), '{"language":"en"}');
  const loader = join(installed, 'bin/WebView2Loader.dll');
  await cp(standIn('WebView2Loader.dll'), loader);
  const folder = { unix: installed, windows: kInstalled, remove: () => {} };
  const server = await startReleaseServer({
    '/version.json': serve('{"version":"1.5.0"}'),
    '/VarnelSetup.exe': serve(await readFile(kSetup), 200, 'application/octet-stream'),
  });
  try {
    await withVarnel({ folder }, async (app) => {
      await openView(app.page, 'maintenance');
      await app.page.getByRole('button', { name: 'Download and install' }).click();
      await app.page.getByRole('dialog').getByRole('button', { name: 'Download and install' }).click();
      assert.equal(await app.exited, 0);
    });
  } finally {
    await server.close();
  }
  const program = await released('Varnel.exe');
  await until(
    async () => (await readFile(join(installed, 'bin/Varnel.exe')).catch(() => Buffer.of())).equals(program),
    'the new program',
  );
  await until(async () => JSON.parse(await probe()).found, 'the new program to start');
  assert.deepEqual(
    await readFile(join(installed, 'bin/update_driver.ps1')),
    await released('update_driver.ps1'),
  );
  assert.equal(await readFile(join(installed, 'settings.json'), 'utf8'), '{"language":"en"}');
  await closeWindow();

  await withVarnel({ folder }, async (app) => {
    await openView(app.page, 'maintenance');
    await app.page.getByRole('button', { name: 'Uninstall Varnel' }).click();
    await app.waitForMessage(({ type, requestId }) => type === 'status' && requestId === 0); // Wine ends no process well while it looks at the graphics
    const question = app.page.getByRole('dialog', { name: 'Uninstall Varnel?' });
    await screenshot(app.page, 'maintenance-uninstall-en');
    await question.getByRole('button', { name: 'Uninstall Varnel' }).click();
    assert.equal(await app.exited, 0);
  });
  assert.ok((await dialog('Remove Varnel from your computer', 2)).includes(`${kInstalled}\\`));
  assert.deepEqual(
    await present(),
    [...kFiles, 'bin/WebView2Loader.dll'].sort(),
    'nothing goes before the user agrees',
  );
  await rm(loader);

  assert.equal(await start(`${kInstalled}\\bin\\VarnelSetup.exe`, ['--uninstall']).ended, 0);
  await dialog('Remove Varnel from your computer', 1);
  await dialog('Completed', 1);
  await until(() => !existsSync(installed), 'the folder to go');
  assert.deepEqual(
    [existsSync(unixPath(kLink)), (await runInPrefix('reg', ['query', kKey])).code],
    [false, 1],
  );
});
