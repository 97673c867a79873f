// Measures rendered audio, grading, staircase and record against their design.
//
// Main thread only.
#pragma once

#include <span>
#include <string_view>

namespace velto::Probe {

// Runs all gates, even after a failure, and prints a line for each check and a summary. True if no
// check failed. Uses a temporary record.
[[nodiscard]] bool run();

// Counts and prints one check.
void check(std::string_view name, bool ok, std::string_view detail);

// Writes `text` and a line feed to standard output, unbuffered.
void line(std::string_view text);

// Spread of the loudness over time: the standard deviation, in dB, of the RMS levels of consecutive
// windows of `windowMS` ms (at least one sample). Ignores a partial window at the end and windows
// at or below -60 dB. 0 with fewer than two windows.
[[nodiscard]] double envelopeSpreadDB(std::span<const float> x, double windowMS);

// Correlation of two channels without removing their means: 1 for identical channels, -1 for
// opposite ones, 0 for silence. Frames beyond the shorter channel are ignored.
[[nodiscard]] double correlation(std::span<const float> l, std::span<const float> r);

} // namespace velto::Probe
