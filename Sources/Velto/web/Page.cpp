#include "Page.h"

#include "Colors.h"
#include "DevicePixels.h"
#include "JSONWriter.h"
#include "KeyMoves.h"
#include "Numbers.h"
#include "PageCourse.h"
#include "PageEngine.h"
#include "PageOutline.h"
#include "PageScale.h"
#include "PageStore.h"
#include "Progress.h"
#include "Wording.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <span>
#include <utility>

namespace velto {

namespace {

constexpr double slotGap = 10; // between the slots to answer with
constexpr double barGap = 2;   // between the bars of the weakness map

template <typename Enumeration>
std::optional<Enumeration> at(int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= Enumeration::allCases.size())
    return std::nullopt;
  return Enumeration::allCases[static_cast<std::size_t>(index)];
}

std::string finished(JSON::Writer& json) {
  return json.finish().value_or("null");
}

// A number that JSON can hold.
void real(JSON::Writer& json, std::string_view key, double value) {
  json.key(key);
  json.real(std::isfinite(value) ? value : 0);
}

void text(JSON::Writer& json, std::string_view key, std::string_view value) {
  json.key(key);
  json.string(value);
}

void flag(JSON::Writer& json, std::string_view key, bool value) {
  json.key(key);
  json.boolean(value);
}

void integer(JSON::Writer& json, std::string_view key, std::int64_t value) {
  json.key(key);
  json.integer(value);
}

// "rgb(11 12 15)", "rgb(27 29 34 / 0.12)"
std::string css(const Colors::Color& color) {
  const auto part = [](float value) {
    return Numbers::general(std::round(static_cast<double>(value) * 255 * 1000) / 1000, 7);
  };
  std::string result = "rgb(" + part(color.red) + ' ' + part(color.green) + ' ' + part(color.blue);
  if (color.alpha < 1)
    result += " / " + Numbers::general(static_cast<double>(color.alpha), 4);
  return result + ')';
}

void palette(JSON::Writer& json, const Colors::Palette& palette) {
  using Row = std::pair<std::string_view, const Colors::Color*>;
  json.beginObject();
  for (const auto& [name, color] :
       {Row{"bg", &palette.bg}, Row{"surface", &palette.surface}, Row{"soft", &palette.soft},
        Row{"ink", &palette.ink}, Row{"muted", &palette.muted}, Row{"faint", &palette.faint},
        Row{"line", &palette.line}, Row{"identity", &palette.identity},
        Row{"signal", &palette.signal}, Row{"control", &palette.control},
        Row{"selectedFill", &palette.selectedFill}, Row{"track", &palette.track},
        Row{"good", &palette.good}, Row{"warn", &palette.warn}, Row{"bad", &palette.bad}})
    text(json, name, css(*color));
  // The bar of a marker that has faded is opaque: a tick under it does not show through.
  text(json, "fadedSignal", css(Colors::mix(palette.soft, palette.signal, 0.45)));
  json.endObject();
}

// A bar of the weakness map with the colour in both palettes.
void bar(JSON::Writer& json, const BandStat& band) {
  const Progress::Bar bar = Progress::bar(band);
  const auto color = [&](const Colors::Palette& palette) {
    return css(bar.weakness
                   ? Colors::weakness(palette.good, palette.warn, palette.bad, *bar.weakness)
                   : palette.track);
  };
  json.beginObject();
  real(json, "height", bar.height);
  text(json, "dark", color(Colors::dark()));
  text(json, "light", color(Colors::light()));
  json.endObject();
}

template <typename Enumeration>
void choices(JSON::Writer& json, std::string_view key, const Enumeration& chosen) {
  json.key(key);
  json.beginArray();
  for (const Enumeration value : Enumeration::allCases) {
    json.beginObject();
    text(json, "title", Wording::title(value));
    flag(json, "chosen", value == chosen);
    json.endObject();
  }
  json.endArray();
}

// The difficulties of a drill's newest answers.
std::span<const double> curveOf(Drill drill, const Stats& stats) {
  const auto found = stats.curves.find(std::string(drill.rawValue()));
  return found == stats.curves.end() ? std::span<const double>() : found->second;
}

std::string shares(int count, double width, double gap, double devicePixelRatio) {
  JSON::Writer json;
  json.beginArray();
  for (int i = 0; i < count; ++i) {
    const auto share = DevicePixels::share(i, count, width, gap, devicePixelRatio);
    json.beginObject();
    real(json, "left", share.left);
    real(json, "width", share.width);
    json.endObject();
  }
  json.endArray();
  return finished(json);
}

} // namespace

// The render that the session waits for.
struct Page::Waiting {
  std::uint64_t seed = 0;
  WorkQueues::Rendered rendered;
};

