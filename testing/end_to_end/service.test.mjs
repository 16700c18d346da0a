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

const { buildFolder, copyInto, driveC, makeFolder, prepareWine, readRegistry, registryText } = wine;
const { standIn, startInPrefix, until, unixPath, withRegistry, writeRegistry } = wine;

const kEnvironment = 'HKLM\\SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment';
const kRun = 'HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Run';
const kApproved = 'HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run';

// Runs `body` with the program and the real service beside it. `service.log()` is what it would write into the
// event log.
function withService(body, options = {}) {
  return withVarnel({ page: false, ...options }, async (app) => {
    await copyInto(app.binFolder, {
      'VarnelService.exe': join(buildFolder, 'bin/VarnelService.exe'),
      'update_driver.ps1': join(buildFolder, 'bin/update_driver.ps1'),
    });
    const service = startInPrefix(`${app.folder.windows}\\bin\\VarnelService.exe`, ['--console']);
    try {
      await until(() => service.output.includes('ready'), 'the service');
      await body(app, { log: () => service.output.replaceAll('\r', ''), process: service });
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
  withService(async (app, service) => {
    const hosts = await put('C:\\windows\\system32\\drivers\\etc\\hosts', '127.0.0.1 before\n');
    const content = '127.0.0.1 after\r\n# žluťoučký\r\n'.repeat(2_000);
    assert.equal((await app.request('saveHostsFile', { content })).success, true);
    assert.equal((await app.request('getHostsFile')).content, content);
    assert.equal(await readFile(hosts, 'utf8'), content);
    assert.equal(await readFile(`${hosts}.varnel.bak`, 'utf8'), '127.0.0.1 before\n');
    assert.equal(
      (await app.request('saveHostsFile', { content: 'x'.repeat(8 * 1024 * 1024 + 1) })).success,
      false,
    );
    assert.equal(await readFile(hosts, 'utf8'), content);
    assert.equal(existsSync(`${hosts}.varnel.new`), false);
    assert.match(service.log(), /save_hosts_file was done, asked by .*Varnel\.exe/);
    assert.match(service.log(), /save_hosts_file was refused for what it names/);
    assert.deepEqual(JSON.parse(await ask('get_hosts_file')), { content, success: true });
    await Promise.all([rm(hosts), rm(`${hosts}.varnel.bak`)]);
  }));

test('variables, start-up items and keys of the machine', () =>
  withRegistry(
    {
      [kEnvironment]: undefined,
      [kRun]: { VarnelTest: '"C:\\\\x.exe"' },
      [kApproved]: { Other: 'hex:02,00,00,00,00,00,00,00,00,00,00,00' },
      'HKLM\\Software\\VarnelTestMaker\\Tool\\Deep\\er': { a: '"b"' },
      'HKLM\\Software\\VarnelTestMaker\\Other': { a: '"b"' },
    },
    () =>
      withService(async (app) => {
        const save = async (name, value, is_delete = false) =>
          (await app.request('saveEnvVariable', { type: 'system', name, value, is_delete })).success;
        assert.equal(await save('VARNEL_TEST', '%SystemRoot%\\příklad'), true);
        await writeRegistry({ [kEnvironment]: { VARNEL_TEST_OLD: '"x"' } });
        assert.equal(await save('VARNEL_TEST_OLD', '', true), true);
        assert.equal(await save('Path', '', true), false);
        const variables = await readRegistry(kEnvironment);
        assert.equal(variables.VARNEL_TEST, 'expand:%SystemRoot%\\příklad');
        assert.equal(variables.VARNEL_TEST_OLD, undefined);
        assert.ok(Object.keys(variables).some((name) => name.toLowerCase() === 'path'));
        assert.equal(await save('VARNEL_TEST', '', true), true);

        const toggle = async (name) =>
          (await app.request('toggleStartupItem', { scope: 'HKLM', name, enabled: false })).success;
        assert.equal(await toggle('VarnelTest'), true);
        assert.equal(await toggle('NoSuchItem'), false);
        assert.deepEqual(await readRegistry(kApproved), {
          Other: 'hex:02,00,00,00,00,00,00,00,00,00,00,00',
          VarnelTest: 'hex:03,00,00,00,00,00,00,00,00,00,00,00',
        });

        const clean = async (path) =>
          (await app.request('cleanLeftovers', { items: [{ type: 'registry', path }] })).success;
        assert.equal(await clean('HKLM\\Software\\VarnelTestMaker\\Tool'), true);
        assert.equal(await readRegistry('HKLM\\Software\\VarnelTestMaker\\Tool'), undefined);
        assert.ok(await readRegistry('HKLM\\Software\\VarnelTestMaker\\Other'));
        assert.equal(await clean('HKLM\\Software\\Microsoft'), false);
        assert.ok(await readRegistry('HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Run'));
      }),
  ));

test('junk goes, leftover folders go, and what is behind links stays', () =>
  withService(async (app) => {
    const canary = join(app.folder.unix, 'canary');
    const junk = [
      'C:\\windows\\temp\\a\\file',
      'C:\\windows\\Prefetch\\file',
      'C:\\windows\\Logs\\deep\\file',
    ];
    const files = await Promise.all(
      [...junk, 'C:\\Program Files\\VarnelTest\\sub\\file'].map((path) => put(path)),
    );
    await put(`${app.folder.windows}\\canary\\file`);
    const links = [
      'C:\\windows\\temp\\link',
      'C:\\Program Files\\VarnelTest\\link',
      'C:\\ProgramData\\VarnelTestLink',
    ];
    for (const link of links) await symlink(canary, unixPath(link));
    const sizes = JSON.parse(await ask('getJunkSizes'));
    assert.ok(sizes.success && sizes.windowsTempBytes >= 1 && sizes.prefetchBytes >= 1);

    assert.equal((await app.request('cleanJunk')).success, true);
    const remove = async (path) =>
      (await app.request('cleanLeftovers', { items: [{ type: 'directory', path }] })).success;
    await remove('C:\\Program Files\\VarnelTest'); // not the link: Wine cannot
    for (const path of [
      'C:\\ProgramData\\VarnelTestLink',
      'C:\\ProgramData\\VarnelTestLink\\file',
      'C:\\windows\\Fonts',
    ])
      assert.equal(await remove(path), false, path);
    assert.deepEqual(files.filter(existsSync), []);
    assert.ok(existsSync(join(canary, 'file')));
    for (const link of links) await rm(unixPath(link));
    assert.equal(await remove('C:\\Program Files\\VarnelTest'), true);
    assert.equal(existsSync(join(driveC, 'Program Files/VarnelTest')), false);
  }));

const kWeekly = 'C:\\windows\\system32\\tasks\\Varnel\\Silent clean';

test('the weekly cleaning is there and gone', () =>
  withService(async (app) => {
    const toggle = async (enabled) => (await app.request('toggleScheduleClean', { enabled })).success;
    for (const enabled of [true, true, false, false]) {
      assert.equal(await toggle(enabled), true, `${enabled}`);
      assert.equal(existsSync(unixPath(kWeekly)), enabled);
    }
  }));

test('another program may read, and nothing else', () =>
  withService(async (app, service) => {
    const data = {
      content: 'x',
      enabled: true,
      enable: true,
      name: 'x',
      value: 'x',
      is_delete: false,
      path: 'x',
    };
    for (const action of [
      'save_hosts_file',
      'save_system_env',
      'control_dev_service',
      'set_hibernation',
      'cleanJunk',
      'toggleScheduleClean',
      'toggleHKLMStartup',
      'cleanLeftoverPath',
      'cleanHKLMRegistry',
      'safemodeReboot',
    ])
      assert.equal(await ask(action, data), '{"error":"Not asked by Varnel.exe","success":false}', action);
    for (const action of ['installDriver', 'sfcVerify'])
      assert.deepEqual((await ask(action, data)).split('\n').map(JSON.parse), [
        { message: 'Not asked by Varnel.exe', type: 'stdout' },
        { code: 5, type: 'exit' },
      ]);
    assert.equal(await ask('delete\neverything'), '{"error":"Unknown action","success":false}');
    assert.ok(service.log().includes('delete?everything is unknown'));
    assert.equal(JSON.parse(await ask('get_dev_services')).success, true);
  }));

test('misbehaving programs neither stop it nor learn anything', () =>
  withService(async (app) => {
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

    const silent = startInPrefix(standIn('pipe_peer.exe'), ['hold', '8']);
    await until(() => silent.output, 'eight silent peers');
    const begin = Date.now();
    await works();
    assert.ok(Date.now() - begin < 8_000);
    silent.stdin.end();
    await once(silent, 'close');

    assert.ok(Number(await peer('probe', '', '1000')) < 5, 'milliseconds a probe');
    for (let i = 0; i < 20; ++i) await works();
    assert.equal((await look()).handles, before.handles);
  }));

// Stand-in tools in the system's own folder, which are the ones that the service starts.
const kTools = ['powercfg', 'bcdedit', 'shutdown', 'dism', 'sfc', 'WindowsPowerShell\\v1.0\\powershell'].map(
  (name) => `C:\\windows\\system32\\${name}.exe`,
);

const kOverrides = 'HKCU\\Software\\Wine\\DllOverrides';

async function withTools(scripts, body) {
  await prepareWine();
  const folder = await makeFolder('tools-');
  const there = kTools.map(unixPath);
  const saved = there.filter(existsSync);
  for (const path of saved) await rename(path, `${path}.away`);
  await writeRegistry({
    [kEnvironment]: { VARNEL_TOOL_SCRIPTS: registryText(folder.windows) },
    // Wine would take its own.
    [kOverrides]: { 'shutdown.exe': '"native"', 'dism.exe': '"native"', 'powershell.exe': '"native"' },
  });
  try {
    for (const path of there) {
      await mkdir(dirname(path), { recursive: true });
      await copyFile(standIn('console_tool.exe'), path);
      const name = basename(path, '.exe');
      await writeFile(join(folder.unix, `${name}.json`), JSON.stringify(scripts[name] ?? { exit: 0 }));
    }
    await body(async () => {
      const logs = kTools.map((path) => join(folder.unix, `${basename(unixPath(path), '.exe')}.log`));
      const texts = await Promise.all(logs.filter(existsSync).map((log) => readFile(log, 'utf8')));
      return texts.join('').replaceAll('C:\\windows\\system32\\', '').trim().split('\n');
    });
  } finally {
    await writeRegistry({
      [kEnvironment]: { VARNEL_TOOL_SCRIPTS: undefined },
      [kOverrides]: { 'shutdown.exe': undefined, 'dism.exe': undefined, 'powershell.exe': undefined },
    });
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
        assert.deepEqual(
          said(checked).map(({ message }) => message),
          ['Checking', '[=  ]', '[== ]', 'Ověření 40 %'],
        );
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
