// Draws what velto.wasm says. No rule is told here: only where the elements are.
import { Focus, type Choice, type Palette, type Practice, type State, type Strip } from "./practice.js";

function element<T extends Element = HTMLElement>(id: string): T {
  return document.getElementById(id) as unknown as T;
}

// The children of `parent`, as many as `count`, made by `make` where they are missing.
function children(parent: HTMLElement, count: number, make: (index: number) => HTMLElement):
HTMLElement[] {
  while (parent.children.length > count) parent.lastElementChild!.remove();
  while (parent.children.length < count) parent.append(make(parent.children.length));
  return [...parent.children] as HTMLElement[];
}

function made(tag: string, className: string, item = ""): HTMLElement {
  const result = document.createElement(tag);
  result.className = className;
  if (item !== "") result.dataset["item"] = item;
  return result;
}

function setText(target: HTMLElement, text: string): void {
  if (target.textContent !== text) target.textContent = text;
}

function px(value: number): string {
  return `${value}px`;
}

export interface Actions {
  chooseDrill(index: number): void;
  chooseMaterial(index: number): void;
  chooseSlot(index: number): void;
  answerSlot(index: number): void;
  answerAt(x: number, width: number): void;
  advance(): void;
}

export class View {
  private readonly groups: ReadonlyMap<HTMLElement, Focus>;
  private announced = "";

  constructor(private readonly practice: Practice, private readonly actions: Actions) {
    this.groups = new Map([
      [element("drills"), Focus.drills], [element("area"), Focus.answer],
      [element("slots"), Focus.slots], [element("materials"), Focus.materials]]);
    this.listen();
    const follow = (): void => this.colours();
    matchMedia("(prefers-color-scheme: light)").addEventListener("change", follow);
    follow();
    element("plain").remove();
    element("window").hidden = false;
    element("foot").hidden = false;
  }

  // The group that has the keyboard's focus.
  focus(): Focus {
    for (const [group, focus] of this.groups)
      if (group.contains(document.activeElement)) return focus;
    return Focus.elsewhere;
  }

  draw(): void {
    const state = this.practice.state();
    const groupWithFocus = this.focus();
    this.header(state);
    this.trial(state);
    this.answer(state);
    this.transport(state);
    this.verdict(state);
    this.side(state);
    this.keepFocus(groupWithFocus);
  }

  // After a key has changed the choice, the focus is on the new one.
  private keepFocus(focus: Focus): void {
    if (focus === Focus.elsewhere) return;
    for (const [group, known] of this.groups) {
      if (known !== focus) continue;
      [...group.querySelectorAll<HTMLElement>("[tabindex='0']")]
        .find((stop) => stop.offsetParent !== null)?.focus({ preventScroll: true });
    }
  }

  private colours(): void {
    const wanted = new URLSearchParams(location.search).get("appearance")
      ?? (matchMedia("(prefers-color-scheme: light)").matches ? "light" : "dark");
    const isLight = wanted === "light";
    const palettes = this.practice.palettes();
    const palette: Palette = isLight ? palettes.light : palettes.dark;
    for (const [name, colour] of Object.entries(palette))
      document.documentElement.style.setProperty(`--${name}`, colour);
    document.documentElement.classList.toggle("light", isLight);
    if (!element("window").hidden) this.draw();
  }

  private listen(): void {
    const strip = element("strip");
    const answer = (event: PointerEvent): void => {
      const box = strip.getBoundingClientRect();
      this.actions.answerAt(event.clientX - box.left, box.width);
    };
    strip.addEventListener("pointerdown", (event) => {
      if (event.button !== 0) return;
      strip.setPointerCapture(event.pointerId);
      strip.focus({ preventScroll: true });
      answer(event);
    });
    strip.addEventListener("pointermove", (event) => {
      if (strip.hasPointerCapture(event.pointerId)) answer(event);
    });
    let pressed = -Infinity;
    element("primary").addEventListener("click", (event) => {
      // So that a double click does not skip the verdict.
      const isRepeat = event.detail > 1 && event.timeStamp - pressed < 500;
      pressed = event.timeStamp;
      if (!isRepeat) this.actions.advance();
    });
    addEventListener("resize", () => this.draw());
  }