Page::Page(PageHost& host, Start start)
    : host_(host), waiting_(std::make_shared<Waiting>()),
      session_(course(std::move(start.record)), start.drill,
               {.background = {},
                // There is one thread: a call takes place where it is made.
                .main = [](const WorkQueues::Work& work) { work(); },
                .render =
                    [&host, waiting = waiting_](const Trial& trial, Noise noise,
                                                WorkQueues::Rendered rendered) {
                      *waiting = {trial.seed, std::move(rendered)};
                      host.render(trial, noise);
                    }},
               player(host, engine_), start.secondsSince1970, start.trials) {}

std::unique_ptr<Course> Page::course(std::string record) {
  auto store = std::make_unique<PageStore>(host_, std::move(record), Profile::detailRows);
  store_ = store.get();
  auto made = std::make_unique<PageCourse>(std::move(store));
  course_ = made.get();
  return made;
}

std::unique_ptr<Player> Page::player(PageHost& host, PageEngine*& engine) {
  auto made = std::make_unique<PageEngine>(host);
  engine = made.get();
  return std::make_unique<Player>(std::move(made), Player::Opening::inBackground);
}

void Page::chooseDrill(int index) {
  if (const auto drill = at<Drill>(index))
    session_.setDrill(*drill);
}

void Page::chooseMaterial(int index) {
  if (const auto material = at<Material>(index))
    session_.setMaterial(*material);
}

void Page::chooseSlot(int index) {
  if (index >= 0)
    session_.select(index);
}

bool Page::isAnswerable() const {
  return session_.trial() && !session_.grade() && !session_.keeping().isPending;
}

bool Page::canAdvance() const {
  return session_.grade() || session_.canSubmit();
}

void Page::answer(double value) {
  if (isAnswerable())
    session_.setAnswer(value);
}

void Page::answerSlot(int index) {
  if (session_.drill() == Drill::polarity && index >= 0 && session_.trial() &&
      index < session_.trial()->slots)
    answer(index);
}

void Page::answerAt(double x, double width) {
  if (const auto scale = PageScale::of(session_.drill()))
    answer(scale->valueAt(x, width));
}

void Page::answerNearest(double value) {
  const auto scale = PageScale::of(session_.drill());
  if (scale && std::isfinite(value))
    answer(scale->nearest(value));
}

void Page::advance() {
  if (session_.grade())
    return session_.newTrial();
  session_.submit();
  // A record that has no JSON is not saved.
  if (!store_->isSaving())
    course_->saveEnded();
}

bool Page::press(const PageKeys::Press& press, Focus focus) {
  if (const auto command = PageKeys::command(press)) {
    switch (*command) {
    case PageKeys::Command::cycleSlot:
      session_.cycleSlot();
      return true;
    case PageKeys::Command::firstSlot:
    case PageKeys::Command::secondSlot:
    case PageKeys::Command::thirdSlot:
      chooseSlot(static_cast<int>(*command) - static_cast<int>(PageKeys::Command::firstSlot));
      return true;
    case PageKeys::Command::newTrial:
      session_.newTrial();
      return true;
    case PageKeys::Command::advance:
      if (canAdvance())
        advance();
      return true;
    }
  }
  // A held Return does nothing; the browser must not click the button that has the focus.
  if (press.key == "Enter" && !press.isModified)
    return true;
  const auto move = PageKeys::move(press);
  if (!move || focus == Focus::elsewhere)
    return false;
  moveFocused(*move, focus);
  return true;
}

void Page::moveFocused(Move move, Focus focus) {
  const auto moved = [move](std::int64_t chosen, std::int64_t count) {
    return KeyMoves::movedChoice(static_cast<int>(chosen), static_cast<int>(count), move);
  };
  // Choosing what is chosen would start another trial.
  const auto choose = [&](int chosen, int count, auto&& pick) {
    if (const int next = moved(chosen, count); next != chosen)
      pick(next);
  };
  const auto slotCount = session_.trial() ? static_cast<int>(session_.trial()->slots) : 0;
  switch (focus) {
  case Focus::drills:
    return choose(static_cast<int>(Drill::Case(session_.drill())),
                  static_cast<int>(Drill::allCases.size()), [this](int i) { chooseDrill(i); });
  case Focus::materials:
    return choose(static_cast<int>(Material::Case(session_.material())),
                  static_cast<int>(Material::allCases.size()),
                  [this](int i) { chooseMaterial(i); });
  case Focus::slots:
    return choose(static_cast<int>(session_.currentSlot()), slotCount,
                  [this](int i) { chooseSlot(i); });
  case Focus::answer:
    if (const auto scale = PageScale::of(session_.drill()))
      answer(scale->moved(session_.answer(), move));
    else
      choose(session_.answer() < 0 ? -1 : static_cast<int>(session_.answer()), slotCount,
             [this](int i) { answerSlot(i); });
    return;
  case Focus::elsewhere:
    return;
  }
}

