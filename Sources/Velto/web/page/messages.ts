// What the page's thread, the worker and the audio thread tell each other.

// A trial to render; render.wasm makes it of these numbers.
export interface Job {
  readonly drill: number;
  readonly material: number;
  readonly seed: bigint;
  readonly difficulty: number;
  readonly fair: boolean;
}

export interface Rendered {
  readonly seed: bigint;
  readonly frames: number;
  readonly channels: Float32Array[]; // left and right of each slot in turn
  readonly hash: string;
}

// To the mixer.
export type Order =
  | {
      readonly kind: "play";
      readonly channels: Float32Array[];
      readonly chosen: number;
      readonly delayFrames: number;
      readonly throughSilence: boolean;
    }
  | { readonly kind: "switch"; readonly chosen: number }
  | { readonly kind: "silence" };
