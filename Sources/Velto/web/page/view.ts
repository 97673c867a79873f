// Draws what velto.wasm says. No rule is told here: only where the elements are.
import { Focus, type Choice, type Palette, type Practice, type State, type Strip, type Words } from "./practice.js";

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
    this.write(practice.words());
    // Continuous corners, in style.css by their radius.
    for (const [radius, width] of [[12, 1], [8, 0], [7, 1], [2, 1.5]] as const) {
      const { fill, frame } = practice.outline(radius, width);
      document.documentElement.style.setProperty(`--fill${radius}`, fill);
      document.documentElement.style.setProperty(`--frame${radius}`, frame);
    }
    this.listen();
    const follow = (): void => this.colours();
    matchMedia("(prefers-color-scheme: light)").addEventListener("change", follow);
    follow();
    element("plain").remove();
    element("window").hidden = false;
    element("foot").hidden = false;
  }

  // The texts that never change.
  private write(words: Words): void {
    for (const target of document.querySelectorAll<HTMLElement>("[data-words]"))
      target.textContent = String(words[target.dataset["words"]!]);
    for (const target of document.querySelectorAll<HTMLElement>("[data-label]"))
      target.setAttribute("aria-label", String(words[target.dataset["label"]!]));
    // The button is as wide as the widest of its texts.
    for (const text of words.primary) {
      const sizer = made("span", "sizer");
      sizer.setAttribute("aria-hidden", "true");
      sizer.textContent = text;
      element("primary").append(sizer);
    }
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
    pick: (index: number) => void, fill: (radio: HTMLElement, index: number) => void):
  HTMLElement[] {
    const radios = children(element(id), choices.length, (index) => {
      const radio = made("button", `choice ${className}`, `${className}${index}`);
      radio.setAttribute("type", "button");
      radio.setAttribute("role", "radio");
      radio.addEventListener("click", () => pick(index));
      fill(radio, index);
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
      (chip, i) => {
        const title = made("span", "title");
        title.append(made("span", "", `drillLabel${i}`));
        chip.append(made("span", "dot", `drillDot${i}`), title);
      });
    chips.forEach((chip, i) => {
      const title = chip.querySelector<HTMLElement>(".title")!;
      setText(title.firstElementChild as HTMLElement, state.drills[i]!.title);
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
    element("pill").setAttribute("aria-label", state.spokenDifficulty);
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
    element("scale").dataset["item"] = state.drill === 0 ? "frequencyPicker" : "decibelPicker";
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
      (radio, i) => {
        radio.classList.add("framed");
        const number = made("span", "number", `slotNumber${i}`);
        number.append(made("span", ""), made("span", "dot", `slotDot${i}`));
        radio.append(number, made("span", "caption", `slotCaption${i}`));
      });
    const shares = this.practice.slotShares(element("choices").getBoundingClientRect().width);
    radios.forEach((radio, i) => {
      const choice = choices[i]!;
      setText(radio.querySelector<HTMLElement>(".number > :first-child")!, choice.title);
      radio.querySelector<HTMLElement>(".dot")!.hidden = !choice.dot;
      setText(radio.querySelector<HTMLElement>(".caption")!, choice.caption);
      radio.classList.toggle("flipped", choice.flipped);
      radio.setAttribute("aria-label", choice.name);
      radio.setAttribute("aria-description", choice.description);
      radio.setAttribute("aria-disabled", String(!state.answer.answerable));
      radio.style.left = px(shares[i]!.left);
      radio.style.width = px(shares[i]!.width);
    });
  }

  private transport(state: State): void {
    this.radios("slots", "slot", state.slots, (index) => this.actions.chooseSlot(index),
      (slot, i) => {
        slot.classList.add("framed");
        slot.append(made("span", "", `slotLabel${i}`));
      })
      .forEach((slot, i) => {
        setText(slot.firstElementChild as HTMLElement, state.slots[i]!.title);
        slot.setAttribute("aria-label", state.slots[i]!.name);
      });
    this.radios("materials", "material", state.materials,
      (index) => this.actions.chooseMaterial(index),
      (material, i) => material.append(made("span", "", `materialLabel${i}`)))
      .forEach((material, i) =>
        setText(material.firstElementChild as HTMLElement, state.materials[i]!.title));
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
    map.setAttribute("aria-description", progress.mapDescription);
    const shares = this.practice.mapShares(map.getBoundingClientRect().width);
    const isLight = document.documentElement.classList.contains("light");
    children(element("bars"), progress.bars.length, (i) => made("div", "box band", `bar${i}`))
      .forEach((band, i) => {
        const bar = progress.bars[i]!;
        band.classList.toggle("weakest", i === progress.weakestBand);
        Object.assign(band.style, { left: px(shares[i]!.left), width: px(shares[i]!.width),
          height: px(bar.height) });
        band.style.setProperty("--weakness", isLight ? bar.light : bar.dark);
      });
    children(element("bandLabels"), progress.bandLabels.length,
      (i) => made("span", "", `bandLabel${i}`))
      .forEach((label, i) => setText(label, progress.bandLabels[i]!));
    setText(element("weakest"), progress.weakest);
    element("weakest").classList.toggle("known", progress.weakestBand >= 0);
    setText(element("curveTitle"), progress.curveTitle);
    const sparkline = element("sparkline");
    sparkline.classList.toggle("drawn", progress.hasCurve);
    sparkline.setAttribute("aria-label", progress.curveTitle);
    sparkline.setAttribute("aria-description", progress.curveDescription);
    const { width, height } = sparkline.getBoundingClientRect();
    element("line").setAttribute("points",
      this.practice.curve(width, height).map((point) => point.join()).join(" "));
  }
}
