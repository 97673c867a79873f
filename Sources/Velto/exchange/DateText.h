// Dates as text.
#pragma once

#include "Date.h"

#include <optional>
#include <string>

namespace velto::DateText {

// "2026-11-22T05:10:00Z": to the second, earlier ones in full. nullopt outside of the years 0 to
// 9999. Any thread.
[[nodiscard]] std::optional<std::string> utc(Date date);

} // namespace velto::DateText
