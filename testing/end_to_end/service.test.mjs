// The helper service itself, in the foreground, asked by the shipped program over its bridge, and by programs
// that are not it.
import assert from 'node:assert/strict';
import { once } from 'node:events';
import { existsSync } from 'node:fs';
import { copyFile, mkdir, readFile, rename, rm, symlink, writeFile } from 'node:fs/promises';
import { basename, dirname, join } from 'node:path';
import { test } from 'node:test';

import { withVarnel } from './harness.mjs';
import * as wine from './wine.mjs';

const { makeFolder, readRegistry, standIn, startInPrefix, unixPath } = wine;

const kHosts = 'C:\\windows\\system32\\drivers\\etc\\hosts';
const kEnvironment = 'HKLM\\SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment';
const kRun = 'HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Run';
const kApproved = kRun.replace('Run', 'Explorer\\StartupApproved\\Run');
const kOn = 'hex:02,00,00,00,00,00,00,00,00,00,00,00';

// Runs `body` with the program and the real service beside it. `log()` is what it would write into the
// event log.
function withService(body) {
  return withVarnel({ page: false }, async (app) => {
    const files = ['VarnelService.exe', 'update_driver.ps1'];
    const copies = files.map((name) => [name, join(wine.buildFolder, 'bin', name)]);
    await wine.copyInto(app.binFolder, Object.fromEntries(copies));
    const service = startInPrefix(`${app.folder.windows}\\bin\\VarnelService.exe`, ['--console']);
    try {
      await wine.until(() => service.output.includes('ready'), 'the service');
      await body(app, () => service.output);
    } finally {
      service.stdin.end();
      await service.ended;
    }
  });
}

// What the service answers a program that is not Varnel.exe.
async function peer(mode, input = '', ...words) {
  const child = startInPrefix(standIn('pipe_peer.exe'), [mode, ...words]);
  child.stdin.end(input);
  await once(child, 'close');
  return child.output.replaceAll('\r', '').trim();
}
const ask = (action, data = {}) => peer('ask', `${JSON.stringify({ action, data })}\n`);

const put = async (windowsPath, text = 'x') => {
  const path = unixPath(windowsPath);
  await mkdir(join(path, '..'), { recursive: true });
  await writeFile(path, text);
  return path;
};

test('the hosts file is replaced in one step, and its last version kept', () =>
  withService(async (app, log) => {
    const hosts = await put(kHosts, '127.0.0.1 before\n');
    const save = async (content) => (await app.request('saveHostsFile', { content })).success;
    const content = '127.0.0.1 after\r\n# žluťoučký\r\n'.repeat(2_000);
    assert.equal(await save(content), true);
    assert.equal(await readFile(hosts, 'utf8'), content);
    assert.equal(await readFile(`${hosts}.varnel.bak`, 'utf8'), '127.0.0.1 before\n');
    assert.equal(await save('x'.repeat(8 * 1024 * 1024 + 1)), false);
    assert.equal(await readFile(hosts, 'utf8'), content);
    assert.equal(existsSync(`${hosts}.varnel.new`), false);
    assert.match(
      log(),
      /save_hosts_file was done, asked by .*Varnel\.exe\r\n[^]*was refused for what it names/,
    );
    assert.deepEqual(JSON.parse(await ask('get_hosts_file')), { content, success: true });
    await rm(`${hosts}.varnel.bak`);
  }));

test('variables, start-up items and keys of the machine', () =>
  wine.withRegistry(
    {
      [kEnvironment]: undefined,
      [kRun]: { VarnelTest: '"C:\\\\x.exe"' },
      [kApproved]: { Other: kOn },
      'HKLM\\Software\\VarnelTestMaker\\Tool\\Deep\\er': { a: '"b"' },
      'HKLM\\Software\\VarnelTestMaker\\Other': { a: '"b"' },
    },
    () =>
      withService(async (app, log) => {
        const save = async (name, value, is_delete = false) =>
          (await app.request('saveEnvVariable', { type: 'system', name, value, is_delete })).success;
        assert.equal(await save('VARNEL_TEST', '%SystemRoot%\\příklad'), true);
        await wine.writeRegistry({ [kEnvironment]: { VARNEL_TEST_OLD: '"x"' } });
        assert.equal(await save('VARNEL_TEST_OLD', '', true), true);
        assert.equal(await save('Path', '', true), false);
        assert.match(log(), /env was done, asked by .*Varnel\.exe: is_delete=false, name=VARNEL_TEST\r\n/);
        const variables = await readRegistry(kEnvironment);
        assert.equal(variables.VARNEL_TEST, 'expand:%SystemRoot%\\příklad');
        assert.equal(variables.VARNEL_TEST_OLD, undefined);
        assert.ok(Object.keys(variables).some((name) => name.toLowerCase() === 'path'));

        const toggle = async (name) =>
          (await app.request('toggleStartupItem', { scope: 'HKLM', name, enabled: false })).success;
        assert.equal(await toggle('VarnelTest'), true);
        assert.equal(await toggle('NoSuchItem'), false);
        const kOff = kOn.replace('02', '03');
        assert.deepEqual(await readRegistry(kApproved), { Other: kOn, VarnelTest: kOff });

        const clean = async (path) =>
          (await app.request('cleanLeftovers', { items: [{ type: 'registry', path }] })).success;
        assert.equal(await clean('HKLM\\Software\\VarnelTestMaker\\Tool'), true);
        assert.equal(await readRegistry('HKLM\\Software\\VarnelTestMaker\\Tool'), undefined);
        assert.ok(await readRegistry('HKLM\\Software\\VarnelTestMaker\\Other'));
        assert.equal(await clean('HKLM\\Software\\Microsoft'), false);
        assert.ok(await readRegistry(kRun));
      }),
  ));

