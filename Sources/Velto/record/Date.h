// A point in time, as the record keeps it.
#pragma once

namespace velto {

// Any number of seconds is a date, fractions included; one that lies beyond every calendar belongs
// to no day.
struct Date {
  double secondsSinceReferenceDate = 0; // since 2001-01-01 00:00:00 UTC, without leap seconds

  // The wall clock. Any thread.
  [[nodiscard]] static Date now();

  // Seconds from 1970-01-01 to 2001-01-01, both 00:00:00 UTC.
  static constexpr double referenceSince1970 = 978'307'200;

  bool operator==(const Date&) const = default;
};

} // namespace velto
