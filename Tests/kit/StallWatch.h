// Whether the machine itself stood still while a test played sound in real time.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <stop_token>
#include <thread>

#include <gtest/gtest.h>

namespace velto::kit {

// A thread that sleeps 4 ms at a time and sees how late it wakes up. It runs no code of the program
// and waits for nobody, so that a long sleep is the machine's.
class StallWatch {
public:
  // Sound breaks off where the machine stands still for about as long as an output's buffer lasts.
  static constexpr double limitMilliseconds = 25;

  [[nodiscard]] double longestMilliseconds() const { return longest_.load(); }
  [[nodiscard]] bool hasStalled() const { return longestMilliseconds() > limitMilliseconds; }

private:
  void watch(const std::stop_token& ending) {
    constexpr std::chrono::milliseconds nap{4};
    while (!ending.stop_requested()) {
      const auto begin = std::chrono::steady_clock::now();
      std::this_thread::sleep_for(nap);
      const std::chrono::duration<double, std::milli> late =
          std::chrono::steady_clock::now() - begin - nap;
      longest_ = std::max(longest_.load(), late.count());
    }
  }

  std::atomic<double> longest_{0};
  std::jthread thread_{[this](const std::stop_token& ending) { watch(ending); }};
};

// Watches over all tests of a program, and says at its end if the machine stood still: then
// `Tests/desk/calm` gives a failure another try. Does nothing where VELTO_TEST_UNWATCHED is set,
// for tests of what the process itself uses.
class StallReport : public ::testing::Environment {
public:
  void SetUp() override {
    if (std::getenv("VELTO_TEST_UNWATCHED") == nullptr)
      watch_.emplace();
  }
  void TearDown() override {
    if (watch_ && watch_->hasStalled())
      std::cout << "the machine stood still for " << watch_->longestMilliseconds() << " ms\n";
  }

private:
  std::optional<StallWatch> watch_;
};

inline ::testing::Environment* const stallReport =
    ::testing::AddGlobalTestEnvironment(new StallReport);

} // namespace velto::kit
