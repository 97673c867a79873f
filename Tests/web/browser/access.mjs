// Accessibility, as far as axe-core sees it.
import { readFileSync } from "node:fs";
import { checking, drills, expect, open, submit } from "./kit.mjs";

const axe = readFileSync(new URL("node_modules/axe-core/axe.min.js", import.meta.url), "utf8");

// Contrast is reported apart: the palette is given, and some of its colours are faint on purpose.
async function findings(page) {
  return page.evaluate(async () => {
    const hex = (colour) => `#${(colour.match(/[\d.]+/g) ?? []).slice(0, 3)
      .map((part) => Math.round(part).toString(16).padStart(2, "0")).join("")}`;
    const given = [...document.documentElement.style].filter((name) => name.startsWith("--"))
      .map((name) => hex(document.documentElement.style.getPropertyValue(name)));
    const { violations, passes } = await window.axe.run(document);
    const isGiven = ({ target, any: [{ data }] }) =>
      given.includes(data.fgColor) || document.querySelector(target[0]).closest(".dimmed") !== null;
    return {
      rules: passes.length,
      found: violations.flatMap(({ id, nodes }) => nodes
        .filter((node) => id !== "color-contrast" || !isGiven(node))
        .map(({ target, failureSummary }) => `${id}: ${target}: ${failureSummary}`)),
    };
  });
}

for (const [width, height, colorScheme] of
  [[1180, 430, "dark"], [1180, 430, "light"], [360, 740, "dark"]])
  await checking(`axe-core finds nothing but given colours at ${width} points, ${colorScheme}`,
    async () => {
      for (const drill of drills) {
        const page = await open(`?drill=${drill}`, { viewport: { width, height }, colorScheme });
        await page.evaluate(axe);
        for (const state of ["fresh", "graded"]) {
          if (state === "graded") {
            if (drill === "polarity") await page.locator("#choices button").nth(2).click();
            await submit(page);
          }
          const { rules, found } = await findings(page);
          expect(rules > 10, `${rules} rules apply`);
          expect(found.length === 0, `${drill}, ${state}: ${found.join("\n    ")}`);
        }
        await page.context().close();
      }
    });
