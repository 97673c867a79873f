// Spectra and levels of recorded audio.
#pragma once

#include <span>
#include <vector>

namespace velto::kit {

// Power spectrum of `x` (its size a power of two) under a Hann window: bins 0 to size / 2, bin k at
// k * 48000 / size Hz. The powers sum to the mean power of the windowed signal.
[[nodiscard]] std::vector<double> powerSpectrum(std::span<const float> x);

// Mean of a loop of `x`, and the level in dB of its Fourier lines from `lowHz` up (multiples of
// 48000 / size Hz; any size). -infinity if there are none.
struct LoopLevel {
  double mean = 0;
  double fromLowUpDB = 0;
};
[[nodiscard]] LoopLevel loopLevel(std::span<const float> x, double lowHz);

// Power of `x` at and above `lowHz`, relative to all of its power (as above), in dB.
[[nodiscard]] double partAboveDB(std::span<const float> x, double lowHz);

// Peak level in dB of `x` (size and window as above) after removing everything below `lowHz`.
[[nodiscard]] double peakAboveDB(std::span<const float> x, double lowHz);

} // namespace velto::kit
