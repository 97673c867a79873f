// Points in time.
#pragma once

namespace velto {

// Any number of seconds, including fractions. Dates out of the calendar's range have no day.
struct Date {
  double secondsSinceReferenceDate = 0; // since 2001-01-01 00:00:00 UTC, without leap seconds

  // The current time. Any thread.
  [[nodiscard]] static Date now();

  // Seconds from 1970-01-01 to 2001-01-01, both 00:00:00 UTC.
  static constexpr double referenceSince1970 = 978'307'200;

  bool operator==(const Date&) const = default;
};

} // namespace velto
