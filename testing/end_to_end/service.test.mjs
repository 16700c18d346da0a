// Tests the helper service itself in the foreground: requests from the shipped program over its bridge,
// and from other programs.
import assert from 'node:assert/strict';
import { once } from 'node:events';
import { existsSync } from 'node:fs';
import { readFile, rm, symlink } from 'node:fs/promises';
import { test } from 'node:test';

import { ask, kEnvironment, kPeer, kShell, kSystem, line } from './service.mjs';
import { peer, put, takePlace, withService, withTools } from './service.mjs';
import * as wine from './wine.mjs';

const { readRegistry, runInPrefix, startInPrefix, unixPath, writeRegistry } = wine;

const kHosts = 'C:\\windows\\system32\\drivers\\etc\\hosts';
const kRun = 'HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Run';
const kApproved = kRun.replace('Run', 'Explorer\\StartupApproved\\Run');
const kOn = 'hex:02,00,00,00,00,00,00,00,00,00,00,00';

test('the hosts file is replaced in one step, and its previous version kept', () =>
  withService(async (app, log) => {
    const hosts = await put(kHosts, '127.0.0.1 before\n');
    const save = async (content) => (await app.request('saveHostsFile', { content })).success;
    const content = '127.0.0.1 after\r\n# žluťoučký\r\n'.repeat(2_000);
    assert.equal(await save(content), true);
    assert.equal(await readFile(`${hosts}.varnel.bak`, 'utf8'), '127.0.0.1 before\n');
    assert.equal(await save('x'.repeat(8 * 1024 * 1024 + 1)), false);
    assert.equal(await readFile(hosts, 'utf8'), content);
    assert.equal(existsSync(`${hosts}.varnel.new`), false);
    assert.match(log(), /save_hosts_file was done, asked by .*Varnel\.exe\n.*was refused for what it names/);
    assert.deepEqual(JSON.parse(await ask('get_hosts_file')), { content, success: true });
    await rm(`${hosts}.varnel.bak`);
  }));

test("the service changes the machine's variables, start-up items and keys", () =>
  wine.withRegistry(
    {
      [kEnvironment]: undefined,
      [kRun]: { VarnelTest: '"C:\\\\x.exe"' },
      [kApproved]: { Other: kOn },
      'HKLM\\Software\\VarnelTestMaker\\Tool\\Deep\\er': { a: '"b"' },
      'HKLM\\Software\\VarnelTestMaker\\Other': { a: '"b"' },
    },
    () =>
      withService(async (app) => {
        const does = async (action, data) => (await app.request(action, data)).success;
        const save = (name, value, is_delete = false) =>
          does('saveEnvVariable', { type: 'system', name, value, is_delete });
        assert.equal(await save('VARNEL_TEST', '%SystemRoot%\\příklad'), true);
        await writeRegistry({ [kEnvironment]: { VARNEL_TEST_OLD: '"x"' } });
        assert.equal(await save('VARNEL_TEST_OLD', '', true), true);
        assert.equal(await save('Path', '', true), false);
        const { VARNEL_TEST, VARNEL_TEST_OLD, ...variables } = await readRegistry(kEnvironment);
        assert.deepEqual([VARNEL_TEST, VARNEL_TEST_OLD], ['expand:%SystemRoot%\\příklad', undefined]);
        assert.ok(Object.keys(variables).some((name) => name.toLowerCase() === 'path'));

        const toggle = (name) => does('toggleStartupItem', { scope: 'HKLM', name, enabled: false });
        assert.equal(await toggle('VarnelTest'), true);
        assert.equal(await toggle('NoSuchItem'), false);
        const kOff = kOn.replace('02', '03');
        assert.deepEqual(await readRegistry(kApproved), { Other: kOn, VarnelTest: kOff });

        const clean = (path) => does('cleanLeftovers', { items: [{ type: 'registry', path }] });
        assert.equal(await clean('HKLM\\Software\\VarnelTestMaker\\Tool'), true);
        assert.equal(await readRegistry('HKLM\\Software\\VarnelTestMaker\\Tool'), undefined);
        assert.ok(await readRegistry('HKLM\\Software\\VarnelTestMaker\\Other'));
        assert.equal(await clean('HKLM\\Software\\Microsoft'), false);
        assert.ok(await readRegistry(kRun));
      }),
  ));