void Page::takeRender(std::uint64_t seed, std::vector<Slot> slots) {
  if (!waiting_->rendered || waiting_->seed != seed)
    return;
  const auto rendered = std::exchange(waiting_->rendered, {});
  rendered(std::move(slots));
}

void Page::soundOpened(double latencySeconds) {
  engine_->opened(latencySeconds);
}

void Page::soundFailed(std::string reason) {
  engine_->failed(std::move(reason));
}

void Page::recordKept() {
  store_->isKept();
  course_->saveEnded();
}

void Page::recordFailed() {
  store_->hasFailed();
  course_->saveEnded();
}

bool Page::mergeRecord(std::string_view bytes) {
  return store_->merge(bytes);
}

void Page::writeTrial(JSON::Writer& json) const {
  const auto& trial = session_.trial();
  const auto& grade = session_.grade();
  const double difficulty = trial ? trial->difficulty : 0;
  const std::string shown = Numbers::fixed(difficulty, 0);
  text(json, "difficulty", shown);
  text(json, "spokenDifficulty", Wording::spokenDifficulty(shown));
  real(json, "difficultyShare", std::clamp(difficulty / 100, 0.0, 1.0));

  json.key("slots");
  json.beginArray();
  for (std::int64_t slot = 0; trial && slot < trial->slots; ++slot) {
    json.beginObject();
    const std::string title = Wording::slotTitle(trial->drill, slot);
    text(json, "title", title);
    text(json, "name", Wording::playName(title));
    flag(json, "chosen", slot == session_.currentSlot());
    json.endObject();
  }
  json.endArray();

  flag(json, "rendering", session_.rendering());
  text(json, "primary", Wording::primary(grade.has_value(), session_.isOver()));
  flag(json, "canAdvance", canAdvance());
  text(json, "status", Wording::status(session_.rendering(), session_.keeping().isPending));
  if (grade) {
    json.key("verdict");
    json.beginObject();
    flag(json, "correct", grade->correct);
    text(json, "word", Wording::verdict(grade->correct));
    text(json, "detail", Wording::verdictDetail(*grade));
    text(json, "announcement", Wording::announcement(*grade));
    json.endObject();
  }
}

void Page::writeAnswer(JSON::Writer& json) const {
  const auto& trial = session_.trial();
  const auto& grade = session_.grade();
  const auto scale = PageScale::of(session_.drill());
  json.key("answer");
  json.beginObject();
  text(json, "name", Wording::answerName(session_.drill()));
  flag(json, "answerable", isAnswerable());
  if (scale) {
    const double truth = trial ? Drills::truth(*trial) : 0;
    const bool showsTruth = grade && truth > 0;
    const bool hasAnswer = session_.drill() != Drill::frequency || session_.answer() > 0;
    real(json, "value", session_.answer());
    real(json, "lowest", scale->lowest());
    real(json, "highest", scale->highest());
    text(json, "text", hasAnswer ? scale->text(session_.answer()) : "");
    text(json, "truthText", showsTruth ? scale->text(truth) : "");
    text(json, "spoken",
         Wording::spokenAnswer(hasAnswer ? scale->spoken(session_.answer()) : "",
                               showsTruth ? scale->spoken(truth) : ""));
  } else {
    json.key("choices");
    json.beginArray();
    const auto truth = grade ? std::optional(trial->oddSlot) : std::nullopt;
    for (std::int64_t slot = 0; trial && slot < trial->slots; ++slot) {
      const bool chosen = static_cast<double>(slot) == std::trunc(session_.answer());
      json.beginObject();
      const std::string_view caption = Wording::slotCaption(slot, truth);
      text(json, "title", Wording::slotTitle(trial->drill, slot));
      text(json, "name", Wording::slotName(slot));
      text(json, "caption", caption);
      text(json, "description", truth ? caption : "");
      flag(json, "chosen", chosen);
      flag(json, "flipped", truth == slot);
      flag(json, "dot", truth && chosen);
      json.endObject();
    }
    json.endArray();
  }
  json.endObject();
}