  private radios(id: string, className: string, choices: readonly Choice[],
    pick: (index: number) => void, fill: (radio: HTMLElement) => void = () => undefined):
  HTMLElement[] {
    const radios = children(element(id), choices.length, (index) => {
      const radio = made("button", `choice ${className}`, `${className}${index}`);
      radio.setAttribute("type", "button");
      radio.setAttribute("role", "radio");
      radio.addEventListener("click", () => pick(index));
      fill(radio);
      return radio;
    });
    const stop = Math.max(choices.findIndex((choice) => choice.chosen), 0);
    radios.forEach((radio, i) => {
      radio.setAttribute("aria-checked", String(choices[i]!.chosen));
      radio.tabIndex = i === stop ? 0 : -1;
    });
    return radios;
  }

  private header(state: State): void {
    const chips = this.radios("drills", "drill", state.drills,
      (index) => this.actions.chooseDrill(index),
      (chip) => chip.append(made("span", "dot"), made("span", "title")));
    chips.forEach((chip, i) => {
      const title = chip.querySelector<HTMLElement>(".title")!;
      setText(title, state.drills[i]!.title);
      title.dataset["text"] = state.drills[i]!.title;
      // A whole width, as in the window.
      title.style.width = "";
      title.style.width = px(Math.ceil(title.getBoundingClientRect().width));
    });
  }

  private trial(state: State): void {
    children(element("prompts"), state.prompts.length, () => made("p", "")).forEach((prompt, i) => {
      setText(prompt, state.prompts[i]!);
      prompt.className = i === state.drill ? "current" : "";
      if (i === state.drill) prompt.dataset["item"] = "prompt";
      else delete prompt.dataset["item"];
    });
    setText(element("difficulty"), state.difficulty);
    element("bar").style.width = `${100 * state.difficultyShare}%`;
    element("pill").setAttribute("aria-label", `Difficulty, ${state.difficulty}`);
    element("card").classList.toggle("rendering", state.rendering);
  }

  private answer(state: State): void {
    const isScale = state.answer.choices === undefined;
    element("scale").hidden = !isScale;
    element("choices").hidden = isScale;
    if (isScale) this.scale(state);
    else this.slotChoices(state);
  }

  private scale(state: State): void {
    const { answer } = state;
    element("scale").className = state.drill === 0 ? "frequency" : "decibels";
    const handle = element("strip");
    handle.setAttribute("aria-label", answer.name);
    handle.setAttribute("aria-valuemin", String(answer.lowest));
    handle.setAttribute("aria-valuemax", String(answer.highest));
    handle.setAttribute("aria-valuenow", String(answer.value));
    handle.setAttribute("aria-valuetext", answer.spoken ?? "");
    handle.setAttribute("aria-readonly", String(!answer.answerable));

    const chips = [element("answerChip"), element("truthChip")] as const;
    const texts = [answer.text ?? "", answer.truthText ?? ""];
    chips.forEach((chip, i) => {
      setText(chip.querySelector<HTMLElement>(".value")!, texts[i]!);
      chip.hidden = texts[i] === "";
      chip.style.width = "";
    });
    // Chips have whole widths, as in the window.
    const widths = chips.map((chip) => chip.hidden ? 0 : Math.ceil(chip.getBoundingClientRect().width));
    const width = handle.getBoundingClientRect().width;
    const strip = this.practice.strip(width, widths[0]!, widths[1]!);
    if (strip === null) return;
    this.ticks(strip);
    [strip.answer, strip.truth].forEach((marker, i) => {
      const chip = chips[i]!;
      const bar = element(i === 0 ? "answerBar" : "truthBar");
      const isShown = marker !== undefined && texts[i] !== "";
      chip.hidden = bar.hidden = !isShown;
      if (marker === undefined) return;
      bar.style.left = px(marker.bar);
      bar.style.width = px(strip.markerWidth);
      chip.style.left = px(marker.chipX);
      chip.style.top = px(marker.chipY);
      chip.style.width = px(widths[i]!);
      chip.classList.toggle("crosses", marker.crosses);
    });
    for (const id of ["answerBar", "answerChip"])
      element(id).classList.toggle("dimmed", !answer.answerable);
  }

  private ticks(strip: Strip): void {
    const labelled = strip.ticks.filter((tick) => tick.label !== "");
    const all = children(element("ticks"), strip.ticks.length + labelled.length,
      () => made("div", ""));
    strip.ticks.forEach((tick, i) => {
      const item = all[i]!;
      setText(item, "");
      item.className = tick.major ? "tick major" : "tick";
      item.dataset["item"] = `tick${i}`;
      Object.assign(item.style, { left: px(tick.left), top: px(76 - tick.height),
        width: px(strip.tickWidth), height: px(tick.height) });
    });
    labelled.forEach((tick, i) => {
      const item = all[strip.ticks.length + i]!;
      setText(item, tick.label);
      item.className = "tickLabel";
      item.dataset["item"] = `tickLabel${strip.ticks.indexOf(tick)}`;
      Object.assign(item.style, { left: px(tick.labelLeft), top: "", width: "", height: "" });
    });
  }

