// Measures the practice page in a browser, and prints a table.
//
//   node measure.mjs BROWSER PAGE PROGRAMS
//
// BROWSER and PAGE are those of Tests/web/browser/check.mjs, PROGRAMS the folder of
// velto_render_times. Run on a private desk, on an idle machine.
import { execFileSync, spawn } from "node:child_process";
import { cpSync, readFileSync, readdirSync, statSync } from "node:fs";
import { join } from "node:path";
import { brotliCompressSync, gzipSync } from "node:zlib";
import { browser, drills, end, folder, host, inScratch, newPage, ready, versionOf, Host }
  from "../../Tests/web/browser/kit.mjs";

const [engine, , programs] = process.argv.slice(2);
const rows = [];
const add = (what, ...values) => {
  rows.push([what, ...values]);
  console.log(`${what}: ${values.join(", ")}`);
};
const median = (values) => values.toSorted((a, b) => a - b)[Math.floor(values.length / 2)];
const milliseconds = (value) => `${value.toFixed(1)} ms`;
const sleep = (time) => new Promise((resolve) => setTimeout(resolve, time));

// --- Loading ---

// Notes when the window is shown, and when a frame with the first trial has been drawn.
const noteFrames = () => {
  const look = () => {
    const window_ = document.getElementById("window");
    if (window_ !== null && !window_.hidden) window.shown ??= performance.now();
    if (window.shown !== undefined
      && document.getElementById("status")?.textContent === "listen, then answer")
      requestAnimationFrame(() => { window.answerable = performance.now(); });
    else requestAnimationFrame(look);
  };
  requestAnimationFrame(look);
};
async function visits(delay) {
  const times = { first: [], next: [] };
  for (let i = 0; i < 9; ++i) {
    const context = await browser.newContext();
    await context.addInitScript(noteFrames);
    host.delay = delay;
    const page = await newPage(context);
    const take = async (kind) => {
      await page.waitForFunction(() => window.answerable !== undefined);
      times[kind].push(await page.evaluate(() => [window.shown, window.answerable]));
    };
    await take("first");
    host.delay = 0;
    await page.waitForFunction(async () =>
      (await navigator.serviceWorker.getRegistration())?.active?.state === "activated");
    await page.reload();
    await ready(page);
    await take("next");
    await context.close();
  }
  return Object.fromEntries(Object.entries(times).map(([kind, all]) => [kind,
    [`window ${milliseconds(median(all.map(([shown]) => shown)))}`,
      `trial ready ${milliseconds(median(all.map(([, answerable]) => answerable)))}`]]));
}
const near = await visits(0);
add("first visit, host on this machine", ...near.first);
add("first visit, each request answered after 50 ms", ...(await visits(50)).first);
add("next visit, from the browser's own copy", ...near.next);

const files = readdirSync(folder, { recursive: true }).filter((file) =>
  statSync(join(folder, file)).isFile() && !file.startsWith("licences"))
  .map((file) => readFileSync(join(folder, file)));
const sum = (size) => `${Math.round(files.reduce((all, file) => all + size(file), 0) / 1000)} kB`;
add("bytes over the wire", `as files ${sum((file) => file.length)}`,
  `gzip ${sum((file) => gzipSync(file, { level: 9 }).length)}`,
  `brotli ${sum((file) => brotliCompressSync(file).length)}`);

// --- Renders and the mixer, in a worker ---

await inScratch(async (scratch) => {
  cpSync(folder, scratch, { recursive: true });
  cpSync(new URL("worker.js", import.meta.url), join(scratch, versionOf(folder), "bench.js"));
  const own = await new Host(scratch).start();
  const page = await newPage(await browser.newContext(), "", own.address);
  const inWorker = (order) => page.evaluate((given) => new Promise((resolve, reject) => {
    const worker = new Worker(new URL("bench.js", document.querySelector("script[src]").src),
      { type: "module" });
    worker.onmessage = ({ data }) => {
      worker.terminate();
      resolve(data);
    };
    worker.onerror = ({ message }) => reject(new Error(message));
    const jobs = given.jobs?.map((job) => ({ ...job, seed: BigInt(job.seed) }));
    worker.postMessage({ ...given, jobs });
  }), order);
  const native = [];
  const found = [];
  let bytes = 0;
  for (let turn = 0; turn < 5; ++turn) {
    const jobs = execFileSync(join(programs, "velto_render_times"), ["2", "20"], { encoding: "utf8" })
      .trim().split("\n").map((line) => line.split(" ").map(Number))
      .map(([drill, material, seed, difficulty, fair, time]) => {
        native.push([drill, fair, time]);
        return { drill, material, seed: String(seed), difficulty, fair };
      });
    const measured = await inWorker({ jobs, batches: 2, renders: 20 });
    jobs.forEach(({ drill, fair }, i) => found.push([drill, fair, measured.least[i]]));
    bytes = measured.bytes;
  }
  const least = (times, drill, fair) =>
    Math.min(...times.filter(([d, f]) => d === drill && f === fair).map(([, , time]) => time));
  for (const fair of [0, 1])
    drills.forEach((name, drill) => {
      const [here, there] = [least(found, drill, fair), least(native, drill, fair)];
      add(`render: ${name}${fair ? ", audible noise" : ""}`, `${here.toFixed(2)} ms`,
        `native ${there.toFixed(2)} ms`, `${(here / there).toFixed(2)} times`);
    });
  const mixed = await inWorker({ blocks: 100_000 });
  add("mixer, 1e5 blocks of 128 frames in a worker", `mean ${(1000 * mixed.mean).toFixed(2)} us`,
    `longest ${milliseconds(mixed.longest)}`,
    `${(mixed.mean / (128 / 48) * 100).toFixed(2)} % of the time that they play`);
  add("memory of the modules", `renders ${(bytes / 1e6).toFixed(1)} MB`,
    `mixer ${(mixed.bytes / 1e6).toFixed(1)} MB`);
  await page.context().close();
  await own.stop();
});

