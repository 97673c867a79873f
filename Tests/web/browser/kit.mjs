// The browser, and what the checks share.
import { spawn } from "node:child_process";
import { mkdirSync, mkdtempSync, readFileSync, rmSync, statSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { Host } from "./host.mjs";

export { Host };

const [engine, served, programs, pictures] = process.argv.slice(2);
export const folder = served;
export const hashes = join(programs, "velto_render_hashes");
export const answerByEar = join(programs, "velto_answer_by_ear");
export const heardTrials = join(programs, "velto_heard_trials");
export const drills = ["frequency", "level", "dynamics", "polarity"];

export const host = await new Host(folder).start();

const { open: openBrowser } = await import(engine === "chromium" ? "./chromium.mjs" : "./webdriver.mjs");
export const browser = await openBrowser(engine);
console.log(browser.title);

// Those that a check has left open when it failed keep a browser running.
const contexts = new Set();
const newContext = browser.newContext.bind(browser);
browser.newContext = async (options) => {
  const context = await newContext(options);
  const close = context.close.bind(context);
  contexts.add(context);
  context.close = async () => {
    if (contexts.delete(context)) await close();
  };
  return context;
};
if (process.env.VELTO_DESK === undefined) browser.lacks.sink = "run on a private desk";

// The name of the version of the page in a folder.
export const versionOf = (page) => readFileSync(join(page, "index.html"), "utf8")
  .match(/src="([0-9a-f]{16})\/main\.js"/)[1];

// Takes screenshots if a folder for them is given.
export async function photograph(page, name, options = {}) {
  if (pictures === undefined) return;
  mkdirSync(pictures, { recursive: true });
  await page.screenshot({ path: join(pictures, `${name}.png`), ...options });
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

// Records what the sink of the private desk plays: 32-bit floats, stereo, at 48000 Hz.
export class Recorder {
  #child;
  #ended;

  constructor(folder) {
    this.file = join(folder, "recording");
    this.#child = spawn("parec", ["-d", "velto_sink.monitor", "--raw", "--format=float32le",
      "--rate=48000", "--channels=2", "--latency-msec=20", this.file], { stdio: "inherit" });
    this.#ended = new Promise((resolve) => this.#child.on("exit", resolve));
  }
  static async start(folder) {
    const recorder = new Recorder(folder);
    await checkUntil(() => recorder.frames > 0, "the sink is recorded");
    return recorder;
  }
  // Those that have arrived.
  get frames() {
    return Math.floor((statSync(this.file, { throwIfNoEntry: false })?.size ?? 0) / 8);
  }
  async stop() {
    this.#child.kill();
    await this.#ended;
  }
}

let failures = 0;
let checks = 0;
const skipped = [];
export function expect(isTrue, what) {
  if (isTrue) return;
  ++failures;
  console.log(`  failed: ${what}`);
}

// `need` names what a browser may lack.
export async function checking(name, work, need = "") {
  if (!new RegExp(process.env.VELTO_CHECKS ?? "").test(name)) return;
  if (need in browser.lacks) {
    skipped.push(name);
    console.log(`skipped ${name}: ${browser.lacks[need]}`);
    return;
  }
  ++checks;
  const before = failures;
  try {
    await work();
  } catch (error) {
    expect(false, String(error));
  }
  for (const context of contexts) await context.close();
  console.log(`${failures === before ? "ok     " : "FAILED "} ${name}`);
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
  console.log(`${browser.title}: ${checks} checks, ${failures} failures, ${skipped.length} skipped`);
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
  const opening = indexedDB.open("velto", 1);
  // The page makes it.
  opening.onupgradeneeded = () => opening.transaction.abort();
  const database = await done(opening).catch(() => undefined);
  if (database === undefined) return {};
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
