// Local days: which civil day a date lies in, in the time zone in force.
#pragma once

#include "Date.h"

#include <cstdint>
#include <optional>

namespace velto {

// Days are numbered by the civil calendar (0 is 1970-01-01, each date one more than the date
// before it), so that "one day earlier" is a subtraction whatever the clocks did in between: a day
// may have 23 or 25 hours, begin at one in the morning, or not exist at all where a country crossed
// the date line. A day that does not exist has no dates in it.
//
// Takes the time zone from the process at construction and keeps the bounds of the day last asked
// for, so that neighbours in time cost a comparison. Not to be used while another thread changes
// the environment; one object belongs to one thread.
class Calendar {
public:
  using Day = std::int64_t; // since 1970-01-01

  Calendar();

  // None for a date that is not finite or too far away for the system's calendar.
  [[nodiscard]] std::optional<Day> day(Date date);

  // Whether `date` lies on the day that day() last found. May be false although it does.
  [[nodiscard]] bool isOnSameDay(Date date) const {
    const double seconds = date.secondsSinceReferenceDate + Date::referenceSince1970;
    return seconds >= begin_ && seconds < end_;
  }

private:
  // Seconds since 1970-01-01 00:00:00 UTC that share one day: begin_ <= t < end_. Whole numbers.
  double begin_ = 0;
  double end_ = 0;
  Day day_ = 0;
};

} // namespace velto
