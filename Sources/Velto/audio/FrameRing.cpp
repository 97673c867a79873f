#include "FrameRing.h"

namespace velto {

FrameRing::FrameRing(std::size_t capacityFrames)
    : capacity_(capacityFrames), samples_(2 * capacityFrames) {}

void FrameRing::write(const float* interleaved, std::size_t frames) noexcept {
  const std::uint64_t written = written_.load(std::memory_order_relaxed);
  const std::uint64_t unread = written - read_.load(std::memory_order_acquire);
  if (frames > capacity_ - unread) {
    dropped_.store(dropped_.load(std::memory_order_relaxed) + frames, std::memory_order_relaxed);
    return;
  }
  auto at = static_cast<std::size_t>(written % capacity_);
  for (std::size_t i = 0; i < frames; ++i) {
    samples_[2 * at] = interleaved[2 * i];
    samples_[2 * at + 1] = interleaved[2 * i + 1];
    if (++at == capacity_)
      at = 0;
  }
  written_.store(written + frames, std::memory_order_release);
}

bool FrameRing::read(float* left, float* right, std::size_t frames) noexcept {
  const std::uint64_t read = read_.load(std::memory_order_relaxed);
  if (written_.load(std::memory_order_acquire) - read < frames)
    return false;
  auto at = static_cast<std::size_t>(read % capacity_);
  for (std::size_t i = 0; i < frames; ++i) {
    left[i] = samples_[2 * at];
    right[i] = samples_[2 * at + 1];
    if (++at == capacity_)
      at = 0;
  }
  read_.store(read + frames, std::memory_order_release);
  return true;
}

} // namespace velto
