#include "RandomBytes.h"

#include <random>

namespace velto {

void fillRandomly(std::span<std::uint8_t> bytes) {
  std::random_device source;
  for (std::uint8_t& byte : bytes)
    byte = static_cast<std::uint8_t>(source());
}

} // namespace velto
