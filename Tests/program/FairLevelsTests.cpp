// Measures the levels of fair trials at a real sink. Run on a private desk. Besides its checks, it
// prints a table with the loudness by ITU-R BS.1770.
#include "Bands.h"
#include "Drill.h"
#include "Player.h"
#include "Rendering.h"
#include "Slot.h"
#include "Trial.h"
#include "kit/Alignment.h"
#include "kit/Chance.h"
#include "kit/PlaybackBuffer.h"
#include "kit/Recorder.h"
#include "kit/Spectrum.h"
#include "kit/TestPlayer.h"

#include "Numbers.h"

#include <ebur128.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace velto::kit {
namespace {

constexpr std::size_t loopFrames = 153600; // 3.2 s

// From a call of the player until the slot is heard alone: the latency of sink and recorder, and a
// switch of 150 ms.
const std::size_t settleFrames = bufferedFrames() + 14400;

// Levels of one channel of a slot, in dB of full scale.
struct ChannelLevel {
  double mean = 0, from20HzUp = 0, peak = 0;
};

ChannelLevel levelOf(const std::vector<float>& x) {
  const LoopLevel level = loopLevel(x, 20);
  const float peak = std::abs(*std::max_element(
      x.begin(), x.end(), [](float a, float b) { return std::abs(a) < std::abs(b); }));
  return {.mean = 20 * std::log10(std::abs(level.mean)),
          .from20HzUp = level.fromLowUpDB,
          .peak = 20 * std::log10(static_cast<double>(peak))};
}

// Integrated loudness of a loop played three times.
double loudness(const Recording& loop) {
  ebur128_state* meter = ebur128_init(2, 48000, EBUR128_MODE_I);
  if (meter == nullptr)
    throw std::runtime_error("no loudness meter");
  std::vector<float> interleaved;
  for (std::size_t i = 0; i < loop.frames(); ++i) {
    interleaved.push_back(loop.l[i]);
    interleaved.push_back(loop.r[i]);
  }
  double lufs = 0;
  bool done = true;
  for (int round = 0; round < 3; ++round)
    done = done &&
           ebur128_add_frames_float(meter, interleaved.data(), loop.frames()) == EBUR128_SUCCESS;
  done = done && ebur128_loudness_global(meter, &lufs) == EBUR128_SUCCESS;
  ebur128_destroy(&meter);
  if (!done)
    throw std::runtime_error("the loudness cannot be measured");
  return lufs;
}

Recording loopOf(const Slot& slot) {
  return {{slot.l->begin(), slot.l->end()}, {slot.r->begin(), slot.r->end()}};
}

// Whether a sample is recorded as it was rendered. Subnormal numbers, as at the end of a filter's
// decay between two drum hits, are not halved exactly.
bool isSame(float heard, float rendered) {
  return std::abs(heard - rendered) < std::numeric_limits<float>::min();
}

// Whether `heard`, at the sink's level, is the loop of `slot` from frame `phase` on.
bool plays(const Recording& heard, const Slot& slot, std::size_t phase) {
  const Recording rendered = asRendered(heard);
  for (std::size_t i = 0; i < rendered.frames(); ++i) {
    const std::size_t place = (phase + i) % loopFrames;
    if (!isSame(rendered.l[i], (*slot.l)[place]) || !isSame(rendered.r[i], (*slot.r)[place]))
      return false;
  }
  return true;
}

// One whole loop of each slot of `trial`, as the sink plays it.
std::vector<Recording> loopsOf(const Trial& trial) {
  const std::vector<Slot> slots = Drills::render(trial, 3.2, Noise::audible);
  Recorder recorder;
  kit::TestPlayer player;
  player.load(slots, 0,
              trial.drill == Drill::polarity ? Switching::throughSilence : Switching::crossfade);
  if (!player.isPlaying())
    throw std::runtime_error("the player does not play");
  while (firstSound(recorder.recording(), 0) == recorder.frames())
    recorder.waitForMore(480);
  // All slots start at the same frame, at gain 0.
  const std::size_t start = firstSound(recorder.recording(), 0) - firstSound(loopOf(slots[0]), 1);
  std::vector<Recording> loops;
  for (std::size_t slot = 0; slot < slots.size(); ++slot) {
    if (slot > 0)
      player.switchTo(static_cast<std::int64_t>(slot));
    const std::size_t begin = recorder.frames() + settleFrames;
    recorder.waitForMore(settleFrames + loopFrames);
    loops.push_back(recorder.recording().part(begin, loopFrames));
    // Otherwise a stall of the machine or an unfinished switch would be measured too.
    if (!plays(loops.back(), slots[slot], begin - start))
      throw std::runtime_error("the recording is not the slot's");
    // Rotate the loop to its first frame: the loudness meter's blocks must cover the same places of
    // all loops.
    for (auto* channel : {&loops.back().l, &loops.back().r})
      std::rotate(channel->begin(),
                  channel->end() - static_cast<std::ptrdiff_t>((begin - start) % loopFrames),
                  channel->end());
  }
  return loops;
}

std::string targetText(const Trial& trial) {
  switch (trial.drill) {
  case Drill::frequency:
    return Bands::label(trial.targetFreq) + " Hz";
  case Drill::level:
    return Numbers::fixed(trial.targetLevelDB, 2) + " dB";
  case Drill::dynamics:
    return Numbers::fixed(trial.targetGRdB, 1) + " dB";
  case Drill::polarity:
    return "slot " + std::to_string(trial.oddSlot + 1);
  }
  return "";
}

// Prints the row of one slot.
void printRow(const Trial& trial, std::size_t slot, const Recording& loop) {
  const ChannelLevel l = levelOf(loop.l), r = levelOf(loop.r);
  std::cout << "| " << trial.drill.rawValue() << " | " << trial.material.shortName() << " | "
            << Numbers::fixed(trial.difficulty, 0) << " | " << targetText(trial) << " | "
            << "ABC"[slot] << " | " << Numbers::fixed(l.from20HzUp, 2) << " | "
            << Numbers::fixed(r.from20HzUp, 2) << " | " << Numbers::fixed(loudness(loop), 1)
            << " | " << Numbers::fixed(std::max(l.peak, r.peak), 1) << " | "
            << Numbers::fixed(std::max(l.mean, r.mean), 0) << " |\n";
}

void printHead() {
  std::cout << "| drill | material | difficulty | target | version | L from 20 Hz | R from 20 Hz "
               "| LUFS | peak | mean |\n";
}

// Measures the slots of `trial`, checks their levels, and prints their rows.
void check(const Trial& trial) {
  const std::vector<Recording> loops = loopsOf(trial);
  for (std::size_t slot = 0; slot < loops.size(); ++slot) {
    const bool atLevel = trial.drill != Drill::level || slot == 0;
    for (const auto* channel : {&loops[slot].l, &loops[slot].r}) {
      const ChannelLevel level = levelOf(*channel);
      const std::string where = targetText(trial) + ", version " + "ABC"[slot] + ", " +
                                (channel == &loops[slot].l ? "left" : "right");
      EXPECT_LT(level.mean, -55) << where;
      EXPECT_LT(level.peak, 0) << where;
      if (atLevel) {
        EXPECT_NEAR(level.from20HzUp, -26, 0.15) << where;
      }
    }
    printRow(trial, slot, loops[slot]);
  }
  if (trial.drill == Drill::polarity)
    return;
  for (const auto channel : {&Recording::l, &Recording::r}) {
    const double difference =
        levelOf(loops[1].*channel).from20HzUp - levelOf(loops[0].*channel).from20HzUp;
    EXPECT_NEAR(difference, trial.targetLevelDB, trial.drill == Drill::level ? 0.01 : 0.05)
        << targetText(trial);
  }
}

class FairLevels
    : public ::testing::TestWithParam<std::tuple<Drill::Case, Material::Case, double>> {};

TEST_P(FairLevels, MatchTheTrial) {
  const auto [drill, material, difficulty] = GetParam();
  printHead();
  for (const Trial& trial : extremeTrials(drill, material, difficulty))
    check(trial);
}

std::string nameOf(const ::testing::TestParamInfo<FairLevels::ParamType>& instance) {
  const Drill drill = std::get<0>(instance.param);
  const Material material = std::get<1>(instance.param);
  return std::string(drill.rawValue()) + std::string(material.shortName()) +
         Numbers::fixed(std::get<2>(instance.param), 0);
}

INSTANTIATE_TEST_SUITE_P(Trials, FairLevels,
                         ::testing::Combine(::testing::Values(Drill::frequency, Drill::level,
                                                              Drill::dynamics, Drill::polarity),
                                            ::testing::Values(Material::pinkNoise, Material::drums,
                                                              Material::pad),
                                            ::testing::Values(0.0, 20.0, 60.0, 100.0)),
                         nameOf);

// The quick check: one trial, the drums with the largest level difference.
TEST(FairLevelsOfOneTrial, MatchTheTrial) {
  printHead();
  check(extremeTrials(Drill::level, Material::drums, 0)[1]);
}

} // namespace
} // namespace velto::kit
