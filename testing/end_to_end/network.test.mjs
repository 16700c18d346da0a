// Ports from a stand-in netstat, a real ping, and nslookup by a stand-in, all through the page.
import assert from 'node:assert/strict';
import { existsSync } from 'node:fs';
import { rename } from 'node:fs/promises';
import { test } from 'node:test';

import { checkAccessibility, openView, screenshot, withVarnel } from './harness.mjs';
import { prepareWine, unixPath } from './wine.mjs';

const crlf = (text) => text.replaceAll('\n', '\r\n');
const hex = (latin1) => Buffer.from(latin1, 'latin1').toString('hex');

// As netstat -ano prints it; "%" is the process of the program itself.
const kSockets = `
  Proto  Local Address          Foreign Address        State           PID
  TCP    0.0.0.0:135            0.0.0.0:0              LISTENING       1016
  TCP    127.0.0.1:5354         127.0.0.1:49670        ESTABLISHED     3644
  TCP    127.0.0.1:8080         0.0.0.0:0              LISTENING       %
  TCP    192.0.2.17:139         0.0.0.0:0              LISTENING       4
  TCP    192.0.2.17:52144       198.51.100.20:443      TIME_WAIT       0
  TCP    [::]:135               [::]:0                 LISTENING       1016
  TCP    [::1]:8080             [::]:0                 LISTENING       %
  TCP    [fe80::1c2d:3e4f:5a6b:7c8d%12]:5357  [::]:0  LISTENING       4
  TCP    0.0.0.0:135            0.0.0.0:0              LISTENING       1016
  TCP    0.0.0.0:9999           LISTENING       77
  TCP    0.0.0.0:9998           0.0.0.0:0              ABH\x99REN         77
  UDP    0.0.0.0:500            *:*                                    1104
`;
const netstat = (pid) => ({
  steps: [
    {
      hex: hex(
        crlf(
          `\nAktivn\xa1 p\xfdipojen\xa1\n${kSockets.replaceAll('LISTENING       %', `LISTENING       ${pid}`)}`,
        ),
      ),
    },
  ],
});

const manySockets = Array.from({ length: 600 }, (_, i) => ({
  text: `  TCP    0.0.0.0:${1000 + i}           0.0.0.0:0              LISTENING       ${i}\r\n`,
}));

const rows = (page, label) =>
  page
    .getByRole('grid', { name: label })
    .locator('tbody tr')
    .evaluateAll((all) => all.map((row) => [...row.cells].map((cell) => cell.innerText.trim())));
const printed = (page) => page.locator('.diagnostics [role=log] > div').allInnerTexts();
const outcome = (page) => page.locator('.diagnostics [role=status]');
const ends = (app) => app.messages.filter(({ streamType }) => streamType === 'exit').map(({ code }) => code);
const press = (page, name) => page.getByRole('button', { name, exact: true }).click();
const aim = (page, target) => page.locator('.diagnostics input').fill(target);

test('listening ports, from where they can be reached, and the process behind one', () =>
  withVarnel(
    {
      settings: { theme: 'amethyst', language: 'cs' },
      tools: { 'netstat.exe': netstat(77) },
    },
    async (app) => {
      const { page } = app;
      const { pid } = (await app.request('getProcesses')).processes.find(({ name }) => name === 'Varnel.exe');
      await app.scriptTool('netstat.exe', netstat(pid));
      await openView(page, 'network');
      await page.locator('.link', { hasText: 'Varnel.exe' }).first().waitFor();
      assert.deepEqual(await rows(page, 'Otevřené porty'), [
        ['135', '0.0.0.0:135', 'všechna rozhraní', '1016'],
        ['135', '[::]:135', 'všechna rozhraní', '1016'],
        ['139', '192.0.2.17:139', 'jedna adresa', '4'],
        ['5357', '[fe80::1c2d:3e4f:5a6b:7c8d%12]:5357', 'jedna adresa', '4'],
        ['8080', '127.0.0.1:8080', 'jen tento počítač', `${pid} Varnel.exe`],
        ['8080', '[::1]:8080', 'jen tento počítač', `${pid} Varnel.exe`],
      ]);
      assert.deepEqual(await app.toolCalls('netstat'), ['netstat -ano']);
      await checkAccessibility(page);
      await screenshot(page, 'network-ports-amethyst-cs');

      // Whose process has ended meanwhile is told so; the other one is shown where it is.
      await page.locator('.link', { hasText: '1016' }).first().click();
      await page.getByRole('alert').getByText('Proces (PID 1016) už neběží').waitFor();
      await page.keyboard.press('Control+f');
      await page.keyboard.type('varnel');
      await page.keyboard.press('ArrowDown');
      await page.keyboard.press('ArrowDown');
      await page.keyboard.press('Enter');
      await page.waitForSelector('main[data-view=processes]');
      const selected = page.locator('tr[aria-selected=true]');
      assert.deepEqual(
        (await selected.locator('td').allInnerTexts()).map((cell) => cell.trim()).slice(1, 3),
        ['Varnel.exe', String(pid)],
      );
    },
  ));

