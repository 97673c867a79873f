// The seeds that a listener's trials come from, as samples to compute expectations with.
#pragma once

#include "Date.h"

#include <cstdint>
#include <vector>

namespace velto::TrialSeeds {

// About 20000 seeds whose first random numbers are evenly spaced over all 64 bits, which is what
// mixed seeds (`--fair`) are on average. Each band and each slot is equally frequent.
[[nodiscard]] std::vector<std::uint64_t> spread();

// About 100000 seeds as the clock gives them to trials without `--fair` within a year from `start`:
// whole seconds since 1970. A year and a day give the same result, because a trial advances the
// seed by eleven hours. `start` lies between 1970 and the year 10000; dates outside are moved to
// these bounds.
[[nodiscard]] std::vector<std::uint64_t> clock(Date start);

} // namespace velto::TrialSeeds
