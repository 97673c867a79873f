// The user's time zone.
#pragma once

#include <ctime>
#include <optional>

namespace velto::LocalTime {

// Reads the time zone anew. Main thread only.
void readTimeZone();

// What calendar and clock show there at `time`; nullopt where the year does not fit. Any thread.
[[nodiscard]] std::optional<std::tm> at(std::time_t time);

} // namespace velto::LocalTime
