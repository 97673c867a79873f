// Local calendar days.
#pragma once

#include "Date.h"

#include <cstdint>
#include <optional>

namespace velto {

// Numbers days by the civil calendar: 0 is 1970-01-01, and successive dates differ by 1. "One day
// earlier" is then a subtraction, although a day may have 23 or 25 hours, begin at one in the
// morning, or be missing where a country crossed the date line. No date lies on a missing day.
//
// Reads the process's time zone at construction. Caches the bounds of the last day found, so that
// successive dates on one day cost only a comparison each. One object belongs to one thread; no
// other thread may change the environment during a call.
class Calendar {
public:
  using Day = std::int64_t; // since 1970-01-01

  Calendar();

  // nullopt if `date` is not finite, or too far away for the system's calendar.
  [[nodiscard]] std::optional<Day> day(Date date);

  // True if `date` is known to be on the day that day() last found. May be false even if it is.
  [[nodiscard]] bool isOnSameDay(Date date) const {
    const double seconds = date.secondsSinceReferenceDate + Date::referenceSince1970;
    return seconds >= begin_ && seconds < end_;
  }

private:
  // Cached part of a day: begin_ <= t < end_, in whole seconds since 1970-01-01 00:00:00 UTC.
  double begin_ = 0;
  double end_ = 0;
  Day day_ = 0;
};

} // namespace velto
