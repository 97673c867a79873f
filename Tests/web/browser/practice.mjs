// What the page computes and plays, and a trial of each drill.
import { execFileSync } from "node:child_process";
import { browser, checkUntil, checking, drills, expect, hashes, host, judged, newPage, open, photograph,
  ready, submit, verdict } from "./kit.mjs";

await checking("All renders have the hashes of the native program", async () => {
  const native = new Map(execFileSync(hashes, { encoding: "utf8", maxBuffer: 1e8 })
    .trim().split("\n").map((line) => line.split(": ")));
  const page = await open();
  const found = await page.evaluate(async () => {
    const script = document.querySelector("script[src]").src;
    const worker = new Worker(new URL("worker.js", script), { type: "module" });
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
    const script = document.querySelector("script[src]").src;
    await context.audioWorklet.addModule(new URL("worklet.js", script));
    const module = await (await fetch(new URL("mixer.wasm", script))).arrayBuffer();
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
    await judged(page);
    expect(["HIT", "MISS"].includes(await verdict(page)), "there is a verdict");
    expect(await page.locator("#today").textContent() === "1", "the answer counts");
    await photograph(page, `${drill}-dark`);
    if (!("appearance" in browser.lacks)) {
      await page.emulateMedia({ colorScheme: "light" });
      await photograph(page, `${drill}-light`);
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
    await submit(page);
    expect(["HIT", "MISS"].includes(await verdict(page)), "there is a verdict");
    expect((await page.locator("#spoken").textContent()).startsWith(await verdict(page)),
      "the verdict is announced");
    await page.keyboard.press("Enter");
    await ready(page);
    expect(await page.locator("#verdict").isHidden(), "Return starts the next trial");
    await page.context().close();
  });

// What a driver evaluates counts as a gesture in Chromium, so the page tells by itself.
const tellNotice = () => {
  setInterval(() => {
    if (document.querySelector("#notice")?.textContent.includes("to hear the trial"))
      void window.asks();
  }, 20);
};

await checking("Sound waits for the first key, and the page says so", async () => {
  const context = await browser.newContext();
  const page = await context.newPage();
  let isAsked = false;
  await page.exposeFunction("asks", () => {
    isAsked = true;
  });
  await page.addInitScript(tellNotice);
  await page.goto(host.address);
  await checkUntil(() => isAsked, "the page asks for a key");
  await page.keyboard.press("2");
  await page.waitForFunction(
    () => !document.querySelector("#notice").textContent.includes("to hear the trial"),
    null, { timeout: 20_000 });
  await context.close();
});

await checking("A hidden page is silent, lets the audio thread rest, and resumes", async () => {
  const context = await browser.newContext();
  await context.addInitScript(() => {
    const { connect } = AudioNode.prototype;
    AudioNode.prototype.connect = function connectAndMeasure(...to) {
      if (this instanceof AudioWorkletNode) {
        window.analyser = this.context.createAnalyser();
        connect.call(this, window.analyser);
      }
      return connect.apply(this, to);
    };
    window.heard = () => {
      const data = new Float32Array(2048);
      window.analyser.getFloatTimeDomainData(data);
      return window.analyser.context.state === "running" && data.some((sample) => sample !== 0);
    };
    window.hide = (isHidden) => {
      Object.defineProperty(document, "hidden", { configurable: true, get: () => isHidden });
      document.dispatchEvent(new Event("visibilitychange"));
    };
  });
  const page = await newPage(context, "?drill=level");
  const heard = () => page.evaluate(() => window.analyser !== undefined && window.heard());
  const state = () => page.evaluate(() => window.analyser.context.state);
  await page.keyboard.press("2");
  await checkUntil(heard, "the trial plays");
  await page.evaluate(() => window.hide(true));
  await checkUntil(async () => !await heard(), "a hidden page is silent");
  await checkUntil(async () => await state() === "suspended", "the audio thread rests");
  await page.keyboard.press("n"); // does not wake it
  await ready(page);
  await page.waitForTimeout(500);
  expect(await state() === "suspended", "a new trial does not wake it");
  await page.evaluate(() => window.hide(false));
  await checkUntil(heard, "the page resumes");
  await page.evaluate(() => {
    window.hide(true);
    window.hide(false);
  });
  await page.waitForTimeout(500);
  expect(await heard(), "a short absence leaves it awake");
  await context.close();
});
