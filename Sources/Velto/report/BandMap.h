// The weakness map: the mean error in each band of the frequency drill.
#pragma once

#include "Figure.h"
#include "ReportData.h"

#include <span>

namespace velto::BandMap {

// `bands` are all, in order.
[[nodiscard]] Figure of(std::span<const BandAnalysis> bands);

} // namespace velto::BandMap
