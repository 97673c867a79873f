#include "CallbackWatchdog.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

using namespace std::chrono_literals;

constexpr CallbackWatchdog::Time start{};

TEST(CallbackWatchdog, ReportsAnOutputAfterASecondWithoutACallback) {
  CallbackWatchdog dog(start);
  std::uint64_t callbacks = 10;
  auto now = start;
  for (; now < start + 10s; now += 500ms)
    EXPECT_FALSE(dog.isSilent(++callbacks, now));
  EXPECT_FALSE(dog.isSilent(callbacks, now)); // 0.5 s without a callback
  EXPECT_FALSE(dog.isSilent(callbacks, now + 499ms));
  EXPECT_TRUE(dog.isSilent(callbacks, now + 500ms));
  EXPECT_TRUE(dog.isSilent(callbacks + 1, now + 600ms)); // broken for good
}

TEST(CallbackWatchdog, CountsFromTheStartOfAnOutputThatNeverCalls) {
  CallbackWatchdog dog(start);
  EXPECT_FALSE(dog.isSilent(0, start + 500ms));
  EXPECT_FALSE(dog.isSilent(0, start + 999ms));
  EXPECT_TRUE(dog.isSilent(0, start + 1s));
}

TEST(CallbackWatchdog, UsesTheStartPatienceWhileAnOutputStarts) {
  CallbackWatchdog dog(start, 2s);
  EXPECT_FALSE(dog.isSilent(1, start + 100ms)); // fills its buffer
  auto now = start + 100ms;
  for (int i = 0; i < 3; ++i)
    EXPECT_FALSE(dog.isSilent(1, now += 500ms));
  EXPECT_TRUE(dog.isSilent(1, now += 500ms));

  CallbackWatchdog other(start, 2s);
  EXPECT_FALSE(other.isSilent(CallbackWatchdog::startCallbacks, start + 100ms));
  EXPECT_FALSE(other.isSilent(CallbackWatchdog::startCallbacks, start + 600ms));
  EXPECT_TRUE(other.isSilent(CallbackWatchdog::startCallbacks, start + 1100ms));
}

// After the program was stopped or the machine was busy, the output still gets time to call.
TEST(CallbackWatchdog, DoesNotMistakeAPauseOfTheProgramForOneOfTheOutput) {
  CallbackWatchdog dog(start);
  EXPECT_FALSE(dog.isSilent(9, start));
  EXPECT_FALSE(dog.isSilent(9, start + 1h));
  EXPECT_FALSE(dog.isSilent(10, start + 1h + 300ms));
  EXPECT_FALSE(dog.isSilent(10, start + 1h)); // not expected of a steady clock, but harmless
}

} // namespace
} // namespace velto