const kTest = 'C:\\Program Files\\VarnelTest';
const kData = 'C:\\ProgramData\\VarnelTest';

test('junk goes, leftover folders go, and what is behind links stays', () =>
  withService(async (app) => {
    const canary = join(app.folder.unix, 'canary');
    const junk = ['temp\\a', 'Prefetch', 'Logs\\deep'].map((folder) => `C:\\windows\\${folder}\\file`);
    const files = await Promise.all([...junk, `${kTest}\\sub\\file`].map((path) => put(path)));
    await put(`${app.folder.windows}\\canary\\file`);
    const links = ['C:\\windows\\temp\\link', `${kTest}\\link`, `${kData}Link`];
    for (const link of links) await symlink(canary, unixPath(link));
    const sizes = JSON.parse(await ask('getJunkSizes'));
    assert.ok(sizes.success && sizes.windowsTempBytes >= 1 && sizes.prefetchBytes >= 1);

    assert.equal((await app.request('cleanJunk')).success, true);
    const remove = async (path) =>
      (await app.request('cleanLeftovers', { items: [{ type: 'directory', path }] })).success;
    await remove(kTest); // not the link: Wine cannot
    for (const path of [`${kData}Link`, `${kData}Link\\file`, 'C:\\windows\\Fonts'])
      assert.equal(await remove(path), false, path);
    assert.deepEqual(files.filter(existsSync), []);
    assert.ok(existsSync(join(canary, 'file')));
    for (const link of links) await rm(unixPath(link));
    assert.equal(await remove(kTest), true);
    assert.equal(existsSync(unixPath(kTest)), false);
  }));

test('the weekly cleaning is there and gone', () =>
  withService(async (app) => {
    for (const enabled of [true, true, false, false]) {
      assert.equal((await app.request('toggleScheduleClean', { enabled })).success, true, `${enabled}`);
      assert.equal(existsSync(unixPath('C:\\windows\\system32\\tasks\\Varnel\\Silent clean')), enabled);
    }
  }));

test('another program may read, and nothing else', () =>
  withService(async (_, log) => {
    const texts = { content: 'x', name: 'x', value: 'x', path: 'x' };
    const data = { ...texts, enabled: true, enable: true, is_delete: false };
    for (const action of [
      ...['save_hosts_file', 'save_system_env', 'control_dev_service', 'set_hibernation', 'cleanJunk'],
      ...['toggleScheduleClean', 'toggleHKLMStartup', 'cleanLeftoverPath', 'cleanHKLMRegistry'],
      'safemodeReboot',
    ])
      assert.equal(await ask(action, data), '{"error":"Not asked by Varnel.exe","success":false}', action);
    for (const action of ['installDriver', 'sfcVerify'])
      assert.deepEqual((await ask(action, data)).split('\n').map(JSON.parse), [
        { message: 'Not asked by Varnel.exe', type: 'stdout' },
        { code: 5, type: 'exit' },
      ]);
    assert.equal(await ask('delete\neverything'), '{"error":"Unknown action","success":false}');
    assert.ok(log().includes('delete?everything is unknown'));
    assert.equal(JSON.parse(await ask('get_dev_services')).success, true);
  }));

