// Checks what the device callback does at a real sound server. Run on a private desk. Sanitizers
// intercept allocators and locks themselves: in their builds, the same calls run without the
// checks.
#include "Player.h"

#ifdef VELTO_WATCHES_CALLBACKS
#include "kit/CallbackWatch.h"
#endif
#include "kit/Eventually.h"
#include "kit/Slots.h"
#include "kit/TestPlayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <mutex>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace velto {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::chrono::seconds duration() {
  const char* text = std::getenv("VELTO_TEST_SECONDS");
  return std::chrono::seconds(text == nullptr ? 4 : std::atoi(text));
}

// Makes every call that the main thread can make while callbacks run: a switch every 20 ms, mostly
// during a crossfade, new slots, a tap, and sometimes a stop.
void practise(kit::TestPlayer& player, Clock::time_point end) {
  std::vector<std::vector<Slot>> trials;
  for (std::uint32_t i = 0; i < 6; ++i)
    trials.push_back({kit::noiseSlot(48000 + i, i), kit::noiseSlot(30000, i + 1),
                      kit::noiseSlot(153600, i + 2)});
  std::atomic<std::size_t> tapped = 0;
  std::size_t round = 0;
  for (; Clock::now() < end; ++round) {
    if (round % 150 == 149) {
      player.stop();
      std::this_thread::sleep_for(round % 300 == 299 ? 200ms
                                                     : 20ms); // with and without a new device
    }
    if (round % 25 == 0 || round % 150 == 149)
      player.load(trials[round / 25 % trials.size()], static_cast<std::int64_t>(round % 3));
    if (round % 40 == 10)
      player.engine().installTap(
          4096, [&tapped](const TapBuffer& buffer) { tapped += buffer.channels[0].size(); });
    if (round % 40 == 35)
      player.engine().removeTap();
    player.switchTo(static_cast<std::int64_t>(round % 4));
    ASSERT_TRUE(player.isPlaying());
    std::this_thread::sleep_for(20ms);
  }
  EXPECT_GT(tapped, 4096U);
}

TEST(Callback, NeverLocksAllocatesOrMakesASystemCall) {
#ifdef VELTO_WATCHES_CALLBACKS
  kit::CallbackWatch::reset();
#endif
  CallbackCounts counts;
  {
    kit::TestPlayer player;
    practise(player, Clock::now() + duration());
    counts = player.engine().callbackCounts();
  }
  EXPECT_GT(counts.all, static_cast<std::uint64_t>(50 * duration().count()));
  std::cout << "  callbacks: " << counts.all << ", late " << counts.late << ", missed "
            << counts.missed << '\n';
#ifdef VELTO_WATCHES_CALLBACKS
  const kit::CallbackOffences offences = kit::CallbackWatch::offences();
  EXPECT_GE(offences.callbacks, counts.all);
  EXPECT_EQ(offences.allocations, 0U);
  EXPECT_EQ(offences.locks, 0U);
  EXPECT_EQ(offences.systemCalls, 0U);
  std::cout << "  system calls counted: "
            << (kit::CallbackWatch::seesEverySystemCall() ? "all" : "those of the C library")
            << '\n';
#endif
}

#ifdef VELTO_WATCHES_CALLBACKS

// A renderer that calls a function first.
class Offending final : public Renderer {
public:
  explicit Offending(std::function<void()> offence) : offence_(std::move(offence)) {}

  void render(float* interleaved, std::size_t frames) noexcept override {
    offence_();
    std::fill(interleaved, interleaved + 2 * frames, 0.0F);
  }

private:
  std::function<void()> offence_;
};

kit::CallbackOffences offencesOf(std::function<void()> offence) {
  kit::CallbackWatch::reset();
  Offending renderer(std::move(offence));
  const auto device = systemOutput()();
  EXPECT_FALSE(device->start(renderer));
  EXPECT_TRUE(kit::eventually([] { return kit::CallbackWatch::offences().callbacks >= 5; }));
  device->stop();
  return kit::CallbackWatch::offences();
}

TEST(CallbackWatch, CountsNothingForACleanRenderer) {
  EXPECT_TRUE(offencesOf([] {}).none());
  EXPECT_TRUE(offencesOf([] { (void)Clock::now(); }).none());
}

TEST(CallbackWatch, CountsAllocations) {
  static void* volatile memory;
  const auto plain = offencesOf([] {
    memory = std::malloc(1);
    std::free(memory);
  });
  EXPECT_GE(plain.allocations, 2 * plain.callbacks);
  const auto object = offencesOf([] {
    memory = new int;
    delete static_cast<int*>(memory);
  });
  EXPECT_GE(object.allocations, 2 * object.callbacks);
  const auto aligned = offencesOf([] {
    memory = std::aligned_alloc(64, 64);
    std::free(memory);
  });
  EXPECT_GE(aligned.allocations, 2 * aligned.callbacks);
}

TEST(CallbackWatch, CountsLocks) {
  static std::mutex mutex;
  const auto locking = offencesOf([] { const std::lock_guard lock(mutex); });
  EXPECT_GE(locking.locks, 2 * locking.callbacks);
  static std::condition_variable condition;
  const auto waking = offencesOf([] { condition.notify_one(); });
  EXPECT_GE(waking.locks, waking.callbacks);
}

TEST(CallbackWatch, CountsSystemCalls) {
  const auto logging = offencesOf([] { (void)!::write(STDERR_FILENO, "", 0); });
  EXPECT_GE(logging.systemCalls, logging.callbacks);
  const auto sleeping = offencesOf([] { std::this_thread::sleep_for(1us); });
  EXPECT_GE(sleeping.systemCalls, sleeping.callbacks);
  const auto direct = offencesOf([] { ::syscall(SYS_getppid); });
  if (kit::CallbackWatch::seesEverySystemCall()) {
    EXPECT_GE(direct.systemCalls, direct.callbacks);
  }
}

#endif

} // namespace
} // namespace velto
