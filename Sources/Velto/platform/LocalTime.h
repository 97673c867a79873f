// Local time.
#pragma once

#include <ctime>
#include <optional>

namespace velto::LocalTime {

// Reads the time zone again: the variable TZ, else the system's. No other thread may change the
// environment during the call.
void readTimeZone();

// Local calendar date and time of day at `time`; nullopt if the year does not fit. Any thread.
[[nodiscard]] std::optional<std::tm> at(std::time_t time);

} // namespace velto::LocalTime
