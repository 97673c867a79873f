// A high-pass filter, to measure the audible part of a recording, or its treble.
#pragma once

#include "Recording.h"

#include <span>
#include <vector>

namespace velto::kit {

// Filters `x` with a fourth-order Butterworth high-pass: -3 dB at `hz`, 24 dB per octave below. The
// filter starts at rest, so filter a recording whole before cutting it.
[[nodiscard]] std::vector<float> highpassed(std::span<const float> x, double hz);

// Both channels.
[[nodiscard]] Recording highpassed(const Recording& recording, double hz);

} // namespace velto::kit
