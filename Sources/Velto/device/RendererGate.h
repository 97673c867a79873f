// Stands between a device and the renderer, so that a device that hangs can be abandoned.
#pragma once

#include "Renderer.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace velto {

// Passes a device's blocks to a renderer until it is closed; then they are silent. So a device that
// cannot be stopped, because its server does not answer, never calls the renderer again.
class RendererGate final : public Renderer {
public:
  static constexpr std::size_t fadeFrames = 240; // 5 ms

  // `renderer` must exist until the gate is closed.
  explicit RendererGate(Renderer& renderer) : renderer_(renderer) {}

  // Audio thread only. Real-time safe.
  void render(float* interleaved, std::size_t frames) noexcept override;

  // Fades what is rendered to silence, from the next block on. Any thread.
  void fadeOut() { isFading_.store(true, std::memory_order_relaxed); }

  // When this returns, the renderer is not running and will not be called again. Any thread but the
  // audio thread.
  void close();

private:
  void fade(float* interleaved, std::size_t frames) noexcept;

  Renderer& renderer_;
  std::atomic<bool> isFading_{false};
  std::atomic<bool> isClosed_{false};
  std::atomic<int> inside_{0}; // audio threads in render()
  std::size_t faded_ = 0;      // frames of the fade so far; audio thread only
};

} // namespace velto
