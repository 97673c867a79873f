#include "RendererGate.h"

#include <algorithm>
#include <chrono>
#include <span>
#include <thread>

namespace velto {

void RendererGate::render(float* interleaved, std::size_t frames) noexcept {
  // Sequentially consistent, like close(): either this sees the gate closed, or close() waits.
  inside_.fetch_add(1);
  if (isClosed_.load()) {
    std::fill_n(interleaved, 2 * frames, 0.0F);
  } else {
    renderer_.render(interleaved, frames);
    if (isFading_.load(std::memory_order_relaxed))
      fade(interleaved, frames);
  }
  inside_.fetch_sub(1);
}

void RendererGate::fade(float* interleaved, std::size_t frames) noexcept {
  for (std::size_t frame = 0; frame < frames; ++frame) {
    const double gain = static_cast<double>(fadeFrames - faded_) / fadeFrames;
    for (float& sample : std::span(interleaved + 2 * frame, 2))
      sample = static_cast<float>(gain * static_cast<double>(sample));
    faded_ = std::min(faded_ + 1, fadeFrames);
  }
}

void RendererGate::close() {
  isClosed_.store(true);
  while (inside_.load() != 0)
    std::this_thread::sleep_for(std::chrono::microseconds(100));
}

} // namespace velto
