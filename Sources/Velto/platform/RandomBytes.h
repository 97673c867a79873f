// Random numbers of the system.
#pragma once

#include <cstdint>
#include <span>

namespace velto {

// Fills `bytes` with random ones, fit for identifiers. Any thread.
void fillRandomly(std::span<std::uint8_t> bytes);

} // namespace velto
