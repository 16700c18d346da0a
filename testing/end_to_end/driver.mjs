// Starts the shipped Varnel.exe under Wine with the stand-in browser loader and shows its page in Chromium. The
// page is served by the program's own resource handler, and every message crosses the program's own bridge.
// testing/README.md has the options and what the program gives.
import { existsSync } from 'node:fs';
import { readFile, writeFile, mkdir } from 'node:fs/promises';
import { join } from 'node:path';

import { newPage } from './browser.mjs';
import { Connection } from './connection.mjs';
import * as wine from './wine.mjs';

const { copyInto, standIn, startInPrefix, until } = wine;

// Makes a tool one that the system takes for a windowed program, so that it gets no console: Wine's console host
// inherits a tool's output and holds it until the tool has ended.
async function becomeWindowed(path) {
  const kWindowed = 2;
  const file = await readFile(path);
  file.writeUInt16LE(kWindowed, file.readUInt32LE(0x3c) + 0x5c);
  await writeFile(path, file);
}

export class Varnel {
  messages = []; // everything posted to the page, in order, parsed; `texts` has the exact texts
  texts = [];
  problems = []; // what makes stop() fail: console errors, policy reports, page errors, failed requests
  calls = []; // of the control, in order: [name, argument]
  #connection = new Connection((event) => this.#hear(event));
  #delivery = Promise.resolve();
  #nextRequest = 1_000_000;
  #pushesDue = 0;
  #woken = [];

  constructor(options) {
    this.options = options;
  }

