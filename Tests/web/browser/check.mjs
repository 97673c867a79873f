// Opens the practice page in Chromium and checks what it computes, plays, shows and stores.
//
//   node check.mjs PAGE HASHES [PICTURES]
//
// PAGE is the page's folder, HASHES the native program that prints hashes of renders. PICTURES is a
// folder for screenshots.
import { execFileSync } from "node:child_process";
import { createReadStream, existsSync, mkdirSync, readFileSync } from "node:fs";
import { createServer } from "node:http";
import { extname, join, normalize } from "node:path";
import { chromium } from "playwright-core";

const [folder, hashes, pictures] = process.argv.slice(2);
if (hashes === undefined) {
  console.error("usage: node check.mjs PAGE HASHES [PICTURES]");
  process.exit(2);
}

const types = { ".html": "text/html", ".js": "text/javascript", ".css": "text/css",
  ".wasm": "application/wasm", ".svg": "image/svg+xml", ".woff": "font/woff" };
const requests = [];
const server = createServer((request, response) => {
  const path = normalize(new URL(request.url, "http://localhost").pathname);
  const file = join(folder, path === "/" ? "index.html" : path);
  requests.push(path);
  if (!existsSync(file)) return response.writeHead(404).end();
  response.writeHead(200, { "Content-Type": types[extname(file)] ?? "application/octet-stream" });
  return createReadStream(file).pipe(response);
});
await new Promise((resolve) => server.listen(0, "127.0.0.1", resolve));
const address = `http://127.0.0.1:${server.address().port}/`;

const browser = await chromium.launch({
  executablePath: "/usr/bin/chromium",
  // As in a browser with a window.
  args: ["--autoplay-policy=document-user-activation-required",
    ...(process.getuid() === 0 ? ["--no-sandbox"] : [])],
  ignoreDefaultArgs: ["--mute-audio"],
});
console.log(`Chromium ${browser.version()}`);

let failures = 0;
function expect(isTrue, what) {
  if (isTrue) return;
  ++failures;
  console.log(`  failed: ${what}`);
}

const ready = (page) => page.waitForFunction(
  () => document.querySelector("#status")?.textContent === "listen, then answer",
  null, { timeout: 60_000 });

// A context with a page in it, whose errors count as failures.
async function open(query = "", options = {}) {
  const context = await browser.newContext({ viewport: { width: 1180, height: 430 },
    colorScheme: "dark", ...options });
  return newPage(context, query);
}

async function newPage(context, query = "") {
  const page = await context.newPage();
  page.on("pageerror", (error) => expect(false, `the page runs without errors: ${error.message}`));
  page.on("console", (message) => {
    if (message.type() === "error") expect(false, `no message: ${message.text()}`);
  });
  await page.goto(address + query);
  await ready(page);
  return page;
}

async function checking(name, work) {
  const before = failures;
  try {
    await work();
  } catch (error) {
    expect(false, String(error));
  }
  console.log(`${failures === before ? "ok    " : "FAILED"} ${name}`);
}

// The bytes that the page exports.
async function exportFrom(page) {
  const [download] = await Promise.all([
    page.waitForEvent("download"), page.locator("#export").click()]);
  return readFileSync(await download.path());
}

const drills = ["frequency", "level", "dynamics", "polarity"];
const verdict = (page) => page.locator("#verdictWord").textContent();

await checking("All renders have the hashes of the native program", async () => {
  const native = new Map(execFileSync(hashes, { encoding: "utf8", maxBuffer: 1e8 })
    .trim().split("\n").map((line) => line.split(": ")));
  const page = await open();
  const found = await page.evaluate(async () => {
    const worker = new Worker("worker.js", { type: "module" });
    const names = ["frequency", "level", "dynamics", "polarity"];
    const materials = ["Pink noise", "Drum loop", "Synth pad"];
    const result = {};
    for (const fair of [false, true])
      for (let index = 0; index < 20; ++index)
        for (let material = 0; material < 3; ++material)
          for (let drill = 0; drill < 4; ++drill) {
            const title = `${names[drill]}, ${materials[material]}, seed ${index}, whole`
              + (fair ? ", audible noise" : "");
            const seed = BigInt.asUintN(64, BigInt(index) * 0x9E3779B97F4A7C15n);
            result[title] = await new Promise((resolve) => {
              worker.onmessage = ({ data }) => resolve(data.hash);
              worker.postMessage({ drill, material, seed, difficulty: 100 * index / 19, fair });
            });
          }
    return result;
  });
  const titles = Object.keys(found);
  expect(titles.length === 480, "480 renders");
  for (const title of titles)
    expect(found[title] === native.get(title), `${title}: ${found[title]}, not ${native.get(title)}`);
  await page.context().close();
});

