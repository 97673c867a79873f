// The level at which the mixer's output is played.
#pragma once

#include "Renderer.h"

#include <cstddef>

namespace velto {

// Factor applied to every rendered sample: -6.02 dB; halving is exact. Every material has an RMS
// level of -20 dB, but in the level drill drum hits peak about 6 dB above full scale, and the
// converter would clip them.
inline constexpr float outputHeadroom = 0.5F;

// The body of an output's callback: `renderer` fills the block, then the headroom is applied.
// Real-time safe.
void fillOutput(Renderer& renderer, float* interleaved, std::size_t frames) noexcept;

} // namespace velto
