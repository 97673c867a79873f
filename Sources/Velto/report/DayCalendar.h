// A calendar of the days with practice.
#pragma once

#include "Figure.h"
#include "ReportData.h"

#include <span>
#include <vector>

namespace velto::DayCalendar {

inline constexpr Calendar::Day weeks = 26; // up to this week

// Practice in a calendar month.
struct Month {
  std::string name; // "2026-11"
  std::int64_t days = 0;
  std::int64_t answers = 0;
  std::int64_t hits = 0;
  double hours = 0;
};

// The days of these weeks.
[[nodiscard]] Figure of(const PracticeTime& practice, Calendar::Day today);
// All months with practice, the newest first.
[[nodiscard]] std::vector<Month> months(std::span<const PracticeDay> days);

// The first day that of() shows, a Monday.
[[nodiscard]] Calendar::Day firstDay(Calendar::Day today);

} // namespace velto::DayCalendar