// Wine's ping writes everything when it ends: that lines come while a tool runs is for the stand-in below to show.
test('a real ping, and a run that is put aside', () =>
  withVarnel(
    {
      settings: { theme: 'light', language: 'en' },
      viewport: { width: 1250, height: 700 },
      tools: {
        'netstat.exe': {
          steps: [
            { text: '  TCP    127.0.0.1:80           0.0.0.0:0              LISTENING       77\r\n' },
            ...manySockets,
          ],
        },
        'nslookup.exe': { steps: [{ text: 'Server:  UnKnown\r\n' }] },
      },
    },
    async (app) => {
      const { page } = app;
      await openView(page, 'network');
      await page.getByText('601 rows').waitFor();
      assert.ok((await rows(page, 'Open ports')).length < 100, 'only what is in sight is drawn');
      assert.equal(
        await page.locator('main').evaluate((main) => main.scrollHeight - main.clientHeight),
        0,
        'the table scrolls, not the view',
      );
      await aim(page, '   ');
      await page.keyboard.press('Enter');
      for (const name of ['Ping', 'DNS query'])
        assert.equal(await page.getByRole('button', { name, exact: true }).isDisabled(), true);
      await aim(page, '127.0.0.1');
      await page.keyboard.press('Enter');
      await outcome(page).filter({ hasText: 'Running…' }).waitFor();
      await checkAccessibility(page);
      await screenshot(page, 'network-running-light-en');
      await outcome(page).filter({ hasText: 'At least one reply came. (code 0)' }).waitFor();
      const lines = await printed(page);
      assert.match(lines[0], /^Pinging 127\.0\.0\.1/);
      assert.equal(lines.filter((line) => line.startsWith('Reply from 127.0.0.1: ')).length, 4);
      assert.deepEqual(
        lines,
        app.messages.filter(({ streamType }) => streamType === 'stdout').map(({ message }) => message),
      );
      assert.ok(!lines.includes(''));
      await screenshot(page, 'network-ping-light-en');

      await press(page, 'Ping');
      await press(page, 'Stop showing');
      await outcome(page).filter({ hasText: 'not shown any more' }).waitFor();
      await press(page, 'DNS query');
      await page.getByText('The tool before is still finishing').waitFor();
      await outcome(page).filter({ hasText: 'not known for certain' }).waitFor();
      assert.deepEqual(ends(app), [0, 0, 0]);
      assert.deepEqual(
        await printed(page),
        ['Server:  UnKnown'],
        'what the tool before has printed is nowhere',
      );
      assert.ok(app.messages.filter(({ message }) => message?.startsWith('Reply from')).length === 8);
    },
  ));

const kReply = 'Antwort von 192.0.2.1: Bytes=32 Zeit=2ms TTL=64';
const kAnswer = 'Server:  dns.brod.example\nAddress:  192.0.2.53\n\n';

