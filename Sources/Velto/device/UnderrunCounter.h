// Whether the sound output is fed in time.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace velto {

// How often an output asked for frames, and how often they came too late.
struct CallbackCounts {
  std::uint64_t all = 0;
  std::uint64_t late = 0;   // among all: little was left to play, or nothing
  std::uint64_t missed = 0; // among late: nothing was left for sure, the listener heard a gap

  bool operator==(const CallbackCounts&) const = default;
};

// Counts late and missed callbacks by their distance in time; the sound library tells of none.
//
// A callback fills the output's buffer, so what is in it lasts from then for as long as the buffer
// is: the latency that was asked for (`outputLatencyFrames`, 60 ms), or the largest block that was
// ever asked for if that is more. The frames of the next callback must be there before that. From
// the beginning of one callback to the end of the next,
// - more than three quarters of the buffer (45 ms) make it late: PulseAudio keeps the last quarter
//   in the sink, so the stream itself had run dry. The listener hears a gap only if the callback
//   before was held up as well;
// - more than the whole of it (60 ms) make it missed: there was a gap.
//
// The first distance of a stream is not judged: the output begins to play some time after its first
// block has come.
class UnderrunCounter {
public:
  using Time = std::chrono::steady_clock::time_point;

  // A stream begins whose buffer has at least `bufferFrames` frames. While nobody calls `note`.
  void begin(std::size_t bufferFrames);

  // A callback for `frames` frames ran from `begin` to `end`. Audio thread: no lock, no allocation,
  // no system call.
  void note(Time begin, Time end, std::size_t frames) noexcept;

  // Of all streams so far. Any thread.
  [[nodiscard]] CallbackCounts counts() const;

private:
  // Audio thread, or nobody.
  std::uint64_t bufferFrames_ = 0;
  std::uint64_t callbacks_ = 0; // of this stream
  Time lastBegin_;

  // Audio thread writes, any thread reads.
  std::atomic<std::uint64_t> all_{0}, late_{0}, missed_{0};
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace velto
