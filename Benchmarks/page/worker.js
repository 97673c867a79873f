// Measures the page's modules away from its thread. Lies beside them while it runs.
import { load } from "./module.js";

async function renderTimes({ jobs, batches, renders }) {
  const { call, memory } = await load("render.wasm");
  const least = jobs.map(() => Infinity);
  for (let batch = 0; batch < batches; ++batch)
    jobs.forEach(({ drill, material, seed, difficulty, fair }, i) => {
      const begin = performance.now();
      for (let k = 0; k < renders; ++k) call.render(drill, material, seed, difficulty, fair);
      least[i] = Math.min(least[i], (performance.now() - begin) / renders);
    });
  return { least, bytes: memory.buffer.byteLength };
}

// A crossfade in every third of the blocks, as three mixed slots need the most time.
async function mixerTimes({ blocks }) {
  const { call, memory } = await load("mixer.wasm");
  const frames = 153_600;
  for (let i = 0; i < 6; ++i) {
    const start = call.samples(i >> 1, i & 1, frames);
    new Float32Array(memory.buffer, start, frames).fill((i + 1) / 100);
  }
  call.play(3, 0, 0, 0);
  let longest = 0;
  const begin = performance.now();
  for (let block = 0; block < blocks; ++block) {
    const before = performance.now();
    if (block % 168 === 0) call.switchTo(block / 168 % 3); // a crossfade lasts 56 blocks
    call.render(128);
    longest = Math.max(longest, performance.now() - before);
  }
  return { mean: (performance.now() - begin) / blocks, longest, bytes: memory.buffer.byteLength };
}

onmessage = async ({ data }) =>
  postMessage(await (data.blocks === undefined ? renderTimes(data) : mixerTimes(data)));
