// Samples, each turned down by its own number of decibels.
#pragma once

#include <span>

namespace velto {

// out[i] = x[i] * 10^(-reductionDB[i] / 20), the power and the product as 64-bit floats and rounded
// to 32 bits once: the same bits as std::pow gives, an order of magnitude faster. The reductions
// are finite; all three have one length. Any thread.
void attenuate(std::span<const float> x, std::span<const double> reductionDB, std::span<float> out);

} // namespace velto
