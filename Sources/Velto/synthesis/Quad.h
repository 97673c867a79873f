// Four 64-bit floats. Arithmetic is element by element, each element rounded as in scalar code.
//
// One register where the processor has AVX, else two. Pass by reference: how a Quad is passed by
// value depends on the instruction set for which a function is compiled.
#pragma once

#include "Pair.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace velto {

using Quad = double __attribute__((vector_size(32)));

// Four 32-bit floats.
using SampleQuad = float __attribute__((vector_size(16)));

// Samples i to i + 3 of `x`. All must exist.
[[nodiscard]] inline SampleQuad quadAt(std::span<const float> x, std::size_t i) {
  SampleQuad samples;
  std::memcpy(&samples, &x[i], sizeof samples);
  return samples;
}

// The absolute values.
[[nodiscard]] inline SampleQuad magnitudes(const SampleQuad& samples) {
  using Bits = std::uint32_t __attribute__((vector_size(16)));
  return std::bit_cast<SampleQuad>(std::bit_cast<Bits>(samples) & 0x7fffffff);
}

} // namespace velto