await checking("The worklet plays half of each sample, sample by sample", async () => {
  const page = await open();
  const result = await page.evaluate(async () => {
    const frames = 48_000;
    const length = 9600;
    const delay = 960;
    const context = new OfflineAudioContext(2, frames, 48_000);
    await context.audioWorklet.addModule("worklet.js");
    const module = await (await fetch("mixer.wasm")).arrayBuffer();
    const node = new AudioWorkletNode(context, "velto-mixer",
      { numberOfInputs: 0, outputChannelCount: [2], processorOptions: { module } });
    node.connect(context.destination);
    const channels = Array.from({ length: 4 }, (_, i) => Float32Array.from({ length },
      (_, frame) => Math.fround(Math.sin(frame * (i + 1) / 50) / 3)));
    node.port.postMessage({ kind: "play", channels, chosen: 1, delayFrames: delay,
      throughSilence: false });
    await new Promise((resolve) => setTimeout(resolve, 500));
    const played = await context.startRendering();
    let wrong = 0;
    let before = 0;
    for (const channel of [0, 1]) {
      const data = played.getChannelData(channel);
      for (let frame = 0; frame < delay; ++frame) before += data[frame] === 0 ? 0 : 1;
      for (let frame = delay + 7200; frame < frames; ++frame)
        wrong += data[frame] === channels[2 + channel][(frame - delay) % length] / 2 ? 0 : 1;
    }
    return { wrong, before };
  });
  expect(result.before === 0, `silence before the start, not ${result.before} samples`);
  expect(result.wrong === 0, `${result.wrong} samples differ`);
  await page.context().close();
});

for (const drill of drills)
  await checking(`A trial of ${drill} by mouse`, async () => {
    const page = await open(`?drill=${drill}`);
    await page.locator("#slots button").nth(1).click();
    expect(await page.locator("#slots button").nth(1).getAttribute("aria-checked") === "true",
      "the second version is chosen");
    if (drill === "polarity") {
      expect(await page.locator("#primary").isDisabled(), "no answer, nothing to submit");
      await page.locator("#choices button").nth(2).click();
    } else {
      const before = await page.locator("#strip").getAttribute("aria-valuetext");
      const box = await page.locator("#strip").boundingBox();
      await page.mouse.move(box.x + 20, box.y + 30);
      await page.mouse.down();
      await page.mouse.move(box.x + box.width - 20, box.y + 30);
      await page.mouse.up();
      expect(await page.locator("#strip").getAttribute("aria-valuetext") !== before,
        "the answer has moved");
    }
    await page.locator("#primary").click();
    expect(["HIT", "MISS"].includes(await verdict(page)), "there is a verdict");
    expect(await page.locator("#today").textContent() === "1", "the answer counts");
    if (pictures !== undefined) {
      mkdirSync(pictures, { recursive: true });
      for (const colorScheme of ["dark", "light"]) {
        await page.emulateMedia({ colorScheme });
        await page.screenshot({ path: join(pictures, `${drill}-${colorScheme}.png`) });
      }
    }
    await page.waitForTimeout(600); // not a double click
    await page.locator("#primary").click();
    await ready(page);
    await page.context().close();
  });

