#include "Calendar.h"

#include "LocalTime.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>

namespace velto {

namespace {

constexpr std::int64_t secondsInDay = 86'400;

// Days from 1970-01-01 to a date. std::chrono counts them, but only up to the year 32767, so the
// year is reduced by the calendar's 400-year cycle.
std::int64_t civilDayNumber(std::int64_t year, int month, int dayOfMonth) {
  constexpr std::int64_t daysInEra = 146'097;
  const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year - 400 * era)),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(dayOfMonth))};
  return era * daysInEra + std::chrono::sys_days(date).time_since_epoch().count();
}

// Local day and UTC offset at one moment.
struct WallClock {
  std::int64_t day = 0;
  std::int64_t offset = 0; // seconds ahead of UTC

  bool operator==(const WallClock&) const = default;
};

std::optional<WallClock> wallClockAt(std::int64_t moment) {
  using Limits = std::numeric_limits<std::time_t>;
  if (moment < Limits::min() || moment > Limits::max())
    return std::nullopt;
  const auto time = static_cast<std::time_t>(moment);
  const auto fields = LocalTime::at(time);
  if (!fields)
    return std::nullopt;
  const std::int64_t day =
      civilDayNumber(std::int64_t{fields->tm_year} + 1900, fields->tm_mon + 1, fields->tm_mday);
  const std::int64_t secondOfDay =
      fields->tm_hour * std::int64_t{3600} + fields->tm_min * std::int64_t{60} + fields->tm_sec;
  return WallClock{day, day * secondsInDay + secondOfDay - moment};
}

// Extends a day from `inside` towards `limit`, at most a day away: returns the farthest moment that
// has the same day and UTC offset. That is `limit` unless the offset changes on the way.
std::int64_t reach(std::int64_t inside, std::int64_t limit, const WallClock& local) {
  if (wallClockAt(limit) == local)
    return limit;
  while (std::abs(limit - inside) > 1) {
    const std::int64_t middle = inside + (limit - inside) / 2;
    (wallClockAt(middle) == local ? inside : limit) = middle;
  }
  return inside;
}

} // namespace

Calendar::Calendar() {
  LocalTime::readTimeZone();
}

std::optional<Calendar::Day> Calendar::day(Date date) {
  if (isOnSameDay(date))
    return day_;
  const double seconds = date.secondsSinceReferenceDate + Date::referenceSince1970;
  if (!(seconds >= -0x1p62 && seconds <= 0x1p62))
    return std::nullopt;
  const auto moment = static_cast<std::int64_t>(std::floor(seconds));
  const auto local = wallClockAt(moment);
  if (!local)
    return std::nullopt;
  // Beyond this, a double may not hold a day's bounds exactly: cache nothing.
  if (std::abs(moment) > std::int64_t{1} << 52) {
    begin_ = end_ = 0;
    return local->day;
  }
  const std::int64_t midnight = local->day * secondsInDay - local->offset;
  begin_ = static_cast<double>(reach(moment, midnight, *local));
  end_ = static_cast<double>(reach(moment, midnight + secondsInDay - 1, *local) + 1);
  day_ = local->day;
  return day_;
}

} // namespace velto
