// The audio self-test: what it plays, and its verdict.
#pragma once

#include "Trial.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

namespace velto::SelfTest {

// Receives one line of the report.
using Print = std::function<void(std::string_view line)>;

// Boosted pink noise.
[[nodiscard]] Trial trial();
inline constexpr std::int64_t audibleSlot = 1; // the boosted one

// True if `captured`, a left channel, is plausible for that trial: more than 20000 frames, an RMS
// level between -32 and -12 dB (the material's -20 dB, with room for the fade-in and the boost),
// and no sample at or above full scale. Prints the level and the verdict.
[[nodiscard]] bool judge(std::span<const float> captured, const Print& print);

} // namespace velto::SelfTest