for (const drill of drills)
  await checking(`A trial of ${drill} by keyboard`, async () => {
    const page = await open();
    const focusOn = async (selector) => {
      for (let i = 0; i < 20; ++i) {
        await page.keyboard.press("Tab");
        if (await page.evaluate((wanted) => document.activeElement.matches(wanted), selector)) return;
      }
      throw new Error(`Tab does not lead to ${selector}`);
    };
    await focusOn("#drills button");
    for (let i = 0; i < drills.indexOf(drill); ++i) await page.keyboard.press("ArrowRight");
    await ready(page);
    expect(await page.locator(`#drills button`).nth(drills.indexOf(drill))
      .evaluate((chip) => chip === document.activeElement), "the focus follows the choice");
    await focusOn(drill === "polarity" ? "#choices button" : "#strip");
    await page.keyboard.press("End");
    await page.keyboard.press("Space");
    expect(await page.locator("#slots button").nth(1).getAttribute("aria-checked") === "true",
      "space switches");
    await page.keyboard.press("1");
    await page.keyboard.press("Enter");
    expect(["HIT", "MISS"].includes(await verdict(page)), "there is a verdict");
    expect((await page.locator("#spoken").textContent()).startsWith(await verdict(page)),
      "the verdict is announced");
    await page.keyboard.press("Enter");
    await ready(page);
    expect(await page.locator("#verdict").isHidden(), "Return starts the next trial");
    await page.context().close();
  });

await checking("Sound waits for the first key, and the page says so", async () => {
  const page = await open();
  const isAsked = () => page.evaluate(
    () => document.querySelector("#notice").textContent.includes("to hear the trial"));
  expect(await isAsked(), "the page asks for a key");
  await page.keyboard.press("2");
  await page.waitForFunction(
    () => !document.querySelector("#notice").textContent.includes("to hear the trial"),
    null, { timeout: 20_000 });
  await page.context().close();
});

await checking("Answers of two tabs are in one record, also after a reload", async () => {
  const first = await open("?drill=level");
  const second = await newPage(first.context(), "?drill=dynamics");
  for (const page of [first, second, first]) {
    await page.bringToFront();
    await page.keyboard.press("Enter");
    await page.waitForFunction(() => !document.querySelector("#verdict").hidden);
    await page.keyboard.press("Enter");
    await ready(page);
  }
  await first.waitForTimeout(500);
  await first.reload();
  await ready(first);
  expect(await first.locator("#today").textContent() === "3", "three answers");
  const exported = JSON.parse(await exportFrom(first));
  expect(exported.attempts.length === 3, "three answers in the exported file");
  await first.context().close();
});

await checking("An imported record is merged; another file is refused", async () => {
  const giver = await open("?drill=level");
  await giver.keyboard.press("Enter");
  const file = await exportFrom(giver);
  await giver.context().close();
  const page = await open("?drill=level");
  await page.locator("#importFile").setInputFiles(
    { name: "notes.json", mimeType: "application/json", buffer: Buffer.from("{}x") });
  await page.waitForFunction(
    () => document.querySelector("#notice").textContent.includes("notes.json is no record"));
  await page.keyboard.press("Enter");
  await page.locator("#importFile").setInputFiles(
    { name: "profile.json", mimeType: "application/json", buffer: file });
  await page.waitForFunction(() => document.querySelector("#today")?.textContent === "2",
    null, { timeout: 20_000 });
  await page.context().close();
});