// --- Memory ---

// Of the browser's processes, each shared page counted in parts.
function megabytes() {
  const parents = new Map();
  for (const pid of readdirSync("/proc").filter((name) => /^\d+$/.test(name)).map(Number))
    try {
      parents.set(pid, Number(/\) \S (\d+)/.exec(readFileSync(`/proc/${pid}/stat`, "utf8"))[1]));
    } catch {
      // It has ended.
    }
  const isOurs = (pid) => pid === process.pid || parents.has(pid) && isOurs(parents.get(pid));
  let sum = 0;
  for (const pid of parents.keys())
    if (pid !== process.pid && isOurs(pid))
      sum += Number(/^Pss:\s+(\d+)/m.exec(readFileSync(`/proc/${pid}/smaps_rollup`, "utf8"))?.[1] ?? 0);
  return sum * 1024 / 1e6;
}
{
  const context = await browser.newContext();
  const page = await context.newPage();
  await page.goto("about:blank");
  await sleep(3000);
  const before = megabytes();
  await page.goto(`${host.address}?drill=level`);
  await ready(page);
  await page.keyboard.press("1");
  await sleep(5000);
  add("memory of the browser, with an empty page", `${before.toFixed(0)} MB`,
    `playing ${megabytes().toFixed(0)} MB`);
  await context.close();
}

// --- Sound ---

const loopFrames = 153_600;

// What the sink plays, and when it arrived.
class Ear {
  #child = spawn("parec", ["-d", "velto_sink.monitor", "--raw", "--format=float32le", "--rate=48000",
    "--channels=2", "--latency-msec=5"]);
  #parts = [];
  #size = 0;
  arrivals = []; // [frames so far, time]

  constructor() {
    this.#child.stdout.on("data", (data) => {
      this.#parts.push(data);
      this.#size += data.length;
      this.arrivals.push([Math.floor(this.#size / 8), performance.timeOrigin + performance.now()]);
    });
  }
  get frames() {
    return Math.floor(this.#size / 8);
  }
  // A number of 64 bits for each frame: its two samples.
  async stop() {
    this.#child.kill();
    await new Promise((resolve) => this.#child.on("close", resolve));
    const all = Buffer.concat(this.#parts);
    return new BigUint64Array(all.buffer.slice(all.byteOffset, all.byteOffset + 8 * this.frames));
  }
}

// Sets the latency that the page asks for, and notes keys.
const withHint = (hint) => `
  const hint = ${JSON.stringify(hint)};
  window.AudioContext = class extends AudioContext {
    constructor(options) {
      super(options === undefined ? undefined : { ...options, ...hint === null ? {} : { latencyHint: hint } });
      if (options !== undefined) window.playing = this;
    }
  };
  addEventListener("keydown", () => { window.pressed = performance.timeOrigin + performance.now(); }, true);`;

async function listening(hint, work) {
  const context = await browser.newContext();
  await context.addInitScript(withHint(hint));
  const page = await newPage(context, "?drill=level");
  await page.keyboard.press("1");
  const ear = new Ear();
  await sleep(4500);
  await work(page, ear);
  await context.close();
}

for (const hint of engine === "chromium" ? [null, "interactive", "balanced", 0.05] : [null]) {
  const name = hint ?? "as the page asks for it";
  await listening(hint, async (page, ear) => {
    const presses = [];
    for (let i = 0; i < 9; ++i) {
      const from = ear.frames;
      await page.keyboard.press(String(2 - i % 2));
      const time = await page.evaluate(() => window.pressed);
      await sleep(4500 + 17 * i);
      presses.push({ from, time });
    }
    const latency = await page.evaluate(() =>
      window.playing.baseLatency + (window.playing.outputLatency ?? 0));
    const heard = await ear.stop();
    const delays = presses.map(({ from, time }) => {
      let frame = from;
      while (frame < heard.length && heard[frame] === heard[frame - loopFrames]) ++frame;
      return ear.arrivals.find(([frames]) => frames > frame)[1] - time;
    });
    add(`key to sound, latency ${name}`, `median ${milliseconds(median(delays))}`,
      `longest ${milliseconds(Math.max(...delays))}`, `stated ${milliseconds(1000 * latency)}`);
  });
  await listening(hint, async (page, ear) => {
    const from = ear.frames;
    await page.evaluate(() => {
      setTimeout(() => {
        const until = performance.now() + 60_000;
        while (performance.now() < until);
      });
    });
    await sleep(60_000);
    const heard = await ear.stop();
    let dropouts = 0;
    let wrong = -Infinity;
    for (let frame = from; frame < heard.length; ++frame) {
      if (heard[frame] === heard[frame - loopFrames]) continue;
      // What follows is out of place, until the loop comes round again.
      if (frame - wrong > loopFrames) ++dropouts;
      wrong = frame;
    }
    add(`a minute with the page's thread blocked, latency ${name}`,
      `${dropouts} dropouts in ${((heard.length - from) / 48000).toFixed(1)} s`);
  });
}

console.log(`\n| ${browser.title} | | | |\n| --- | --- | --- | --- |`);
for (const [what, ...values] of rows)
  console.log(`| ${what} | ${[0, 1, 2].map((i) => values[i] ?? "").join(" | ")} |`);
await end();