const kTest = 'C:\\Program Files\\VarnelTest';
const kData = 'C:\\ProgramData\\VarnelTest';

test('junk and leftover folders are deleted, but nothing behind links', () =>
  withService(async (app) => {
    const canary = `${app.folder.unix}/canary`;
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
    await remove(kTest); // except the link: Wine cannot
    for (const path of [`${kData}Link`, `${kData}Link\\file`, 'C:\\windows\\Fonts'])
      assert.equal(await remove(path), false, path);
    assert.deepEqual(files.filter(existsSync), []);
    assert.ok(existsSync(`${canary}/file`));
    for (const link of links) await rm(unixPath(link));
    assert.equal(await remove(kTest), true);
    assert.equal(existsSync(unixPath(kTest)), false);
  }));

test('the weekly cleaning is scheduled and removed; a development service starts and stops', async () => {
  const sc = async (...words) => (await runInPrefix('sc', words)).stdout;
  await wine.prepareWine();
  const kProgram = ['binPath=', 'C:\\windows\\system32\\spoolsv.exe', 'start=', 'demand'];
  await sc('create', 'redis', 'DisplayName=', 'Redis', ...kProgram);
  await withService(async (app) => {
    for (const enabled of [true, true, false, false]) {
      assert.equal((await app.request('toggleScheduleClean', { enabled })).success, true, `${enabled}`);
      assert.equal(existsSync(unixPath('C:\\windows\\system32\\tasks\\Varnel\\Silent clean')), enabled);
    }
    for (const [type, command, success, status] of [
      ['redis', 'start', true, 'running'],
      ['redis', 'restart', true, 'running'],
      ['redis', 'pause', false, 'running'],
      ['redis', 'stop', true, 'stopped'],
      ['Spooler', 'start', false, 'stopped'],
    ]) {
      const control = await app.request('controlDevService', { service_type: type, command });
      assert.equal(control.success, success, command);
      const { services } = await app.request('getDevServices');
      const listed = services.map((service) => [service.service_type, service.status]);
      assert.deepEqual(listed, [['redis', status]]);
    }

    const exePath = await takePlace(app);
    const file = await put('C:\\windows\\system32\\tasks\\Varnel'); // in the way of the folder
    const reply = JSON.parse(await ask('toggleScheduleClean', { enabled: true, exePath }, exePath));
    assert.deepEqual(reply, { error: 'It could not be done. Nothing is scheduled now.', success: false });
    await rm(file);
  }).finally(() => sc('delete', 'redis'));
});

test('another program may only read', () =>
  withService(async (_, log) => {
    const texts = { content: 'x', name: 'x', value: 'x', path: 'x' };
    const data = { ...texts, enabled: true, enable: true, is_delete: false };
    const refusal = (error) => `{"error":"${error}","success":false}`;
    const kChanges = `save_hosts_file save_system_env control_dev_service set_hibernation cleanJunk
      toggleScheduleClean toggleHKLMStartup cleanLeftoverPath cleanHKLMRegistry safemodeReboot`;
    for (const action of kChanges.split(/\s+/))
      assert.equal(await ask(action, data), refusal('Not asked by Varnel.exe'), action);
    for (const action of ['installDriver', 'sfcVerify'])
      assert.match(await ask(action, data), /"Not asked by Varnel\.exe","type":"stdout"}\n{"code":5,.*}$/);
    assert.equal(await ask('delete\neverything'), refusal('Unknown action'));
    assert.ok(log().includes('delete?everything is unknown'));
  }));

