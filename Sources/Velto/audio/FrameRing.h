// Passes stereo frames from the audio thread to a thread that may block.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace velto {

// A lock-free ring with a single writer and a single reader. All memory is allocated and touched at
// construction. A block that does not fit is dropped whole, and its frames are counted.
class FrameRing {
public:
  // Holds up to `capacityFrames` frames; at least 1.
  explicit FrameRing(std::size_t capacityFrames);

  FrameRing(const FrameRing&) = delete;
  FrameRing& operator=(const FrameRing&) = delete;

  // Writes `frames` stereo frames. Writer only. Real-time safe.
  void write(const float* interleaved, std::size_t frames) noexcept;

  // Reads the oldest `frames` frames. Reads nothing and returns false if there are fewer. Reader
  // only. Real-time safe.
  [[nodiscard]] bool read(float* left, float* right, std::size_t frames) noexcept;

  // Number of frames dropped so far. Any thread.
  [[nodiscard]] std::uint64_t droppedFrames() const {
    return dropped_.load(std::memory_order_relaxed);
  }

private:
  const std::size_t capacity_;
  std::vector<float> samples_; // interleaved; frame n is stored as frame n % capacity_

  // Frame counts. Each has one writer, which stores it after finishing with the frames that it
  // counts.
  std::atomic<std::uint64_t> written_{0}; // writer
  std::atomic<std::uint64_t> read_{0};    // reader
  std::atomic<std::uint64_t> dropped_{0}; // writer
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace velto