  private slotChoices(state: State): void {
    const choices = state.answer.choices!;
    element("choices").setAttribute("aria-label", state.answer.name);
    const radios = this.radios("choices", "slotChoice", choices,
      (index) => this.actions.answerSlot(index),
      (radio) => {
        radio.classList.add("framed");
        radio.append(made("span", "number"), made("span", "caption"));
      });
    const shares = this.practice.slotShares(element("choices").getBoundingClientRect().width);
    radios.forEach((radio, i) => {
      const choice = choices[i]!;
      const number = radio.querySelector<HTMLElement>(".number")!;
      setText(number, choice.title);
      if (choice.dot) number.append(made("span", "dot"));
      setText(radio.querySelector<HTMLElement>(".caption")!, choice.caption);
      radio.classList.toggle("flipped", choice.flipped);
      radio.setAttribute("aria-label", `Slot ${choice.title}`);
      radio.setAttribute("aria-description", choice.caption === "?" ? "" : choice.caption);
      radio.setAttribute("aria-disabled", String(!state.answer.answerable));
      radio.style.left = px(shares[i]!.left);
      radio.style.width = px(shares[i]!.width);
    });
  }

  private transport(state: State): void {
    this.radios("slots", "slot", state.slots, (index) => this.actions.chooseSlot(index),
      (slot) => slot.classList.add("framed"))
      .forEach((slot, i) => {
        setText(slot, state.slots[i]!.title);
        slot.setAttribute("aria-label", `Play ${state.slots[i]!.title}`);
      });
    this.radios("materials", "material", state.materials,
      (index) => this.actions.chooseMaterial(index))
      .forEach((material, i) => setText(material, state.materials[i]!.title));
    setText(element("primaryText"), state.primary);
    const primary = element<HTMLButtonElement>("primary");
    primary.disabled = !state.canAdvance;
    primary.style.width = "";
    primary.style.width = px(Math.ceil(primary.getBoundingClientRect().width));
  }

  private verdict(state: State): void {
    const { verdict } = state;
    element("status").hidden = verdict !== undefined;
    element("verdict").hidden = verdict === undefined;
    setText(element("status"), state.status);
    if (verdict !== undefined) {
      element("verdict").classList.toggle("hit", verdict.correct);
      setText(element("verdictWord"), verdict.word);
      setText(element("verdictDetail"), verdict.detail);
    }
    const announcement = verdict?.announcement ?? "";
    if (announcement !== this.announced) setText(element("spoken"), announcement);
    this.announced = announcement;
  }

  private side({ progress }: State): void {
    const figures = [["streak", progress.streak, progress.spokenStreak],
      ["today", progress.today, progress.spokenToday],
      ["accuracy", progress.accuracy, progress.spokenAccuracy]] as const;
    for (const [id, text, spoken] of figures) {
      setText(element(id), text);
      element(id).parentElement!.setAttribute("aria-label", spoken);
    }
    const map = element("map");
    map.setAttribute("aria-label", `Weakness map: ${progress.mapDescription}`);
    const shares = this.practice.mapShares(map.getBoundingClientRect().width);
    const isLight = document.documentElement.classList.contains("light");
    children(element("bars"), progress.bars.length, (i) => made("div", "band", `bar${i}`))
      .forEach((band, i) => {
        const bar = progress.bars[i]!;
        band.classList.toggle("weakest", i === progress.weakestBand);
        Object.assign(band.style, { left: px(shares[i]!.left), width: px(shares[i]!.width),
          height: px(bar.height), background: isLight ? bar.light : bar.dark });
      });
    children(element("bandLabels"), progress.bandLabels.length,
      (i) => made("span", "", `bandLabel${i}`))
      .forEach((label, i) => setText(label, progress.bandLabels[i]!));
    setText(element("weakest"), progress.weakest);
    element("weakest").classList.toggle("known", progress.weakestBand >= 0);
    setText(element("curveTitle"), progress.curveTitle);
    const sparkline = element("sparkline");
    sparkline.classList.toggle("drawn", progress.hasCurve);
    sparkline.setAttribute("aria-label", `${progress.curveTitle}: ${progress.curveDescription}`);
    const { width, height } = sparkline.getBoundingClientRect();
    element("line").setAttribute("points",
      this.practice.curve(width, height).map((point) => point.join()).join(" "));
  }
}
