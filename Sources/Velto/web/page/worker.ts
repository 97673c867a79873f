// Renders trials, away from the page's thread.
import { load } from "./module.js";
import type { Job, Rendered } from "./messages.js";

// TypeScript knows the page's global scope, not a worker's.
const scope = self as unknown as {
  onmessage: (event: MessageEvent<Job>) => void;
  onunhandledrejection: (event: PromiseRejectionEvent) => void;
  postMessage(message: Rendered, transfer: Transferable[]): void;
};

// The page hears of an error, but not of a rejection.
scope.onunhandledrejection = ({ reason }) => {
  throw reason;
};

const loading = load("render.wasm");

scope.onmessage = async ({ data: job }) => {
  const { call, memory } = await loading;
  const count = call["render"]!(
    job.drill, job.material, job.seed, job.difficulty, job.fair ? 1 : 0) as number;
  const frames = call["frames"]!() as number;
  const channels: Float32Array[] = [];
  for (let i = 0; i < 2 * count; ++i) {
    const start = call["samples"]!(i >> 1, i & 1) as number;
    channels.push(new Float32Array(memory.buffer, start, frames).slice());
  }
  const hash = new TextDecoder().decode(
    new Uint8Array(memory.buffer, call["hash"]!() as number, 16));
  scope.postMessage({ seed: job.seed, frames, channels, hash },
    channels.map((channel) => channel.buffer));
};
