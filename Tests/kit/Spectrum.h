// Spectra and levels of recorded audio.
#pragma once

#include <span>
#include <vector>

namespace velto::kit {

// The power spectrum of `x` (a power of two of samples) under a Hann window: bins 0 to size / 2,
// the bin k at k * 48000 / size Hz. The powers sum to the mean power of the windowed signal.
[[nodiscard]] std::vector<double> powerSpectrum(std::span<const float> x);

// What a loop of `x` holds: its mean, and the level in dB of its Fourier lines from `lowHz` up
// (multiples of 48000 / size Hz; any size). -infinity where there is nothing.
struct LoopLevel {
  double mean = 0;
  double fromLowUpDB = 0;
};
[[nodiscard]] LoopLevel loopLevel(std::span<const float> x, double lowHz);

// The part of `x`'s power (as above) that lies at `lowHz` and above, in dB relative to the whole.
[[nodiscard]] double partAboveDB(std::span<const float> x, double lowHz);

// The largest sample of what is left of `x` (a power of two of samples, windowed as above) when
// everything below `lowHz` is taken away, in dB relative to full scale.
[[nodiscard]] double peakAboveDB(std::span<const float> x, double lowHz);

// RMS level of a - b over the shorter of both, in dB; -infinity if there is no difference.
[[nodiscard]] double residualDB(std::span<const float> a, std::span<const float> b);

} // namespace velto::kit
