#include "PracticeTime.h"

#include "kit/RecordTesting.h"

#include <algorithm>

namespace velto {
namespace {

using testing::row;
using testing::ScopedTimeZone;
using testing::utc;

Attempt answer(Date date, bool hit = true) {
  return row(Drill::level, std::nullopt, hit, 0, date);
}

TEST(PracticeTime, IsNoneWithoutAnswers) {
  EXPECT_EQ(PracticeTime::of({}), PracticeTime());
}

// Three answers 60 s and 100 s apart, then a pause; the first answers count as the median, 80 s.
TEST(PracticeTime, CountsTheTimeBetweenAnswersAndAMedianForTheFirst) {
  const ScopedTimeZone zone("UTC");
  const std::vector<Attempt> attempts{
      answer(utc(2026, 5, 4, 10, 0, 0)), answer(utc(2026, 5, 4, 10, 1, 0), false),
      answer(utc(2026, 5, 4, 10, 2, 40)), answer(utc(2026, 5, 6, 20, 0, 0))};
  const PracticeTime time = PracticeTime::of(attempts);
  EXPECT_EQ(time.sittings, 2);
  ASSERT_EQ(time.days.size(), 2U);
  EXPECT_EQ(time.days[1].day - time.days[0].day, 2);
  EXPECT_EQ(time.days[0].answers, 3);
  EXPECT_EQ(time.days[0].hits, 2);
  EXPECT_NEAR(time.days[0].hours * 3600, 80 + 60 + 100, 1e-6);
  EXPECT_NEAR(time.days[1].hours * 3600, 80, 1e-6);
  EXPECT_NEAR(time.hours * 3600, 320, 1e-6);
}

TEST(PracticeTime, EndsASittingWithAPauseOfMoreThanFiveMinutes) {
  const ScopedTimeZone zone("UTC");
  const Date start = utc(2026, 5, 4, 10);
  const auto after = [&](double seconds) {
    return answer({start.secondsSinceReferenceDate + seconds});
  };
  EXPECT_EQ(PracticeTime::of(std::vector{after(0), after(300)}).sittings, 1);
  EXPECT_EQ(PracticeTime::of(std::vector{after(0), after(300.5)}).sittings, 2);
}

TEST(PracticeTime, CountsForTheLocalDay) {
  const ScopedTimeZone zone("Pacific/Auckland");
  const std::vector<Attempt> attempts{answer(utc(2026, 5, 4, 11, 59, 30)),
                                      answer(utc(2026, 5, 4, 12, 0, 30))};
  const PracticeTime time = PracticeTime::of(attempts);
  EXPECT_EQ(time.sittings, 1);
  ASSERT_EQ(time.days.size(), 2U);
  EXPECT_EQ(time.days[1].day - time.days[0].day, 1);
}

TEST(PracticeTime, DoesNotDependOnTheOrderOfTheRows) {
  const ScopedTimeZone zone("UTC");
  std::vector<Attempt> attempts;
  for (int i = 0; i < 20; ++i)
    attempts.push_back(answer(utc(2026, 5, 1 + i / 7, 10, i % 7 * 2, i), i % 3 == 0));
  const PracticeTime time = PracticeTime::of(attempts);
  std::reverse(attempts.begin(), attempts.end());
  EXPECT_EQ(PracticeTime::of(attempts), time);
}

TEST(PracticeTime, OmitsDatesOutOfTheCalendarsRange) {
  const std::vector<Attempt> attempts{answer({1e300}), answer({-1e300})};
  EXPECT_EQ(PracticeTime::of(attempts), PracticeTime());
}

} // namespace
} // namespace velto
