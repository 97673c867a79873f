#include "Player.h"

#include "kit/Eventually.h"
#include "kit/FakeOutput.h"
#include "kit/Slots.h"
#include "kit/TestPlayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <vector>

namespace velto {
namespace {

using kit::constantSlot;
using kit::FakeOutput;
using kit::noiseSlot;
using kit::RacingDevice;
using namespace std::chrono_literals;

constexpr std::size_t startDelay = 3840; // 0.12 s less the fake device's latency
constexpr std::size_t ramp = 7200;

// A player on a fake device that the test drives. The device closes 1 ms after stop().
struct PlayerTest : ::testing::Test {
  FakeOutput output;
  kit::TestPlayer player{output.factory(), 1ms};

  std::vector<float> left(std::size_t frames, std::size_t block = 480) {
    return output.pull(frames, block).l;
  }

  [[nodiscard]] std::array<float, 3> volumes() const {
    return {player.nodes()[0].volume(), player.nodes()[1].volume(), player.nodes()[2].volume()};
  }

  void load(const std::vector<Slot>& slots, std::int64_t startAt) { player.load(slots, startAt); }
};

using Volumes = std::array<float, 3>;

bool isSilent(const std::vector<float>& x) {
  return std::all_of(x.begin(), x.end(), [](float sample) { return sample == 0; });
}

TEST_F(PlayerTest, IsIdleAtFirst) {
  EXPECT_EQ(player.current(), 0);
  EXPECT_FALSE(player.isPlaying());
  EXPECT_FALSE(player.engine().isRunning());
  EXPECT_EQ(player.nodes().size(), 3U);
  EXPECT_EQ(volumes(), (Volumes{0, 0, 0}));
  EXPECT_EQ(output.opened(), 0);
}

TEST_F(PlayerTest, LoadPlaysTheChosenSlotOnly) {
  const std::vector<Slot> slots{noiseSlot(1000, 1), noiseSlot(1000, 2), noiseSlot(1000, 3)};
  load(slots, 1);
  EXPECT_TRUE(player.isPlaying());
  EXPECT_TRUE(player.engine().isRunning());
  EXPECT_EQ(player.current(), 1);
  (void)left(ramp);
  EXPECT_EQ(volumes(), (Volumes{0, 1, 0}));
  const auto out = left(5000);
  for (std::size_t i = 0; i < out.size(); ++i)
    ASSERT_EQ(out[i], (*slots[1].l)[(ramp - startDelay + i) % 1000]) << i;
}

TEST_F(PlayerTest, LoadFadesInOver150ms) {
  load({constantSlot(10, 1, 1)}, 0);
  EXPECT_EQ(volumes(), (Volumes{0, 0, 0}));
  for (unsigned k = 1; k <= 12; ++k) {
    (void)left(600, 600);
    EXPECT_EQ(volumes()[0], static_cast<float>(k) / 12.0F) << k;
  }
}

TEST_F(PlayerTest, AllVolumesAreZeroAsSoonAsLoadReturns) {
  load({constantSlot(10, 1, 1), constantSlot(10, 1, 1)}, 1);
  (void)left(ramp);
  EXPECT_EQ(volumes(), (Volumes{0, 1, 0}));
  load({constantSlot(10, 1, 1), constantSlot(10, 1, 1)}, 0);
  EXPECT_EQ(volumes(), (Volumes{0, 0, 0}));
}

TEST_F(PlayerTest, TwoSwitches50msApartEndWithTheSecondSlotOnly) {
  load({noiseSlot(1000, 1), noiseSlot(1000, 2), noiseSlot(1000, 3)}, 0);
  (void)left(ramp);
  player.switchTo(1);
  (void)left(2400);
  player.switchTo(2);
  EXPECT_EQ(player.current(), 2);
  (void)left(ramp);
  EXPECT_EQ(volumes(), (Volumes{0, 0, 1}));
}

// The travel of a volume is its distance from the start of a crossfade to the target.
TEST_F(PlayerTest, NoVolumeStepsByMoreThanATwelfthOfItsTravel) {
  load({noiseSlot(1000, 1), noiseSlot(1000, 2), noiseSlot(1000, 3)}, 0);
  Volumes before = volumes();
  std::int64_t target = 0;
  for (std::size_t tick = 0; tick < 300; ++tick) {
    if (tick % 4 == 3) { // 50 ms
      target = static_cast<std::int64_t>((tick * 7 / 4) % 3);
      player.switchTo(target);
    }
    (void)left(600, 200);
    const Volumes now = volumes();
    for (std::size_t i = 0; i < 3; ++i)
      ASSERT_LE(std::abs(now[i] - before[i]), 1.0F / 12.0F + 1e-6F) << tick << ' ' << i;
    before = now;
  }
}

TEST_F(PlayerTest, TheThirdNodeOfTwoSlotsIsSilentButItsVolumeMoves) {
  load({constantSlot(10, 1, 1), constantSlot(10, 1, 1)}, 0);
  (void)left(ramp);
  EXPECT_EQ(left(1)[0], 1.0F);
  player.switchTo(2);
  EXPECT_EQ(player.current(), 2);
  const auto out = left(ramp);
  for (std::size_t i = 1; i < out.size(); ++i)
    ASSERT_LT(out[i], out[i - 1]);
  EXPECT_EQ(volumes(), (Volumes{0, 0, 1}));
  EXPECT_TRUE(isSilent(left(5000)));
  EXPECT_TRUE(player.isPlaying());
}

TEST_F(PlayerTest, IndicesBeyondTheNodesAreIgnored) {
  load({constantSlot(10, 1, 1), constantSlot(10, 1, 1)}, 1);
  (void)left(ramp);
  for (const std::int64_t slot : {std::int64_t{3}, std::numeric_limits<std::int64_t>::max()}) {
    player.switchTo(slot);
    EXPECT_EQ(player.current(), 1);
    (void)left(ramp);
    EXPECT_EQ(volumes(), (Volumes{0, 1, 0}));
  }
}

TEST_F(PlayerTest, StopIsImmediateAndClosesTheDevice) {
  load({constantSlot(10, 1, 1)}, 0);
  (void)left(2 * ramp);
  player.stop();
  EXPECT_FALSE(player.isPlaying());
  EXPECT_FALSE(player.engine().isRunning());
  EXPECT_EQ(volumes(), (Volumes{0, 0, 0}));
  EXPECT_TRUE(output.waitUntilClosed());
}

TEST(Player, StopFadesAndThenStaysSilent) {
  FakeOutput output;
  kit::TestPlayer player(output.factory(), 1s);
  const std::vector<Slot> slots{constantSlot(10, 1, 1)};
  player.load(slots, 0);
  (void)output.pull(2 * ramp, 480);
  player.stop();
  const auto out = output.pull(10000, 64).l;
  for (std::size_t i = 1; i < 240; ++i)
    ASSERT_LT(out[i - 1] - out[i], 0.01F) << i;
  EXPECT_TRUE(isSilent({out.begin() + 240, out.end()}));
}

TEST(Player, StopDuringACrossfadeCancelsIt) {
  FakeOutput output;
  kit::TestPlayer player(output.factory(), 1s);
  const std::vector<Slot> slots{constantSlot(10, 0.5F, 0), constantSlot(10, 1, 0)};
  player.load(slots, 0);
  (void)output.pull(2 * ramp, 480);
  player.switchTo(1);
  (void)output.pull(3000, 480);
  player.stop();
  EXPECT_EQ(player.current(), 1);
  for (int tick = 0; tick < 20; ++tick) {
    (void)output.pull(600, 600);
    for (const PlayerNode& node : player.nodes())
      EXPECT_EQ(node.volume(), 0.0F);
  }
  // The next load fades in from 0.
  player.load(slots, 0);
  (void)output.pull(startDelay, 480);
  const auto out = output.pull(ramp, 480).l;
  EXPECT_EQ(out.front(), 0.0F);
  EXPECT_EQ(out.back(), 0.5F);
}

// A second load on the running stream: the old slots have faded out before the new ones start, each
// at its first frame.
TEST(Player, ASecondLoadPlaysNoFrameOfTheFirstAfterItsStart) {
  for (const std::size_t block : {1U, 64U, 441U, 480U, 1920U, 333U}) {
    FakeOutput output;
    kit::TestPlayer player(output.factory(), 100ms);
    const std::vector<Slot> first{constantSlot(10, 1, 1), constantSlot(10, 1, 1)};
    const std::vector<Slot> second{noiseSlot(3000, 1), noiseSlot(3000, 2), noiseSlot(3000, 3)};
    player.load(first, 1);
    (void)output.pull(2 * ramp, block);
    player.load(second, 2);
    EXPECT_EQ(player.current(), 2);
    EXPECT_EQ(output.opened(), 1);
    const auto out = output.pull(2 * ramp, block).l;
    for (std::size_t i = 1; i < 240; ++i)
      ASSERT_LT(out[i - 1] - out[i], 0.01F) << i;
    for (std::size_t i = 240; i <= startDelay; ++i)
      ASSERT_EQ(out[i], 0.0F) << i;
    const auto& x = *second[2].l;
    for (std::size_t i = startDelay; i < ramp; ++i)
      ASSERT_LE(std::abs(out[i]), std::abs(x[(i - startDelay) % 3000])) << i;
    for (std::size_t i = ramp; i < out.size(); ++i)
      ASSERT_EQ(out[i], x[(i - startDelay) % 3000]) << i;
  }
}

TEST_F(PlayerTest, LoadKeepsItsOwnReferenceToTheBuffers) {
  std::vector<Slot> slots{constantSlot(1000, 0.5F, 0.5F)};
  player.load(slots, 0);
  slots.clear();
  (void)left(ramp);
  EXPECT_EQ(left(1)[0], 0.5F);
}

TEST_F(PlayerTest, AnEngineFailureIsReportedInOneLineAndLeavesThePlayerIdle) {
  output.refuse("no sound today");
  ::testing::internal::CaptureStderr();
  load({constantSlot(10, 1, 1)}, 2);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "Velto: engine start failed - no sound today\n");
  EXPECT_FALSE(player.isPlaying());
  EXPECT_EQ(player.current(), 0);
  player.switchTo(1);
  EXPECT_EQ(player.current(), 0);
  EXPECT_EQ(volumes(), (Volumes{0, 0, 0}));
}

TEST_F(PlayerTest, AFailedLoadStopsPlayback) {
  load({constantSlot(10, 1, 1)}, 0);
  (void)left(ramp);
  output.fail();
  output.refuse("gone");
  ::testing::internal::CaptureStderr();
  load({constantSlot(10, 1, 1), constantSlot(10, 1, 1)}, 1);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Velto: engine start failed - gone\n");
  EXPECT_FALSE(player.isPlaying());
  EXPECT_EQ(player.current(), 0);
}

TEST_F(PlayerTest, ADeviceThatFailsWhilePlayingIsReplacedByTheNextLoad) {
  load({constantSlot(10, 1, 1), constantSlot(10, 0.5F, 0)}, 0);
  (void)left(ramp);
  output.fail();
  player.switchTo(1);
  EXPECT_EQ(player.current(), 1);
  EXPECT_TRUE(left(480).empty());
  load({constantSlot(10, 1, 1), constantSlot(10, 0.5F, 0)}, 1);
  EXPECT_EQ(output.opened(), 2);
  EXPECT_TRUE(player.isPlaying());
  (void)left(ramp);
  EXPECT_EQ(left(1)[0], 0.5F);
}

using PlayerDeathTest = PlayerTest;

TEST_F(PlayerDeathTest, DiesIfASlotIsInvalid) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(load({kit::slotOf(Samples(10), Samples(11))}, 0), "differ in length");
  EXPECT_DEATH(load({Slot{}}, 0), "without buffers");
}

