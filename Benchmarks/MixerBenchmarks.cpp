// One block of the mixer, as the sound output asks for it, beside a plain copy of as many samples.

#include "LiteralTrial.h"
#include "Mixer.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace velto::benchmarks {
namespace {

constexpr std::size_t blockFrames = 512;

// A mixer that plays the slots of a polarity trial: three voices.
class PlayingMixer {
public:
  PlayingMixer() {
    const auto slots = Drills::render(trialOf(Drill::polarity), trialSeconds);
    std::copy(slots.begin(), slots.end(), playback_.slots.begin());
    mixer_.publish({.playback = &playback_, .generation = 1, .ramp = 1, .chosen = 0});
  }
  void render() { mixer_.render(block_.data(), blockFrames); }
  void skipCrossfade() {
    for (std::uint64_t frame = 0; frame < 2 * Mixer::rampFrames; frame += blockFrames)
      render();
  }
  void crossfade(std::uint32_t ramp) {
    mixer_.publish({.playback = &playback_, .generation = 1, .ramp = ramp, .chosen = ramp % 2});
  }
  [[nodiscard]] const std::vector<float>& block() const { return block_; }

private:
  Playback playback_;
  Mixer mixer_;
  std::vector<float> block_ = std::vector<float>(2 * blockFrames);
};

void steady(benchmark::State& state) {
  const auto playing = std::make_unique<PlayingMixer>();
  playing->skipCrossfade();
  for (auto _ : state) {
    playing->render();
    benchmark::DoNotOptimize(playing->block().front());
  }
}
BENCHMARK(steady)->Name("mixer/512 frames, one voice heard");

// A crossfade takes 14 blocks: each of the first ten starts anew, so that all voices move.
void crossfading(benchmark::State& state) {
  const auto playing = std::make_unique<PlayingMixer>();
  playing->skipCrossfade();
  std::uint32_t block = 0;
  for (auto _ : state) {
    if (block++ % 10 == 0)
      playing->crossfade(2 + block / 10);
    playing->render();
    benchmark::DoNotOptimize(playing->block().front());
  }
}
BENCHMARK(crossfading)->Name("mixer/512 frames, crossfading");

void copying(benchmark::State& state) {
  const std::vector<float> from(2 * blockFrames, 0.5F);
  std::vector<float> to(2 * blockFrames);
  for (auto _ : state) {
    std::copy(from.begin(), from.end(), to.begin());
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(copying)->Name("mixer/floor: a copy");

} // namespace
} // namespace velto::benchmarks