test('lines come while a tool runs; how it ended is said in words; five targets are kept for the session', () =>
  withVarnel(
    {
      settings: { theme: 'amethyst', language: 'cs' },
      tools: {
        'netstat.exe': { steps: [] },
        // Both in the code page of the console; their letters have the same byte in each that holds them.
        'ping.exe': {
          steps: [
            { text: crlf('\nPing wird ausgef') },
            { hex: '81' },
            { text: 'hrt f' },
            { hex: '81' },
            { text: crlf(`r 192.0.2.1 mit 32 Bytes Daten:\n${kReply}`) },
            { delay_ms: 1200, text: '\r\n' },
            { hex: hex('Zeit\x81berschreitung der Anforderung.\r\n') },
            { delay_ms: 2500, text: crlf(`${kReply}\n`) },
          ],
          exit: 1,
        },
        'nslookup.exe': {
          steps: [
            { text: crlf(kAnswer) },
            { text: 'Non-authoritative answer:\r\n', stderr: true },
            {
              text: crlf(
                'Name:    www.brod.example\nAddresses:  2001:db8::10\n\t  192.0.2.10\nAliases:  brod.example\n\n',
              ),
            },
          ],
          cases: [
            {
              when: 'nic.',
              steps: [
                { text: crlf(kAnswer) },
                { hex: hex('*** nic.example: Neexistuj\xa1c\xa1 dom\x82na\r\n'), stderr: true },
              ],
              exit: 1,
            },
          ],
        },
      },
    },
    async (app) => {
      const { page } = app;
      await openView(page, 'network');
      await page.getByText('Žádný port se nenašel').waitFor();
      await screenshot(page, 'network-empty-amethyst-cs');

      await aim(page, '192.0.2.1');
      await press(page, 'Ping');
      await page.getByText('Zeitüberschreitung der Anforderung.').waitFor();
      assert.deepEqual(ends(app), []);
      assert.deepEqual(await printed(page), [
        'Ping wird ausgeführt für 192.0.2.1 mit 32 Bytes Daten:',
        kReply,
        'Zeitüberschreitung der Anforderung.',
      ]);
      await checkAccessibility(page);
      await screenshot(page, 'network-lines-amethyst-cs');
      await outcome(page)
        .filter({ hasText: 'Nepřišla žádná odpověď, nebo název neexistuje. (kód 1)' })
        .waitFor();
      assert.equal((await printed(page)).length, 4);

      const ask = async (target, words) => {
        await aim(page, target);
        await press(page, 'Dotaz DNS');
        await outcome(page).filter({ hasText: words }).waitFor();
      };
      await ask('www.brod.example', 'Zda název existuje, říká výpis, ne kód. (kód 0)');
      assert.deepEqual(await printed(page), [
        'Server:  dns.brod.example',
        'Address:  192.0.2.53',
        'Non-authoritative answer:',
        'Name:    www.brod.example',
        'Addresses:  2001:db8::10',
        '\t  192.0.2.10',
        'Aliases:  brod.example',
      ]);
      await ask('nic.example', 'Nástroj skončil chybou. (kód 1)');
      assert.deepEqual((await printed(page)).at(-1), '*** nic.example: Neexistující doména');
      for (const target of ['brod.example', '-type=mx brod.example', 'a.example', 'www.brod.example'])
        await ask(target, '(kód 0)');
      const recent = page.locator('.diagnostics .link');
      assert.deepEqual(await recent.allInnerTexts(), [
        'www.brod.example',
        'a.example',
        '-type=mx brod.example',
        'brod.example',
        'nic.example',
      ]);
      await checkAccessibility(page);
      await screenshot(page, 'network-lookup-amethyst-cs');
      await recent.filter({ hasText: 'nic.example' }).click();
      assert.equal(await page.locator('.diagnostics input').inputValue(), 'nic.example');
      assert.deepEqual(
        [...(await app.toolCalls('ping')), ...(await app.toolCalls('nslookup')).slice(0, 4)],
        [
          'ping -n 4 192.0.2.1',
          'nslookup www.brod.example',
          'nslookup nic.example',
          'nslookup brod.example',
          'nslookup -type=mx brod.example',
        ],
      );

      // What was typed is nowhere but in this page.
      await openView(page, 'processes');
      await openView(page, 'network');
      assert.equal(await recent.count(), 5);
      assert.equal((await printed(page)).length, 7);
      await page.reload();
      await openView(page, 'network');
      assert.equal(await recent.count(), 0);
      assert.deepEqual(await app.settingsFile(), { autoScan: false, theme: 'amethyst', language: 'cs' });
    },
  ));

test('without netstat, and without a command interpreter', async () => {
  await prepareWine();
  const away = ['netstat', 'cmd'].map((name) => unixPath(`C:\\windows\\system32\\${name}.exe`));
  assert.ok(away.every((path) => existsSync(path)));
  try {
    await withVarnel({ language: 'en' }, async (app) => {
      const { page } = app;
      await rename(away[0], `${away[0]}.away`);
      await openView(page, 'network');
      await page.getByText('No port was found').waitFor();
      await rename(away[1], `${away[1]}.away`);
      await page.keyboard.press('F5');
      assert.deepEqual((await app.request('getOpenPorts')).ports, []);
      await aim(page, '127.0.0.1');
      await press(page, 'Ping');
      await outcome(page).filter({ hasText: 'The tool could not be started. (code -1)' }).waitFor();
      assert.deepEqual(await printed(page), []);
      await checkAccessibility(page);
    });
  } finally {
    for (const path of away) if (existsSync(`${path}.away`)) await rename(`${path}.away`, path);
  }
});
