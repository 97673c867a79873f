// The size of the errors in dB, beside what one gets without listening.
#pragma once

#include "Figure.h"
#include "ReportData.h"

namespace velto::ErrorPlot {

// For `level` and `dynamics`. The drawing is empty without answers.
[[nodiscard]] Figure of(const DrillReport& report);

} // namespace velto::ErrorPlot
