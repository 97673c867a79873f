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
