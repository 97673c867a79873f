#include "Calendar.h"

#include "System.h"

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>

namespace velto {

namespace {

constexpr std::int64_t secondsInDay = 86'400;

// The number of days from 1970-01-01 to a date of the Gregorian calendar. Counted from March, so
// that the leap day ends the year.
std::int64_t civilDayNumber(std::int64_t year, std::int64_t month, std::int64_t dayOfMonth) {
  constexpr std::int64_t daysInEra = 146'097; // 400 years
  constexpr std::int64_t epoch = 719'468;     // days from 0000-03-01 to 1970-01-01
  const std::int64_t y = month <= 2 ? year - 1 : year;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const std::int64_t yearOfEra = y - era * 400;
  const std::int64_t dayOfYear = (153 * ((month + 9) % 12) + 2) / 5 + dayOfMonth - 1;
  return era * daysInEra + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - epoch;
}

// What the clock on the wall shows at one moment.
struct LocalTime {
  std::int64_t day = 0;
  std::int64_t offset = 0; // seconds ahead of UTC

  bool operator==(const LocalTime&) const = default;
};

std::optional<LocalTime> localTime(std::int64_t moment) {
  using Limits = std::numeric_limits<std::time_t>;
  if (moment < Limits::min() || moment > Limits::max())
    return std::nullopt;
  const auto time = static_cast<std::time_t>(moment);
  const auto fields = System::localTime(time);
  if (!fields)
    return std::nullopt;
  const std::int64_t day = civilDayNumber(std::int64_t{fields->tm_year} + 1900,
                                          std::int64_t{fields->tm_mon} + 1, fields->tm_mday);
  const std::int64_t secondOfDay =
      fields->tm_hour * std::int64_t{3600} + fields->tm_min * std::int64_t{60} + fields->tm_sec;
  return LocalTime{day, day * secondsInDay + secondOfDay - moment};
}

// The moment, from `inside` towards `limit` (at most a day away), up to which the wall clock runs
// like at `inside`: `limit` itself unless a change of the offset comes first.
std::int64_t reach(std::int64_t inside, std::int64_t limit, const LocalTime& local) {
  if (localTime(limit) == local)
    return limit;
  while (std::abs(limit - inside) > 1) {
    const std::int64_t middle = inside + (limit - inside) / 2;
    (localTime(middle) == local ? inside : limit) = middle;
  }
  return inside;
}

} // namespace

Calendar::Calendar() {
  System::readTimeZone();
}

std::optional<Calendar::Day> Calendar::day(Date date) {
  if (isOnSameDay(date))
    return day_;
  const double seconds = date.secondsSinceReferenceDate + Date::referenceSince1970;
  if (!(seconds >= -0x1p62 && seconds <= 0x1p62))
    return std::nullopt;
  const auto moment = static_cast<std::int64_t>(std::floor(seconds));
  const auto local = localTime(moment);
  if (!local)
    return std::nullopt;
  // So far from now a double does not hold every second, nor the bounds of a day.
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
