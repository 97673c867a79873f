#include "DateText.h"

#include <chrono>
#include <cmath>
#include <cstdint>

namespace velto {

namespace {

std::string digits(unsigned value, std::size_t count) {
  std::string text = std::to_string(value);
  return text.insert(0, count - text.size(), '0');
}

} // namespace

std::optional<std::string> DateText::utc(Date date) {
  using namespace std::chrono;
  const double since1970 = std::floor(date.secondsSinceReferenceDate + Date::referenceSince1970);
  constexpr sys_seconds first = sys_days{0y / January / 1}, end = sys_days{10000y / January / 1};
  if (!(since1970 >= static_cast<double>(first.time_since_epoch().count()) &&
        since1970 < static_cast<double>(end.time_since_epoch().count())))
    return std::nullopt;
  const sys_seconds time{seconds(static_cast<std::int64_t>(since1970))};
  const auto day = floor<days>(time);
  const year_month_day ymd(day);
  const hh_mm_ss clock(time - day);
  const auto two = [](auto value) { return digits(static_cast<unsigned>(value), 2); };
  return digits(static_cast<unsigned>(static_cast<int>(ymd.year())), 4) + "-" +
         two(static_cast<unsigned>(ymd.month())) + "-" + two(static_cast<unsigned>(ymd.day())) +
         "T" + two(clock.hours().count()) + ":" + two(clock.minutes().count()) + ":" +
         two(clock.seconds().count()) + "Z";
}

} // namespace velto
