// The page's host, the browser, and what the checks share.
import { spawn } from "node:child_process";
import { createReadStream, existsSync, mkdtempSync, rmSync } from "node:fs";
import { createServer } from "node:http";
import { tmpdir } from "node:os";
import { extname, join, normalize } from "node:path";
import { chromium } from "playwright-core";

export const [folder, hashes, pictures] = process.argv.slice(2);
export const drills = ["frequency", "level", "dynamics", "polarity"];

const types = { ".html": "text/html", ".js": "text/javascript", ".json": "application/json",
  ".css": "text/css", ".wasm": "application/wasm", ".svg": "image/svg+xml", ".png": "image/png",
  ".woff": "font/woff" };

// Serves a folder, which can be replaced, at an address that stays the same.
export class Host {
  requests = [];
  #server;
  #port = 0;

  constructor(served) {
    this.folder = served;
  }
  get address() {
    return `http://127.0.0.1:${this.#port}/`;
  }
  async start() {
    this.#server = createServer((request, response) => {
      const path = normalize(new URL(request.url, "http://localhost").pathname);
      const file = join(this.folder, path === "/" ? "index.html" : path);
      this.requests.push(path);
      if (!existsSync(file)) return response.writeHead(404).end();
      response.writeHead(200,
        { "Content-Type": types[extname(file)] ?? "application/octet-stream" });
      return createReadStream(file).pipe(response);
    });
    await new Promise((resolve) => this.#server.listen(this.#port, "127.0.0.1", resolve));
    this.#port = this.#server.address().port;
    return this;
  }
  async stop() {
    const stopped = new Promise((resolve) => this.#server.close(resolve));
    this.#server.closeAllConnections();
    await stopped;
  }
}

export const host = await new Host(folder).start();

const flags = [
  // As in a browser with a window.
  "--autoplay-policy=document-user-activation-required",
  ...(process.getuid() === 0 ? ["--no-sandbox"] : [])];
export const browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: flags,
  ignoreDefaultArgs: ["--mute-audio"] });
console.log(`Chromium ${browser.version()}`);

// A Chromium of its own with its profile in `profile`.
export async function launch(profile) {
  const child = spawn("/usr/bin/chromium", [...flags, "--headless", "--remote-debugging-port=0",
    "--no-first-run", "--disable-gpu", `--user-data-dir=${profile}`],
  { detached: true, stdio: ["ignore", "ignore", "pipe"] });
  const ended = new Promise((resolve) => child.on("exit", resolve));
  const endpoint = await new Promise((resolve, reject) => {
    let text = "";
    child.stderr.on("data", (data) => {
      text += data;
      const found = /DevTools listening on (ws:\S+)/.exec(text);
      if (found !== null) resolve(found[1]);
    });
    ended.then(() => reject(new Error(`Chromium has ended: ${text}`)));
  });
  const connection = await chromium.connectOverCDP(endpoint);
  return {
    context: connection.contexts()[0],
    // Ends all of its processes at once, without a chance to save anything.
    async kill() {
      process.kill(-child.pid, "SIGKILL");
      await ended;
    },
    async close() {
      const session = await connection.newBrowserCDPSession();
      await session.send("Browser.close").catch(() => undefined);
      await ended;
    },
  };
}

// Calls `work` with an empty folder.
export async function inScratch(work) {
  const scratch = mkdtempSync(join(tmpdir(), "velto-browser-"));
  try {
    await work(scratch);
  } finally {
    rmSync(scratch, { recursive: true, force: true, maxRetries: 5 });
  }
}

let failures = 0;
export function expect(isTrue, what) {
  if (isTrue) return;
  ++failures;
  console.log(`  failed: ${what}`);
}

export async function checking(name, work) {
  if (!new RegExp(process.env.VELTO_CHECKS ?? "").test(name)) return;
  const before = failures;
  try {
    await work();
  } catch (error) {
    expect(false, String(error));
  }
  console.log(`${failures === before ? "ok    " : "FAILED"} ${name}`);
}

export async function checkUntil(condition, what) {
  for (let i = 0; i < 200; ++i) {
    if (await condition()) return;
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
  expect(false, what);
}

export async function end() {
  await browser.close();
  await host.stop();
  console.log(failures === 0 ? "All checks passed." : `${failures} failures`);
  process.exitCode = failures === 0 ? 0 : 1;
}

export const ready = (page) => page.waitForFunction(
  () => document.querySelector("#status")?.textContent === "listen, then answer"
    && document.querySelector("#verdict").hidden,
  null, { timeout: 60_000 });

// A context with a page in it, whose errors count as failures.
export async function open(query = "", options = {}) {
  const context = await browser.newContext({ viewport: { width: 1180, height: 430 },
    colorScheme: "dark", ...options });
  return newPage(context, query);
}

export async function newPage(context, query = "", address = host.address) {
  const page = await context.newPage();
  page.on("pageerror", (error) => expect(false, `the page runs without errors: ${error.message}`));
  page.on("console", (message) => {
    if (message.type() === "error") expect(false, `no message: ${message.text()}`);
  });
  await page.goto(address + query);
  await ready(page);
  return page;
}

export const judged = (page) => page.waitForFunction(
  () => !document.querySelector("#verdict").hidden, null, { timeout: 20_000 });

// Submits the answer by key and waits for the verdict.
export async function submit(page) {
  await page.keyboard.press("Enter");
  await judged(page);
}

// Submits the answer and starts the next trial.
export async function answer(page) {
  await submit(page);
  await page.keyboard.press("Enter");
  await ready(page);
}

export const verdict = (page) => page.locator("#verdictWord").textContent();
export const today = (page) => page.locator("#today").textContent();
export const notice = (page) => page.locator("#notice").textContent();

// The bytes that the page exports.
export async function exportFrom(page) {
  const [download] = await Promise.all([
    page.waitForEvent("download"), page.locator("#export").click()]);
  const parts = [];
  for await (const part of await download.createReadStream()) parts.push(part);
  return Buffer.concat(parts);
}

// What the page's database holds, as text, by name; first replaces the record, if `bytes` are given.
export const stored = (page, bytes) => page.evaluate(async (replacement) => {
  const done = (request) => new Promise((resolve, reject) => {
    request.onsuccess = () => resolve(request.result);
    request.onerror = () => reject(request.error);
  });
  const database = await done(indexedDB.open("velto", 1));
  const files = database.transaction("files", "readwrite").objectStore("files");
  if (replacement !== null)
    await done(files.put({ bytes: new TextEncoder().encode(replacement), version: "other" },
      "profile.json"));
  const names = await done(files.getAllKeys());
  const entries = await done(files.getAll());
  database.close();
  return Object.fromEntries(names.map((name, i) =>
    [name, new TextDecoder().decode(entries[i].bytes)]));
}, bytes ?? null);

export const storedAnswers = (page, count) => checkUntil(async () => {
  const text = (await stored(page))["profile.json"];
  return text?.startsWith('{"attempts"') && JSON.parse(text).attempts.length === count;
}, `${count} answers are stored`);
