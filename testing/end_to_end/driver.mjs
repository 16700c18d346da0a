// Starts the shipped Varnel.exe under Wine with the stand-in browser loader and shows its page in Chromium. The page is served by
// the program's own resource handler, and every message crosses the program's own bridge.
import { once } from 'node:events';
import { readFile, writeFile, mkdir } from 'node:fs/promises';
import { join } from 'node:path';
import { chromium } from 'playwright-core';

import { Connection } from './connection.mjs';
import {
  buildFolder,
  copyInto,
  makeFolder,
  prepareWine,
  standIn,
  startInPrefix,
  unixPath,
  until,
  within,
} from './wine.mjs';

// Values of the control's resource contexts.
const kContexts = { document: 1, stylesheet: 2, image: 3, media: 4, font: 5, script: 6, xhr: 7, fetch: 8 };

// Ctrl+C is for whoever drives: the browser is ended in order.
const kOwnSignals = { handleSIGINT: false, handleSIGTERM: false, handleSIGHUP: false };

const kChromiumFlags = [
  '--disable-gpu',
  '--disable-quic',
  '--no-first-run',
  '--disable-background-networking',
  '--disable-component-update',
  '--disable-sync',
  ...(process.getuid() === 0 ? ['--no-sandbox'] : []),
];

let sharedBrowser;

export async function closeBrowser() {
  await sharedBrowser?.close();
  sharedBrowser = undefined;
}

// What the page finds in window.chrome.webview. Runs in the page before its own scripts.
function installWebview() {
  const listeners = new Set();
  const webview = {
    postMessage: (message) =>
      window.varnelPost(typeof message === 'string' ? { text: message } : { value: JSON.stringify(message) }),
    addEventListener: (type, listener) => {
      if (type === 'message') listeners.add(listener);
    },
    removeEventListener: (type, listener) => {
      if (type === 'message') listeners.delete(listener);
    },
  };
  window.chrome = Object.assign(window.chrome ?? {}, { webview });
  window.varnelDeliver = (text) => {
    for (const listener of [...listeners]) listener(new MessageEvent('message', { data: JSON.parse(text) }));
  };
  document.addEventListener('securitypolicyviolation', (event) => {
    window.varnelProblem(`policy report: ${event.violatedDirective} ${event.blockedURI}`);
  });
}

// Makes a tool one that the system takes for a windowed program, so that it gets no console: Wine's console host
// inherits a tool's output and holds it until the tool has ended.
async function becomeWindowed(path) {
  const kWindowed = 2;
  const file = await readFile(path);
  file.writeUInt16LE(kWindowed, file.readUInt32LE(0x3c) + 0x5c);
  await writeFile(path, file);
}

// Options, all optional:
//   tools     {name: script}: stand-in console tools beside the program, such as {'winget.exe': {...}}
//   service   {action: answer}: the stand-in helper service; "busy": its pipe is always taken; absent: no service
//   settings  written to settings.json before the start (an object, in which only an explicit autoScan is on, or the
//             file's text)
//   language  the page's language, "cs" or "en", for tests that name no settings
//   env       environment variables of the program
//   args      command line words
//   program   the executable instead of the shipped one, such as standIn('Varnel_loopback.exe')
//   loader    false: no WebView2Loader.dll beside the program
//   environmentError, controllerError   the browser's creation fails with this HRESULT
//   page      false: no browser, only the bridge
//   visible   show the windows on the present display
//   viewport  {width, height} of the page
//   folder    the folder of a program that ended with stop({ keepFolder: true }): started again where it left off
export async function startVarnel(options = {}) {
  const app = new Varnel(options);
  try {
    await app.start();
  } catch (error) {
    await app.kill();
    throw error;
  }
  return app;
}

class Varnel {
  messages = []; // everything posted to the page, in order, parsed; `texts` has the exact texts
  texts = [];
  problems = []; // what makes stop() fail: console errors, policy reports, page errors, failed requests
  recorded = {
    settings: {},
    bounds: [],
    calls: [], // of the controller, but for put_Bounds: [name, argument]
    filters: [],
    handlers: [],
    folder: undefined,
    navigations: [],
    environment: undefined,
  };
  #connection = new Connection();
  #delivery = Promise.resolve();
  #nextRequest = 1_000_000;
  #pushesDue = 0;
  #woken = [];

  constructor(options) {
    this.options = options;
  }

