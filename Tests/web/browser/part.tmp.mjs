const { end } = await import("./kit.mjs");
for (const part of process.env.PARTS.split(",")) await import(`./${part}.mjs`);
await end();
