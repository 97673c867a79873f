// Difficulty over time.
#pragma once

#include "Figure.h"
#include "ReportData.h"

#include <cstddef>

namespace velto::DifficultyPlot {

// From this number of days on the plot has one point per day; else one per answer.
inline constexpr std::size_t daysForDates = 5;

// The difficulties of all answers of a drill.
[[nodiscard]] Figure of(const DrillReport& report);

} // namespace velto::DifficultyPlot