test('misbehaving programs neither stop the service nor learn anything', () =>
  withService(async () => {
    const handles = async () => Number(await peer(['handles']));
    const works = async () => assert.equal(JSON.parse(await ask('getJunkSizes')).success, true);
    await works();
    const before = await handles();
    assert.notEqual(await peer(['steal']), '0');
    for (const text of ['\n', 'no JSON\n', '{}\n', '[[[[\n', '{"action":"sfcVerify"}\n', '\0\0\n'])
      assert.equal(await peer(['ask'], text), '', JSON.stringify(text));
    await peer(['leave'], line('getJunkSizes'));
    await peer(['leave'], '{"action":"getJunk');
    assert.ok(Number(await peer(['fill', `${17 << 20}`])) < 5_000, 'too long a line');
    const half = Number(await peer(['fill', '10']));
    assert.ok(half > 4_000 && half < 8_000, `half a line is waited for: ${half} ms`);

    await put(kHosts, 'x'.repeat(1 << 20));
    for (const request of [[], [line('get_hosts_file').trim()]]) {
      const silent = startInPrefix(kPeer, ['hold', '8', ...request]);
      await wine.until(() => silent.output.includes('held'), 'eight peers that say nothing, or read nothing');
      const begin = Date.now();
      await works();
      const waited = Date.now() - begin;
      assert.ok(waited > 2_000 && waited < 8_000, `${request} ${waited} ms`);
      silent.stdin.end();
      await once(silent, 'close');
    }
    await put(kHosts, '');

    assert.ok(Number(await peer(['probe', '1000'])) < 5, 'milliseconds a probe');
    await peer(['probe', '1000'], line('get_hosts_file'));
    // Each of the eight threads may keep a handle from its first request; a leak would be a thousand.
    const more = (await handles()) - before;
    assert.ok(more <= 8, `${more} handles more than before`);
  }));

const kUtf16 = Buffer.from('\r\nOvěření 40 %\r\n', 'utf16le').toString('hex');

test('system tools are started with exact command lines', () =>
  withTools(
    {
      'powercfg.exe': {},
      'bcdedit.exe': {},
      'shutdown.exe': { exit: 1 },
      'dism.exe': {},
      'sfc.exe': { steps: [{ hex: kUtf16 }], exit: 3 },
      'powershell.exe': { steps: [{ text: 'Installing...\r\nSYSTEM_REBOOT_REQUIRED\r\n' }] },
    },
    async (app, log, end) => {
      assert.equal((await app.request('setHibernation', { enabled: false })).success, true);
      assert.equal((await app.request('quickAction', { type: 'safemode-reboot' })).success, false);
      const isExit = ({ streamType }) => streamType === 'exit';
      const checked = await app.posted('quickAction', { type: 'sfc' }, isExit);
      assert.deepEqual([checked.at(-2).message, checked.at(-1).code], ['Ověření 40 %', 3]);
      const installed = await app.posted('installDriver', { title: 'Peat - System - 10.1' }, isExit);
      assert.deepEqual([installed.at(-1).code, installed.at(-1).rebootRequired], [0, true]);
      const named = ['powercfg', 'bcdedit', 'shutdown', 'dism', 'sfc', 'powershell'];
      const calls = (await Promise.all(named.map((name) => app.toolCalls(name)))).flat().join('\n');
      assert.equal(
        calls.replaceAll(kSystem, '').replaceAll(app.folder.windows, ''),
        `"powercfg.exe" /hibernate off
"bcdedit.exe" /set {current} safeboot minimal
"bcdedit.exe" /deletevalue {current} safeboot
"shutdown.exe" /r /t 10
"dism.exe" /Online /Cleanup-Image /CheckHealth
"sfc.exe" /verifyonly
"${kShell}" -NoProfile -NonInteractive -ExecutionPolicy Bypass -File \
"\\bin\\update_driver.ps1" -UpdateTitle "Peat - System - 10.1"`,
      );

      // A check ends with its peer, and a request in progress ends with the service.
      const kEndless = { steps: [{ text: 'Checking\r\n' }, { delay_ms: 600_000 }] };
      for (const name of ['dism.exe', 'powercfg.exe']) await app.scriptTool(name, kEndless);
      await peer(['leave'], line('sfcVerify'), await takePlace(app));
      await wine.until(() => log().split('sfcVerify failed').length === 3, 'the check to end');
      const cut = app.request('setHibernation', { enabled: true });
      await wine.until(async () => (await app.toolCalls('powercfg')).length === 2, 'the tool');
      await end();
      assert.equal((await cut).success, false);
    },
  ));
