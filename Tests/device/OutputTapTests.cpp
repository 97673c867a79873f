#include "OutputTap.h"

#include "AudioEngine.h"
#include "kit/FakeOutput.h"
#include "kit/Slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace velto {
namespace {

using kit::FakeOutput;
using kit::noiseSlot;
using kit::RacingDevice;
using kit::Recording;
using namespace std::chrono_literals;

constexpr std::size_t bufferFrames = 4096;

// Collects what a tap delivers. Any thread.
class Listener {
public:
  [[nodiscard]] OutputTap::Block block() {
    return [this](const TapBuffer& buffer) {
      const std::lock_guard lock(mutex_);
      heard_.l.insert(heard_.l.end(), buffer.channels[0].begin(), buffer.channels[0].end());
      heard_.r.insert(heard_.r.end(), buffer.channels[1].begin(), buffer.channels[1].end());
      formats_.push_back(buffer.format);
      lengths_.push_back(buffer.channels[0].size());
      dropped_ = buffer.droppedFrames;
      thread_ = std::this_thread::get_id();
      more_.notify_all();
    };
  }

  // Waits for a total of `count` buffers; false on a timeout.
  [[nodiscard]] bool waitForBuffers(std::size_t count) {
    std::unique_lock lock(mutex_);
    return more_.wait_for(lock, 20s, [this, count] { return lengths_.size() >= count; });
  }

  template <typename T>
  [[nodiscard]] T read(T Listener::*member) const {
    const std::lock_guard lock(mutex_);
    return this->*member;
  }

  Recording heard_;
  std::vector<BusFormat> formats_;
  std::vector<std::size_t> lengths_;
  std::uint64_t dropped_ = 0;
  std::thread::id thread_;

private:
  mutable std::mutex mutex_;
  std::condition_variable more_;
};

struct OutputTapTest : ::testing::Test {
  Listener listener; // outlives the engine
  FakeOutput output;
  Engine engine{output.factory(), 1ms};

  void SetUp() override {
    ASSERT_FALSE(engine.start());
    engine.play({noiseSlot(7000, 1), noiseSlot(5000, 2)}, 0, 0);
  }

