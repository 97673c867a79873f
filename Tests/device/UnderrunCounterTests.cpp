#include "UnderrunCounter.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <vector>

using namespace velto;

namespace {

using namespace std::chrono_literals;

constexpr std::size_t latency = 1920; // 40 ms

// A stream whose callbacks take no time unless a duration is given.
struct Stream {
  UnderrunCounter underruns;
  UnderrunCounter::Time now{};

  Stream() { underruns.begin(latency); }

  void callback(std::chrono::microseconds since, std::size_t frames = 480,
                std::chrono::microseconds duration = 0us) {
    const auto begin = now + since;
    underruns.note(begin, begin + duration, frames);
    now = begin;
  }

  void settle() {
    callback(0us, 1440);
    callback(2ms);
  }
};

CallbackCounts counts(std::uint64_t all, std::uint64_t late, std::uint64_t missed) {
  return {.all = all, .late = late, .missed = missed};
}

} // namespace

TEST(UnderrunCounter, CallbacksOnTimeAreNeitherLateNorMissed) {
  Stream stream;
  stream.settle();
  for (int i = 0; i < 100; ++i)
    stream.callback(10ms);
  EXPECT_EQ(stream.underruns.counts(), counts(102, 0, 0));
}

TEST(UnderrunCounter, MoreThanThreeQuartersOfTheBufferIsLateAndMoreThanAllOfItIsMissed) {
  Stream stream;
  stream.settle();
  stream.callback(30ms);
  EXPECT_EQ(stream.underruns.counts(), counts(3, 0, 0));
  stream.callback(30ms + 1us);
  EXPECT_EQ(stream.underruns.counts(), counts(4, 1, 0));
  stream.callback(40ms);
  EXPECT_EQ(stream.underruns.counts(), counts(5, 2, 0));
  stream.callback(40ms + 1us);
  EXPECT_EQ(stream.underruns.counts(), counts(6, 3, 1));
  stream.callback(10ms);
  EXPECT_EQ(stream.underruns.counts(), counts(7, 3, 1));
}

// The frames are available only once the callback returns.
TEST(UnderrunCounter, TheDurationOfTheCallbackCountsToo) {
  Stream stream;
  stream.settle();
  stream.callback(10ms, 480, 25ms);
  EXPECT_EQ(stream.underruns.counts(), counts(3, 1, 0));
  stream.callback(25ms); // in time since the last one began
  EXPECT_EQ(stream.underruns.counts(), counts(4, 1, 0));
  stream.callback(10ms, 480, 25ms);
  stream.callback(31ms); // late since that began, though it ended only 6 ms ago
  EXPECT_EQ(stream.underruns.counts(), counts(6, 3, 0));
  stream.callback(10ms, 480, 31ms);
  EXPECT_EQ(stream.underruns.counts(), counts(7, 4, 1));
}

TEST(UnderrunCounter, ALargerRequestRevealsALargerBuffer) {
  Stream stream;
  stream.settle();
  stream.callback(10ms, 9600); // 200 ms
  stream.callback(150ms);
  EXPECT_EQ(stream.underruns.counts(), counts(4, 0, 0));
  stream.callback(151ms);
  stream.callback(201ms);
  EXPECT_EQ(stream.underruns.counts(), counts(6, 2, 1));
}

TEST(UnderrunCounter, TheFirstIntervalOfAStreamDoesNotCount) {
  Stream stream;
  stream.callback(0us, 1440);
  stream.callback(50ms);
  EXPECT_EQ(stream.underruns.counts(), counts(2, 0, 0));
  stream.underruns.begin(latency);
  stream.callback(5s, 1440);
  stream.callback(50ms);
  EXPECT_EQ(stream.underruns.counts(), counts(4, 0, 0));
  stream.callback(50ms);
  EXPECT_EQ(stream.underruns.counts(), counts(5, 1, 1));
}

RC_GTEST_PROP(UnderrunCounterLaw, EachIntervalIsJudgedOnItsOwn, ()) {
  Stream stream;
  stream.settle();
  CallbackCounts expected = counts(2, 0, 0);
  const auto distances =
      *rc::gen::container<std::vector<int>>(rc::gen::inRange<int>(0, 60'000)); // microseconds
  for (const int distance : distances) {
    stream.callback(std::chrono::microseconds(distance));
    ++expected.all;
    expected.late += distance > 30'000 ? 1 : 0;
    expected.missed += distance > 40'000 ? 1 : 0;
    RC_ASSERT(stream.underruns.counts() == expected);
  }
}
