// velto.wasm
#include "Interface.h"
#include "Page.h"
#include "PageStore.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

using namespace velto;

namespace {

using Buffers = std::vector<std::pair<std::shared_ptr<Samples>, std::shared_ptr<Samples>>>;

class Host final : public PageHost {
public:
  void render(const Trial& trial, Noise noise) override {
    velto_host_render(static_cast<int>(Drill::Case(trial.drill)),
                      static_cast<int>(Material::Case(trial.material)), trial.seed,
                      trial.difficulty, noise == Noise::audible);
  }
  void openSound() override { velto_host_openSound(); }
  void play(std::span<const Slot> slots, std::int64_t chosen, std::uint64_t delayFrames,
            Switching switching) override {
    played = slots;
    velto_host_play(static_cast<int>(slots.size()), index(chosen), static_cast<double>(delayFrames),
                    switching == Switching::throughSilence);
    played = {};
  }
  void switchTo(std::int64_t chosen) override { velto_host_switchTo(index(chosen)); }
  void silence() override { velto_host_silence(); }
  void keepRecord(std::string_view bytes) override {
    velto_host_keepRecord(bytes.data(), bytes.size());
  }

  std::span<const Slot> played; // during play()

private:
  static int index(std::int64_t chosen) {
    return static_cast<int>(std::clamp<std::int64_t>(chosen, -1, std::numeric_limits<int>::max()));
  }
};

struct Module {
  Host host;
  std::string input, output;
  Buffers taken; // the render being taken
  std::optional<Page> page;

  [[nodiscard]] std::string takeInput(std::size_t size) {
    input.resize(std::min(size, input.size()));
    return std::exchange(input, {});
  }
  [[nodiscard]] const char* give(std::string text) {
    output = std::move(text);
    return output.data();
  }
};

Module& instance() {
  static Module made;
  return made;
}

Page& page() {
  return *instance().page;
}

} // namespace

char* velto_page_input(std::size_t size) {
  instance().input.resize(size);
  return instance().input.data();
}

std::size_t velto_page_outputSize() {
  return instance().output.size();
}

void velto_page_start(int drill, bool fair, double secondsSince1970, std::size_t recordSize) {
  const bool isKnown = drill >= 0 && static_cast<std::size_t>(drill) < Drill::allCases.size();
  instance().page.emplace(
      instance().host,
      Page::Start{.drill = Drill::allCases[isKnown ? static_cast<std::size_t>(drill) : 0],
                  .trials = fair ? Session::Trials::fair : Session::Trials::standard,
                  .secondsSince1970 = secondsSince1970,
                  .record = instance().takeInput(recordSize)});
}

void velto_page_chooseDrill(int index) {
  page().chooseDrill(index);
}

void velto_page_chooseMaterial(int index) {
  page().chooseMaterial(index);
}

void velto_page_chooseSlot(int index) {
  page().chooseSlot(index);
}

void velto_page_answerSlot(int index) {
  page().answerSlot(index);
}

void velto_page_answerAt(double x, double width) {
  page().answerAt(x, width);
}

void velto_page_answerNearest(double value) {
  page().answerNearest(value);
}

void velto_page_advance() {
  page().advance();
}

bool velto_page_press(std::size_t keySize, int flags, int focus) {
  const std::string key = instance().takeInput(keySize);
  const auto bits = static_cast<unsigned>(flags);
  const bool isKnown = focus > 0 && focus <= static_cast<int>(Page::Focus::materials);
  return page().press({.key = key,
                       .isModified = (bits & 1U) != 0,
                       .isLocked = (bits & 2U) != 0,
                       .isRepeat = (bits & 4U) != 0},
                      isKnown ? static_cast<Page::Focus>(focus) : Page::Focus::elsewhere);
}

void velto_page_suspend() {
  page().suspend();
}

void velto_page_resume() {
  page().resume();
}

void velto_page_beginRender(int count, std::size_t frames) {
  instance().taken.clear();
  for (int i = 0; i < count; ++i)
    instance().taken.emplace_back(std::make_shared<Samples>(frames),
                                  std::make_shared<Samples>(frames));
}

float* velto_page_samples(int slot, int channel) {
  const auto index = static_cast<std::size_t>(slot);
  if (const auto played = instance().host.played; index < played.size()) {
    const Slot& found = played[index];
    // The page only reads what is played.
    return const_cast<float*>((channel == 0 ? found.l : found.r)->data()); // NOLINT
  }
  if (index >= instance().taken.size())
    return nullptr;
  const auto& [left, right] = instance().taken[index];
  return (channel == 0 ? left : right)->data();
}

std::size_t velto_page_frames() {
  if (!instance().host.played.empty())
    return instance().host.played.front().l->size();
  return instance().taken.empty() ? 0 : instance().taken.front().first->size();
}

void velto_page_takeRender(std::uint64_t seed) {
  std::vector<Slot> slots;
  const auto shared = [](std::shared_ptr<Samples>& samples) {
    const std::span<const float> all = *samples;
    return SharedSamples(std::move(samples), all);
  };
  for (auto& channels : instance().taken)
    slots.push_back({shared(channels.first), shared(channels.second)});
  instance().taken.clear();
  page().takeRender(seed, std::move(slots));
}

void velto_page_soundOpened(double latencySeconds) {
  page().soundOpened(latencySeconds);
}

void velto_page_soundFailed(std::size_t size) {
  page().soundFailed(instance().takeInput(size));
}

void velto_page_recordKept() {
  page().recordKept();
}

void velto_page_recordFailed() {
  page().recordFailed();
}

bool velto_page_mergeRecord(std::size_t size) {
  return page().mergeRecord(instance().takeInput(size));
}

bool velto_page_isRecord(std::size_t size) {
  return PageStore::isRecord(instance().takeInput(size));
}

const char* velto_page_state() {
  return instance().give(page().state());
}

const char* velto_page_strip(double width, double answerChip, double truthChip, double ratio) {
  return instance().give(page().strip(width, answerChip, truthChip, ratio));
}

const char* velto_page_slotShares(double width, double ratio) {
  return instance().give(page().slotShares(width, ratio));
}

const char* velto_page_mapShares(double width, double ratio) {
  return instance().give(Page::mapShares(width, ratio));
}

const char* velto_page_curve(double width, double height) {
  return instance().give(page().curve(width, height));
}

const char* velto_page_words() {
  return instance().give(Page::words());
}

const char* velto_page_outline(double radius, double width) {
  return instance().give(Page::outline(radius, width));
}

const char* velto_page_palettes() {
  return instance().give(Page::palettes());
}
