// Plays targets across their whole range and measures them at a real sink. Run on a private desk.
#include "Drill.h"
#include "Player.h"
#include "Rendering.h"
#include "Slot.h"
#include "Trial.h"
#include "kit/Alignment.h"
#include "kit/Listener.h"
#include "kit/Recorder.h"
#include "kit/TestPlayer.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

namespace velto::kit {
namespace {

constexpr double seconds = 3.2;
constexpr std::size_t loopFrames = 153600;
constexpr std::size_t settleFrames = 24000; // crossfade and latency of the recorder

Listener::Part listen(Recorder& recorder, std::size_t slot, std::size_t begin) {
  recorder.waitForMore(begin + loopFrames - recorder.frames());
  return {.slot = slot, .begin = begin, .sound = recorder.recording().part(begin, loopFrames)};
}

// The whole loop of A and of B, aligned frame by frame.
std::pair<Recording, Recording> hearBoth(const Trial& trial) {
  const std::vector<Slot> slots = Drills::render(trial, seconds);
  Recorder recorder;
  kit::TestPlayer player;
  player.load(slots, 0);
  if (!player.isPlaying())
    throw std::runtime_error("the player does not play");
  while (firstSound(recorder.recording(), 0) == recorder.recording().frames())
    recorder.waitForMore(480);
  const Listener::Part a = listen(recorder, 0, recorder.frames() + settleFrames);
  player.switchTo(1);
  const Listener::Part b = listen(recorder, 1, recorder.frames() + settleFrames);
  return Listener::everyPlace(a, b, loopFrames);
}

TEST(PlayerTargets, ALevelDifferenceArrivesWithin0_05DB) {
  for (const double target : {0.2, 0.4, 0.75, 1.25, 2.0, 2.7, 3.45, 4.2, 5.15, 6.0}) {
    const auto [a, b] = hearBoth({.drill = Drill::level,
                                  .seed = 77,
                                  .material = Material::pinkNoise,
                                  .targetLevelDB = target});
    ASSERT_EQ(a.frames(), loopFrames);
    EXPECT_NEAR(Listener::levelDifferenceDB(a, b), target, 0.05);
  }
}

TEST(PlayerTargets, AGainReductionArrivesWithin0_5DB) {
  for (const double target : {0.8, 1.5, 2.0, 3.1, 4.8, 6.0, 7.7, 9.0, 10.5, 12.0}) {
    const auto [a, b] = hearBoth(
        {.drill = Drill::dynamics, .seed = 78, .material = Material::drums, .targetGRdB = target});
    ASSERT_EQ(a.frames(), loopFrames);
    EXPECT_NEAR(Listener::gainReductionDB(a, b), target, 0.5);
  }
}

} // namespace
} // namespace velto::kit
