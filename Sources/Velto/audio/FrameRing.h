// Stereo frames on their way from the audio thread to a thread that may wait.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace velto {

// A ring between one writer and one reader. Neither side ever waits; all memory is taken, and
// touched, at construction. A block that does not fit is dropped whole and counted.
class FrameRing {
public:
  // Holds up to `capacityFrames` frames, one or more.
  explicit FrameRing(std::size_t capacityFrames);

  FrameRing(const FrameRing&) = delete;
  FrameRing& operator=(const FrameRing&) = delete;

  // Copies `frames` stereo frames in. Writer only. Real-time safe.
  void write(const float* interleaved, std::size_t frames) noexcept;

  // Reader only: the oldest `frames` frames, or nothing and false while there are fewer. Real-time
  // safe.
  [[nodiscard]] bool read(float* left, float* right, std::size_t frames) noexcept;

  // Frames that found no room so far. Any thread.
  [[nodiscard]] std::uint64_t droppedFrames() const {
    return dropped_.load(std::memory_order_relaxed);
  }

private:
  const std::size_t capacity_;
  std::vector<float> samples_; // interleaved; frame n lies at n modulo capacity_

  // Frames so far. Each is stored by one side, when it is done with the frames before it.
  std::atomic<std::uint64_t> written_{0}; // writer
  std::atomic<std::uint64_t> read_{0};    // reader
  std::atomic<std::uint64_t> dropped_{0}; // writer
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace velto
