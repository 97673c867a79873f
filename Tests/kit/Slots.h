// Slots for playback tests.
#pragma once

#include "DSP.h"
#include "Slot.h"

#include <cmath>
#include <cstdint>
#include <span>

namespace velto::kit {

// A slot with copies of the samples.
[[nodiscard]] inline Slot slotOf(std::span<const float> l, std::span<const float> r) {
  return {SharedSamples(Samples(l.begin(), l.end())), SharedSamples(Samples(r.begin(), r.end()))};
}

[[nodiscard]] inline Slot constantSlot(std::size_t frames, float l, float r) {
  return slotOf(Samples(frames, l), Samples(frames, r));
}

// Noise in [-0.5, 0.5). No two frames of a slot, and no two seeds, are alike.
[[nodiscard]] inline Slot noiseSlot(std::size_t frames, std::uint32_t seed) {
  Samples l(frames), r(frames);
  std::uint32_t state = seed * 2654435761U + 1;
  const auto next = [&state] {
    state = state * 1664525U + 1013904223U;
    return static_cast<float>(state >> 8) * 0x1p-24F - 0.5F;
  };
  for (std::size_t i = 0; i < frames; ++i) {
    l[i] = next();
    r[i] = next();
  }
  return slotOf(l, r);
}

// A sine that loops seamlessly: `cycles` whole cycles in `frames` frames.
[[nodiscard]] inline Slot sineSlot(std::size_t frames, std::size_t cycles, double amplitude) {
  Samples x(frames);
  for (std::size_t i = 0; i < frames; ++i)
    x[i] =
        static_cast<float>(amplitude * std::sin(twoPi * static_cast<double>(i * cycles % frames) /
                                                static_cast<double>(frames)));
  return slotOf(x, x);
}

} // namespace velto::kit
