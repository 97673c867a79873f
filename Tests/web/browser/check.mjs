// Opens the practice page in Chromium and checks what it computes, plays, shows and stores.
//
//   node check.mjs PAGE HASHES [PICTURES]
//
// PAGE is the page's folder, HASHES the native program that prints hashes of renders. PICTURES is a
// folder for screenshots. With VELTO_CHECKS, a regular expression, only the checks run whose names it
// matches.
if (process.argv.length < 4) {
  console.error("usage: node check.mjs PAGE HASHES [PICTURES]");
  process.exit(2);
}
const { end } = await import("./kit.mjs");
for (const part of ["practice", "storage", "offline", "window", "access"]) await import(`./${part}.mjs`);
await end();
