// Opens the practice page in a browser and checks what it computes, plays, shows and stores.
//
//   node check.mjs BROWSER PAGE PROGRAMS [PICTURES]
//
// BROWSER is chromium, firefox or webkit; the last one needs a display. PAGE is the page's folder,
// PROGRAMS the one of the native programs that the page is compared with, PICTURES one for
// screenshots. With VELTO_CHECKS, a regular expression, only the checks run whose names it matches.
if (process.argv.length < 5) {
  console.error("usage: node check.mjs BROWSER PAGE PROGRAMS [PICTURES]");
  process.exit(2);
}
const { end } = await import("./kit.mjs");
for (const part of ["practice", "sink", "storage", "offline", "window", "access"])
  await import(`./${part}.mjs`);
await end();
