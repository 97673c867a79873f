// The compressor of the dynamics drill. Searches the threshold for a given gain reduction.
//
// Pure functions. Any thread but the audio thread: they make fourteen passes or more over their
// input.
#pragma once

#include "DSP.h"

#include <span>

namespace velto::Drills {

// Result of compressorHitting().
struct Compressed {
  Samples out;
  double grDB = 0; // largest smoothed gain reduction, dB, 0 or more
};

// Compresses `x` (feed-forward, 4:1, 6 dB soft knee, 5 ms attack, 120 ms release) with the
// threshold at which the largest gain reduction is near `targetGRdB` (dB), found in twelve
// bisection steps down to 40 dB below the peak. Targets of 2 to 20 dB are reachable; for others the
// threshold ends at a limit of that range. No make-up gain. The output has the length of `x`. The
// static curve is that of D. Giannoulis, M. Massberg and J. D. Reiss, "Digital dynamic range
// compressor design", J. Audio Eng. Soc. 60, 2012.
[[nodiscard]] Compressed compressorHitting(double targetGRdB, std::span<const float> x);

// Same, but writes to `out`, which must have the length of `x` and must not overlap it. Returns the
// largest smoothed gain reduction in dB.
double compressHitting(double targetGRdB, std::span<const float> x, std::span<float> out);

} // namespace velto::Drills
