// The record: where the browser keeps it, and what becomes of it when that goes wrong.
import { randomUUID } from "node:crypto";
import { readdirSync, statSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { answer, browser, checkUntil, checking, expect, exportFrom, Host, host, inScratch, newPage,
  notice, open, ready, stored, storedAnswers, submit, today } from "./kit.mjs";

await checking("Answers of two tabs are in one record, also after a reload", async () => {
  const first = await open("?drill=level");
  const second = await newPage(first.context(), "?drill=dynamics");
  for (const page of [first, second, first]) {
    await page.bringToFront();
    await answer(page);
  }
  await first.reload();
  await ready(first);
  expect(await today(first) === "3", "three answers");
  const exported = JSON.parse(await exportFrom(first));
  expect(exported.attempts.length === 3, "three answers in the exported file");
  await first.context().close();
});

await checking("An imported record is merged; another file is refused", async () => {
  const giver = await open("?drill=level");
  await submit(giver);
  const file = await exportFrom(giver);
  await giver.context().close();
  const page = await open("?drill=level");
  await page.locator("#importFile").setInputFiles(
    { name: "notes.json", mimeType: "application/json", buffer: Buffer.from("{}x") });
  await page.waitForFunction(
    () => document.querySelector("#notice").textContent.includes("notes.json is no record"));
  await submit(page);
  await page.locator("#importFile").setInputFiles(
    { name: "profile.json", mimeType: "application/json", buffer: file });
  await page.waitForFunction(() => document.querySelector("#today")?.textContent === "2",
    null, { timeout: 20_000 });
  await page.context().close();
});

await checking("An entry that is no record is put aside before a save replaces it", async () => {
  const page = await open("?drill=level");
  await stored(page, "of another version"); // before the page has saved anything
  await submit(page);
  await storedAnswers(page, 1);
  await stored(page, "of a third one"); // by another tab
  await page.keyboard.press("Enter");
  await ready(page);
  await submit(page);
  await storedAnswers(page, 2);
  await page.reload();
  await ready(page);
  expect(await today(page) === "2", "both answers are there");
  await stored(page, "of a fourth one");
  await page.reload(); // which finds no record
  await ready(page);
  await submit(page);
  await storedAnswers(page, 1);
  const aside = Object.entries(await stored(page)).filter(([name]) => name.includes(".aside-"))
    .map(([, text]) => text).sort();
  expect(String(aside) === "of a fourth one,of a third one,of another version", `aside: ${aside}`);
  await page.context().close();
});

await checking("A failed save is told, loses nothing, and does not reload the page later", async () => {
  const giver = await open("?drill=level");
  await submit(giver);
  const file = await exportFrom(giver);
  await giver.context().close();
  const page = await open("?drill=level");
  await submit(page);
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
  await submit(page);
  await storedAnswers(page, 3);
  expect(!(await notice(page)).includes("not stored"), "it is stored again");
  expect(await page.evaluate(() => window.notReloaded === true), "the page has not reloaded");
  await page.context().close();
});

// Calls told() for each verdict that the page shows.
const tellVerdicts = () => {
  let shown = false;
  new MutationObserver(() => {
    const box = document.querySelector("#verdict");
    const shows = box !== null && !box.hidden;
    if (shows && !shown) window.told();
    shown = shows;
  }).observe(document, { attributes: true, childList: true, subtree: true });
};

// Without a driver, so that the browser is as its users have it: the page answers by itself.
await checking("A browser that is killed at the verdict has stored the answer", () =>
  inScratch(async (scratch) => {
    Host.prelude.push(`(${() => {
      const tell = (name, text) => void fetch(`/told/${name}?with=${text}`, { method: "POST" });
      let step = 0;
      new MutationObserver(() => {
        const text = (id) => document.getElementById(id)?.textContent;
        const isJudged = document.getElementById("verdict")?.hidden === false;
        if (step === 0 && text("status") === "listen, then answer" && !isJudged) {
          step = 1;
          tell("today", text("today"));
        } else if (step === 1 && isJudged) {
          step = 2;
          tell("verdict", text("verdictWord"));
        }
      }).observe(document, { attributes: true, childList: true, characterData: true, subtree: true });
      window.press = setInterval(() => {
        if (step === 1) dispatchEvent(new KeyboardEvent("keydown", { key: "Enter" }));
      }, 100);
    }})();`);
    const counts = [];
    let shown = 0;
    for (let i = 0; i < 10; ++i) {
      let end;
      const isTold = new Promise((resolve, reject) => {
        end = resolve;
        setTimeout(() => reject(new Error("no verdict within a minute")), 60_000).unref();
      });
      Host.told.set("today", (count) => counts.push(Number(count)));
      Host.told.set("verdict", () => {
        ++shown;
        end(own.kill());
      });
      const own = browser.start(scratch, `${host.address}?drill=level`);
      await isTold.finally(() => own.kill());
    }
    Host.prelude.length = 0;
    Host.told.clear();
    expect(counts.join() === "0,1,2,3,4,5,6,7,8,9", `answers at each start: ${counts}`);
    expect(shown === 10, `${shown} verdicts`);
  }));

await checking("A tab that is killed at the verdict has stored the answer", () =>
  inScratch(async (scratch) => {
    const own = await browser.launch(scratch);
    for (let shown = 0; shown < 10; ++shown) {
      const page = await own.context.newPage();
      let tell;
      const isTold = new Promise((resolve) => {
        tell = resolve;
      });
      await page.exposeFunction("told", tell);
      await page.addInitScript(tellVerdicts);
      await page.goto(`${host.address}?drill=level`);
      await ready(page);
      expect(await today(page) === String(shown), `${await today(page)} answers, not ${shown}`);
      void page.keyboard.press("Enter").catch(() => undefined);
      await isTold;
      const session = await own.context.newCDPSession(page);
      session.send("Page.crash").catch(() => undefined);
      await page.waitForEvent("crash");
      await page.close();
    }
    const page = await newPage(own.context);
    await storedAnswers(page, 10);
    await own.close();
  }), "crash");

await checking("A hundred reloads at random moments lose no answer whose verdict showed", async () => {
  const context = await browser.newContext();
  const page = await context.newPage();
  let shown = 0;
  await page.exposeFunction("told", () => ++shown);
  await page.addInitScript(tellVerdicts);
  // Answers as fast as the page takes it.
  await page.addInitScript(() => {
    setInterval(() => dispatchEvent(new KeyboardEvent("keydown", { key: "Enter" })), 3);
  });
  await page.goto(`${host.address}?drill=level`);
  // More where a slow machine answers less often.
  for (let i = 0; i < 100 || shown <= 100 && i < 1000; ++i) {
    await page.waitForFunction(() => !(document.querySelector("#window")?.hidden ?? true));
    await page.waitForTimeout(400 * Math.random());
    await page.reload({ waitUntil: "commit" });
  }
  await page.close();
  const reader = await newPage(context);
  const rows = JSON.parse(await exportFrom(reader)).attempts.length;
  expect(rows >= shown, `${shown} verdicts, ${rows} answers`);
  expect(shown > 100, `only ${shown} verdicts`);
  await context.close();
});

const notStored = (page) => checkUntil(
  async () => (await notice(page)).includes("The record is not stored"), "the page says so");

await checking("Practice goes on in a browser that may store nothing", () =>
  inScratch(async (scratch) => {
    const own = await browser.launchWithoutStorage(scratch);
    const page = await own.context.newPage();
    await page.goto(`${host.address}?drill=level`);
    await ready(page);
    await notStored(page);
    expect(await page.locator("#export").isHidden(), "there is nothing to export");
    await answer(page);
    await answer(page);
    expect(await today(page) === "2", "both answers count");
    await notStored(page);
    expect(JSON.parse(await exportFrom(page)).attempts.length === 2, "both can be exported");
    await own.close();
  }), "denial");

await checking("Practice goes on while the storage does not answer", async () => {
  const context = await browser.newContext();
  const page = await context.newPage();
  await page.addInitScript(() => {
    IDBFactory.prototype.open = () => ({});
  });
  await page.goto(`${host.address}?drill=level`);
  await ready(page);
  await notStored(page);
  await answer(page);
  const start = Date.now();
  await answer(page);
  expect(Date.now() - start < 2000, "the page waits once");
  expect(JSON.parse(await exportFrom(page)).attempts.length === 2, "both can be exported");
  await context.close();
});

await checking("A full disk is told, and the next save has all answers", async () => {
  const context = await browser.newContext();
  const page = await context.newPage();
  const session = await context.newCDPSession(page);
  const { origin } = new URL(host.address);
  // Before the page asks for room, because Chromium remembers for a while how much there is.
  await session.send("Storage.overrideQuotaForOrigin", { origin, quotaSize: 1 });
  await page.goto(`${host.address}?drill=level`);
  await ready(page);
  await answer(page);
  await notStored(page);
  expect((await notice(page)).includes("QuotaExceededError"), `the reason: ${await notice(page)}`);
  await submit(page);
  expect(JSON.parse(await exportFrom(page)).attempts.length === 2, "both can be exported");
  await page.keyboard.press("Enter");
  await ready(page);
  await session.send("Storage.overrideQuotaForOrigin", { origin });
  await answer(page);
  await storedAnswers(page, 3);
  expect(!(await notice(page)).includes("not stored"), "it is stored again");
  await context.close();
}, "quota");

await checking("A record that the browser deletes under the page is stored anew", async () => {
  const page = await open("?drill=level");
  await answer(page);
  const session = await page.context().newCDPSession(page);
  await session.send("Storage.clearDataForOrigin",
    { origin: new URL(host.address).origin, storageTypes: "indexeddb" });
  await answer(page);
  await storedAnswers(page, 2);
  expect(!(await notice(page)).includes("not stored"), "there is nothing to tell");
  await page.context().close();
}, "deletion");

await checking("A damaged database is told, and practice starts anew", async () => {
  const garble = (file) => writeFileSync(file, Buffer.alloc(statSync(file).size, 0x5a));
  // Chromium has a file of its own for a large record. Where it repairs the rest, it tells nobody.
  for (const [part, isTold] of [["", false], [".blob", true]])
    await inScratch(async (scratch) => {
      let own = await browser.launch(scratch);
      const former = await newPage(own.context, "?drill=level");
      await answer(former);
      const record = JSON.parse(await exportFrom(former));
      const [row] = record.attempts;
      record.attempts = Array.from({ length: 5000 }, () => ({ ...row, id: randomUUID().toUpperCase() }));
      await stored(former, JSON.stringify(record));
      await own.close();
      const databases = browser.databases(scratch);
      const files = readdirSync(databases, { recursive: true }).map((name) => join(databases, name))
        .filter((name) => name.includes(part) && statSync(name).isFile());
      expect(files.length > 0, "there are files to damage");
      for (const file of files) garble(file);
      own = await browser.launch(scratch);
      const page = await own.context.newPage();
      await page.goto(`${host.address}?drill=level`);
      await ready(page);
      expect(await today(page) === "0", "nothing can be read");
      expect((await notice(page)).includes("damaged") === isTold, `the notice: ${await notice(page)}`);
      await answer(page);
      await answer(page);
      await storedAnswers(page, 2);
      await own.close();
    });
}, "damage");
