// One block of the device callback, including underrun counting and headroom, compared with a plain
// copy of as many samples.

#include "AudioEngine.h"
#include "Mixer.h"
#include "ReferenceTrial.h"
#include "Rendering.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

namespace velto::benchmarks {
namespace {

constexpr std::size_t blockFrames = 480; // PulseAudio's request, 10 ms

// An output device whose renderer the benchmark calls itself.
class PulledDevice final : public OutputDevice {
public:
  explicit PulledDevice(Renderer*& renderer) : renderer_(renderer) {}

  std::optional<std::string> start(Renderer& renderer) override {
    renderer_ = &renderer;
    return std::nullopt;
  }
  void stop() override {}
  [[nodiscard]] bool failed() const override { return false; }
  [[nodiscard]] std::size_t latencyFrames() const override { return 1920; }

private:
  Renderer*& renderer_;
};

// An engine that plays the slots of a polarity trial: three voices.
class PlayingEngine {
public:
  PlayingEngine() : engine_([this] { return std::make_unique<PulledDevice>(renderer_); }) {
    if (engine_.start())
      std::abort();
    engine_.play(Drills::render(trialOf(Drill::polarity), trialSeconds), 0, 0);
    for (std::uint64_t frame = 0; frame < 2 * Mixer::rampFrames; frame += blockFrames)
      callback();
  }
  void callback() {
    fillOutput(*renderer_, block_.data(), blockFrames);
    benchmark::DoNotOptimize(block_.front());
  }
  [[nodiscard]] Engine& engine() { return engine_; }

private:
  std::vector<float> block_ = std::vector<float>(2 * blockFrames);
  Renderer* renderer_ = nullptr;
  Engine engine_;
};

void resting(benchmark::State& state) {
  PlayingEngine playing;
  for (auto _ : state)
    playing.callback();
}
BENCHMARK(resting)->Name("callback/480 frames, one voice heard");

// A crossfade takes 15 blocks. A new one starts every ten, so that all voices keep fading.
void crossfading(benchmark::State& state) {
  PlayingEngine playing;
  std::int64_t block = 0;
  for (auto _ : state) {
    if (block++ % 10 == 0)
      playing.engine().switchTo(block / 10 % 2);
    playing.callback();
  }
}
BENCHMARK(crossfading)->Name("callback/480 frames, crossfading");

// Limited to the number of blocks that fit into the tap's ring: the benchmark renders faster than
// the ring is read.
void tapped(benchmark::State& state) {
  PlayingEngine playing;
  playing.engine().installTap(4096, [](const TapBuffer&) {});
  for (auto _ : state)
    playing.callback();
}
BENCHMARK(tapped)->Name("callback/480 frames, one voice heard, with a tap")->Iterations(90);

void copying(benchmark::State& state) {
  const std::vector<float> from(2 * blockFrames, 0.5F);
  std::vector<float> to(2 * blockFrames);
  for (auto _ : state) {
    std::copy(from.begin(), from.end(), to.begin());
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(copying)->Name("callback/floor: a copy");

} // namespace
} // namespace velto::benchmarks
