#include "AudioEngine.h"

#include "kit/Eventually.h"
#include "kit/FakeOutput.h"
#include "kit/Slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

namespace velto {
namespace {

using kit::constantSlot;
using kit::eventually;
using kit::FakeOutput;
using kit::noiseSlot;
using namespace std::chrono_literals;

constexpr auto atOnce = 0ms;

std::vector<float> leftOf(FakeOutput& output, std::size_t frames) {
  return output.pull(frames, 480).l;
}

TEST(Engine, CreatesNoDeviceBeforeStart) {
  FakeOutput output;
  const Engine engine(output.factory(), atOnce);
  EXPECT_EQ(output.opened(), 0);
  EXPECT_FALSE(engine.isRunning());
}

TEST(Engine, RunsBetweenStartAndStop) {
  FakeOutput output;
  Engine engine(output.factory(), atOnce);
  EXPECT_FALSE(engine.start());
  EXPECT_TRUE(engine.isRunning());
  EXPECT_TRUE(output.isOpen());
  engine.stop();
  EXPECT_FALSE(engine.isRunning());
}

TEST(Engine, OpensANewDeviceOnceTheLastOneIsClosed) {
  FakeOutput output;
  Engine engine(output.factory(), atOnce);
  for (int round = 1; round <= 3; ++round) {
    EXPECT_FALSE(engine.start());
    EXPECT_EQ(output.opened(), round);
    engine.stop();
    EXPECT_TRUE(output.waitUntilClosed());
  }
}

TEST(Engine, AStartBeforeTheDeviceClosesReusesIt) {
  FakeOutput output;
  {
    Engine engine(output.factory(), 1s);
    for (int round = 0; round < 5; ++round) {
      EXPECT_FALSE(engine.start());
      engine.stop();
    }
    EXPECT_FALSE(engine.start());
    EXPECT_TRUE(engine.isRunning());
    EXPECT_EQ(output.opened(), 1);
    EXPECT_TRUE(output.isOpen());
  }
  EXPECT_FALSE(output.isOpen());
}

// Waits for at least `time`, the closing delay of a second engine, so that a closing that fell due
// in the meantime has happened.
void letClosingThreadsRunFor(std::chrono::milliseconds time) {
  FakeOutput output;
  Engine engine(output.factory(), time);
  EXPECT_FALSE(engine.start());
  engine.stop();
  EXPECT_TRUE(output.waitUntilClosed());
}

TEST(Engine, AStartCancelsTheClosing) {
  FakeOutput output;
  Engine engine(output.factory(), 100ms);
  EXPECT_FALSE(engine.start());
  engine.stop();
  letClosingThreadsRunFor(20ms); // the closing is scheduled, not yet due
  EXPECT_FALSE(engine.start());
  letClosingThreadsRunFor(150ms);
  EXPECT_TRUE(output.isOpen());
  EXPECT_TRUE(engine.isRunning());
  EXPECT_EQ(output.opened(), 1);
}

TEST(Engine, ADeviceThatDoesNotStartIsReportedAndLeavesTheEngineStopped) {
  FakeOutput output;
  Engine engine(output.factory(), atOnce);
  output.refuse("out of order");
  EXPECT_EQ(engine.start(), "out of order");
  EXPECT_FALSE(engine.isRunning());
  EXPECT_EQ(engine.start(), "out of order");
  output.refuse(std::nullopt);
  EXPECT_FALSE(engine.start());
  EXPECT_TRUE(engine.isRunning());
}

TEST(Engine, AFailedDeviceIsReplacedAtTheNextStart) {
  FakeOutput output;
  Engine engine(output.factory(), 1s);
  EXPECT_FALSE(engine.start());
  engine.play({constantSlot(10, 1, 1)}, 0, 0);
  (void)leftOf(output, 480);
  output.fail();
  EXPECT_FALSE(engine.isRunning());
  engine.stop();
  EXPECT_FALSE(engine.start());
  EXPECT_EQ(output.opened(), 2);
  EXPECT_TRUE(engine.isRunning());
  // Nothing of the old device's sound is left, and the new one plays.
  EXPECT_EQ(leftOf(output, 480), std::vector<float>(480));
  engine.play({constantSlot(10, 1, 1)}, 0, 0);
  (void)leftOf(output, 7200);
  EXPECT_EQ(leftOf(output, 1), std::vector<float>{1});
}

TEST(Engine, AFailedDeviceThatCannotBeReplacedLeavesTheEngineStopped) {
  FakeOutput output;
  Engine engine(output.factory(), atOnce);
  EXPECT_FALSE(engine.start());
  output.fail();
  output.refuse("gone");
  EXPECT_EQ(engine.start(), "gone");
  EXPECT_FALSE(engine.isRunning());
  EXPECT_FALSE(output.isOpen());
}

// --- Non-blocking starts ---

TEST(EngineInBackground, AStartRequestsTheDeviceAndTheNextOneUsesIt) {
  FakeOutput output;
  Engine engine(output.factory(), 1s);
  std::atomic<int> ends{0};
  engine.whenOpeningEnds([&ends] { ++ends; });
  EXPECT_EQ(engine.output(), Engine::Output::closed);
  output.hold();
  EXPECT_FALSE(engine.startAtOnce());
  EXPECT_FALSE(engine.isRunning());
  EXPECT_EQ(engine.output(), Engine::Output::opening);
  EXPECT_FALSE(engine.startAtOnce()); // the same opening
  output.letGo();
  ASSERT_TRUE(eventually([&ends] { return ends == 1; }));
  EXPECT_EQ(engine.output(), Engine::Output::open);
  EXPECT_FALSE(engine.isRunning());
  EXPECT_TRUE(engine.startAtOnce());
  EXPECT_TRUE(engine.isRunning());
  engine.play({constantSlot(10, 1, 1)}, 0, 0);
  (void)leftOf(output, 7200);
  EXPECT_EQ(leftOf(output, 1), std::vector<float>{1});
  EXPECT_EQ(output.opened(), 1);
  EXPECT_EQ(ends, 1);
}

TEST(EngineInBackground, AnErrorIsKeptUntilTheDeviceIsRequestedAgain) {
  FakeOutput output;
  Engine engine(output.factory(), atOnce);
  std::atomic<int> ends{0};
  engine.whenOpeningEnds([&ends] { ++ends; });
  output.refuse("out of order");
  EXPECT_FALSE(engine.startAtOnce());
  ASSERT_TRUE(eventually([&ends] { return ends == 1; }));
  EXPECT_EQ(engine.output(), Engine::Output::closed);
  EXPECT_EQ(engine.error(), "out of order");
  output.hold();
  EXPECT_FALSE(engine.startAtOnce());
  EXPECT_EQ(engine.error(), std::nullopt);
  output.letGo();
  ASSERT_TRUE(eventually([&ends] { return ends == 2; }));
  EXPECT_EQ(engine.error(), "out of order");
}

TEST(EngineInBackground, ABrokenDeviceIsReplaced) {
  FakeOutput output;
  Engine engine(output.factory(), 1s);
  EXPECT_FALSE(engine.start());
  output.fail();
  EXPECT_EQ(engine.output(), Engine::Output::closed);
  EXPECT_FALSE(engine.startAtOnce());
  EXPECT_TRUE(eventually([&] { return engine.output() == Engine::Output::open; }));
  EXPECT_EQ(output.opened(), 2);
}

TEST(EngineInBackground, StopCancelsTheOpeningAndTheDeviceCloses) {
  FakeOutput output;
  Engine engine(output.factory(), atOnce);
  std::atomic<int> ends{0};
  engine.whenOpeningEnds([&ends] { ++ends; });
  output.hold();
  EXPECT_FALSE(engine.startAtOnce());
  ASSERT_TRUE(eventually([&output] { return output.held() == 1; }));
  engine.stop();
  EXPECT_EQ(engine.output(), Engine::Output::closed);
  output.letGo();
  ASSERT_TRUE(eventually([&output] { return output.opened() == 1 && !output.isOpen(); }));
  EXPECT_EQ(ends, 0);
}

// A server that does not answer delays a closing, then an opening, but no caller.
TEST(EngineInBackground, OnlyStartWaitsForADeviceThatDoesNotAnswer) {
  FakeOutput output;
  Engine engine(output.factory(), atOnce);
  EXPECT_FALSE(engine.start());
  engine.play({constantSlot(10, 1, 1)}, 0, 0);
  output.hold();
  engine.stop();
  ASSERT_TRUE(eventually([&output] { return output.held() == 1; }));
  for (int round = 0; round < 3; ++round) {
    EXPECT_FALSE(engine.startAtOnce());
    EXPECT_EQ(engine.output(), Engine::Output::opening);
    EXPECT_FALSE(engine.isRunning());
    EXPECT_EQ(engine.volume(0), 0.0F);
    engine.installTap(480, [](const TapBuffer&) {});
    engine.removeTap();
    engine.stop();
  }
  EXPECT_FALSE(engine.startAtOnce());
  output.letGo();
  EXPECT_TRUE(eventually([&engine] { return engine.output() == Engine::Output::open; }));
  EXPECT_EQ(output.opened(), 2);
}

TEST(EngineInBackground, ItsDestructorDoesNotWaitForeverForADeviceThatDoesNotClose) {
  FakeOutput output;
  auto slot = noiseSlot(1000, 1);
  const std::weak_ptr<const void> watched = slot.l.owner();
  {
    Engine engine(output.factory(), atOnce);
    EXPECT_FALSE(engine.start());
    engine.play({std::move(slot)}, 0, 0);
    slot = {};
    output.hold();
  }
  EXPECT_TRUE(output.isOpen());
  // The device may still ask for frames, and gets them.
  EXPECT_FALSE(watched.expired());
  EXPECT_EQ(leftOf(output, 480).size(), 480U);
  output.letGo();
  EXPECT_TRUE(output.waitUntilClosed());
  EXPECT_TRUE(eventually([&watched] { return watched.expired(); }));
}

TEST(Engine, CountsItsCallbacks) {
  FakeOutput output;
  Engine engine(output.factory(), atOnce);
  EXPECT_EQ(engine.callbackCounts(), CallbackCounts{});
  EXPECT_FALSE(engine.start());
  (void)leftOf(output, 4800);
  EXPECT_EQ(engine.callbackCounts().all, 10U);
}

// The delay includes the device's latency, so the mixer waits for the rest of it only.
TEST(Engine, TheFirstFrameIsHeardAfterTheDelay) {
  for (const auto& [latency, expected] :
       {std::pair{0U, 5760U}, {1920U, 3840U}, {5759U, 1U}, {5760U, 0U}, {100000U, 0U}}) {
    FakeOutput output(latency);
    Engine engine(output.factory(), atOnce);
    EXPECT_FALSE(engine.start());
    (void)leftOf(output, 1000);
    engine.play({constantSlot(10, 1, 1)}, 0, 0.12);
    const auto out = leftOf(output, 10000);
    const auto first = std::find_if(out.begin(), out.end(), [](float x) { return x != 0; });
    EXPECT_EQ(first - out.begin(), expected + 1) << latency;
  }
}

TEST(Engine, KeepsBuffersUntilTheMixerReleasesThem) {
  FakeOutput output;
  Engine engine(output.factory(), 1s);
  EXPECT_FALSE(engine.start());
  auto first = noiseSlot(1000, 1);
  const std::weak_ptr<const void> watched = first.l.owner();
  engine.play({std::move(first)}, 0, 0);
  first = {};
  (void)leftOf(output, 480);
  engine.play({noiseSlot(1000, 2)}, 0, 0);
  EXPECT_FALSE(watched.expired()); // the mixer may be reading it right now
  engine.switchTo(0);
  EXPECT_FALSE(watched.expired());
  (void)leftOf(output, 1);
  engine.switchTo(0);
  EXPECT_TRUE(watched.expired());
}

TEST(Engine, FreesBuffersThatWereReplacedBeforeTheyPlayed) {
  FakeOutput output;
  Engine engine(output.factory(), 1s);
  EXPECT_FALSE(engine.start());
  std::vector<std::weak_ptr<const void>> watched;
  for (std::uint32_t i = 0; i < 10; ++i) {
    auto slot = noiseSlot(1000, i);
    watched.push_back(slot.l.owner());
    engine.play({std::move(slot)}, 0, 0);
  }
  (void)leftOf(output, 1);
  engine.switchTo(0);
  for (std::size_t i = 0; i < 9; ++i)
    EXPECT_TRUE(watched[i].expired()) << i;
  EXPECT_FALSE(watched[9].expired());
}

TEST(Engine, ClosingFreesAllBuffers) {
  FakeOutput output;
  Engine engine(output.factory(), atOnce);
  EXPECT_FALSE(engine.start());
  auto slot = noiseSlot(1000, 1);
  const std::weak_ptr<const void> watched = slot.l.owner();
  engine.play({std::move(slot)}, 0, 0);
  slot = {};
  (void)leftOf(output, 480);
  engine.stop();
  EXPECT_TRUE(output.waitUntilClosed());
  EXPECT_FALSE(engine.isRunning());
  // The buffers are freed shortly after the device closes.
  EXPECT_TRUE(eventually([&watched] { return watched.expired(); }));
}

TEST(Engine, ItsDestructorFreesAllBuffers) {
  FakeOutput output;
  auto slot = noiseSlot(1000, 1);
  const std::weak_ptr<const void> watched = slot.l.owner();
  {
    Engine engine(output.factory(), atOnce);
    EXPECT_FALSE(engine.start());
    engine.play({std::move(slot)}, 0, 0);
    slot = {};
    (void)leftOf(output, 480);
    EXPECT_FALSE(watched.expired());
  }
  EXPECT_TRUE(watched.expired());
}

TEST(Engine, ItsDestructorFadesOutFirst) {
  FakeOutput output;
  auto engine = std::make_unique<Engine>(output.factory(), 200ms);
  EXPECT_FALSE(engine->start());
  engine->play({constantSlot(10, 1, 1)}, 0, 0);
  (void)leftOf(output, 9600);
  std::thread ending([&engine] { engine.reset(); });
  float last = 1, steepest = 0;
  while (output.isOpen())
    for (const float sample : output.pullBlock(48).l) {
      steepest = std::max(steepest, last - sample);
      last = sample;
    }
  ending.join();
  EXPECT_EQ(last, 0.0F);
  EXPECT_LT(steepest, 0.01F);
}

} // namespace
} // namespace velto
