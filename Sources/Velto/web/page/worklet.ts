// Plays on the audio thread. mixer.wasm imports nothing: rendering a block cannot call the system.
import type { Exports } from "./module.js";
import type { Order } from "./messages.js";

// The global scope of an audio worklet, which TypeScript does not know.
declare abstract class AudioWorkletProcessor {
  readonly port: MessagePort;
}
declare function registerProcessor(
  name: string,
  processor: new (options: { processorOptions: { module: ArrayBuffer } }) => AudioWorkletProcessor,
): void;

class MixerProcessor extends AudioWorkletProcessor {
  private readonly call: Exports;
  private readonly memory: WebAssembly.Memory;
  private block = new Float32Array(0);

  constructor({ processorOptions }: { processorOptions: { module: ArrayBuffer } }) {
    super();
    const module = new WebAssembly.Module(processorOptions.module);
    const exports = new WebAssembly.Instance(module).exports;
    this.call = exports as unknown as Exports;
    this.memory = exports["memory"] as WebAssembly.Memory;
    this.call["_initialize"]!();
    this.port.onmessage = (event: MessageEvent<Order>) => this.obey(event.data);
  }

  // Between blocks: may allocate.
  private obey(order: Order): void {
    switch (order.kind) {
      case "play":
        order.channels.forEach((channel, i) => {
          const start = this.call["samples"]!(i >> 1, i & 1, channel.length) as number;
          new Float32Array(this.memory.buffer, start, channel.length).set(channel);
        });
        this.call["play"]!(order.channels.length / 2, order.chosen, order.delayFrames,
          order.throughSilence ? 1 : 0);
        break;
      case "switch":
        this.call["switchTo"]!(order.chosen);
        break;
      case "silence":
        this.call["silence"]!();
        break;
    }
  }

  process(_inputs: Float32Array[][], outputs: Float32Array[][]): boolean {
    const [left, right] = outputs[0] ?? [];
    if (left === undefined || right === undefined) return true;
    const frames = left.length;
    const start = this.call["render"]!(frames) as number;
    // A view of the module's memory, made anew only after the memory has grown.
    if (this.block.buffer !== this.memory.buffer || this.block.byteOffset !== start
        || this.block.length !== 2 * frames)
      this.block = new Float32Array(this.memory.buffer, start, 2 * frames);
    for (let i = 0; i < frames; ++i) {
      left[i] = this.block[2 * i]!;
      right[i] = this.block[2 * i + 1]!;
    }
    return true;
  }
}

registerProcessor("velto-mixer", MixerProcessor);
