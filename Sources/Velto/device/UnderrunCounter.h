// Counts underruns of the sound output.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace velto {

// Numbers of callbacks.
struct CallbackCounts {
  std::uint64_t all = 0;
  std::uint64_t late = 0;   // of all: the buffer was nearly or entirely empty
  std::uint64_t missed = 0; // of late: it was empty, an audible dropout

  bool operator==(const CallbackCounts&) const = default;
};

// Infers underruns from the time between callbacks, because the sound library reports none.
//
// A callback fills the output's buffer: the requested latency (`outputLatencyFrames`, 60 ms), or
// the largest block requested so far if that is longer. The next callback must end before the
// buffer is empty. The time from the beginning of one callback to the end of the next decides:
// - more than three quarters of the buffer (45 ms): late. PulseAudio keeps the last quarter in the
//   sink, so the stream itself has run dry; this is audible only if the previous callback was
//   delayed as well;
// - more than the whole buffer (60 ms): missed. A dropout.
//
// The first interval of a stream is ignored, because the output starts to play some time after its
// first block.
class UnderrunCounter {
public:
  using Time = std::chrono::steady_clock::time_point;

  // Begins a stream whose buffer holds at least `bufferFrames` frames. Not concurrently with
  // note().
  void begin(std::size_t bufferFrames);

  // Counts a callback for `frames` frames that ran from `begin` to `end`. Audio thread. Real-time
  // safe.
  void note(Time begin, Time end, std::size_t frames) noexcept;

  // Sums over all streams. Any thread.
  [[nodiscard]] CallbackCounts counts() const;

private:
  // Accessed by note() and begin() only.
  std::uint64_t bufferFrames_ = 0;
  std::uint64_t callbacks_ = 0; // of this stream
  Time lastBegin_;

  // Audio thread writes, any thread reads.
  std::atomic<std::uint64_t> all_{0}, late_{0}, missed_{0};
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace velto
