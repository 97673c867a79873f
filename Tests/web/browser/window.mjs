// Where the elements are, and what the page says where it cannot run.
import { existsSync } from "node:fs";
import { join, normalize } from "node:path";
import { browser, checkUntil, checking, expect, folder, Host, host, notice, open, photograph, versionOf }
  from "./kit.mjs";

await checking("A page without render.wasm says that it cannot render", async () => {
  const lacking = await new Host(folder).start();
  lacking.lacks = `/${versionOf(folder)}/render.wasm`;
  const page = await (await browser.newContext()).newPage();
  await page.goto(lacking.address);
  await checkUntil(async () => /Trials cannot be rendered.*render.wasm: 404/.test(await notice(page)),
    "the notice");
  await page.context().close();
  await lacking.stop();
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
      await photograph(page, "phone", { fullPage: true });
    }
    await page.context().close();
  }
});

// As the window has them; those at 1180 points are in Tests/ui/SceneTests.cpp, too.
const rectangles = {
  1001: { card: [20, 85, 600, 292], strip: [40, 161, 560, 76], slot0: [40, 267, 52, 36],
    slot1: [100, 267, 52, 36], difficultyTrack: [478, 121, 90, 6], difficultyBar: [478, 121, 18, 6],
    material0: [329, 271, 54, 28], primaryButton: [515, 267, 85, 36], drill0: [272, 31, 97, 27],
    sparkline: [661, 200, 320, 64] },
  1180: { card: [20, 76, 779, 274], strip: [40, 134, 739, 76], slot0: [40, 240, 52, 36],
    slot1: [100, 240, 52, 36], difficultyTrack: [657, 103, 90, 6], difficultyBar: [657, 103, 18, 6],
    primaryButton: [694, 240, 85, 36], sparkline: [840, 200, 320, 64] },
  1600: { card: [20, 76, 1199, 274], strip: [40, 134, 1159, 76], slot0: [40, 240, 52, 36],
    slot1: [100, 240, 52, 36], difficultyTrack: [1077, 103, 90, 6],
    difficultyBar: [1077, 103, 18, 6], material0: [928, 244, 54, 28],
    primaryButton: [1114, 240, 85, 36], drill0: [871, 26, 97, 27], sparkline: [1260, 200, 320, 64] },
};
for (const [width, wanted] of Object.entries(rectangles))
  await checking(`The window has the desktop's rectangles at ${width} points`, async () => {
    const page = await open("?drill=level", { viewport: { width: Number(width), height: 430 } });
    await page.evaluate(async () => {
      await document.fonts.ready;
      await new Promise((resolve) => setTimeout(resolve, 100)); // the page draws anew
    });
    const boxes = await page.evaluate(() => Object.fromEntries(
      [...document.querySelectorAll("[data-item]")].map((item) => {
        const { x, y, width: wide, height } = item.getBoundingClientRect();
        return [item.dataset.item, [x, y, wide, height]];
      })));
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
  for (const path of new Set(host.requests))
    expect(existsSync(join(folder, path)), `${path} exists`);
});
