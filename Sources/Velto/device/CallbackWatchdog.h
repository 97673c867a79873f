// Notices a sound output that no longer asks for frames.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>

namespace velto {

// Some sound systems do not report that their server is gone or stopped: only the callbacks cease.
// Any thread, but not the audio thread.
class CallbackWatchdog {
public:
  using Time = std::chrono::steady_clock::time_point;

  // The longest gap between callbacks of an output that works.
  static constexpr std::chrono::milliseconds patience{1000};
  // Counts no more than this between two calls, so that a program that was stopped itself does not
  // mistake its own pause for one of the output.
  static constexpr std::chrono::milliseconds longestStep{600};

  // An output that has not yet called this often is still starting.
  static constexpr std::uint64_t startCallbacks = 4;

  // Watches an output that starts now. While it is starting, `startPatience` replaces `patience`.
  explicit CallbackWatchdog(Time now, std::chrono::milliseconds startPatience = patience)
      : startPatience_(startPatience), last_(now) {}

  // True once `callbacks`, the number so far, has not changed for that long, and ever after. Call
  // at least every `longestStep`: longer intervals delay the result.
  [[nodiscard]] bool isSilent(std::uint64_t callbacks, Time now);

private:
  const std::chrono::milliseconds startPatience_;
  std::mutex mutex_;
  bool isSilent_ = false;
  std::uint64_t callbacks_ = 0;
  Time last_;
  std::chrono::steady_clock::duration silence_{};
};

} // namespace velto
