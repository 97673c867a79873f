#include "EndSignals.h"

#include "kit/Forked.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

using namespace velto;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

bool isReadable(int descriptor) {
  pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
  return ::poll(&waiting, 1, 0) == 1;
}

} // namespace

// Each test changes how its process handles signals, so it runs in a forked process.

TEST(EndSignals, AreHeldAndTheFirstIsReported) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    kit::Forked forked([signal] {
      const int descriptor = EndSignals::hold();
      ASSERT_GE(descriptor, 0);
      EXPECT_FALSE(isReadable(descriptor));
      EXPECT_EQ(EndSignals::received(), 0);
      std::raise(signal);
      std::raise(SIGTERM); // terminals send some signals twice
      std::raise(signal);
      EXPECT_TRUE(isReadable(descriptor));
      EXPECT_EQ(EndSignals::received(), signal);
      EXPECT_EQ(EndSignals::received(), signal);
    });
    EXPECT_EQ(forked.ended(), 0) << signal;
  }
}

TEST(EndSignals, LeavesAnIgnoredSignalIgnored) {
  kit::Forked forked([] {
    std::signal(SIGHUP, SIG_IGN);
    ASSERT_GE(EndSignals::hold(), 0);
    std::raise(SIGHUP);
    EXPECT_EQ(EndSignals::received(), 0);
  });
  EXPECT_EQ(forked.ended(), 0);
}

TEST(EndSignals, EndTheProcessUnlessHeld) {
  kit::Forked forked([] {
    std::raise(SIGTERM);
    ::_exit(0);
  });
  EXPECT_EQ(forked.ended(), EndSignals::exitStatus(SIGTERM));
}

TEST(EndSignals, WaitsUntilTheTimeOrUntilASignal) {
  kit::Forked forked([] {
    const auto begin = Clock::now();
    EXPECT_EQ(EndSignals::waitUntil(begin + 100ms), 0); // nothing is held
    EXPECT_GE(Clock::now() - begin, 100ms);
    ASSERT_GE(EndSignals::hold(), 0);
    EXPECT_EQ(EndSignals::waitUntil(Clock::now() + 50ms), 0);
    std::signal(SIGALRM, [](int) { std::raise(SIGTERM); });
    ::ualarm(50'000, 0);
    EXPECT_EQ(EndSignals::waitUntil(begin + 60s), SIGTERM);
    EXPECT_LT(Clock::now() - begin, 30s);
  });
  EXPECT_EQ(forked.ended(), 0);
}