void Page::writeProgress(JSON::Writer& json) const {
  const Stats& stats = course_->stats();
  json.key("progress");
  json.beginObject();
  const std::string drill(session_.drill().rawValue());
  const auto found = stats.accuracy.find(drill);
  const auto accuracy = found == stats.accuracy.end() ? std::nullopt : std::optional(found->second);
  const auto curve = curveOf(session_.drill(), stats);
  text(json, "streak", Progress::streak(stats.streak));
  text(json, "today", std::to_string(stats.todayCount));
  text(json, "accuracy", Progress::accuracy(accuracy));
  text(json, "spokenStreak", Progress::spokenStreak(stats.streak));
  text(json, "spokenToday", Progress::spokenToday(stats.todayCount));
  text(json, "spokenAccuracy", Progress::spokenAccuracy(accuracy));
  json.key("bars");
  json.beginArray();
  for (std::size_t band = 0; band < Bands::centres.size(); ++band)
    bar(json, band < stats.bands.size() ? stats.bands[band] : BandStat{});
  json.endArray();
  integer(json, "weakestBand", stats.weakest ? stats.weakest->index : -1);
  text(json, "weakest", Progress::weakest(stats.weakest));
  text(json, "mapDescription", Progress::mapDescription(stats.bands));
  json.key("bandLabels");
  json.beginArray();
  for (const std::size_t band : Progress::labelledBands)
    json.string(Bands::label(Bands::centres[band]));
  json.endArray();
  text(json, "curveTitle", Progress::curveTitle(session_.drill()));
  flag(json, "hasCurve", curve.size() > 1);
  text(json, "curveDescription", Progress::curveDescription(curve));
  json.endObject();
}

std::string Page::state() const {
  JSON::Writer json;
  json.beginObject();
  integer(json, "drill", static_cast<int>(Drill::Case(session_.drill())));
  choices(json, "drills", session_.drill());
  choices(json, "materials", session_.material());
  text(json, "prompt", Wording::prompt(session_.drill()));
  json.key("prompts");
  json.beginArray();
  for (const Drill drill : Drill::allCases)
    json.string(Wording::prompt(drill));
  json.endArray();
  writeTrial(json);
  writeAnswer(json);
  writeProgress(json);
  json.endObject();
  return finished(json);
}

std::string Page::strip(double width, double answerChip, double truthChip,
                        double devicePixelRatio) const {
  const auto scale = PageScale::of(session_.drill());
  if (!scale)
    return "null";
  const double truth = session_.grade() && session_.trial() ? Drills::truth(*session_.trial()) : 0;
  return scale->layout({.value = session_.answer(),
                        .truth = truth > 0 ? std::optional(truth) : std::nullopt,
                        .width = width,
                        .answerChip = answerChip,
                        .truthChip = truthChip,
                        .devicePixelRatio = devicePixelRatio});
}

std::string Page::slotShares(double width, double devicePixelRatio) const {
  const auto& trial = session_.trial();
  return shares(trial ? static_cast<int>(trial->slots) : 0, width, slotGap, devicePixelRatio);
}

std::string Page::mapShares(double width, double devicePixelRatio) {
  return shares(static_cast<int>(Bands::centres.size()), width, barGap, devicePixelRatio);
}

std::string Page::curve(double width, double height) const {
  JSON::Writer json;
  json.beginArray();
  for (const auto& point :
       Progress::curve(curveOf(session_.drill(), course_->stats()), width, height)) {
    json.beginArray();
    json.real(point.x);
    json.real(point.y);
    json.endArray();
  }
  json.endArray();
  return finished(json);
}

std::string Page::words() {
  using Row = std::pair<std::string_view, std::string_view>;
  JSON::Writer json;
  json.beginObject();
  for (const auto& [name, words] :
       {Row{"wordmark", Wording::wordmark}, Row{"subtitle", Wording::subtitle},
        Row{"difficulty", Wording::difficulty}, Row{"actual", Wording::actual},
        Row{"switchHint", Wording::switchHint}, Row{"keyHint", Wording::keyHint},
        Row{"streak", Wording::streak}, Row{"today", Wording::today},
        Row{"accuracy", Wording::accuracy}, Row{"mapTitle", Wording::mapTitle},
        Row{"curveHint", Wording::curveHint}, Row{"drills", Wording::drills},
        Row{"versions", Wording::versions}, Row{"materials", Wording::materials},
        Row{"map", Wording::map}})
    text(json, name, words);
  json.key("primary");
  json.beginArray();
  for (const std::string_view each : Wording::primaryTexts(false))
    json.string(each);
  json.endArray();
  json.endObject();
  return finished(json);
}

std::string Page::outline(double radius, double width) {
  JSON::Writer json;
  json.beginObject();
  text(json, "fill", PageOutline::fill(radius));
  text(json, "frame", PageOutline::frame(radius, width));
  json.endObject();
  return finished(json);
}

std::string Page::palettes() {
  JSON::Writer json;
  json.beginObject();
  json.key("dark");
  palette(json, Colors::dark());
  json.key("light");
  palette(json, Colors::light());
  json.endObject();
  return finished(json);
}

} // namespace velto
