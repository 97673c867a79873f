// The practice page.
import { Practice, type Host } from "./practice.js";
import { RecordFile } from "./record.js";
import { Sound } from "./sound.js";
import { View } from "./view.js";
import type { Job, Rendered } from "./messages.js";

const drills = ["frequency", "level", "dynamics", "polarity"];

// Renders one trial at a time. Of the trials asked for meanwhile, or in one turn of the event loop,
// only the latest is rendered.
class Renderer {
  private readonly worker = new Worker(new URL("worker.js", import.meta.url),
    { type: "module" });
  private isBusy = false;
  private next: Job | undefined;

  constructor(take: (rendered: Rendered) => void, failed: (reason: string) => void) {
    this.worker.onerror = ({ message }) => failed(message);
    this.worker.onmessage = ({ data }: MessageEvent<Rendered>) => {
      this.isBusy = false;
      this.post();
      take(data);
    };
  }

  render(job: Job): void {
    this.next = job;
    queueMicrotask(() => this.post());
  }

  private post(): void {
    if (this.isBusy || this.next === undefined) return;
    this.isBusy = true;
    this.worker.postMessage(this.next);
    this.next = undefined;
  }
}

async function run(): Promise<void> {
  let failure = "";      // of sound
  let renderError = "";
  let storageError = ""; // why the record is not stored
  let isLost = false;    // what was stored cannot be read
  let isLasting = true;  // the browser does not drop what is stored
  let isImporting = false;
  const file = new RecordFile({
    isRecord: (bytes) => practice.isRecord(bytes),
    kept: () => {
      storageError = "";
      practice.call("recordKept");
      if (isImporting) location.reload();
      else void askToLast();
      draw();
    },
    conflict: (other) => void practice.mergeRecord(other),
    failed: (reason) => {
      storageError = reason;
      isImporting = false;
      if (!started) return;
      practice.call("recordFailed");
      draw();
    },
    lost: () => {
      isLost = true;
    },
  });
  let started = false;
  let asked = false;
  async function askToLast(): Promise<void> {
    if (asked || navigator.storage === undefined) return;
    asked = true;
    isLasting = await navigator.storage.persisted() || await navigator.storage.persist();
    draw();
  }
  const renderer = new Renderer((rendered) => {
    practice.takeRender(rendered);
    document.documentElement.dataset["hash"] = rendered.hash;
    draw();
  }, (reason) => {
    renderError = reason;
    draw();
  });
  const sound = new Sound((how) => {
    failure = "error" in how ? how.error : "";
    if ("error" in how) practice.soundFailed(how.error);
    else practice.call("soundOpened", how.latency);
    draw();
  });
  const host: Host = {
    render: (job) => renderer.render(job),
    openSound: () => sound.open(),
    play: (channels, chosen, delayFrames, throughSilence) =>
      sound.tell({ kind: "play", channels, chosen, delayFrames, throughSilence }),
    switchTo: (chosen) => sound.tell({ kind: "switch", chosen }),
    silence: () => sound.tell({ kind: "silence" }),
    keepRecord: (bytes) => {
      file.save(bytes);
      offer(bytes);
    },
  };
  const practice = await Practice.create(host);
  const options = new URLSearchParams(location.search);
  const isFair = options.get("trials") !== "standard";
  const exported = document.getElementById("export") as HTMLAnchorElement;
  function offer(bytes: Uint8Array): void {
    URL.revokeObjectURL(exported.href);
    exported.href = URL.createObjectURL(new Blob([bytes], { type: "application/json" }));
    exported.hidden = false;
  }
  const record = await file.load();
  if (record.length > 0) offer(record);
  practice.start(Math.max(drills.indexOf(options.get("drill") ?? ""), 0), isFair, record);
  const importFile = document.getElementById("importFile") as HTMLInputElement;
  let importError = "";
  importFile.addEventListener("change", () => void (async () => {
    const chosen = importFile.files?.[0];
    if (chosen === undefined) return;
    importFile.value = "";
    isImporting = practice.mergeRecord(new Uint8Array(await chosen.arrayBuffer()));
    importError = isImporting ? "" : `${chosen.name} is no record of Velto.`;
    draw();
  })());
  document.getElementById("import")!.addEventListener("keydown", (event) => {
    if (event.key !== "Enter" && event.key !== " ") return;
    event.preventDefault();
    event.stopPropagation();
    importFile.click();
  });

  const command = (name: string) => (...args: number[]): void => {
    practice.call(name, ...args);
    draw();
  };
  const view = new View(practice, {
    chooseDrill: command("chooseDrill"),
    chooseMaterial: command("chooseMaterial"),
    chooseSlot: command("chooseSlot"),
    answerSlot: command("answerSlot"),
    answerAt: command("answerAt"),
    advance: command("advance"),
  });
  const conversion = Sound.conversion();
  const otherTrials = document.getElementById("otherTrials") as HTMLAnchorElement;
  otherTrials.textContent = isFair ? "Without fair trials" : "With fair trials";
  otherTrials.href = isFair ? "?trials=standard" : "?";

  const notices = (): string => [
    renderError === "" ? "" : `Trials cannot be rendered: ${renderError}`,
    failure !== "" ? `There is no sound: ${failure}`
      : sound.waits ? "Press a key or click anywhere to hear the trial." : "",
    conversion === undefined ? ""
      : `This system plays at ${conversion} Hz; the browser converts the sound from 48000 Hz.`,
    storageError === "" ? ""
      : `The record is not stored (${storageError}). Export it before you close the page.`,
    isLost ? "The record that this browser had stored is damaged; practice starts anew." : "",
    isLasting ? "" : "This browser may drop the record: export it now and then.",
    importError,
  ].filter((text) => text !== "").join(" ");

  function draw(): void {
    view.draw();
    const notice = document.getElementById("notice")!;
    if (notice.textContent !== notices()) notice.textContent = notices();
  }

  addEventListener("keydown", (event) => {
    sound.gesture();
    const root = document.documentElement;
    if (event.key === "Tab" || /^(Arrow|Page|Home$|End$)/.test(event.key))
      root.classList.add("keys");
    if (event.isComposing || !practice.press(event, view.focus())) return;
    event.preventDefault();
    draw();
  });
  // A button would act on the key that has already been handled.
  addEventListener("keyup", (event) => {
    if (event.key === " ") event.preventDefault();
  });
  addEventListener("pointerdown", () => document.documentElement.classList.remove("keys"), true);
  for (const gesture of ["pointerdown", "pointerup", "click"])
    addEventListener(gesture, () => sound.gesture(), true);

  // Silent while hidden or in the background.
  const follow = (): void => {
    if (document.hidden || !document.hasFocus()) {
      practice.call("suspend");
      sound.rest();
    } else {
      sound.wake();
      practice.call("resume");
    }
  };
  document.addEventListener("visibilitychange", follow);
  addEventListener("blur", follow);
  addEventListener("focus", follow);
  follow();
  started = true;
  draw();
  await document.fonts.ready;
  draw();
  // Where that fails the page works as long as its host can be reached.
  navigator.serviceWorker?.register("offline.js", { updateViaCache: "none" })
    .catch(() => undefined);
}

void run().catch((error: unknown) => {
  document.getElementById("plain")?.remove();
  document.getElementById("foot")!.hidden = false;
  const notice = document.getElementById("notice")!;
  notice.textContent = `Velto cannot start in this browser: ${String(error)}`;
  console.error(error);
});
