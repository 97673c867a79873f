// What lies above a frequency: the part of a recording that can be heard, or its upper treble.
#pragma once

#include "Recording.h"

#include <span>
#include <vector>

namespace velto::kit {

// `x` through a fourth-order Butterworth high-pass at `hz`: 3 dB down there, 24 dB less for each
// octave below. It starts at rest, so a recording is filtered whole before it is cut.
[[nodiscard]] std::vector<float> highpassed(std::span<const float> x, double hz);

// Both channels.
[[nodiscard]] Recording highpassed(const Recording& recording, double hz);

} // namespace velto::kit
