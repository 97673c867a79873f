// Renders any material with the program's generators.
#pragma once

#include "DSP.h"
#include "Drill.h"
#include "Signals.h"

#include <cstdint>
#include <cstdlib>

namespace velto::kit {

[[nodiscard]] inline Samples source(Material material, double seconds, std::uint64_t seed,
                                    Noise noise = Noise::asDrawn) {
  switch (material) {
  case Material::pinkNoise:
    return Signals::pink(seconds, seed, noise);
  case Material::drums:
    return Signals::drums(seconds, seed);
  case Material::pad:
    return Signals::pad(seconds, seed);
  }
  std::abort();
}

} // namespace velto::kit
