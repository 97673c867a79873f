// What the engine does while devices hang. The limits are shortened; the last test checks the real
// ones.
#include "AudioEngine.h"

#include "kit/Eventually.h"
#include "kit/HangingOutput.h"
#include "kit/Slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace velto {
namespace {

using kit::eventually;
using kit::HangingOutput;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Output = Engine::Output;

constexpr DeviceThread::Limits limits{
    .opening = 100ms, .closing = 50ms, .ending = 500ms, .looking = 5ms};

struct HangingDevice : ::testing::Test {
  HangingOutput output;
  Engine engine{output.factory(), 10ms, limits};

  // Requests the output and waits until its opening is given up.
  void giveUpAnOpening() {
    EXPECT_FALSE(engine.startAtOnce());
    ASSERT_TRUE(eventually([this] { return engine.output() == Output::closed; }));
    EXPECT_EQ(engine.error(), "the sound server does not answer");
  }

  // True once the engine plays on device `number`, and on no other.
  [[nodiscard]] bool playsOn(std::size_t number) {
    if (!eventually([this] { return engine.startAtOnce(); }))
      return false;
    engine.play({kit::constantSlot(10, 1, 1)}, 0, 0);
    (void)output.pull(number, 7200);
    const bool plays = output.pull(number, 1) == std::vector<float>{1};
    for (std::size_t other = 0; other < output.openings(); ++other) {
      const auto block = output.pull(other, 480);
      if (other != number &&
          std::any_of(block.begin(), block.end(), [](float x) { return x != 0; }))
        return false;
    }
    return plays;
  }
};

TEST_F(HangingDevice, IsGivenUpAndTheNextOnePlays) {
  output.hangOpenings(true);
  giveUpAnOpening();
  output.hangOpenings(false);
  EXPECT_TRUE(playsOn(1));
  EXPECT_EQ(output.hanging(), 1);
  // The first one opens after all. Nobody hears it.
  output.release(0);
  EXPECT_TRUE(eventually([this] { return !output.isOpen(0) && output.hanging() == 0; }));
  EXPECT_TRUE(playsOn(1));
  EXPECT_EQ(output.openings(), 2U);
}

TEST_F(HangingDevice, IsNeverJoinedByMoreThanOneOther) {
  output.hangOpenings(true);
  for (int i = 0; i < 6; ++i)
    giveUpAnOpening();
  EXPECT_EQ(output.mostHanging(), 2);
  EXPECT_EQ(output.openings(), 2U);
  // As soon as one of them no longer hangs, there is sound.
  output.hangOpenings(false);
  output.release(0);
  ASSERT_TRUE(eventually([this] { return output.hanging() == 1; }));
  EXPECT_TRUE(eventually([this] { return engine.startAtOnce(); }));
  EXPECT_TRUE(playsOn(2));
  output.release(1);
  EXPECT_TRUE(eventually([this] { return !output.isOpen(1); }));
  EXPECT_TRUE(playsOn(2));
  EXPECT_EQ(output.mostHanging(), 2);
}

TEST_F(HangingDevice, ThatOpensLateIsUsedIfNoneTookItsPlace) {
  output.hangOpenings(true);
  giveUpAnOpening();
  giveUpAnOpening();
  output.hangOpenings(false);
  output.release(1);
  EXPECT_TRUE(playsOn(1));
  EXPECT_EQ(output.openings(), 2U);
}

TEST_F(HangingDevice, ThatDoesNotCloseIsLeftBehind) {
  EXPECT_TRUE(playsOn(0));
  output.hangClosings(true);
  engine.stop();
  ASSERT_TRUE(eventually([this] { return output.hanging() == 1; }));
  EXPECT_TRUE(eventually([this] { return engine.startAtOnce(); }));
  output.hangClosings(false);
  EXPECT_TRUE(playsOn(1));
  output.releaseAll();
  EXPECT_TRUE(eventually([this] { return !output.isOpen(0); }));
  EXPECT_TRUE(playsOn(1));
}

TEST_F(HangingDevice, FreesItsBuffersWhenItIsGivenUp) {
  auto slot = kit::noiseSlot(1000, 1);
  const std::weak_ptr<const void> watched = slot.l.owner();
  ASSERT_TRUE(eventually([this] { return engine.startAtOnce(); }));
  engine.play({std::move(slot)}, 0, 0);
  slot = {};
  (void)output.pull(0, 480);
  output.hangClosings(true);
  engine.stop();
  ASSERT_TRUE(eventually([this] { return output.hanging() == 1; }));
  EXPECT_FALSE(watched.expired());
  EXPECT_TRUE(eventually([this] { return engine.startAtOnce(); }));
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(output.pull(0, 480), std::vector<float>(480));
}

TEST_F(HangingDevice, ReportsAnOpeningThatEndsAfterAnotherWasGivenUp) {
  std::atomic<int> ends{0};
  engine.whenOpeningEnds([&ends] { ++ends; });
  output.hangOpenings(true);
  giveUpAnOpening();
  EXPECT_EQ(ends, 0);
  output.hangOpenings(false);
  EXPECT_FALSE(engine.startAtOnce());
  EXPECT_TRUE(eventually([&ends] { return ends == 1; }));
}

TEST_F(HangingDevice, MakesABlockingStartFailInTime) {
  output.hangOpenings(true);
  for (int i = 0; i < 3; ++i) {
    const auto begin = Clock::now();
    EXPECT_EQ(engine.start(), "the sound server does not answer");
    EXPECT_LT(Clock::now() - begin, 5s);
    EXPECT_FALSE(engine.isRunning());
  }
  EXPECT_EQ(output.openings(), 2U);
}

TEST_F(HangingDevice, MayOutliveItsEngine) {
  HangingOutput other;
  auto late = std::make_unique<Engine>(other.factory(), 1ms, limits);
  other.hangOpenings(true);
  EXPECT_FALSE(late->startAtOnce());
  ASSERT_TRUE(eventually([&other] { return other.hanging() == 1; }));
  const auto begin = Clock::now();
  late.reset();
  EXPECT_LT(Clock::now() - begin, 5s);
  EXPECT_EQ(other.hanging(), 1);
  other.releaseAll();
  EXPECT_TRUE(eventually([&other] { return !other.isOpen(0) && other.hanging() == 0; }));
}

// --- A better output ---

TEST_F(HangingDevice, IsLeftWithAFadeForABetterOne) {
  EXPECT_TRUE(playsOn(0));
  output.offerBetter();
  std::vector<float> heard;
  ASSERT_TRUE(eventually([&] {
    const auto block = output.pull(0, 480);
    heard.insert(heard.end(), block.begin(), block.end());
    return engine.output() == Output::closed;
  }));
  const auto rest = output.pull(0, 480); // until it is replaced
  heard.insert(heard.end(), rest.begin(), rest.end());
  EXPECT_FALSE(engine.isRunning());
  EXPECT_EQ(engine.error(), std::nullopt);
  EXPECT_EQ(heard.front(), 1.0F);
  EXPECT_EQ(heard.back(), 0.0F);
  for (std::size_t i = 1; i < heard.size(); ++i)
    EXPECT_LE(heard[i - 1] - heard[i], 0.005F);
  EXPECT_TRUE(playsOn(1));
  EXPECT_FALSE(output.isOpen(0));
}

TEST_F(HangingDevice, IsKeptDespiteABetterOneAfterABlockingStart) {
  EXPECT_FALSE(engine.start());
  output.offerBetter();
  std::this_thread::sleep_for(100ms);
  EXPECT_TRUE(engine.isRunning());
  EXPECT_EQ(output.openings(), 1U);
}

TEST(HangingDeviceLimits, AreTenSecondsForAnOpening) {
  constexpr DeviceThread::Limits real;
  EXPECT_EQ(real.opening, 10s);
  EXPECT_LE(real.closing, 2s);
  // The self-test: an opening that hangs, 1.2 s of recording, the end.
  EXPECT_LT(real.opening + 1200ms + Engine::defaultCloseDelay + real.ending, 14s);
  // The playback bench, which plays for 25.3 s at most.
  EXPECT_LT(25300ms + Engine::defaultCloseDelay + real.ending, 26700ms);
}

} // namespace
} // namespace velto