  // Pulls `count` whole buffers, waiting for the tap so that none is dropped.
  Recording pullBuffers(std::size_t count, std::size_t blockFrames, std::size_t already = 0) {
    Recording pulled;
    for (std::size_t i = 1; i <= count; ++i) {
      pulled.append(output.pull(bufferFrames, blockFrames));
      EXPECT_TRUE(listener.waitForBuffers(already + i));
    }
    return pulled;
  }
};

TEST_F(OutputTapTest, DeliversEveryFrameOfTheMixerInOrder) {
  engine.installTap(bufferFrames, listener.block());
  Recording pulled;
  for (const std::size_t blockFrames : {480U, 1U, 441U, 1920U, 4096U})
    pulled.append(pullBuffers(3, blockFrames, pulled.frames() / bufferFrames));
  engine.removeTap();
  EXPECT_EQ(listener.heard_.l, pulled.l);
  EXPECT_EQ(listener.heard_.r, pulled.r);
  EXPECT_EQ(listener.dropped_, 0U);
}

TEST_F(OutputTapTest, BuffersHave4096FramesAndTheFormatOfTheBus) {
  engine.installTap(bufferFrames, listener.block());
  (void)pullBuffers(5, 500);
  engine.removeTap();
  EXPECT_EQ(listener.lengths_, std::vector<std::size_t>(5, 4096));
  for (const BusFormat& format : listener.formats_) {
    EXPECT_EQ(format.sampleRateHz, 48000);
    EXPECT_EQ(format.channelCount, 2U);
    EXPECT_EQ(format, engine.outputFormat());
  }
}

TEST_F(OutputTapTest, CallsItsBlockOnASeparateThread) {
  std::thread::id device;
  engine.installTap(bufferFrames, listener.block());
  std::thread([&] {
    device = std::this_thread::get_id();
    (void)output.pull(bufferFrames, 480);
  }).join();
  ASSERT_TRUE(listener.waitForBuffers(1));
  engine.removeTap();
  EXPECT_NE(listener.thread_, device);
  EXPECT_NE(listener.thread_, std::this_thread::get_id());
}

TEST_F(OutputTapTest, DeliversNothingFromBeforeItsInstallation) {
  (void)output.pull(10'000, 480);
  engine.installTap(bufferFrames, listener.block());
  const Recording pulled = pullBuffers(2, 480);
  engine.removeTap();
  EXPECT_EQ(listener.heard_.l, pulled.l);
}

TEST_F(OutputTapTest, DeliversNothingAfterItsRemoval) {
  engine.installTap(bufferFrames, listener.block());
  (void)pullBuffers(1, 480);
  (void)output.pull(bufferFrames - 1, 480);
  engine.removeTap();
  const std::size_t before = listener.lengths_.size();
  (void)output.pull(5 * bufferFrames, 480);
  // Once a later tap has delivered, a late delivery to the first would have arrived too.
  Listener second;
  engine.installTap(bufferFrames, second.block());
  const Recording pulled = output.pull(bufferFrames, 480);
  ASSERT_TRUE(second.waitForBuffers(1));
  engine.removeTap();
  EXPECT_EQ(second.heard_.l, pulled.l);
  EXPECT_EQ(listener.lengths_.size(), before);
}

TEST_F(OutputTapTest, ASecondTapReplacesTheFirst) {
  engine.installTap(bufferFrames, listener.block());
  Listener second;
  engine.installTap(bufferFrames, second.block());
  const Recording pulled = output.pull(bufferFrames, 480);
  ASSERT_TRUE(second.waitForBuffers(1));
  engine.removeTap();
  EXPECT_EQ(second.heard_.l, pulled.l);
  EXPECT_TRUE(listener.lengths_.empty());
}

TEST_F(OutputTapTest, ASlowBlockLosesFramesButNeverDelaysTheDevice) {
  std::mutex gate;
  std::unique_lock closed(gate);
  std::atomic<bool> isIn{false};
  const auto record = listener.block();
  engine.installTap(bufferFrames, [&](const TapBuffer& buffer) {
    isIn = true;
    isIn.notify_all();
    const std::lock_guard lock(gate);
    record(buffer);
  });
  const Recording first = output.pull(bufferFrames, 4096);
  isIn.wait(false);
  // The block holds one buffer and the ring takes 16 more; the device continues regardless.
  const Recording rest = output.pull(40 * bufferFrames, 4096);
  EXPECT_EQ(rest.frames(), 40 * bufferFrames);
  closed.unlock();
  ASSERT_TRUE(listener.waitForBuffers(1 + 16));
  engine.removeTap();
  ASSERT_EQ(listener.lengths_.size(), 1 + 16U);
  Recording expected = first;
  expected.append(rest);
  expected.l.resize(listener.heard_.frames());
  EXPECT_EQ(listener.heard_.l, expected.l);
  EXPECT_EQ(listener.dropped_, 24 * bufferFrames);
}

TEST_F(OutputTapTest, StaysInstalledWhenTheDeviceIsReopened) {
  engine.installTap(bufferFrames, listener.block());
  Recording pulled = pullBuffers(1, 480);
  engine.stop();
  ASSERT_TRUE(output.waitUntilClosed());
  ASSERT_FALSE(engine.start());
  pulled.append(pullBuffers(1, 480, 1));
  engine.play({noiseSlot(3000, 3)}, 0, 0);
  pulled.append(pullBuffers(2, 480, 2));
  engine.removeTap();
  EXPECT_EQ(listener.heard_.l, pulled.l);
}

TEST_F(OutputTapTest, StaysInstalledWhenTheDeviceBreaks) {
  engine.installTap(bufferFrames, listener.block());
  Recording pulled = pullBuffers(1, 480);
  output.fail();
  ASSERT_FALSE(engine.start());
  pulled.append(pullBuffers(2, 480, 1));
  engine.removeTap();
  EXPECT_EQ(listener.heard_.l, pulled.l);
}

TEST(OutputTap, CanBeInstalledBeforeStartAndRemovedAfterStop) {
  Listener listener;
  FakeOutput output;
  Engine engine(output.factory(), 0ms);
  engine.removeTap();
  engine.installTap(bufferFrames, listener.block());
  ASSERT_FALSE(engine.start());
  engine.play({noiseSlot(7000, 1)}, 0, 0);
  const Recording pulled = output.pull(bufferFrames, 480);
  ASSERT_TRUE(listener.waitForBuffers(1));
  engine.stop();
  ASSERT_TRUE(output.waitUntilClosed());
  engine.removeTap();
  engine.removeTap();
  EXPECT_EQ(listener.heard_.l, pulled.l);
}

TEST(OutputTap, EndsWithItsEngine) {
  Listener listener;
  FakeOutput output;
  {
    Engine engine(output.factory(), 0ms);
    ASSERT_FALSE(engine.start());
    engine.installTap(bufferFrames, listener.block());
    (void)output.pull(bufferFrames / 2, 480);
  }
  EXPECT_FALSE(output.isOpen());
  EXPECT_TRUE(listener.lengths_.empty());
}

// For the thread sanitizer: taps come and go while a device thread renders without a pause.
TEST(OutputTap, CanBeInstalledAndRemovedWhileADeviceRenders) {
  Engine engine([] { return std::make_unique<RacingDevice>(); }, 0ms);
  ASSERT_FALSE(engine.start());
  engine.play({kit::constantSlot(100, 0.5F, 0.5F)}, 0, 0);
  std::atomic<int> delivered{0};
  float highest = 0; // written by the block, read here after the last removal
  for (int i = 0; i < 100; ++i) {
    const int before = delivered;
    engine.installTap(64, [&](const TapBuffer& buffer) {
      for (const auto channel : buffer.channels)
        for (const float sample : channel)
          highest = std::max(highest, sample);
      delivered.fetch_add(1);
      delivered.notify_all();
    });
    if (i % 2 == 0)
      delivered.wait(before);
    engine.removeTap();
  }
  engine.stop();
  EXPECT_EQ(highest, 0.5F);
  EXPECT_GE(delivered, 50);
}

} // namespace
} // namespace velto
