// Starts the shipped Varnel.exe under Wine with the stand-in browser loader and shows its page in
// Chromium. The program's own resource handler serves the page, and every message crosses the program's
// own bridge. testing/README.md describes the options and members.
import { existsSync } from 'node:fs';
import { mkdir, readFile, writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { setTimeout as sleep } from 'node:timers/promises';

import { newPage } from './browser.mjs';
import { listen } from './connection.mjs';
import * as wine from './wine.mjs';

const { copyInto, standIn, startInPrefix, until } = wine;

const kServiceInstances = 3; // clients that the stand-in service serves concurrently
const kUnknown = { reply: { success: false, error: 'Unknown action' } };
const kFileNotFound = 0x80070002 - 2 ** 32; // an HRESULT

export class Varnel {
  messages = []; // everything posted to the page, in order, parsed; `texts` has the exact texts
  texts = [];
  problems = []; // make stop() fail: console errors, policy reports, page errors, failed requests
  calls = []; // of the control's methods, in order: [name, argument]
  #connection; // with the stand-in loader
  #delivery = Promise.resolve();
  #nextRequest = 1_000_000;
  #pushesDue = 0;
  #serviceRequests = [];
  #woken = [];

  constructor(options) {
    this.options = options;
  }

  async start() {
    const { options } = this;
    await wine.prepareWine({ visible: options.visible });
    this.folder = options.folder ?? (await wine.makeFolder());
    this.binFolder = join(this.folder.unix, 'bin');
    this.scripts = { VARNEL_TOOL_SCRIPTS: `${this.folder.windows}\\tools` };
    if (!existsSync(join(this.binFolder, 'Varnel.exe'))) await this.#fillFolder();
    if (options.service) await this.startService(options.service);
    this.#connection = await listen((event) => this.#hear(event));
    this.process = startInPrefix(`${this.folder.windows}\\bin\\Varnel.exe`, options.args, {
      cwd: this.binFolder,
      env: { VARNEL_DRIVER_PORT: `${this.#connection.port}`, ...this.scripts, ...options.env },
    });
    this.exited = this.process.ended;
    if (options.loader !== false && !options.args) await this.#openBrowser();
  }

  // --- the bridge ---

  send(message) {
    const text = message === null || typeof message === 'string' ? message : JSON.stringify(message);
    return this.#connection.request('web_message', { text });
  }

  async request(action, data = {}, envelope = {}) {
    return (await this.posted(action, data, undefined, envelope)).pop();
  }

  async posted(action, data = {}, isLast, envelope = {}) {
    const requestId = this.#nextRequest++;
    const from = this.messages.length;
    await this.send({ action, requestId, data, ...envelope });
    const matches = isLast ?? ((message) => message.requestId === requestId);
    const last = await this.waitForMessage(matches, { from, what: `the end of ${action}` });
    return this.messages.slice(from, this.messages.indexOf(last) + 1);
  }

  waitForMessage(matches, { from = 0, what = 'a message', milliseconds } = {}) {
    return this.until(() => this.messages.slice(from).find(matches), what, milliseconds);
  }

  until(look, what, milliseconds) {
    return until(look, what, milliseconds, () => new Promise((resolve) => this.#woken.push(resolve)));
  }

  async resource(uri) {
    const { status, reason, headers, body } = await this.#connection.request('get_resource', { uri });
    return status && { status, reason, headers, body: Buffer.from(body) };
  }

  // --- around the program ---

  async startService(script) {
    this.scriptService(script);
    const start = () => startInPrefix(standIn('helper_service.exe'));
    this.service = Array.from({ length: kServiceInstances }, start);
    for (const instance of this.service) {
      const lines = createInterface({ input: instance.stdout });
      lines.on('line', (line) => line !== 'ready' && this.#answer(instance, JSON.parse(line)));
    }
    await until(() => this.service.every(({ output }) => output), 'the stand-in service');
  }

  scriptService(script) {
    this.serviceScript = script;
  }

  async #answer({ stdin }, request) {
    this.#serviceRequests.push(request);
    const answer = this.serviceScript[request.action] ?? this.serviceScript['*'] ?? kUnknown;
    for (const { delay_ms = 0, reply, text = '', hex } of answer.chunks ?? [answer]) {
      await sleep(delay_ms, undefined, { ref: false });
      const bytes = hex ? Buffer.from(hex, 'hex') : Buffer.from(reply ? `${JSON.stringify(reply)}\n` : text);
      if (bytes.length > 0) stdin.write(Buffer.concat([Buffer.from(`${bytes.length}\n`), bytes]));
    }
    stdin.write('0\n');
  }

  async stopService() {
    for (const instance of this.service ?? []) instance.kill('SIGKILL');
    for (const instance of this.service ?? []) await instance.ended;
    this.service = undefined;
  }

  async serviceRequests() {
    return [...this.#serviceRequests];
  }

  async startTool(name) {
    const tool = startInPrefix(`${this.folder.windows}\\bin\\${name}.exe`, [], { env: this.scripts });
    await until(() => tool.output !== '', `${name} to write`);
    return tool;
  }

  scriptTool(name, script) {
    const file = name.replace(/\.exe$/, '.json');
    return writeFile(join(this.folder.unix, 'tools', file), JSON.stringify(script));
  }

  async toolCalls(name) {
    const log = join(this.folder.unix, 'tools', `${name}.log`);
    return existsSync(log) ? (await readFile(log, 'utf8')).split('\n').slice(0, -1) : [];
  }

  // The program writes the file in place, so it may be empty for a moment.
  async settingsFile() {
    const file = join(this.folder.unix, 'settings.json');
    return JSON.parse(await until(async () => (await readFile(file, 'utf8')) || undefined, 'the settings'));
  }

  async window(...words) {
    const { code, stdout } = await wine.runInPrefix(standIn('window_probe.exe'), words);
    if (code !== 0) throw new Error(`the window probe failed: ${words.join(' ')}: ${stdout}`);
    return JSON.parse(stdout);
  }

  // Ends the program with exitApp and everything around it. Fails if there were problems or the exit
  // code is not 0.
  async stop() {
    const hasEnded = () => this.process.code !== undefined;
    await this.#closePage(hasEnded);
    const lived = !hasEnded();
    if (lived) await this.send({ action: 'exitApp' }).catch(() => {});
    await until(hasEnded, 'the program to end after exitApp', 10_000);
    await this.kill();
    const { code } = this.process;
    // Wine itself sometimes dies of a signal while it ends threads inside a system library. A fault of
    // the program would be an exception with an exit code; host.test.mjs asks Windows for it.
    if (lived && (code === 'SIGSEGV' || code === 'SIGKILL'))
      console.warn(`Wine ended by ${code} after exitApp`);
    else if (code !== 0) throw new Error(`the program ended with ${code}`);
    if (this.problems.length > 0) throw new Error(`problems in the page:\n${this.problems.join('\n')}`);
  }

  // Ends everything immediately, ignoring problems.
  async kill() {
    this.process?.kill('SIGKILL');
    await this.exited;
    await this.context?.close();
    await this.stopService();
    this.#connection?.close();
    if (!this.options.folder) await this.folder?.remove();
  }

  // Closes the page before the program ends, so that nothing of it is cut off. Waits for the status
  // push, which is inside the graphics libraries for a moment after each load.
  async #closePage(hasEnded) {
    await this.context?.close().catch(() => {}); // the user may be closing its window
    this.context = undefined;
    const isPush = ({ type, requestId }) => type === 'status' && requestId === 0;
    const isQuiet = () => hasEnded() || this.messages.filter(isPush).length >= this.#pushesDue;
    await this.until(isQuiet, 'the status push');
  }

  // --- inside ---

  async #fillFolder() {
    const { tools = {}, language, loader, program, settings = language && { language } } = this.options;
    const files = { 'Varnel.exe': program ?? join(wine.buildFolder, 'bin/Varnel.exe') };
    if (loader !== false) files['WebView2Loader.dll'] = standIn('WebView2Loader.dll');
    for (const [name, { windowed }] of Object.entries(tools))
      files[name] = standIn(windowed ? 'windowed_tool.exe' : 'console_tool.exe');
    await copyInto(this.binFolder, files);
    await mkdir(join(this.folder.unix, 'tools'));
    for (const [name, script] of Object.entries(tools)) await this.scriptTool(name, script);
    if (settings === undefined) return;
    const text = typeof settings === 'string' ? settings : JSON.stringify({ autoScan: false, ...settings });
    await writeFile(join(this.folder.unix, 'settings.json'), text);
  }

  #hear({ message, problem, call, argument }) {
    if (message !== undefined) this.#receive(message);
    else if (problem) this.problems.push(problem);
    else this.calls.push([call, argument]);
    for (const wake of this.#woken.splice(0)) wake();
  }

  #receive(text) {
    this.texts.push(text);
    this.messages.push(JSON.parse(text));
    if (!this.page) return;
    const deliver = () => this.page.evaluate((json) => window.varnelDeliver(json), text);
    this.#delivery = this.#delivery.then(deliver).catch(({ message }) => {
      // The real control also loses a message to a page that is being replaced.
      if (!/navigation|closed|destroyed|varnelDeliver is not/.test(message))
        this.problems.push(`delivering a message: ${message}`);
    });
  }

  async #openBrowser() {
    const called = (name) => this.until(() => this.calls.find((call) => call[0] === name), name);
    for (const [call, event] of [
      ['CreateCoreWebView2EnvironmentWithOptions', 'environment_created'],
      ['CreateCoreWebView2Controller', 'controller_created'],
    ]) {
      const fails = this.options.fails === event;
      await called(call);
      await this.#connection.request(event, { error: fails ? kFileNotFound : 0 });
      if (fails) return;
    }
    const [, uri] = await called('Navigate');
    if (this.options.page !== false) await this.#openPage(uri);
  }

  async #openPage(uri) {
    const report = (problem) => void this.problems.push(problem);
    // Some actions end the program immediately; the exit code shows whether that was in order.
    const post = (text) => this.send(text).catch(() => {});
    const page = (this.page = await newPage(this.options, report, post));
    this.context = page.context();
    page.on('load', () => {
      ++this.#pushesDue;
      this.#connection.request('navigation_completed').catch(() => {});
    });
    await page.route('**', async (route) => {
      const answer = await this.resource(route.request().url());
      if (!answer) return route.abort('failed');
      const headers = answer.headers.split('\r\n').map((line) => line.split(/: (.*)/s, 2));
      return route.fulfill({ ...answer, headers: Object.fromEntries(headers) });
    });
    await page.goto(uri);
  }
}
