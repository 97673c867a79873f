// The page without its host, and new versions of it.
import { createHash } from "node:crypto";
import { cpSync, existsSync, readFileSync, readdirSync, renameSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { answer, browser, checkUntil, checking, expect, folder, Host, inScratch, newPage,
  notice, ready, today, versionOf } from "./kit.mjs";

// A copy of the page as another build would make it, whose files differ.
function rebuild(copy, version) {
  cpSync(folder, copy, { recursive: true });
  const former = versionOf(copy);
  renameSync(join(copy, former), join(copy, version));
  writeFileSync(join(copy, version, "style.css"),
    `:root { --build: ${version}; }\n${readFileSync(join(copy, version, "style.css"), "utf8")}`);
  const replaced = (file, change) =>
    writeFileSync(join(copy, file), change(readFileSync(join(copy, file), "utf8")));
  replaced("index.html", (text) => text.replaceAll(former, version));
  replaced("offline.js", (text) => text.replaceAll(former, version)
    .replace(/"([^"\n]+)": "[0-9a-f]{64}"/g, (_all, file) => `"${file}": "${
      createHash("sha256").update(readFileSync(join(copy, file))).digest("hex")}"`));
}

// The versions of all that the page has loaded.
const loaded = (page) => page.evaluate(() => [...new Set(
  [...performance.getEntriesByType("resource").map(({ name }) => name)]
    .map((name) => /\/([0-9a-f]{16})\//.exec(name)?.[1])
    .filter((version) => version !== undefined))].join());
const kept = (page) => page.evaluate(async () =>
  (await caches.keys()).map((name) => name.split(" ").at(-1)).sort().join());
// The caches of these versions are there, and the newest worker is at work: from its activation on,
// all that is asked for waits for it. WebKitGTK leaves pages with the state of that moment.
const isKept = (page, ...versions) => checkUntil(async () => await kept(page) === versions.sort().join()
  && page.evaluate(async () => {
    const found = await navigator.serviceWorker.getRegistration();
    return found?.installing === null && found.waiting === null
      && ["activating", "activated"].includes(found.active?.state);
  }), `${versions} are kept`);

await checking("Without a network the page opens, plays and stores as with one", async () => {
  const host = await new Host(folder).start();
  const context = await browser.newContext();
  const page = await newPage(context, "?drill=level", host.address);
  await answer(page);
  await isKept(page, versionOf(folder));
  await host.stop();
  host.requests.length = 0;
  await page.reload();
  await ready(page);
  expect(await today(page) === "1", "the record is there");
  await answer(page);
  await page.keyboard.press("2");
  await checkUntil(async () => !/no sound|to hear/.test(await notice(page)), "there is sound");
  const other = await newPage(context, "index.html?drill=polarity", host.address);
  expect(await today(other) === "2", "both answers are there");
  expect(await loaded(other) === versionOf(folder), "the files come from the version's folder");
  // Each file that can be asked for by name.
  const missing = await other.evaluate(async (files) => {
    const bad = [];
    for (const file of files) if (!(await fetch(file)).ok) bad.push(file);
    return bad;
  }, readdirSync(folder, { recursive: true, withFileTypes: false })
    .filter((file) => /\.[a-z0-9]+$/.test(file) && file !== "offline.js"));
  expect(missing.length === 0, `${missing} are kept`);
  expect(host.requests.length === 0, "the host was not asked");
  await context.close();
});

await checking("A new version waits for the next start, and is never mixed with the old one", () =>
  inScratch(async (scratch) => {
    const first = versionOf(folder);
    const [second, third] = ["2".repeat(16), "3".repeat(16)];
    rebuild(join(scratch, second), second);
    rebuild(join(scratch, third), third);
    const host = await new Host(folder).start();
    const context = await browser.newContext();
    const page = await newPage(context, "?drill=level", host.address);
    await isKept(page, first);

    host.folder = join(scratch, second);
    const running = await newPage(context, "?drill=level", host.address);
    expect(await loaded(running) === first, "a start while the host has changed gets the old one");
    await isKept(running, first, second);
    await answer(running);
    const isThere = await running.evaluate(async () => {
      const script = document.querySelector("script[src]").src;
      return (await fetch(new URL("worker.js", script))).ok;
    });
    expect(isThere, "the running page still gets its files, which its host has no more");
    expect(await loaded(running) === first, "the running page keeps its version");
    expect(await running.evaluate(() => getComputedStyle(document.documentElement)
      .getPropertyValue("--build")) === "", "and its look");
    await running.reload();
    await ready(running);
    expect(await loaded(running) === second, "the next start has the new one");
    expect(await running.evaluate(() => getComputedStyle(document.documentElement)
      .getPropertyValue("--build")).then((build) => build.trim() === second), "all of it");
    await answer(running);

    // A host that has half of a third version: its worker, but a file of before.
    const half = join(scratch, "half");
    cpSync(join(scratch, third), half, { recursive: true });
    cpSync(join(scratch, second, second, "main.js"), join(half, third, "view.js"));
    host.folder = half;
    await running.reload();
    await ready(running);
    await checkUntil(() => host.requests.includes(`/${third}/view.js`), "the third one is tried");
    await running.waitForTimeout(500);
    await running.reload();
    await ready(running);
    expect(await loaded(running) === second, "half a version is not used");
    await checkUntil(async () => !(await kept(running)).includes(third), "nor kept");

    host.folder = join(scratch, third);
    await running.reload();
    await ready(running);
    await isKept(running, first, second, third);
    await page.close();
    await running.close();
    const last = await newPage(context, "?drill=level", host.address);
    expect(await loaded(last) === third, "the whole third one is used");
    await isKept(last, third);
    expect(await today(last) === "2", "the record has both answers");
    await context.close();
    await host.stop();
  }));

await checking("The page can be installed", async () => {
  const host = await new Host(folder).start();
  const context = await browser.newContext({ colorScheme: "dark" });
  const page = await newPage(context, "", host.address);
  const session = await context.newCDPSession(page);
  const { errors, data } = await session.send("Page.getAppManifest");
  expect(errors.length === 0, `the manifest has no errors: ${JSON.stringify(errors)}`);
  const manifest = JSON.parse(data);
  for (const { src } of manifest.icons) expect(existsSync(join(folder, src)), `${src} exists`);
  const background = await page.evaluate(() => {
    const colour = getComputedStyle(document.documentElement).getPropertyValue("--bg");
    const hex = (part) => Number(part).toString(16).padStart(2, "0");
    return `#${colour.match(/\d+/g).map(hex).join("")}`;
  });
  expect(manifest.background_color === background && manifest.theme_color === background,
    `the colours are the window's, ${background}`);
  await isKept(page, versionOf(folder));
  const { installabilityErrors } = await session.send("Page.getInstallabilityErrors");
  const real = installabilityErrors.filter(({ errorId }) => errorId !== "in-incognito");
  expect(real.length === 0, `it is installable: ${JSON.stringify(real)}`);
  await context.close();
  await host.stop();
}, "manifest");
