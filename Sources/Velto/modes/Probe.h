// Measures rendered audio, grading, staircase and record against their design.
//
// Main thread only.
#pragma once

#include <span>
#include <string_view>

namespace velto::Probe {

// Runs all gates, prints a line for each check and the summary; true when no check failed. Every
// check is tried. Touches no practice record but its own.
[[nodiscard]] bool run();

// Counts and prints one check.
void check(std::string_view name, bool ok, std::string_view detail);

// Writes `text` and a line feed to standard output, unbuffered.
void line(std::string_view text);

// How much the loudness varies from window to window: the standard deviation, in dB, of the RMS
// levels of consecutive windows of `windowMS` ms (one sample or more). A partial window at the end
// and windows at -60 dB or below do not count; 0 with fewer than two windows.
[[nodiscard]] double envelopeSpreadDB(std::span<const float> x, double windowMS);

// The correlation of two channels without removing their means: 1 for identical ones, -1 for
// opposite ones, 0 for silence. Only frames that both have count.
[[nodiscard]] double correlation(std::span<const float> l, std::span<const float> r);

} // namespace velto::Probe
