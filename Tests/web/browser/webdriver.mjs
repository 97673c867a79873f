// Drives Firefox and WebKitGTK by WebDriver, with those functions of playwright-core's pages that the
// checks use, so that one check runs in every browser.
//
// Both browsers understand the commands of classic WebDriver without further software: WebKitGTK's
// driver over HTTP, Firefox itself as packets on a socket (Marionette).
import { execFileSync, spawn } from "node:child_process";
import { createReadStream, existsSync, mkdirSync, mkdtempSync, readFileSync, readdirSync, rmSync,
  writeFileSync } from "node:fs";
import { connect, createServer } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { Host } from "./host.mjs";

const sleep = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

// Calls `attempt` until it returns something, or throws what it has thrown last.
async function eventually(attempt, what, milliseconds = 20_000) {
  const end = Date.now() + milliseconds;
  let reason = "";
  do {
    try {
      const result = await attempt();
      if (result !== undefined && result !== false) return result;
    } catch (error) {
      reason = `: ${error.message ?? error}`;
    }
    await sleep(30);
  } while (Date.now() < end);
  throw new Error(`${what}: not within ${milliseconds} ms${reason}`);
}

// --- Commands -------------------------------------------------------------------------------------

// The name of each command as a packet, and its method and path over HTTP.
const commands = {
  newWindow: ["NewWindow", "POST", "window/new"],
  switchTo: ["SwitchToWindow", "POST", "window"],
  closeWindow: ["CloseWindow", "DELETE", "window"],
  handle: ["GetWindowHandle", "GET", "window"],
  resize: ["SetWindowRect", "POST", "window/rect"],
  timeouts: ["SetTimeouts", "POST", "timeouts"],
  navigate: ["Navigate", "POST", "url"],
  execute: ["ExecuteAsyncScript", "POST", "execute/async"],
  act: ["PerformActions", "POST", "actions"],
  find: ["FindElements", "POST", "elements"],
  click: ["ElementClick", "POST", "element/ID/click"],
  type: ["ElementSendKeys", "POST", "element/ID/value"],
  screenshot: ["TakeScreenshot", "GET", "screenshot"],
};
const capabilities = { pageLoadStrategy: "normal", unhandledPromptBehavior: "dismiss" };

// Firefox: "LENGTH:[type, id, ...]" both ways, where the length counts bytes.
class Packets {
  #socket;
  #received = Buffer.alloc(0);
  #waiting = new Map();
  #id = 0;

  static async connected(port) {
    const packets = new Packets();
    packets.#socket = connect(port, "127.0.0.1");
    await new Promise((resolve, reject) => {
      packets.#socket.once("error", reject);
      packets.#socket.once("data", (greeting) => {
        packets.#socket.on("data", (data) => packets.#take(data));
        resolve(greeting);
      });
    });
    packets.#socket.on("error", () => undefined);
    packets.#socket.on("close", () => {
      for (const { reject } of packets.#waiting.values()) reject(new Error("the browser has gone"));
    });
    await packets.#send("WebDriver:NewSession", capabilities);
    return packets;
  }
  #take(data) {
    this.#received = Buffer.concat([this.#received, data]);
    for (;;) {
      const colon = this.#received.indexOf(":");
      const end = colon + 1 + Number(this.#received.subarray(0, Math.max(colon, 0)));
      if (colon < 0 || this.#received.length < end) return;
      const [, id, error, result] = JSON.parse(this.#received.subarray(colon + 1, end));
      this.#received = this.#received.subarray(end);
      const { resolve, reject } = this.#waiting.get(id);
      this.#waiting.delete(id);
      if (error !== null) reject(new Error(`${error.error}: ${error.message}`));
      else resolve(result !== null && "value" in result ? result.value : result);
    }
  }
  #send(name, parameters) {
    const id = ++this.#id;
    const text = JSON.stringify([0, id, name, parameters]);
    return new Promise((resolve, reject) => {
      this.#waiting.set(id, { resolve, reject });
      this.#socket.write(`${Buffer.byteLength(text)}:${text}`);
    });
  }
  command([name], parameters) {
    return this.#send(`WebDriver:${name}`, parameters);
  }
}

