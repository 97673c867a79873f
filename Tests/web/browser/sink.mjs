// What reaches the sound server. Run on a private desk.
import { execFileSync, spawnSync } from "node:child_process";
import { answerByEar, browser, checking, drills, expect, heardTrials, Host,
  inScratch, newPage, open, ready, Recorder, stored, submit, verdict } from "./kit.mjs";

// Tells the host which trial the page renders.
const tellJob = () => {
  const { postMessage } = Worker.prototype;
  Worker.prototype.postMessage = function tellAndPost(job) {
    const { drill, material, seed, difficulty, fair } = job;
    void fetch(`/told/job?with=${[drill, material, seed, difficulty, fair ? "fair" : "standard"]}`,
      { method: "POST" });
    postMessage.call(this, job);
  };
};

for (const trials of ["fair", "standard"])
  for (const drill of drills)
    await checking(`Two ${trials} trials of ${drill} reach the sink, sample by sample`, () =>
      inScratch(async (scratch) => {
        const jobs = [];
        Host.told.set("job", (text) => jobs.push(text));
        const context = await browser.newContext();
        await context.addInitScript(tellJob);
        const page = await newPage(context, `?drill=${drill}&trials=${trials}`);
        const recorder = await Recorder.start(scratch);
        const chosen = drill === "polarity" ? [0, 1, 2, 0] : [0, 1, 0];
        for (const slot of chosen) {
          await page.keyboard.press(String(slot + 1));
          await page.waitForTimeout(1500);
        }
await page.keyboard.press("n");
        await ready(page);
        await page.waitForTimeout(1500);
        await recorder.stop();
        await context.close();
        expect(jobs.length === 2, `two renders, not ${jobs.length}`);
        try {
          execFileSync(heardTrials, [recorder.file, `${jobs[0]}:${chosen}`, `${jobs[1]}:0`],
            { encoding: "utf8" });
        } catch (error) {
          expect(false, error.stdout ?? String(error));
        }
      }), "sink");

// Milliseconds from a key until one slot is heard alone: the latencies of page and sink, a switch of
// 150 ms, and 200 ms in which the listener's high-pass filter settles.
const settling = 800;
// Milliseconds for which each slot is heard: a spectrum, a part, a whole loop, and places that two
// of three slots share.
const listening = { frequency: 3600, level: 3600, dynamics: 3400, polarity: 1800 };
// The largest errors of an answer by ear: of the measured and of the nearest answer on the grid.
const mostError = { frequency: 0, level: 0.05, dynamics: 0.75, polarity: 0 };

// Chooses the slots one after the other, or stays with the first one, and returns what
// velto_answer_by_ear says.
async function answerOf(page, drill, stays = false) {
  let said;
  await inScratch(async (scratch) => {
    const recorder = await Recorder.start(scratch);
    const parts = [];
    for (const slot of drill === "polarity" ? [0, 1, 2, 0] : [0, 1]) {
      if (!stays || slot === 0) await page.keyboard.press(String(slot + 1));
      await page.waitForTimeout(settling);
      const begin = recorder.frames;
      await page.waitForTimeout(listening[drill]);
      parts.push([slot, begin, recorder.frames].join(":"));
    }
    await recorder.stop();
    said = spawnSync(answerByEar, [drill, recorder.file, ...parts], { encoding: "utf8" });
  });
  return said;
}

for (const trials of ["fair", "standard"])
  for (const drill of drills)
    await checking(`A robot that hears the sink answers ${trials} trials of ${drill}`, async () => {
      const page = await open(`?drill=${drill}&trials=${trials}`);
      for (let trial = 1; trial <= 2; ++trial) {
        if (trial > 1) {
          await page.keyboard.press("n");
          await ready(page);
        }
        const { status, stdout, stderr } = await answerOf(page, drill);
        if (status !== 0) throw new Error(stderr);
        const answer = Number(stdout);
        if (drill === "polarity") {
          await page.locator("#choices button").nth(answer).click();
        } else {
          const { x, y, width } = await page.locator("#strip").boundingBox();
          await page.mouse.move(x + Math.min(Math.round(answer * width), width - 1), y + 30);
          await page.mouse.down();
          await page.mouse.up();
        }
        await submit(page);
        expect(await verdict(page) === "HIT", `${await verdict(page)} for ${answer}`);
        const { attempts } = JSON.parse((await stored(page))["profile.json"]);
        const { drill: answered, error, correct } = attempts.at(-1);
        expect(attempts.length === trial && answered === drill && correct
          && error <= mostError[drill] + 1e-9, `attempt ${trial}: ${answered}, ${error} off`);
      }
      await page.context().close();
    }, "sink");

await checking("A robot that stays with one version hears no difference", async () => {
  for (const drill of drills) {
    const page = await open(`?drill=${drill}`);
    const { status, stdout } = await answerOf(page, drill, true);
    expect(status !== 0 || Number(stdout) < 0.01, `${drill}: ${stdout}`);
    await page.context().close();
  }
}, "sink");
