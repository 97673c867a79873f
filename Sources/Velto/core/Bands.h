// The grid of third-octave bands that frequencies are drawn from and answered in.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace velto {

namespace Bands {

// Nominal third-octave centres from 40 Hz to 16 kHz, in Hz, ascending. The rounded nominal figures:
// neighbours are not all exactly a third of an octave apart.
inline constexpr std::array<double, 27> centres{
    40,   50,   63,   80,   100,  125,  160,  200,  250,  315,  400,   500,   630,  800,
    1000, 1250, 1600, 2000, 2500, 3150, 4000, 5000, 6300, 8000, 10000, 12500, 16000};

// `frequency` in Hz as a short text without a unit: "315", "1.25k". From 1000 Hz on four
// significant digits, below whole numbers.
[[nodiscard]] std::string label(double frequency);

// The index of the centre nearest to `frequency` (Hz) on a logarithmic scale; the lower one of a
// tie. 0 for what is not a positive finite number.
[[nodiscard]] std::size_t nearestIndex(double frequency);

} // namespace Bands

} // namespace velto
