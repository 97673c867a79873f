// Figures as the report writes them. Pure functions; any thread.
#pragma once

#include "Calendar.h"
#include "Drill.h"
#include "Intervals.h"
#include "ThresholdFit.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace velto::Phrases {

// "43 %" of a share, 0 to 1, with a space that does not break.
[[nodiscard]] std::string percent(double share);
// "1 answer", "2 answers"
[[nodiscard]] std::string counted(std::int64_t count, std::string_view thing);
// "0.42"
[[nodiscard]] std::string octaves(double octaves);
// "1.35"
[[nodiscard]] std::string decibels(double decibels);
// A difficulty as a whole number, "43".
[[nodiscard]] std::string points(double difficulty);
// "1.5" hours; "0.1" for less.
[[nodiscard]] std::string hours(double hours);

// "38 to 49", "below 49", "above 38"; "not bounded" if both ends are open.
[[nodiscard]] std::string bounds(const ThresholdFit& fit);
// "0.42", "below 0" or "above 100" for a threshold, as a difficulty.
[[nodiscard]] std::string threshold(const ThresholdFit& fit);

// "2026-11-22"
[[nodiscard]] std::string date(Calendar::Day day);
// "2026-11"
[[nodiscard]] std::string month(Calendar::Day day);
// "Nov"
[[nodiscard]] std::string shortMonth(Calendar::Day day);

// "Frequency"
[[nodiscard]] std::string title(Drill drill);
// What trials at a difficulty are made of: "a boost of 8.1 dB with Q 3.3".
[[nodiscard]] std::string meaning(Drill drill, double difficulty);

} // namespace velto::Phrases
