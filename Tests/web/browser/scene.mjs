// The page beside the window: rectangles of all named elements, and pictures.
import { execFileSync } from "node:child_process";
import { mkdirSync, mkdtempSync, readFileSync, readdirSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { browser, checking, expect, newPage, pictures, programs, ready, stored, submit } from "./kit.mjs";

// The window draws the boxes of its controls as items of their own, where the page draws the control.
const drawnBy = (name) => ({ primaryButtonBox: "primaryButton", handle: "strip",
  curveFrame: "sparkline" })[name]
  ?? name.replace(/^(drill|slot|slotChoice|material|stat)Box(?=[0-9A-Z])/, "$1");

// Names that one of the two lacks, with the reason.
const desktopOnly = {
  bottomEdge: "paints the last pixels of a window at a fractional scale; browsers do that",
  rightEdge: "the same",
};
const pageOnly = {};

// By how many points a rectangle may differ in each of its four numbers, and per letter where the
// browser moves letters to whole pixels.
const nearly = 1;
const nearlyPerLetter = "fractions" in browser.lacks ? 0.5 : 0;

// The moment at which the session of Tests/kit/Stage.h starts: its trials follow from it.
const startLikeTheWindow = () => {
  Date.now = () => 1_700_000_000_000;
};

// Gives the window on the page this size; the page's own strip is below it.
async function resize(page, { width, height }) {
  let strip = 40;
  for (let i = 0; i < 3; ++i) {
    await page.setViewportSize({ width, height: height + strip });
    const found = await page.evaluate(async () => {
      await document.fonts.ready;
      for (let frame = 0; frame < 2; ++frame)
        await new Promise((resolve) => requestAnimationFrame(resolve));
      return document.querySelector("#foot").getBoundingClientRect().height;
    });
    if (found === strip) return;
    strip = found;
  }
}

const itemsOf = (page) => page.evaluate(() => Object.fromEntries(
  [...document.querySelectorAll("[data-item]")]
    .map((item) => [item.dataset.item, item.getBoundingClientRect()])
    .filter(([, { width, height }]) => width * height > 0)
    .map(([name, { x, y, width, height }]) => [name, [x, y, width, height]])));

// Submits the answer at a place, in the next trial if there is a verdict.
async function answerAt(page, place) {
  if (await page.locator("#verdict").isVisible()) {
    await page.keyboard.press("Enter");
    await ready(page);
  }
  await page.keyboard.press("2");
  await page.mouse.move(...place);
  await page.mouse.down();
  await page.mouse.up();
  await page.mouse.move(1, 1);
  await submit(page);
}

function compare(where, { items: wanted, letters }, found) {
  const expected = new Set();
  for (const [name, box] of Object.entries(wanted)) {
    if (name in desktopOnly) continue;
    expected.add(drawnBy(name));
    const other = found[drawnBy(name)];
    if (other === undefined) expect(false, `${where}: the page has ${name}`);
    else expect(box.every((value, i) =>
      Math.abs(value - other[i]) <= nearly + nearlyPerLetter * (letters[name] ?? 0)),
      `${where}: ${name} is ${other.map((value) => +value.toFixed(2))}, not ${box}`);
  }
  for (const name of Object.keys(found))
    expect(expected.has(name) || name in pageOnly, `${where}: the window has ${name}`);
}

// The largest differences that velto_compare_pictures may find, from 0 to 255; see there. Those in
// Chromium are 24.0, 9.4 and 2, those in Firefox 33.9, 5.5 and 2: blocks differ by letters a part of a
// pixel apart. A medium weight for a regular one makes 46 of a block, square corners make 40.
const limits = { ground: 2, ...("fractions" in browser.lacks ? {} : { block: 36, item: 12 }) };

function comparePictures(window, page) {
  const sheets = pictures === undefined ? [] : [join(pictures, "beside-the-window")];
  for (const sheet of sheets) mkdirSync(sheet, { recursive: true });
  const differences = Object.entries(JSON.parse(execFileSync(
    join(programs, "velto_compare_pictures"), [window, page, ...sheets], { encoding: "utf8" })));
  expect(differences.length > 0, "there are pictures");
  for (const [kind, limit] of Object.entries(limits)) {
    let most = 0;
    for (const [name, { [kind]: { difference, at } }] of differences) {
      most = Math.max(most, difference);
      expect(difference <= limit, `${name}: a difference of ${difference.toFixed(1)} at ${at}`);
    }
    console.log(`  ${kind}: at most ${most.toFixed(1)} of 255`);
  }
}

const folder = mkdtempSync(join(tmpdir(), "velto-scene-"));
const shots = join(folder, "page");
mkdirSync(shots);
try {
  execFileSync(join(programs, "velto_window_states"), [folder]);
  for (const { name, drill, appearance, record, steps } of
    JSON.parse(readFileSync(join(folder, "states.json"), "utf8"))) {
    await checking(`The window has the rectangles of the desktop's: ${name}`, async () => {
      const context = await browser.newContext({ viewport: { width: 1180, height: 430 } });
      if (record === "") await context.addInitScript(startLikeTheWindow);
      const page = await newPage(context, `?trials=standard&drill=${drill}&appearance=${appearance}`);
      if (record !== "") {
        await stored(page, record);
        await page.reload();
        await ready(page);
      }
      for (const { state, press, views } of steps) {
        if (press !== undefined) await answerAt(page, press);
        for (const view of views) {
          await resize(page, view);
          compare(`${state}, ${view.width}`, view, await itemsOf(page));
          await page.screenshot({ path: join(shots, view.picture) });
        }
      }
      await context.close();
    });
  }
  if (readdirSync(shots).length > 0)
    await checking("The window looks like the desktop's", () => comparePictures(folder, shots));
} finally {
  rmSync(folder, { recursive: true });
}