test('misbehaving programs neither stop it nor learn anything', () =>
  withService(async () => {
    const look = async () => JSON.parse(await peer('look'));
    const works = async () => assert.equal(JSON.parse(await ask('getJunkSizes')).success, true);
    await works();
    const before = await look();
    assert.notEqual(await peer('steal'), '0');
    for (const line of ['\n', 'no JSON\n', '{}\n', '[[[[\n', '{"action":"sfcVerify"}\n', '\0\0\n'])
      assert.equal(await peer('ask', line), '', JSON.stringify(line));
    await peer('leave', '{"action":"getJunkSizes","data":{}}\n');
    await peer('leave', '{"action":"getJunk');
    assert.ok(Number(await peer('fill', '', String(17 * 1024 * 1024))) < 5_000, 'too long a line');
    const half = Number(await peer('fill', '', '10'));
    assert.ok(half > 4_000 && half < 8_000, `half a line is waited for: ${half} ms`);

    await put(kHosts, 'x'.repeat(1 << 20));
    for (const request of [[], ['{"action":"get_hosts_file","data":{}}']]) {
      const silent = startInPrefix(standIn('pipe_peer.exe'), ['hold', '8', ...request]);
      await wine.until(() => silent.output.includes('held'), 'eight peers that say nothing, or read nothing');
      const begin = Date.now();
      await works();
      const waited = Date.now() - begin;
      assert.ok(waited > 2_000 && waited < 8_000, `${request} ${waited} ms`);
      silent.stdin.end();
      await once(silent, 'close');
    }

    assert.ok(Number(await peer('probe', '', '1000')) < 5, 'milliseconds a probe');
    for (let i = 0; i < 20; ++i) await works();
    // Each of the eight threads may keep a handle of its first request; a leak would be twenty or a thousand.
    const more = (await look()).handles - before.handles;
    assert.ok(more <= 8, `${more} handles more than before`);
  }));

// Stand-in tools in the system's own folder, which are the ones that the service starts.
const kSystem = 'C:\\windows\\system32\\';
const kTools = ['powercfg', 'bcdedit', 'shutdown', 'dism', 'sfc', 'WindowsPowerShell\\v1.0\\powershell'];
const kOverrides = 'HKCU\\Software\\Wine\\DllOverrides';
const kNative = ['shutdown.exe', 'dism.exe', 'powershell.exe']; // Wine would take its own

async function withTools(scripts, body) {
  await wine.prepareWine();
  const folder = await makeFolder('tools-');
  const there = kTools.map((name) => unixPath(`${kSystem}${name}.exe`));
  const saved = there.filter(existsSync);
  for (const path of saved) await rename(path, `${path}.away`);
  const setUp = (scriptFolder, native) =>
    wine.writeRegistry({
      [kEnvironment]: { VARNEL_TOOL_SCRIPTS: scriptFolder },
      [kOverrides]: Object.fromEntries(kNative.map((name) => [name, native])),
    });
  await setUp(wine.registryText(folder.windows), '"native"');
  try {
    for (const path of there) {
      await mkdir(dirname(path), { recursive: true });
      await copyFile(standIn('console_tool.exe'), path);
      const name = basename(path, '.exe');
      await writeFile(join(folder.unix, `${name}.json`), JSON.stringify(scripts[name] ?? { exit: 0 }));
    }
    await body(async () => {
      const logs = there.map((path) => join(folder.unix, `${basename(path, '.exe')}.log`));
      const texts = await Promise.all(logs.filter(existsSync).map((log) => readFile(log, 'utf8')));
      return texts.join('').replaceAll(kSystem, '').trim().split('\n');
    });
  } finally {
    await setUp();
    for (const path of there) await rm(path);
    for (const path of saved) await rename(`${path}.away`, path);
    await folder.remove();
  }
}

test('tools of the system are started with their exact command lines', () =>
  withTools(
    {
      shutdown: { exit: 1 },
      dism: { steps: [{ text: 'Checking\r\n[=  ]\r[== ]\r\n' }], exit: 0 },
      sfc: { steps: [{ hex: Buffer.from('\r\nOvěření 40 %\r\n', 'utf16le').toString('hex') }], exit: 3 },
      powershell: { steps: [{ text: 'Installing...\r\nSYSTEM_REBOOT_REQUIRED\r\n' }], exit: 0 },
    },
    (calls) =>
      withService(async (app) => {
        assert.equal((await app.request('setHibernation', { enabled: false })).success, true);
        assert.equal((await app.request('quickAction', { type: 'safemode-reboot' })).success, false);
        const isExit = ({ streamType }) => streamType === 'exit';
        const said = (messages) => messages.filter(({ streamType }) => streamType === 'stdout');
        const checked = await app.posted('quickAction', { type: 'sfc' }, isExit);
        const lines = said(checked).map(({ message }) => message);
        assert.deepEqual(lines, ['Checking', '[=  ]', '[== ]', 'Ověření 40 %']);
        assert.equal(checked.at(-1).code, 3);
        const installed = await app.posted('installDriver', { title: 'Peat - System - 10.1' }, isExit);
        assert.deepEqual([installed.at(-1).code, installed.at(-1).rebootRequired], [0, true]);
        assert.deepEqual(await calls(), [
          '"powercfg.exe" /hibernate off',
          '"bcdedit.exe" /set {current} safeboot minimal',
          '"bcdedit.exe" /deletevalue {current} safeboot',
          '"shutdown.exe" /r /t 10',
          '"dism.exe" /Online /Cleanup-Image /CheckHealth',
          '"sfc.exe" /verifyonly',
          '"WindowsPowerShell\\v1.0\\powershell.exe" -NoProfile -NonInteractive -ExecutionPolicy Bypass -File ' +
            `"${app.folder.windows}\\bin\\update_driver.ps1" -UpdateTitle "Peat - System - 10.1"`,
        ]);
      }),
  ));