// Makes random calls to a player and models its state.
class PlayerAndModel {
public:
  explicit PlayerAndModel(FakeOutput& output) : output_(output), player_(output.factory(), 1ms) {}

  void callAnything() {
    switch (*rc::gen::inRange(0, 6)) {
    case 0:
      return load();
    case 1:
      player_.stop();
      isPlaying_ = false;
      return;
    case 2:
      return switchToAny();
    default:
      return listen();
    }
  }

  void requireState() {
    RC_ASSERT(player_.current() == current_);
    RC_ASSERT(player_.isPlaying() == isPlaying_);
    RC_ASSERT(player_.engine().isRunning() == isPlaying_);
    if (!isPlaying_)
      for (const PlayerNode& node : player_.nodes())
        RC_ASSERT(node.volume() == 0.0F);
  }

  void requireEnd() {
    player_.stop();
    slots_.clear();
    RC_ASSERT(output_.waitUntilClosed() || output_.opened() == 0);
    RC_ASSERT(!player_.engine().isRunning());
    // The buffers are freed shortly after the device closes.
    for (const auto& samples : watched_)
      RC_ASSERT(kit::eventually([&samples] { return samples.expired(); }));
  }

private:
  void load() {
    slots_.clear();
    const auto count = *rc::gen::inRange<std::size_t>(0, 5);
    for (std::size_t i = 0; i < count; ++i)
      slots_.push_back(noiseSlot(*rc::gen::element<std::size_t>(0, 1, 777, 3000),
                                 *rc::gen::inRange<std::uint32_t>(1, 1000)));
    current_ = *rc::gen::inRange<std::int64_t>(-1, 5);
    player_.load(slots_, current_);
    for (const Slot& slot : slots_)
      watched_.push_back(slot.l.owner());
    isPlaying_ = true;
    sinceLoad_ = sinceRamp_ = 0;
  }

