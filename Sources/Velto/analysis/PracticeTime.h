// When and how long somebody has practised.
#pragma once

#include "Calendar.h"
#include "Record.h"

#include <cstdint>
#include <span>
#include <vector>

namespace velto {

struct PracticeDay {
  Calendar::Day day = 0; // local, since 1970-01-01
  std::int64_t answers = 0;
  std::int64_t hits = 0;
  double hours = 0;

  bool operator==(const PracticeDay&) const = default;
};

// A record tells only when answers were given. Answers at most `longestPause` apart belong to one
// sitting. A sitting lasts from its first answer to its last, plus the time that its first answer
// took, for which stands the median of all times between answers of one sitting.
struct PracticeTime {
  static constexpr double longestPause = 5 * 60; // seconds

  std::vector<PracticeDay> days; // with answers, ascending
  std::int64_t sittings = 0;
  double hours = 0; // of all days

  // `attempts` are in any order. A sitting across midnight counts for both days, answer by answer.
  // Answers whose date is out of the calendar's range do not count. Reads the time zone like
  // Calendar.
  [[nodiscard]] static PracticeTime of(std::span<const Attempt> attempts);

  bool operator==(const PracticeTime&) const = default;
};

} // namespace velto
