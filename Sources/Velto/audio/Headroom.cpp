#include "Headroom.h"

#include <span>

namespace velto {

void fillOutput(Renderer& renderer, float* interleaved, std::size_t frames) noexcept {
  renderer.render(interleaved, frames);
  for (float& sample : std::span(interleaved, 2 * frames))
    sample *= outputHeadroom;
}

} // namespace velto