  void switchToAny() {
    const auto slot = *rc::gen::inRange<std::int64_t>(-1, 5);
    player_.switchTo(slot);
    if (isPlaying_ && slot < 3) {
      current_ = slot;
      sinceRamp_ = 0;
    }
  }

  void listen() {
    const auto frames = *rc::gen::inRange<std::size_t>(1, 9000);
    const auto out = output_.pull(frames, *rc::gen::element<std::size_t>(1, 64, 441, 480, 1920));
    if (!isPlaying_)
      return;
    RC_ASSERT(out.frames() == frames);
    requireSound(out);
    sinceLoad_ += frames;
    sinceRamp_ += frames;
    if (sinceRamp_ >= ramp)
      for (std::size_t i = 0; i < 3; ++i)
        RC_ASSERT(player_.nodes()[i].volume() ==
                  (static_cast<std::int64_t>(i) == current_ ? 1.0F : 0.0F));
  }

  // Requires silence before the start, and the current slot alone once its crossfade is over.
  void requireSound(const kit::Recording& out) const {
    const bool isHeard =
        current_ >= 0 && current_ < 3 && current_ < static_cast<std::int64_t>(slots_.size());
    const Slot slot = isHeard ? slots_[static_cast<std::size_t>(current_)] : Slot{};
    const bool hasFrames = isHeard && !slot.l->empty();
    for (std::size_t i = 0; i < out.frames(); ++i) {
      if (sinceLoad_ + i >= 240 && sinceLoad_ + i < startDelay)
        RC_ASSERT(out.l[i] == 0);
      if (sinceRamp_ + i < ramp || sinceLoad_ + i < ramp)
        continue;
      const auto position = sinceLoad_ + i - startDelay;
      RC_ASSERT(out.l[i] == (hasFrames ? (*slot.l)[position % slot.l->size()] : 0));
      RC_ASSERT(out.r[i] == (hasFrames ? (*slot.r)[position % slot.r->size()] : 0));
    }
  }

