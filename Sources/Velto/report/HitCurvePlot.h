// The fitted curve of a listener: how often answers hit at which difficulty.
#pragma once

#include "Figure.h"
#include "ReportData.h"

namespace velto::HitCurvePlot {

// For a drill with a threshold, over the answers that were analysed. The drawing is empty without a
// fit.
[[nodiscard]] Figure of(const DrillReport& report);

} // namespace velto::HitCurvePlot
