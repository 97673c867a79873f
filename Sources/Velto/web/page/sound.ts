// The sound output: an audio context at 48 kHz with the mixer in a worklet.
import type { Order } from "./messages.js";

const sampleRate = 48000;
// No frame is lost with this while the page's thread and the machine are busy; with "interactive"
// some are. Browsers may add much to a latency in seconds: Chromium made 0.2 s of 0.05 s.
const latencyHint = "playback";
// Milliseconds after which a fade has been heard.
const fading = 200;

type Ended = { readonly latency: number } | { readonly error: string };

export class Sound {
  private context: AudioContext | undefined;
  private node: AudioWorkletNode | undefined;
  private preparing: Promise<void> | undefined;
  private isWanted = false;
  private isOpen = false;
  private isResting = false;
  private resting: number | undefined;

  // `ended` is called when an opening has succeeded or failed.
  constructor(private readonly ended: (how: Ended) => void) {}

  // True while sound waits for a gesture of the user.
  get waits(): boolean {
    return this.isWanted && !this.isOpen;
  }

  // The rate that the system plays at, if the browser has to convert to it.
  static conversion(): number | undefined {
    const context = new AudioContext();
    const rate = context.sampleRate;
    void context.close();
    return rate === sampleRate ? undefined : rate;
  }

  open(): void {
    this.isWanted = true;
    // Nothing ends before this call has returned.
    queueMicrotask(() => void this.start());
  }

  // To be called on every key press and click: browsers open sound on these only.
  gesture(): void {
    if (this.waits) void this.start();
  }

  tell(order: Order): void {
    this.node?.port.postMessage(order,
      order.kind === "play" ? order.channels.map((channel) => channel.buffer) : []);
  }

  // Lets the audio thread rest until wake(), because a context uses the processor also while it is
  // silent.
  rest(): void {
    clearTimeout(this.resting);
    this.resting = setTimeout(() => {
      this.isResting = true;
      void this.context?.suspend();
    }, fading);
  }

  wake(): void {
    clearTimeout(this.resting);
    if (this.isResting) void this.context?.resume();
    this.isResting = false;
  }

  private async start(): Promise<void> {
    try {
      this.preparing ??= this.prepare();
      await this.preparing;
      if (!this.isWanted || this.isOpen) return;
      const context = this.context!;
      await context.resume();
      if (this.isOpen || context.state !== "running") return;
      this.isOpen = true;
      this.ended({ latency: context.baseLatency + (context.outputLatency || 0) });
    } catch (error) {
      this.isWanted = false;
      this.preparing = undefined;
      this.ended({ error: String(error) });
    }
  }

  private async prepare(): Promise<void> {
    this.context = new AudioContext({ sampleRate, latencyHint });
    const [response] = await Promise.all([
      fetch(new URL("mixer.wasm", import.meta.url)),
      this.context.audioWorklet.addModule(new URL("worklet.js", import.meta.url))]);
    this.node = new AudioWorkletNode(this.context, "velto-mixer", {
      numberOfInputs: 0,
      outputChannelCount: [2],
      processorOptions: { module: await response.arrayBuffer() },
    });
    this.node.connect(this.context.destination);
  }
}