  FakeOutput& output_;
  kit::TestPlayer player_;
  std::vector<Slot> slots_;
  std::int64_t current_ = 0;
  bool isPlaying_ = false;
  std::size_t sinceLoad_ = 0, sinceRamp_ = 0; // frames
  std::vector<std::weak_ptr<const void>> watched_;
};

// For any sequence of calls and any block sizes: the state matches the model, there is silence
// between the fade tail and the start, and a settled slot plays bit for bit.
RC_GTEST_PROP(Player, FollowsItsRulesForAnySequenceOfCalls, ()) {
  FakeOutput output;
  {
    PlayerAndModel player(output);
    for (int calls = *rc::gen::inRange(1, 20); calls > 0; --calls) {
      player.callAnything();
      player.requireState();
    }
    player.requireEnd();
  }
  RC_ASSERT(!output.overran());
}

// For the thread sanitizer: the main thread loads, switches and stops as fast as it can while a
// device thread renders without a pause. Buffers come and go.
TEST(Player, MainThreadAndDeviceThreadDoNotRace) {
  kit::TestPlayer player([] { return std::make_unique<RacingDevice>(); }, 0ms);
  float highest = 0;
  for (std::uint32_t i = 0; i < 3000; ++i) {
    const std::vector<Slot> slots{noiseSlot(50 + i % 7, i), noiseSlot(60, i + 1), noiseSlot(70, i)};
    player.load(slots, i % 3);
    // Every seventh time, long enough for the device to adopt the new slots.
    const std::uint32_t switches = i % 7 == 0 ? 400 : i % 11;
    for (std::uint32_t k = 0; k < switches; ++k) {
      player.switchTo((i + k) % 4);
      for (const PlayerNode& node : player.nodes())
        highest = std::max(highest, node.volume());
    }
    if (i % 5 == 0)
      player.stop();
    if (i % 50 == 0)
      std::this_thread::yield();
  }
  EXPECT_LE(highest, 1.0F);
  EXPECT_FALSE(RacingDevice::exceededLimits());
}

} // namespace
} // namespace velto
