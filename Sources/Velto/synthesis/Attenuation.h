// Per-sample attenuation in decibels.
#pragma once

#include <span>

namespace velto {

// out[i] = x[i] * 10^(-reductionDB[i] / 20), computed in 64-bit floats and rounded to 32 bits once:
// the same bits as with std::pow, an order of magnitude faster. All spans have the same length;
// reductions lie within ±6000 dB. Any thread.
void attenuate(std::span<const float> x, std::span<const double> reductionDB, std::span<float> out);

} // namespace velto