// WebKitGTK.
class Requests {
  #session = "";

  static async connected(port, options) {
    const requests = new Requests();
    requests.#session = `http://127.0.0.1:${port}/session`;
    const { sessionId } = await requests.#send("POST", "",
      { capabilities: { alwaysMatch: { ...capabilities, ...options } } });
    requests.#session += `/${sessionId}/`;
    return requests;
  }
  async #send(method, path, body) {
    const response = await fetch(this.#session + path,
      { method, ...(method === "POST" ? { body: JSON.stringify(body) } : {}) });
    const { value } = await response.json();
    if (!response.ok) throw new Error(`${value.error}: ${value.message}`);
    return value;
  }
  command([, method, path], parameters) {
    return this.#send(method, path.replace("ID", parameters.id), parameters);
  }
}

// --- Pages ----------------------------------------------------------------------------------------

const keys = { Enter: "\uE006", Tab: "\uE004", Space: " ", ArrowLeft: "\uE012", ArrowUp: "\uE013",
  ArrowRight: "\uE014", ArrowDown: "\uE015", End: "\uE010", Home: "\uE011" };

class Locator {
  #page;
  #selector;
  #index;

  constructor(page, selector, index = 0) {
    this.#page = page;
    this.#selector = selector;
    this.#index = index;
  }
  nth(index) {
    return new Locator(this.#page, this.#selector, index);
  }
  evaluate(work) {
    return this.#page.evaluate(`({ selector, index }) =>
      (${work})(document.querySelectorAll(selector)[index])`,
    { selector: this.#selector, index: this.#index });
  }
  async #element() {
    const found = await eventually(async () => (await this.#page.command("find",
      { using: "css selector", value: this.#selector }))[this.#index], this.#selector);
    return Object.values(found)[0];
  }
  async click() {
    await this.#page.command("click", { id: await this.#element() });
  }
  async setInputFiles({ name, buffer }) {
    const file = join(this.#page.context().folder, name);
    writeFileSync(file, buffer);
    await this.#page.command("type", { id: await this.#element(), text: file });
  }
  getAttribute(name) {
    return this.evaluate(`(element) => element.getAttribute(${JSON.stringify(name)})`);
  }
  textContent() {
    return this.evaluate((element) => element.textContent);
  }
  isDisabled() {
    return this.evaluate((element) => element.disabled);
  }
  isVisible() {
    return this.evaluate((element) => {
      const { width, height } = element?.getBoundingClientRect() ?? { width: 0, height: 0 };
      return width * height > 0 && getComputedStyle(element).visibility === "visible";
    });
  }
  async isHidden() {
    return !await this.isVisible();
  }
  boundingBox() {
    return this.evaluate((element) => {
      const { x, y, width, height } = element.getBoundingClientRect();
      return { x, y, width, height };
    });
  }
}

class Page {
  #context;
  #listeners = { pageerror: [], console: [] };

  constructor(context, handle) {
    this.#context = context;
    this.handle = handle;
  }
  context() {
    return this.#context;
  }
  command(name, parameters) {
    return this.#context.command(this, name, parameters);
  }
  on(event, listener) {
    this.#listeners[event].push(listener);
  }
  exposeFunction(name, work) {
    this.#context.expose(name, work);
  }
  addInitScript(script) {
    this.#context.addInitScript(script);
  }
  locator(selector) {
    return new Locator(this, selector);
  }

  // `work` is a function, the text of one, or a whole script.
  async evaluate(work, argument = null) {
    const text = String(work);
    const isFunction = typeof work === "function" || /^(async )?\(/.test(text);
    const script = isFunction ? `
      const [argument, done] = arguments;
      Promise.resolve().then(() => (${text})(argument)).then(
        (value) => done({ value: value ?? null }), (error) => done({ error: String(error) }));`
      : `${text}\n;arguments[arguments.length - 1]({ value: null });`;
    const { value, error } = await this.command("execute", { script, args: [argument] });
    if (error !== undefined) throw new Error(error);
    return value;
  }
  async waitForFunction(condition, argument, { timeout = 30_000 } = {}) {
    await eventually(async () => Boolean(await this.evaluate(condition, argument)),
      String(condition), timeout);
  }
  waitForTimeout(milliseconds) {
    return sleep(milliseconds);
  }
  async waitForEvent() {
    return { createReadStream: async () => createReadStream(await this.#context.download()) };
  }

  // Reports the errors of the document that is about to go.
  async listen() {
    const seen = await this.evaluate(() => (window.seenErrors ?? []).splice(0)).catch(() => []);
    for (const message of seen)
      for (const listener of this.#listeners.pageerror) listener(new Error(message));
  }
  async goto(url) {
    await this.command("navigate", { url });
  }
  // As the user's reload: WebDriver's command makes Firefox pass its service workers by.
  async reload() {
    await this.listen();
    await this.evaluate(() => {
      window.isFormer = true;
      location.reload();
    });
    await this.waitForFunction(() => window.isFormer === undefined && document.readyState === "complete");
  }
  setViewportSize(size) {
    return this.#context.resize(this, size);
  }
  async bringToFront() {
    await this.command("switchTo", { handle: this.handle, name: this.handle, focus: true });
  }
  async close() {
    await this.listen();
    await this.#context.forget(this);
  }
  async screenshot({ path }) {
    writeFileSync(path, Buffer.from(await this.command("screenshot", { full: false }), "base64"));
  }

  keyboard = {
    press: async (name) => {
      const value = keys[name] ?? name;
      await this.command("act", { actions: [{ type: "key", id: "keyboard",
        actions: [{ type: "keyDown", value }, { type: "keyUp", value }] }] });
    },
  };
  #point = (...actions) => this.command("act", { actions: [{ type: "pointer", id: "mouse",
    parameters: { pointerType: "mouse" }, actions }] });
  mouse = {
    move: (x, y) => this.#point({ type: "pointerMove", duration: 0, origin: "viewport",
      x: Math.round(x), y: Math.round(y) }),
    down: () => this.#point({ type: "pointerDown", button: 0 }),
    up: () => this.#point({ type: "pointerUp", button: 0 }),
  };
}

// --- Browsers -------------------------------------------------------------------------------------

// Runs first in each document: WebDriver tells of no errors.
const watch = () => {
  const seen = window.seenErrors = [];
  addEventListener("error", ({ message, target }) =>
    seen.push(message ?? `${target.src ?? target.href} does not load`), true);
  addEventListener("unhandledrejection", ({ reason }) => seen.push(String(reason)));
  document.addEventListener("securitypolicyviolation", ({ violatedDirective, blockedURI }) =>
    seen.push(`${violatedDirective} forbids ${blockedURI}`));
  const { error } = console;
  console.error = (...message) => {
    seen.push(message.join(" "));
    error(...message);
  };
};

// A browser process of its own, with one profile.
class Context {
  #remote;
  #own;
  #isKept;
  #viewport;
  #pages = [];
  #spare = []; // windows without a page
  #current = "";
  #work = Promise.resolve();

  // Starts what `engine` describes, with a profile of its own unless `options` name a folder.
  static async opened(engine, options) {
    const context = new Context();
    context.folder = options.profile ?? mkdtempSync(join(tmpdir(), "velto-browser-"));
    context.#isKept = options.profile !== undefined;
    context.#viewport = options.viewport ?? { width: 1280, height: 720 };
    Host.prelude.push(`(${watch})();`);
    const { own, remote } = await engine.driven(context.folder, options);
    context.#own = own;
    context.#remote = remote;
    context.#current = await remote.command(commands.handle, {});
    context.#spare.push(context.#current);
    await remote.command(commands.timeouts, { script: 300_000, pageLoad: 60_000, implicit: 0 });
    return context;
  }

  // One command after the other, each in the page's window.
  command(page, name, parameters) {
    const result = this.#work.then(async () => {
      if (page.handle !== this.#current) {
        await this.#remote.command(commands.switchTo,
          { handle: page.handle, name: page.handle, focus: false });
        this.#current = page.handle;
      }
      return this.#remote.command(commands[name], parameters);
    });
    this.#work = result.catch(() => undefined);
    return result;
  }
  addInitScript(script) {
    Host.prelude.push(typeof script === "string" ? script : `(${script})();`);
  }
  expose(name, work) {
    Host.told.set(name, work);
    Host.prelude.push(`window.${name} = () => fetch("/told/${name}", { method: "POST" });`);
  }

  async newPage() {
    if (this.#spare.length === 0) {
      const { handle } = await this.command(this.#pages[0], "newWindow", { type: "tab", focus: true });
      this.#spare.push(handle);
    }
    const page = new Page(this, this.#spare.pop());
    this.#pages.push(page);
    if (this.#pages.length === 1) await this.resize(page, this.#viewport);
    else await page.bringToFront();
    return page;
  }
  async resize(page, wanted) {
    let { width, height } = wanted;
    const inner = () => page.evaluate(() => ({ width: innerWidth, height: innerHeight }));
    // The window is larger than the page.
    for (let i = 0; i < 4; ++i) {
      await page.command("resize", { x: 0, y: 0, width, height });
      await sleep(100);
      const found = await inner();
      if (found.width === wanted.width && found.height === wanted.height) return;
      width += wanted.width - found.width;
      height += wanted.height - found.height;
    }
    const found = await inner();
    throw new Error(`the window is ${found.width} x ${found.height} points inside`);
  }
  // The last window stays, because the browser would end with it.
  async forget(page) {
    this.#pages = this.#pages.filter((other) => other !== page);
    if (this.#pages.length > 0) {
      await this.command(page, "closeWindow", {});
      return;
    }
    await page.goto("about:blank");
    this.#spare.push(page.handle);
  }

  // The file that the browser downloads next.
  async download() {
    const downloads = join(this.folder, "downloads");
    const name = await eventually(() => {
      const names = existsSync(downloads) ? readdirSync(downloads) : [];
      return names.length === 1 && /\.json$/.test(names[0]) && names[0];
    }, "a download");
    const moved = join(this.folder, `${Date.now()}.json`);
    writeFileSync(moved, readFileSync(join(downloads, name)));
    rmSync(join(downloads, name));
    return moved;
  }
  async close() {
    for (const page of this.#pages) await page.listen();
    await this.#own.kill();
    Host.prelude.length = 0;
    Host.told.clear();
    if (!this.#isKept) rmSync(this.folder, { recursive: true, force: true, maxRetries: 5 });
  }
}

// A program with processes of its own, which all end at once.
function started(program, args, environment = {}) {
  const child = spawn(program, args, { detached: true, stdio: "ignore",
    env: { ...process.env, ...environment } });
  const ended = new Promise((resolve) => child.on("exit", resolve));
  return {
    async kill() {
      try {
        process.kill(-child.pid, "SIGKILL");
      } catch {
        // It has ended.
      }
      await ended;
    },
  };
}

const firefox = "/usr/bin/firefox-esr";
function firefoxProfile(folder, { colorScheme, preferences = {} }) {
  const all = {
    "marionette.port": 0, // any
    "layout.css.prefers-color-scheme.content-override": colorScheme === "dark" ? 0 : 1,
    "browser.download.folderList": 2,
    "browser.download.dir": join(folder, "downloads"),
    "browser.download.always_ask_before_handling_new_types": false,
    "browser.helperApps.neverAsk.saveToDisk": "application/json",
    "toolkit.legacyUserProfileCustomizations.stylesheets": true,
    // Drivers lift it.
    "security.fileuri.strict_origin_policy": true,
    // No pages and no connections of its own.
    "browser.startup.homepage_override.mstone": "ignore",
    "browser.aboutwelcome.enabled": false,
    "browser.preonboarding.enabled": false,
    "browser.shell.checkDefaultBrowser": false,
    "datareporting.policy.dataSubmissionEnabled": false,
    "network.captive-portal-service.enabled": false,
    "network.connectivity-service.enabled": false,
    ...preferences,
  };
  mkdirSync(join(folder, "chrome"), { recursive: true });
  // Its window is never narrower than 450 points, by a rule of its own style sheet.
  writeFileSync(join(folder, "chrome", "userChrome.css"),
    ":root, body { min-width: 0 !important; min-height: 0 !important; }\n");
  writeFileSync(join(folder, "user.js"), Object.entries(all)
    .map(([name, value]) => `user_pref(${JSON.stringify(name)}, ${JSON.stringify(value)});\n`).join(""));
}

function freePort() {
  const server = createServer();
  return new Promise((resolve) => server.listen(0, "127.0.0.1", () => {
    const { port } = server.address();
    server.close(() => resolve(port));
  }));
}

function miniBrowser() {
  const libraries = "/usr/lib/x86_64-linux-gnu";
  const folder = readdirSync(libraries).filter((name) => name.startsWith("webkit2gtk-")).sort()
    .find((name) => existsSync(join(libraries, name, "MiniBrowser")));
  return join(libraries, folder, "MiniBrowser");
}
function webkitEnvironment(folder, { colorScheme }) {
  const downloads = join(folder, "downloads");
  mkdirSync(downloads, { recursive: true });
  writeFileSync(join(folder, "user-dirs.dirs"), `XDG_DOWNLOAD_DIR="${downloads}"\n`);
  // So that its window can be as narrow as a phone.
  mkdirSync(join(folder, "gtk-3.0"), { recursive: true });
  writeFileSync(join(folder, "gtk-3.0", "gtk.css"),
    "* { min-width: 0; margin: 0; padding: 0; border-spacing: 0; font-size: 6px; }\n");
  return { XDG_DATA_HOME: folder, XDG_CACHE_HOME: folder, XDG_CONFIG_HOME: folder,
    GTK_THEME: colorScheme === "dark" ? "Adwaita:dark" : "Adwaita" };
}

const noCommand = "WebDriver has no command for it";
const engines = {
  firefox: {
    title: () => execFileSync(firefox, ["--version"], { encoding: "utf8" }).trim(),
    lacks: {
      appearance: "set when it starts",
      crash: noCommand,
      deletion: noCommand,
      quota: noCommand,
      manifest: noCommand,
      damage: "the files of its databases are Chromium's",
    },
    async driven(folder, options) {
      firefoxProfile(folder, options);
      const file = join(folder, "MarionetteActivePort");
      rmSync(file, { force: true });
      const own = started(firefox, ["--headless", "--marionette", "--profile", folder]);
      const port = await eventually(() => existsSync(file) && Number(readFileSync(file)),
        "Firefox listens", 60_000);
      return { own, remote: await Packets.connected(port) };
    },
    start(folder, address) {
      firefoxProfile(folder, {});
      return started(firefox, ["--headless", "--profile", folder, address]);
    },
    withoutStorage: { preferences: { "network.cookie.cookieBehavior": 2 } },
  },
  webkit: {
    title: () => execFileSync(miniBrowser(), ["--version"], { encoding: "utf8" }).trim(),
    lacks: {
      appearance: "set when it starts",
      crash: noCommand,
      deletion: noCommand,
      denial: "MiniBrowser has no such setting",
      fractions: "it puts letters on whole pixels",
      quota: noCommand,
      manifest: noCommand,
      damage: "a driven MiniBrowser keeps nothing on the disk",
    },
    async driven(folder, options) {
      const port = await freePort();
      const own = started("/usr/bin/WebKitWebDriver", [`--port=${port}`],
        webkitEnvironment(folder, options));
      await eventually(async () => (await fetch(`http://127.0.0.1:${port}/status`)).ok, "the driver");
      return { own, remote: await Requests.connected(port, {
        "webkitgtk:browserOptions": { binary: miniBrowser(), args: ["--automation"] } }) };
    },
    start: (folder, address) => started(miniBrowser(), [address], webkitEnvironment(folder, {})),
  },
};

// What the checks use of a browser of playwright-core.
export async function open(name) {
  const engine = engines[name];
  return {
    title: engine.title(),
    lacks: engine.lacks,
    newContext: (options = {}) => Context.opened(engine, options),
    start: engine.start,
    async launchWithoutStorage(profile) {
      const context = await Context.opened(engine, { ...engine.withoutStorage, profile });
      return { context, close: () => context.close() };
    },
    close: () => undefined,
  };
}
