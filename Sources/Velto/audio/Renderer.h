// Interface of an audio source.
#pragma once

#include <cstddef>

namespace velto {

// Computes audio block by block.
class Renderer {
public:
  virtual ~Renderer() = default;

  // Writes `frames` interleaved stereo frames. Audio thread only. Implementations are real-time
  // safe: no lock, no allocation, no system call.
  virtual void render(float* interleaved, std::size_t frames) noexcept = 0;
};

} // namespace velto