  async start() {
    const { options } = this;
    await prepareWine({ visible: options.visible });
    this.folder = options.folder ?? (await makeFolder());
    this.binFolder = join(this.folder.unix, 'bin');
    if (!options.folder) await this.#fillFolder();
    if (options.service) await this.startService(options.service);
    this.#record();
    const port = await this.#connection.listen();
    this.process = startInPrefix(`${this.folder.windows}\\bin\\Varnel.exe`, options.args, {
      cwd: this.binFolder,
      env: {
        VARNEL_DRIVER_PORT: String(port),
        VARNEL_TOOL_SCRIPTS: `${this.folder.windows}\\tools`,
        ...options.env,
      },
    });
    this.exited = once(this.process, 'exit').then(([code, signal]) => signal ?? code);
    this.process.stdout.resume();
    if (options.loader === false || options.args) return;
    await within(this.#openBrowser(), 'the program to create its browser control');
  }

  // --- the bridge -------------------------------------------------------------------------------------------------------

  // Delivers one web message as the page would: a text as it is (lone surrogates included), anything else as its JSON text.
  send(message) {
    const text = typeof message === 'string' ? message : JSON.stringify(message);
    return this.#connection.request('web_message', {
      utf16: Buffer.from(text, 'utf16le').toString('base64'),
    });
  }

  // Posts what is not a string, such as webview.postMessage({...}).
  sendNonString() {
    return this.#connection.request('web_message', { utf16: '', isString: false });
  }

  // Sends an action and waits for the reply with its requestId.
  async request(action, data = {}, envelope = {}) {
    const requestId = this.#nextRequest++;
    const from = this.messages.length;
    await this.send({ action, requestId, data, ...envelope });
    return this.waitForMessage((message) => message.requestId === requestId, {
      from,
      what: `the reply to ${action}`,
    });
  }

  // Everything that the program posts from the request on, up to and including the message that `isLast`: its
  // reply, if nothing else is said.
  async posted(action, data = {}, isLast) {
    const requestId = this.#nextRequest++;
    const from = this.messages.length;
    await this.send({ action, requestId, data });
    const matches = isLast ?? ((message) => message.requestId === requestId);
    const last = await this.waitForMessage(matches, { from, what: `the end of ${action}` });
    return this.messages.slice(from, this.messages.indexOf(last) + 1);
  }

  // The first message from index `from` on that `matches`; waits for it if it has not come yet.
  waitForMessage(matches, { from = 0, what = 'a message', milliseconds } = {}) {
    return this.until(
      () => {
        for (; from < this.messages.length; ++from)
          if (matches(this.messages[from])) return this.messages[from];
        return undefined;
      },
      what,
      milliseconds,
    );
  }

  // Looks after every event of the program, and again and again, until `look` gives something other than
  // undefined or false.
  until(look, what, milliseconds) {
    return until(look, what, milliseconds, () => new Promise((resolve) => this.#woken.push(resolve)));
  }
  waitUntil = this.until; // older names
  waitUntilShown = this.until;

  // What the program's resource handler answers: {status, reason, headers, body}, or undefined.
  async resource(uri, context = 'document') {
    const answer = await this.#connection.request('get_resource', { uri, context: kContexts[context] });
    return answer.status === undefined ? undefined : { ...answer, body: Buffer.from(answer.body, 'base64') };
  }

  completeNavigation() {
    ++this.#pushesDue;
    return this.#connection.request('navigation_completed');
  }

  // --- around the program -----------------------------------------------------------------------------------------------

  // Starts the stand-in helper service; `script` is {action: answer} as testing/README.md describes, or "busy": the pipe is
  // there, but always taken.
  async startService(script) {
    this.serviceScript = join(this.folder.unix, 'service.json');
    await this.scriptService(script);
    this.service = startInPrefix(standIn('helper_service.exe'), [
      `${this.folder.windows}\\service.json`,
      `${this.folder.windows}\\service.log`,
      ...(script === 'busy' ? ['busy'] : []),
    ]);
    await within(once(this.service.stdout, 'data'), 'the stand-in service');
  }

  // Changes the answers of the running service, from the next request on.
  scriptService(script) {
    return writeFile(this.serviceScript, JSON.stringify(script));
  }

  async stopService() {
    const { service } = this;
    this.service = undefined;
    if (!service) return;
    service.stdin.end();
    if (service.exitCode === null)
      await within(once(service, 'exit'), 'the stand-in service to end').catch(() => service.kill('SIGKILL'));
  }

  // The service's requests so far, parsed.
  serviceRequests() {
    return this.#readLines('service.log').then((lines) => lines.map((line) => JSON.parse(line)));
  }

  // Starts a stand-in tool beside the program and waits until it writes something: its process.
  async startTool(name) {
    const tool = startInPrefix(`${this.folder.windows}\\bin\\${name}.exe`, [], {
      env: { VARNEL_TOOL_SCRIPTS: `${this.folder.windows}\\tools` },
    });
    await within(once(tool.stdout, 'data'), `${name} to write`);
    return tool;
  }

  // Exact command lines with which the stand-in tool was started, such as toolCalls('winget').
  toolCalls(name) {
    return this.#readLines(join('tools', `${name}.log`));
  }

  async settingsFile() {
    return JSON.parse(await readFile(join(this.folder.unix, 'settings.json'), 'utf8'));
  }

  // Queries or drives the program's window with the window probe: its lines as {name: value}.
  async window(...words) {
    const probe = startInPrefix(standIn('window_probe.exe'), words);
    probe.stdin.end();
    let text = '';
    probe.stdout.setEncoding('utf8').on('data', (part) => {
      text += part;
    });
    const [code] = await within(once(probe, 'close'), 'the window probe');
    if (code !== 0) throw new Error(`the window probe failed: ${words.join(' ')}: ${text}`);
    return JSON.parse(text);
  }

  // Ends the program with exitApp and everything around it; fails when there were problems or the exit code is not 0.
  async stop({ keepFolder = false } = {}) {
    let code,
      lived = false;
    try {
      await this.#closePage();
      lived = this.process.exitCode === null && this.process.signalCode === null;
      if (lived) await this.send({ action: 'exitApp' }).catch(() => {});
      code = await within(this.exited, 'the program to end after exitApp', 10_000);
    } finally {
      await this.kill({ keepFolder });
    }
    // Ending threads that are inside a system library, Wine itself now and then dies of a signal. A fault of the program would
    // be an exception with an exit code; window.test.mjs asks Windows for the code.
    if (lived && (code === 'SIGSEGV' || code === 'SIGKILL'))
      console.warn(`Wine ended by ${code} after exitApp`);
    else if (code !== 0) throw new Error(`the program ended with ${code}`);
    if (this.problems.length > 0) throw new Error(`problems in the page:\n${this.problems.join('\n')}`);
  }

  // Ends everything at once, without looking at problems.
  async kill({ keepFolder = false } = {}) {
    if (this.process && this.process.exitCode === null && this.process.signalCode === null) {
      this.process.kill('SIGKILL');
      await this.exited;
    }
    await this.context?.close();
    await this.stopService();
    this.#connection.close();
    if (!keepFolder) await this.folder?.remove();
  }

  // The page goes before the program, so that nothing of it is cut off, and after the status push, which is inside the graphics
  // libraries for a moment after each load.
  async #closePage() {
    await this.context?.close().catch(() => {}); // the user may be closing its window at this moment
    this.context = undefined;
    if (this.process.exitCode !== null) return;
    const pushed = () =>
      this.messages.filter(({ type, requestId }) => type === 'status' && requestId === 0).length;
    await this.waitUntil(
      () => this.process.exitCode !== null || pushed() >= this.#pushesDue,
      'the status push',
    );
  }

  // --- inside -------------------------------------------------------------------------------------------------------------

  async #fillFolder() {
    const { tools = {}, language, loader } = this.options;
    const settings = this.options.settings ?? (language && { language });
    const files = { 'Varnel.exe': this.options.program ?? join(buildFolder, 'bin/Varnel.exe') };
    if (loader !== false) files['WebView2Loader.dll'] = standIn('WebView2Loader.dll');
    for (const name of Object.keys(tools)) files[name] = standIn('console_tool.exe');
    await copyInto(this.binFolder, files);
    await mkdir(join(this.folder.unix, 'tools'));
    for (const [name, script] of Object.entries(tools)) {
      await this.scriptTool(name, script);
      if (script.windowed) await becomeWindowed(join(this.binFolder, name));
    }
    if (settings !== undefined) {
      await writeFile(
        join(this.folder.unix, 'settings.json'),
        typeof settings === 'string' ? settings : JSON.stringify({ autoScan: false, ...settings }),
      );
    }
  }

  // Changes what a stand-in tool does from its next start on.
  scriptTool(name, script) {
    return writeFile(
      join(this.folder.unix, 'tools', name.replace(/\.exe$/, '.json')),
      JSON.stringify(script),
    );
  }

  async #readLines(name) {
    const text = await readFile(join(this.folder.unix, name), 'utf8').catch((error) => {
      if (error.code === 'ENOENT') return '';
      throw error;
    });
    return text.split('\n').slice(0, -1);
  }

  #record() {
    const { recorded } = this;
    const on = (event, handle) =>
      this.#connection.on(event, (fields) => {
        handle(fields);
        for (const wake of this.#woken.splice(0)) wake();
      });
    on('create_environment', (fields) => {
      recorded.environment = fields;
    });
    on('create_controller', (fields) => {
      recorded.controller = fields;
    });
    on('setting', ({ name, value }) => {
      recorded.settings[name] = value;
    });
    on('bounds', ({ left, top, right, bottom }) => {
      recorded.bounds.push({ left, top, right, bottom });
    });
    on('call', ({ name, argument }) => {
      recorded.calls.push([name, argument]);
    });
    on('filter', ({ uri, context }) => {
      recorded.filters.push({ uri, context });
    });
    on('handler', ({ name }) => {
      recorded.handlers.push(name);
    });
    on('folder', ({ host, folder, access }) => {
      recorded.folder = { host, folder, access };
    });
    on('navigate', ({ uri }) => {
      recorded.navigations.push(uri);
    });
    on('problem', ({ problem }) => {
      this.problems.push(problem);
    });
    on('message', ({ text }) => this.#receive(text));
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
    this.#delivery = this.#delivery
      .then(() => this.page.evaluate((json) => window.varnelDeliver(json), text))
      .catch((error) => {
        // A message that meets a page on its way out is lost with the real control, too.
        if (!/navigation|closed|destroyed|varnelDeliver is not/.test(error.message))
          this.problems.push(`delivering a message: ${error.message}`);
      });
  }

  async #openBrowser() {
    const { recorded, options } = this;
    const environment = await this.waitUntil(() => recorded.environment, 'the browser environment');
    if (environment.apartmentError) {
      throw new Error('the thread that creates the browser environment is not a single-threaded apartment');
    }
    await this.#connection.request('environment_created', { error: options.environmentError ?? 0 });
    if (options.environmentError) return;
    await this.waitUntil(() => recorded.controller, 'the browser controller');
    await this.#connection.request('controller_created', { error: options.controllerError ?? 0 });
    if (options.controllerError) return;
    const uri = await this.waitUntil(() => recorded.navigations[0], 'the first navigation');
    if (options.page === false) return;
    await this.#openPage();
    await this.page.goto(uri);
  }

  async #openPage() {
    const { viewport = { width: 1400, height: 900 }, visible } = this.options;
    if (visible) {
      this.context = await chromium.launchPersistentContext('', {
        ...kOwnSignals,
        executablePath: '/usr/bin/chromium',
        headless: false,
        viewport: null,
        args: [
          ...kChromiumFlags,
          '--app=data:text/html,<title>Varnel</title>',
          `--window-size=${viewport.width},${viewport.height}`,
        ],
      });
      this.page = this.context.pages()[0] ?? (await this.context.newPage());
    } else {
      sharedBrowser ??= await chromium.launch({
        ...kOwnSignals,
        executablePath: '/usr/bin/chromium',
        args: kChromiumFlags,
      });
      this.context = await sharedBrowser.newContext({ viewport, locale: 'cs-CZ', reducedMotion: 'reduce' });
      this.page = await this.context.newPage();
    }
    const { page } = this;
    page.on('console', (line) => {
      if (line.type() === 'error') this.problems.push(`console: ${line.text()}`);
    });
    page.on('pageerror', (error) => this.problems.push(`page error: ${error.stack ?? error.message}`));
    page.on('requestfailed', (request) =>
      this.problems.push(`request failed: ${request.url()}: ${request.failure()?.errorText}`),
    );
    page.on('load', () => {
      this.completeNavigation().catch(() => {});
    });
    await page.exposeFunction('varnelPost', ({ text, value }) =>
      (text === undefined ? this.sendNonString(value) : this.send(text)).then(
        () => {},
        (error) => {
          // Some actions end the program at once; its exit code tells whether that was in order.
          if (!/the program (ended|is not connected)/.test(error.message)) throw error;
        },
      ),
    );
    await page.exposeFunction('varnelProblem', (problem) => {
      this.problems.push(problem);
    });
    await page.addInitScript(installWebview);
    await page.route('**', (route) => this.#serve(route));
  }

  // As the control does it: the program's handler first, then the folder that is mapped to the host.
  async #serve(route) {
    const request = route.request();
    const url = new URL(request.url());
    const answer = await this.resource(url.href, request.resourceType());
    if (answer) {
      const headers = Object.fromEntries(
        answer.headers.split('\r\n').map((line) => line.split(/: (.*)/s, 2)),
      );
      return route.fulfill({ status: answer.status, headers, body: answer.body });
    }
    const { folder } = this.recorded;
    const file =
      folder &&
      url.hostname === folder.host &&
      (await readFile(join(unixPath(folder.folder), decodeURIComponent(url.pathname))).catch(
        () => undefined,
      ));
    return file ? route.fulfill({ status: 200, body: file }) : route.abort('failed');
  }
}
