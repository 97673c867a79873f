#include "Calendar.h"

#include "kit/RecordTesting.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace velto {
namespace {

using namespace testing;

std::int64_t dayNumber(int year, int month, int day) {
  return utcSeconds(year, month, day) / 86400;
}

// Expects the day `expected` to last from `first` to `last`, in whole seconds of UTC.
void expectDay(std::int64_t expected, Date first, Date last) {
  Calendar calendar;
  const Date before{first.secondsSinceReferenceDate - 0.001};
  const Date after{last.secondsSinceReferenceDate + 1};
  // The calendar caches the bounds of a day: queries from either end must not extend the other.
  EXPECT_EQ(calendar.day(first), expected);
  EXPECT_NE(calendar.day(after), expected);
  EXPECT_EQ(calendar.day({last.secondsSinceReferenceDate + 0.999}), expected);
  EXPECT_NE(calendar.day(before), expected);
  EXPECT_EQ(Calendar().day(before), calendar.day(before));
  EXPECT_EQ(Calendar().day(after), calendar.day(after));
}

TEST(Calendar, DaysAreNumberedFrom1970) {
  const ScopedTimeZone zone("UTC");
  Calendar calendar;
  EXPECT_EQ(calendar.day(utc(1970, 1, 1)), 0);
  EXPECT_EQ(calendar.day(utc(1969, 12, 31, 23, 59, 59)), -1);
  EXPECT_EQ(Calendar().day({utc(1970, 1, 1).secondsSinceReferenceDate - 0.25}), -1);
  EXPECT_EQ(calendar.day(utc(2000, 2, 29)), 11016);
  EXPECT_EQ(calendar.day(utc(2000, 3, 1)), 11017);
  EXPECT_EQ(calendar.day(utc(1900, 3, 1)).value() - calendar.day(utc(1900, 2, 28)).value(), 1);
  EXPECT_EQ(calendar.day(utc(1, 1, 1)), -719162);
}

TEST(Calendar, ADayOfTwentyThreeHoursIsOneDay) {
  const ScopedTimeZone zone("Europe/Berlin");
  expectDay(dayNumber(2026, 3, 29), utc(2026, 3, 28, 23), utc(2026, 3, 29, 21, 59, 59));
}

TEST(Calendar, ADayOfTwentyFiveHoursIsOneDay) {
  const ScopedTimeZone zone("Europe/Berlin");
  expectDay(dayNumber(2026, 10, 25), utc(2026, 10, 24, 22), utc(2026, 10, 25, 22, 59, 59));
}

TEST(Calendar, ADayCanStartAtOneInTheMorning) {
  const ScopedTimeZone zone("America/Sao_Paulo");
  expectDay(dayNumber(2018, 11, 4), utc(2018, 11, 4, 3), utc(2018, 11, 5, 1, 59, 59));
}

TEST(Calendar, TheHourBeforeMidnightCanRepeat) {
  const ScopedTimeZone zone("America/Sao_Paulo");
  expectDay(dayNumber(2019, 2, 16), utc(2019, 2, 16, 2), utc(2019, 2, 17, 2, 59, 59));
}

TEST(Calendar, ADayCanBeMissing) {
  const ScopedTimeZone zone("Pacific/Apia");
  Calendar calendar;
  EXPECT_EQ(calendar.day(utc(2011, 12, 30, 9, 59, 59)), dayNumber(2011, 12, 29));
  EXPECT_EQ(calendar.day(utc(2011, 12, 30, 10)), dayNumber(2011, 12, 31));
  EXPECT_EQ(calendar.day(utc(2011, 12, 30, 9, 59, 59)), dayNumber(2011, 12, 29));
}

TEST(Calendar, AClockTurnedBackPastMidnightReturnsToTheDayBefore) {
  const ScopedTimeZone zone("America/St_Johns"); // 00:01 became 23:01
  Calendar calendar;
  EXPECT_EQ(calendar.day(utc(2006, 10, 29, 2, 29, 59)), dayNumber(2006, 10, 28));
  EXPECT_EQ(calendar.day(utc(2006, 10, 29, 2, 30, 59)), dayNumber(2006, 10, 29));
  EXPECT_EQ(calendar.day(utc(2006, 10, 29, 2, 31, 0)), dayNumber(2006, 10, 28));
  EXPECT_EQ(calendar.day(utc(2006, 10, 29, 3, 29, 59)), dayNumber(2006, 10, 28));
  EXPECT_EQ(calendar.day(utc(2006, 10, 29, 3, 30, 0)), dayNumber(2006, 10, 29));
}

TEST(Calendar, LargeAndHalfHourOffsetsShiftTheDay) {
  {
    const ScopedTimeZone zone("Pacific/Kiritimati"); // 14 hours ahead
    expectDay(dayNumber(2026, 7, 1), utc(2026, 6, 30, 10), utc(2026, 7, 1, 9, 59, 59));
  }
  {
    const ScopedTimeZone zone("Asia/Kolkata"); // 5:30 ahead
    expectDay(dayNumber(2026, 7, 1), utc(2026, 6, 30, 18, 30), utc(2026, 7, 1, 18, 29, 59));
  }
}

TEST(Calendar, ADateOutOfRangeHasNoDay) {
  const ScopedTimeZone zone("Europe/Berlin");
  Calendar calendar;
  const Date inside = utc(2026, 6, 1, 12);
  const auto day = calendar.day(inside);
  for (const double seconds :
       {1e17, -1e17, 4.611686018427387e18, 9.3e18, -9.3e18, 1e308, -1e308,
        std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(calendar.day({seconds}), std::nullopt) << seconds;
    EXPECT_EQ(calendar.day(inside), day) << "after " << seconds;
  }
}

TEST(Calendar, HandlesTheLimitsOfTheSystemCalendar) {
  const ScopedTimeZone zone("Europe/Berlin");
  // Near 6.77e16 seconds, the year exceeds an int. Search for both limits by bisection.
  int inside = 0;
  int outside = 0;
  for (const double sign : {-1.0, 1.0}) {
    double low = 6e16;
    double high = 7e16;
    for (int i = 0; i < 80; ++i) {
      const double middle = (low + high) / 2;
      const bool exists = Calendar().day({sign * middle}).has_value();
      (exists ? inside : outside) += 1;
      (exists ? low : high) = middle;
    }
  }
  EXPECT_GT(inside, 0);
  EXPECT_GT(outside, 0);
}

TEST(Calendar, ReadsTheTimeZoneAtConstruction) {
  const Date date = utc(2026, 6, 30, 23);
  const ScopedTimeZone zone("UTC");
  EXPECT_EQ(Calendar().day(date), dayNumber(2026, 6, 30));
  const ScopedVariable moved("TZ", "Europe/Berlin"); // without tzset
  EXPECT_EQ(Calendar().day(date), dayNumber(2026, 7, 1));
}

// The day number computed with localtime_r and timegm.
std::int64_t dayByTheLibrary(std::int64_t moment) {
  const std::time_t time = moment;
  std::tm fields{};
  localtime_r(&time, &fields);
  fields.tm_hour = fields.tm_min = fields.tm_sec = 0;
  const std::int64_t midnight = timegm(&fields);
  return (midnight - ((midnight % 86400) + 86400) % 86400) / 86400;
}

RC_GTEST_PROP(Calendar, MatchesTheCLibraryInAnyOrderOfQueries, ()) {
  // Time zones, each with a moment near an unusual clock change.
  static const std::vector<std::pair<std::string, std::int64_t>> oddities{
      {"Europe/Berlin", utcSeconds(2026, 3, 29)},
      {"Europe/Berlin", utcSeconds(2026, 10, 25)},
      {"America/Sao_Paulo", utcSeconds(2018, 11, 4)},
      {"America/Sao_Paulo", utcSeconds(2019, 2, 17)},
      {"Pacific/Apia", utcSeconds(2011, 12, 30)},
      {"America/St_Johns", utcSeconds(2006, 10, 29)},
      {"Pacific/Kiritimati", utcSeconds(1994, 12, 31)},
      {"Asia/Kolkata", utcSeconds(1942, 9, 1)},
      {"Australia/Lord_Howe", utcSeconds(2026, 4, 5)},
      {"Africa/Cairo", utcSeconds(2026, 4, 24)},
      {"America/Havana", utcSeconds(2026, 3, 8)},
      {"UTC", 0}};
  const auto& [zoneName, around] = *rc::gen::elementOf(oddities);
  const ScopedTimeZone zone(zoneName);
  Calendar calendar;
  const auto offsets = *rc::gen::container<std::vector<int>>(
      rc::gen::resize(rc::kNominalSize, rc::gen::inRange(-3 * 86400, 3 * 86400)));
  for (const int offset : offsets)
    RC_ASSERT(calendar.day(since1970(around + offset)) == dayByTheLibrary(around + offset));
}

} // namespace
} // namespace velto
