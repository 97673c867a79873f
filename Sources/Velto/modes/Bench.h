// What rendering and statistics cost.
#pragma once

#include "Record.h"

#include <cstdint>
#include <vector>

namespace velto::Bench {

// Prints the time of rendering a trial of each drill and of a view update over records of several
// sizes. Touches no record but its own. Main thread only.
void run();

// `count` answers that are dated now, always the same but for their ids and dates.
[[nodiscard]] std::vector<Attempt> syntheticAttempts(std::int64_t count);

} // namespace velto::Bench