  async start() {
    const { options } = this;
    await wine.prepareWine({ visible: options.visible });
    this.folder = options.folder ?? (await wine.makeFolder());
    this.binFolder = join(this.folder.unix, 'bin');
    if (!existsSync(join(this.binFolder, 'Varnel.exe'))) await this.#fillFolder();
    if (options.service) await this.startService(options.service);
    const port = await this.#connection.listen();
    const env = { VARNEL_DRIVER_PORT: String(port), ...this.#toolScripts(), ...options.env };
    const program = `${this.folder.windows}\\bin\\Varnel.exe`;
    this.process = startInPrefix(program, options.args, { cwd: this.binFolder, env });
    this.exited = this.process.ended;
    if (options.loader !== false && !options.args) await this.#openBrowser();
  }

  // --- the bridge ---------------------------------------------------------------------------------------------------

  // Delivers one web message as the page would: a text as it is, null as what is no string, anything else as its
  // JSON text.
  send(message) {
    const text = message === null || typeof message === 'string' ? message : JSON.stringify(message);
    return this.#connection.request('web_message', { text });
  }

  // Sends an action and gives the reply with its requestId.
  async request(action, data = {}, envelope = {}) {
    return (await this.posted(action, data, undefined, envelope)).pop();
  }

  // Everything that the program posts from the request on, up to and including the message that `isLast`: its
  // reply, if nothing else is said.
  async posted(action, data = {}, isLast, envelope = {}) {
    const requestId = this.#nextRequest++;
    const from = this.messages.length;
    await this.send({ action, requestId, data, ...envelope });
    const matches = isLast ?? ((message) => message.requestId === requestId);
    const last = await this.waitForMessage(matches, { from, what: `the end of ${action}` });
    return this.messages.slice(from, this.messages.indexOf(last) + 1);
  }

  // The first message from index `from` on that `matches`; waits for it if it has not come yet.
  waitForMessage(matches, { from = 0, what = 'a message', milliseconds } = {}) {
    const look = () => {
      for (; from < this.messages.length; ++from)
        if (matches(this.messages[from])) return this.messages[from];
    };
    return this.until(look, what, milliseconds);
  }

  // Looks after every event of the program, and again and again, until `look` gives something other than
  // undefined or false.
  until(look, what, milliseconds) {
    return until(look, what, milliseconds, () => new Promise((resolve) => this.#woken.push(resolve)));
  }

  // What the program's resource handler answers: {status, reason, headers, body}, or undefined.
  async resource(uri) {
    const { status, reason, headers, body } = await this.#connection.request('get_resource', { uri });
    return status && { status, reason, headers, body: Buffer.from(body, 'hex') };
  }

  // --- around the program -------------------------------------------------------------------------------------------

  // Starts the stand-in helper service; `script` is {action: answer}, or "busy": the pipe is there, but taken.
  async startService(script) {
    await this.scriptService(script);
    const files = ['service.json', 'service.log'].map((name) => `${this.folder.windows}\\${name}`);
    const words = files.concat(script === 'busy' ? script : []);
    const service = (this.service = startInPrefix(standIn('helper_service.exe'), words));
    await until(() => service.output !== '', 'the stand-in service');
  }

  // Changes the answers of the running service, from the next request on.
  scriptService(script) {
    return writeFile(join(this.folder.unix, 'service.json'), JSON.stringify(script));
  }

  async stopService() {
    this.service?.stdin.end();
    await this.service?.ended;
    this.service = undefined;
  }

  // The service's requests so far, parsed.
  async serviceRequests() {
    return (await this.#readLines('service.log')).map((line) => JSON.parse(line));
  }

  #toolScripts() {
    return { VARNEL_TOOL_SCRIPTS: `${this.folder.windows}\\tools` };
  }

  // Starts a stand-in tool beside the program and waits until it writes something: its process.
  async startTool(name) {
    const tool = startInPrefix(`${this.folder.windows}\\bin\\${name}.exe`, [], { env: this.#toolScripts() });
    await until(() => tool.output !== '', `${name} to write`);
    return tool;
  }

  // Changes what a stand-in tool does from its next start on.
  scriptTool(name, script) {
    const file = name.replace(/\.exe$/, '.json');
    return writeFile(join(this.folder.unix, 'tools', file), JSON.stringify(script));
  }

  // Exact command lines with which the stand-in tool was started, such as toolCalls('winget').
  toolCalls(name) {
    return this.#readLines(join('tools', `${name}.log`));
  }

  // The program writes into the file in place, so that it may be empty for a moment.
  async settingsFile() {
    const file = join(this.folder.unix, 'settings.json');
    return JSON.parse(await until(async () => (await readFile(file, 'utf8')) || undefined, 'the settings'));
  }

  // Queries or drives the program's window with the window probe: its lines as {name: value}.
  async window(...words) {
    const { code, stdout } = await wine.runInPrefix(standIn('window_probe.exe'), words);
    if (code !== 0) throw new Error(`the window probe failed: ${words.join(' ')}: ${stdout}`);
    return JSON.parse(stdout);
  }

  // Ends the program with exitApp and everything around it; fails if there were problems or the exit code is not 0.
  async stop() {
    const hasEnded = () => this.process.code !== undefined;
    let lived = false;
    try {
      await this.#closePage(hasEnded);
      lived = !hasEnded();
      if (lived) await this.send({ action: 'exitApp' }).catch(() => {});
      await until(hasEnded, 'the program to end after exitApp', 10_000);
    } finally {
      await this.kill();
    }
    const { code } = this.process;
    // Ending threads that are inside a system library, Wine itself now and then dies of a signal. A fault of the
    // program would be an exception with an exit code; host.test.mjs asks Windows for the code.
    if (lived && (code === 'SIGSEGV' || code === 'SIGKILL'))
      console.warn(`Wine ended by ${code} after exitApp`);
    else if (code !== 0) throw new Error(`the program ended with ${code}`);
    if (this.problems.length > 0) throw new Error(`problems in the page:\n${this.problems.join('\n')}`);
  }

  // Ends everything at once, without looking at problems.
  async kill() {
    this.process?.kill('SIGKILL');
    await this.exited;
    await this.context?.close();
    await this.stopService();
    this.#connection.close();
    if (!this.options.folder) await this.folder?.remove();
  }

  // The page goes before the program, so that nothing of it is cut off, and after the status push, which is inside
  // the graphics libraries for a moment after each load.
  async #closePage(hasEnded) {
    await this.context?.close().catch(() => {}); // the user may be closing its window at this moment
    this.context = undefined;
    const isPush = ({ type, requestId }) => type === 'status' && requestId === 0;
    const isQuiet = () => hasEnded() || this.messages.filter(isPush).length >= this.#pushesDue;
    await this.until(isQuiet, 'the status push');
  }

  // --- inside -------------------------------------------------------------------------------------------------------

  async #fillFolder() {
    const { tools = {}, language, loader, program, settings = language && { language } } = this.options;
    const files = { 'Varnel.exe': program ?? join(wine.buildFolder, 'bin/Varnel.exe') };
    if (loader !== false) files['WebView2Loader.dll'] = standIn('WebView2Loader.dll');
    for (const name of Object.keys(tools)) files[name] = standIn('console_tool.exe');
    await copyInto(this.binFolder, files);
    await mkdir(join(this.folder.unix, 'tools'));
    for (const [name, script] of Object.entries(tools)) {
      await this.scriptTool(name, script);
      if (script.windowed) await becomeWindowed(join(this.binFolder, name));
    }
    if (settings === undefined) return;
    const text = typeof settings === 'string' ? settings : JSON.stringify({ autoScan: false, ...settings });
    await writeFile(join(this.folder.unix, 'settings.json'), text);
  }

  async #readLines(name) {
    const text = await readFile(join(this.folder.unix, name), 'utf8').catch((error) => {
      if (error.code === 'ENOENT') return '';
      throw error;
    });
    return text.split('\n').slice(0, -1);
  }

  #hear({ message, problem, call, argument }) {
    if (message !== undefined) this.#receive(message);
    else if (problem) this.problems.push(problem);
    else this.calls.push([call, argument]);
    for (const wake of this.#woken.splice(0)) wake();
  }

  #receive(text) {
    this.texts.push(text);
    try {
      this.messages.push(JSON.parse(text));
    } catch {
      this.problems.push(`the program posted what is not JSON: ${text.slice(0, 200)}`);
      return;
    }
    if (!this.page) return;
    const deliver = () => this.page.evaluate((json) => window.varnelDeliver(json), text);
    this.#delivery = this.#delivery.then(deliver).catch(({ message }) => {
      // A message that meets a page on its way out is lost with the real control, too.
      if (!/navigation|closed|destroyed|varnelDeliver is not/.test(message))
        this.problems.push(`delivering a message: ${message}`);
    });
  }

  async #openBrowser() {
    const { environmentError = 0, controllerError = 0, page } = this.options;
    const called = (name) => this.until(() => this.calls.find((call) => call[0] === name), name);
    await called('CreateCoreWebView2EnvironmentWithOptions');
    await this.#connection.request('environment_created', { error: environmentError });
    if (environmentError) return;
    await called('CreateCoreWebView2Controller');
    await this.#connection.request('controller_created', { error: controllerError });
    if (controllerError) return;
    const [, uri] = await called('Navigate');
    if (page === false) return;
    await this.#openPage();
    await this.page.goto(uri);
  }

  async #openPage() {
    const report = (problem) => void this.problems.push(problem);
    // Some actions end the program at once; its exit code tells whether that was in order.
    const post = (text) =>
      this.send(text).catch((error) => {
        if (!/the program (ended|is not connected)/.test(error.message)) throw error;
      });
    const page = (this.page = await newPage(this.options, report, post));
    this.context = page.context();
    page.on('load', () => {
      ++this.#pushesDue;
      this.#connection.request('navigation_completed').catch(() => {});
    });
    await page.route('**', (route) => this.#serve(route, new URL(route.request().url())));
  }

  // As the control does it: the program's handler first, then the folder that is mapped to the host.
  async #serve(route, url) {
    const answer = await this.resource(url.href);
    if (answer) {
      const headers = answer.headers.split('\r\n').map((line) => line.split(/: (.*)/s, 2));
      return route.fulfill({ ...answer, headers: Object.fromEntries(headers) });
    }
    const [, mapping] = this.calls.find(([name]) => name === 'SetVirtualHostNameToFolderMapping') ?? [];
    if (url.hostname !== mapping?.host) return route.abort('failed');
    const path = join(wine.unixPath(mapping.folder), decodeURIComponent(url.pathname));
    const body = await readFile(path).catch(() => undefined);
    return body ? route.fulfill({ status: 200, body }) : route.abort('failed');
  }
}