// What the page's database holds, as text, by name; first replaces the record, if `bytes` are given.
const stored = (page, bytes) => page.evaluate(async (replacement) => {
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

const storedAnswers = (page, count) => checkUntil(async () => {
  const text = (await stored(page))["profile.json"];
  return text?.startsWith('{"attempts"') && JSON.parse(text).attempts.length === count;
}, `${count} answers are stored`);

async function checkUntil(condition, what) {
  for (let i = 0; i < 100; ++i) {
    if (await condition()) return;
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
  expect(false, what);
}

const notice = (page) => page.locator("#notice").textContent();

await checking("An entry that is no record is put aside before a save replaces it", async () => {
  const page = await open("?drill=level");
  await stored(page, "of another version"); // before the page has saved anything
  await page.keyboard.press("Enter");
  await storedAnswers(page, 1);
  await stored(page, "of a third one"); // by another tab
  await page.keyboard.press("Enter");
  await ready(page);
  await page.keyboard.press("Enter");
  await storedAnswers(page, 2);
  await page.reload();
  await ready(page);
  expect(await page.locator("#today").textContent() === "2", "both answers are there");
  await stored(page, "of a fourth one");
  await page.reload(); // which finds no record
  await ready(page);
  await page.keyboard.press("Enter");
  await storedAnswers(page, 1);
  const aside = Object.entries(await stored(page)).filter(([name]) => name.includes(".aside-"))
    .map(([, text]) => text).sort();
  expect(String(aside) === "of a fourth one,of a third one,of another version", `aside: ${aside}`);
  await page.context().close();
});

await checking("A failed save is told, loses nothing, and does not reload the page later", async () => {
  const giver = await open("?drill=level");
  await giver.keyboard.press("Enter");
  const file = await exportFrom(giver);
  await giver.context().close();
  const page = await open("?drill=level");
  await page.keyboard.press("Enter");
  await storedAnswers(page, 1);
  const before = await stored(page);
  await page.evaluate(() => {
    const { put } = IDBObjectStore.prototype;
    window.notReloaded = true;
    IDBObjectStore.prototype.put = function full() {
      IDBObjectStore.prototype.put = put;
      throw new DOMException("full", "QuotaExceededError");
    };
  });
  await page.locator("#importFile").setInputFiles(
    { name: "profile.json", mimeType: "application/json", buffer: file });
  await checkUntil(async () => (await notice(page)).includes("The record is not stored"),
    "the page says so");
  expect(JSON.stringify(await stored(page)) === JSON.stringify(before), "the old record stays");
  await page.keyboard.press("Enter");
  await ready(page);
  await page.keyboard.press("Enter");
  await storedAnswers(page, 3);
  expect(!(await notice(page)).includes("not stored"), "it is stored again");
  expect(await page.evaluate(() => window.notReloaded === true), "the page has not reloaded");
  await page.context().close();
});

await checking("A page without render.wasm says that it cannot render", async () => {
  const page = await (await browser.newContext()).newPage();
  await page.route("**/render.wasm", (route) => route.fulfill({ status: 404 }));
  await page.goto(address);
  await checkUntil(async () => /Trials cannot be rendered.*render.wasm: 404/.test(await notice(page)),
    "the notice");
  await page.context().close();
});

await checking("Nothing is wider than the window, down to 360 points", async () => {
  for (const width of [360, 500, 701, 1000, 1001, 1600]) {
    const page = await open("", { viewport: { width, height: 740 } });
    const wide = await page.evaluate(() => document.documentElement.scrollWidth);
    expect(wide <= width, `${wide} points at ${width}`);
    if (width === 360) {
      const small = await page.evaluate(() => [...document.querySelectorAll("#window button")]
        .filter((button) => button.getBoundingClientRect().height < 44).map((button) => button.id
          || button.className));
      expect(small.length === 0, `targets are 44 points high, but not ${small}`);
      if (pictures !== undefined)
        await page.screenshot({ path: join(pictures, "phone.png"), fullPage: true });
    }
    await page.context().close();
  }
});

await checking("The window has the desktop's rectangles at 1180 points", async () => {
  const page = await open();
  const boxes = await page.evaluate(() => Object.fromEntries(
    [...document.querySelectorAll("[data-item]")].map((item) => {
      const { x, y, width, height } = item.getBoundingClientRect();
      return [item.dataset.item, [x, y, width, height]];
    })));
  // Those that Tests/ui/SceneTests.cpp expects of the window.
  const wanted = { card: [20, 76, 779, 274], strip: [40, 134, 739, 76],
    slot0: [40, 240, 52, 36], slot1: [100, 240, 52, 36], difficultyTrack: [657, 103, 90, 6],
    difficultyBar: [657, 103, 18, 6], primaryButton: [694, 240, 85, 36],
    sparkline: [840, 200, 320, 64] };
  for (const [name, box] of Object.entries(wanted))
    expect(box.every((value, i) => Math.abs(value - boxes[name][i]) <= 1),
      `${name} is ${boxes[name]}, not ${box}`);
  await page.context().close();
});

await checking("Opened as a file, the page says that it cannot run", async () => {
  const page = await (await browser.newContext()).newPage();
  await page.goto(`file://${normalize(join(process.cwd(), folder, "index.html"))}`);
  await page.waitForTimeout(1500);
  expect(await page.locator("#plain").isVisible(), "the sentence");
  expect(await page.locator("#window").isHidden(), "no window");
  await page.context().close();
});

await checking("The page asks its own host only, for files that exist", async () => {
  for (const path of new Set(requests))
    expect(existsSync(join(folder, path)), `${path} exists`);
});

await browser.close();
server.close();
console.log(failures === 0 ? "All checks passed." : `${failures} failures`);
process.exitCode = failures === 0 ? 0 : 1;
