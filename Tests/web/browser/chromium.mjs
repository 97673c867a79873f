// Chromium, driven by playwright-core.
import { spawn } from "node:child_process";
import { mkdirSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { chromium } from "playwright-core";

const program = "/usr/bin/chromium";
const flags = [
  // As in a browser with a window.
  "--autoplay-policy=document-user-activation-required",
  ...(process.getuid() === 0 ? ["--no-sandbox"] : [])];

// A Chromium of its own with its profile in `profile`.
function spawned(profile, ...args) {
  const child = spawn(program, [...flags, "--headless", "--remote-debugging-port=0",
    "--no-first-run", "--disable-gpu", `--user-data-dir=${profile}`, ...args],
  { detached: true, stdio: ["ignore", "ignore", "pipe"] });
  const ended = new Promise((resolve) => child.on("exit", resolve));
  return {
    child,
    ended,
    // Ends all of its processes at once, without a chance to save anything.
    async kill() {
      process.kill(-child.pid, "SIGKILL");
      await ended;
    },
  };
}

async function launch(profile) {
  const { child, ended, kill } = spawned(profile);
  const endpoint = await new Promise((resolve, reject) => {
    let text = "";
    child.stderr.on("data", (data) => {
      text += data;
      const found = /DevTools listening on (ws:\S+)/.exec(text);
      if (found !== null) resolve(found[1]);
    });
    ended.then(() => reject(new Error(`Chromium has ended: ${text}`)));
  });
  const connection = await chromium.connectOverCDP(endpoint);
  return {
    context: connection.contexts()[0],
    kill,
    async close() {
      const session = await connection.newBrowserCDPSession();
      await session.send("Browser.close").catch(() => undefined);
      await ended;
    },
  };
}

export async function open() {
  const browser = await chromium.launch({ executablePath: program, args: flags,
    ignoreDefaultArgs: ["--mute-audio"] });
  return {
    title: `Chromium ${browser.version()}`,
    lacks: {},
    newContext: (options) => browser.newContext(options),
    launch,
    // Opens a page without a driver.
    start: (profile, address) => spawned(profile, address),
    launchWithoutStorage(profile) {
      mkdirSync(join(profile, "Default"));
      writeFileSync(join(profile, "Default", "Preferences"),
        JSON.stringify({ profile: { default_content_setting_values: { cookies: 2 } } }));
      return launch(profile);
    },
    // Where its databases are.
    databases: (profile) => join(profile, "Default", "IndexedDB"),
    close: () => browser.close(),
  };
}
