// velto.wasm: the session behind the page.
import { load, type Module } from "./module.js";
import type { Job, Rendered } from "./messages.js";

export interface Choice {
  readonly title: string;
  readonly chosen: boolean;
}
export interface NamedChoice extends Choice {
  readonly name: string; // for screen readers
}
export interface SlotChoice extends NamedChoice {
  readonly description: string; // the same
  readonly caption: string;
  readonly flipped: boolean;
  readonly dot: boolean;
}
export interface State {
  readonly drill: number;
  readonly drills: Choice[];
  readonly materials: Choice[];
  readonly prompt: string;
  readonly prompts: string[];
  readonly difficulty: string;
  readonly spokenDifficulty: string;
  readonly difficultyShare: number;
  readonly slots: NamedChoice[];
  readonly rendering: boolean;
  readonly primary: string;
  readonly canAdvance: boolean;
  readonly status: string;
  readonly verdict?: {
    readonly correct: boolean;
    readonly word: string;
    readonly detail: string;
    readonly announcement: string;
  };
  readonly answer: {
    readonly name: string;
    readonly answerable: boolean;
    // Of a scale.
    readonly value?: number;
    readonly lowest?: number;
    readonly highest?: number;
    readonly text?: string;
    readonly truthText?: string;
    readonly spoken?: string;
    // Of slots.
    readonly choices?: SlotChoice[];
  };
  readonly progress: {
    readonly streak: string;
    readonly today: string;
    readonly accuracy: string;
    readonly spokenStreak: string;
    readonly spokenToday: string;
    readonly spokenAccuracy: string;
    readonly bars: { readonly height: number; readonly dark: string; readonly light: string }[];
    readonly weakestBand: number;
    readonly weakest: string;
    readonly mapDescription: string;
    readonly bandLabels: string[];
    readonly curveTitle: string;
    readonly hasCurve: boolean;
    readonly curveDescription: string;
  };
}
export interface Marker {
  readonly bar: number;
  readonly chipX: number;
  readonly chipY: number;
  readonly crosses: boolean;
}
export interface Strip {
  readonly tickWidth: number;
  readonly ticks: {
    readonly left: number;
    readonly height: number;
    readonly major: boolean;
    readonly label: string;
    readonly labelLeft: number;
  }[];
  readonly markerWidth: number;
  readonly answer?: Marker;
  readonly truth?: Marker;
}
export interface Share {
  readonly left: number;
  readonly width: number;
}
// The texts that never change.
export interface Words {
  readonly [name: string]: string | string[];
  readonly primary: string[];
}
export type Palette = Record<string, string>;

// What the keyboard's focus is on, as Page::Focus.
export enum Focus { elsewhere, drills, answer, slots, materials }

export interface Host {
  render(job: Job): void;
  openSound(): void;
  play(channels: Float32Array[], chosen: number, delayFrames: number,
    throughSilence: boolean): void;
  switchTo(chosen: number): void;
  silence(): void;
  keepRecord(bytes: Uint8Array): void;
}

export class Practice {
  private constructor(private readonly module: Module) {}

  static async create(host: Host): Promise<Practice> {
    let practice: Practice | undefined;
    const module = await load("velto.wasm", {
      render: (drill: number, material: number, seed: bigint, difficulty: number, fair: number) =>
        host.render({ drill, material, seed: BigInt.asUintN(64, seed), difficulty,
          fair: fair !== 0 }),
      openSound: () => host.openSound(),
      play: (count: number, chosen: number, delayFrames: number, throughSilence: number) =>
        host.play(practice!.channels(count), chosen, delayFrames, throughSilence !== 0),
      switchTo: (chosen: number) => host.switchTo(chosen),
      silence: () => host.silence(),
      keepRecord: (start: number, size: number) =>
        host.keepRecord(new Uint8Array(module.memory.buffer, start, size).slice()),
      utcOffset: (moment: number) => -60 * new Date(moment * 1000).getTimezoneOffset(),
    });
    practice = new Practice(module);
    return practice;
  }

  start(drill: number, fair: boolean, record: Uint8Array): void {
    const size = this.give(record);
    this.call("start", drill, fair ? 1 : 0, Date.now() / 1000, size);
  }

  call(name: string, ...args: (number | bigint)[]): unknown {
    return this.module.call[name]!(...args);
  }

  press(event: KeyboardEvent, focus: Focus): boolean {
    const size = this.give(new TextEncoder().encode(event.key));
    const isModified = event.shiftKey || event.ctrlKey || event.altKey || event.metaKey
      || event.location === KeyboardEvent.DOM_KEY_LOCATION_NUMPAD;
    const flags = (isModified ? 1 : 0) + (event.getModifierState("CapsLock") ? 2 : 0)
      + (event.repeat ? 4 : 0);
    return this.call("press", size, flags, focus) !== 0;
  }

  takeRender(rendered: Rendered): void {
    this.call("beginRender", rendered.channels.length / 2, rendered.frames);
    rendered.channels.forEach((channel, i) => this.view(i).set(channel));
    this.call("takeRender", BigInt.asIntN(64, rendered.seed));
  }

  isRecord(bytes: Uint8Array): boolean {
    return this.call("isRecord", this.give(bytes)) !== 0;
  }

  mergeRecord(bytes: Uint8Array): boolean {
    return this.call("mergeRecord", this.give(bytes)) !== 0;
  }

  soundFailed(reason: string): void {
    this.call("soundFailed", this.give(new TextEncoder().encode(reason)));
  }

  state(): State {
    return this.read("state");
  }
  strip(width: number, answerChip: number, truthChip: number): Strip | null {
    return this.read("strip", width, answerChip, truthChip, devicePixelRatio);
  }
  slotShares(width: number): Share[] {
    return this.read("slotShares", width, devicePixelRatio);
  }
  mapShares(width: number): Share[] {
    return this.read("mapShares", width, devicePixelRatio);
  }
  curve(width: number, height: number): [number, number][] {
    return this.read("curve", width, height);
  }
  // A box with continuous corners, and its frame, as CSS shapes.
  outline(radius: number, width: number): { readonly fill: string; readonly frame: string } {
    return this.read("outline", radius, width);
  }
  words(): Words {
    return this.read("words");
  }
  palettes(): { readonly dark: Palette; readonly light: Palette } {
    return this.read("palettes");
  }

  private read<T>(name: string, ...args: number[]): T {
    const start = this.call(name, ...args) as number;
    const size = this.call("outputSize") as number;
    return JSON.parse(new TextDecoder().decode(
      new Uint8Array(this.module.memory.buffer, start, size))) as T;
  }

  private give(bytes: Uint8Array): number {
    const start = this.call("input", bytes.length) as number;
    new Uint8Array(this.module.memory.buffer, start, bytes.length).set(bytes);
    return bytes.length;
  }

  private view(channel: number): Float32Array {
    const start = this.call("samples", channel >> 1, channel & 1) as number;
    return new Float32Array(this.module.memory.buffer, start, this.call("frames") as number);
  }

  private channels(count: number): Float32Array[] {
    return Array.from({ length: 2 * count }, (_, i) => this.view(i).slice());
  }
}
