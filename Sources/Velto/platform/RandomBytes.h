// Random bytes from the system.
#pragma once

#include <cstdint>
#include <span>

namespace velto {

// Fills `bytes` with random values, good enough for identifiers. Any thread.
void fillRandomly(std::span<std::uint8_t> bytes);

} // namespace velto
