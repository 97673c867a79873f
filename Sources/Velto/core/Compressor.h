// The compressor of the dynamics drill, whose threshold is searched.
//
// Pure functions; any thread, but not the audio thread: they allocate, and read their input up to
// fourteen times.
#pragma once

#include "DSP.h"

#include <span>

namespace velto::Drills {

// What compressorHitting returns.
struct Compressed {
  Samples out;
  double grDB = 0; // largest smoothed gain reduction, dB, 0 or more
};

// `x` through a feed-forward compressor (4:1, 6 dB soft knee, 5 ms attack, 120 ms release) whose
// threshold is searched, by twelve halvings, so that its largest gain reduction is near
// `targetGRdB`, in dB: 2 to 20 are within reach (the threshold is sought down to 40 dB below the
// peak), beyond that it comes as near as it can. Nothing makes up for the level that is lost. The
// output is as long as `x`. The static curve is that of D. Giannoulis, M. Massberg and J. D. Reiss,
// "Digital dynamic range compressor design", J. Audio Eng. Soc. 60, 2012.
[[nodiscard]] Compressed compressorHitting(double targetGRdB, std::span<const float> x);

// The same into a buffer that the caller provides, as long as `x` and apart from it. Returns the
// largest smoothed gain reduction in dB.
double compressHitting(double targetGRdB, std::span<const float> x, std::span<float> out);

} // namespace velto::Drills
