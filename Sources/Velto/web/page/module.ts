// Loads the WebAssembly modules. Interface.h describes what they export.

export type Exports = Record<string, (...args: (number | bigint)[]) => unknown>;

const memoryOf = (exports: WebAssembly.Exports): WebAssembly.Memory =>
  exports["memory"] as WebAssembly.Memory;

// The few system calls that the modules make: clocks, random bytes, and text on standard error,
// which goes to the console.
function systemCalls(memory: () => WebAssembly.Memory): WebAssembly.ModuleImports {
  const success = 0;
  const badDescriptor = 8;
  const view = (): DataView => new DataView(memory().buffer);
  return {
    environ_get: () => success,
    environ_sizes_get: (count: number, size: number) => {
      view().setUint32(count, 0, true);
      view().setUint32(size, 0, true);
      return success;
    },
    clock_time_get: (clock: number, _precision: bigint, result: number) => {
      const milliseconds = clock === 0 ? Date.now() : performance.now();
      view().setBigUint64(result, BigInt(Math.round(milliseconds * 1e6)), true);
      return success;
    },
    fd_close: () => badDescriptor,
    fd_fdstat_get: () => badDescriptor,
    fd_read: () => badDescriptor,
    fd_seek: () => badDescriptor,
    fd_write: (_descriptor: number, parts: number, count: number, result: number) => {
      let text = "";
      let size = 0;
      for (let i = 0; i < count; ++i) {
        const length = view().getUint32(parts + 8 * i + 4, true);
        const start = view().getUint32(parts + 8 * i, true);
        text += new TextDecoder().decode(new Uint8Array(memory().buffer, start, length));
        size += length;
      }
      console.error(text.trimEnd());
      view().setUint32(result, size, true);
      return success;
    },
    proc_exit: (status: number) => {
      throw new Error(`The module has ended with status ${status}.`);
    },
    random_get: (start: number, size: number) => {
      crypto.getRandomValues(new Uint8Array(memory().buffer, start, size));
      return success;
    },
  };
}

export interface Module {
  readonly call: Exports;
  readonly memory: WebAssembly.Memory;
}

// Compiles `file`, which is beside this one, and starts it with the functions in `host`.
export async function load(file: string, host: WebAssembly.ModuleImports = {}): Promise<Module> {
  const response = await fetch(new URL(file, import.meta.url));
  if (!response.ok) throw new Error(`${file}: ${response.status}`);
  // Static hosts may send any media type, which streaming compilation would refuse.
  const bytes = await response.arrayBuffer();
  let memory: WebAssembly.Memory | undefined;
  const { instance } = await WebAssembly.instantiate(bytes, {
    velto: host,
    wasi_snapshot_preview1: systemCalls(() => memory!),
  });
  memory = memoryOf(instance.exports);
  const call = instance.exports as unknown as Exports;
  call["_initialize"]!();
  return { call, memory };
}
