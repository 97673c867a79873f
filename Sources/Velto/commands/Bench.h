// Cost of rendering and of the statistics.
#pragma once

#include "Record.h"

#include <cstdint>
#include <vector>

namespace velto::Bench {

// Prints the time it takes to render a trial of each drill and to update a view with records of
// several sizes. Uses a temporary record. Main thread only.
void run();

// `count` answers dated now. Identical on every call, except for ids and dates.
[[nodiscard]] std::vector<Attempt> syntheticAttempts(std::int64_t count);

} // namespace velto::Bench
