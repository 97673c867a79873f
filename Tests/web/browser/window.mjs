// Where the elements are, and what the page says where it cannot run.
import { existsSync } from "node:fs";
import { join, normalize } from "node:path";
import { browser, checkUntil, checking, expect, folder, host, notice, open, pictures }
  from "./kit.mjs";

await checking("A page without render.wasm says that it cannot render", async () => {
  const page = await (await browser.newContext()).newPage();
  await page.route("**/render.wasm", (route) => route.fulfill({ status: 404 }));
  await page.goto(host.address);
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
  for (const path of new Set(host.requests))
    expect(existsSync(join(folder, path)), `${path} exists`);
});
