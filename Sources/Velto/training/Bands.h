// The third-octave grid of target frequencies and answers.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace velto::Bands {

// Nominal third-octave centre frequencies from 40 Hz to 16 kHz, in Hz, ascending. They are rounded,
// so neighbours are not all exactly a third of an octave apart.
inline constexpr std::array<double, 27> centres{
    40,   50,   63,   80,   100,  125,  160,  200,  250,  315,  400,   500,   630,  800,
    1000, 1250, 1600, 2000, 2500, 3150, 4000, 5000, 6300, 8000, 10000, 12500, 16000};

// `frequency` in Hz as short text without a unit: "315", "1.25k". At most four significant digits
// from 1000 Hz up, whole numbers below.
[[nodiscard]] std::string label(double frequency);

// Index of the centre nearest to `frequency` (Hz) on a logarithmic scale; the lower one on a tie. 0
// if `frequency` is not positive and finite.
[[nodiscard]] std::size_t nearestIndex(double frequency);

} // namespace velto::Bands
