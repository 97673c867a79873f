#include "Statistics.h"

#include "kit/RecordTesting.h"

#include <algorithm>
#include <utility>

namespace velto {
namespace {

using namespace testing;

using Lifetime = std::map<std::int64_t, BandRoll>;

class StatisticsIn : public ::testing::TestWithParam<const char*> {
protected:
  ScopedTimeZone zone_{GetParam()};
};

class StatisticsTest : public ::testing::Test {
protected:
  ScopedTimeZone zone_{"UTC"};
  Date now_ = utc(2026, 6, 15, 12);

  // A `level` row at noon of each day that is one of `days` days ago.
  [[nodiscard]] std::vector<Attempt> practiceDaysAgo(const std::vector<int>& days) const {
    std::vector<Attempt> rows;
    for (const int day : days)
      rows.push_back(row(Drill::level, {}, true, 0, utc(2026, 6, 15 - day, 12)));
    return rows;
  }

  [[nodiscard]] std::int64_t streakOf(const std::vector<int>& days) const {
    return Statistics::compute(practiceDaysAgo(days), {}, now_).streak;
  }

  // `count` rows of `drill`, with their index as difficulty.
  static std::vector<Attempt> numbered(Drill drill, int count) {
    std::vector<Attempt> rows;
    for (int i = 0; i < count; ++i) {
      rows.push_back(row(drill));
      rows.back().difficulty = i;
    }
    return rows;
  }
};

TEST_F(StatisticsTest, HasTwentySevenEmptyBandsWithoutAnswers) {
  const Stats stats = Statistics::compute({}, {}, now_);
  ASSERT_EQ(stats.bands.size(), 27U);
  for (std::size_t i = 0; i < stats.bands.size(); ++i)
    EXPECT_EQ(stats.bands[i], (BandStat{static_cast<std::int64_t>(i), 0, 0, 0}));
  EXPECT_EQ(stats.weakest, std::nullopt);
  EXPECT_EQ(stats.streak, 0);
  EXPECT_EQ(stats.todayCount, 0);
  EXPECT_TRUE(stats.accuracy.empty());
  EXPECT_TRUE(stats.curves.empty());
}

TEST_F(StatisticsTest, BandsSumRollUpAndRows) {
  const Lifetime lifetime{{5, {10, 4, 7.5}}, {99, {3, 3, 0.5}}};
  const std::vector<Attempt> rows{
      row(Drill::frequency, 5, true, 0.25),  row(Drill::frequency, 5, false, 1.25),
      row(Drill::frequency, 6, true, 0.125), row(Drill::frequency, std::nullopt, false, 9),
      row(Drill::level, 5, false, 9),        row(Drill::frequency, -1, false, 9)};
  const Stats stats = Statistics::compute(rows, lifetime, now_);
  EXPECT_EQ(stats.bands[5], (BandStat{5, 12, 5, 0.75}));
  EXPECT_EQ(stats.bands[6], (BandStat{6, 1, 1, 0.125}));
  for (std::size_t i = 0; i < stats.bands.size(); ++i)
    EXPECT_TRUE(i == 5 || i == 6 || stats.bands[i].attempts == 0) << i;
}

TEST_F(StatisticsTest, CountersSaturate) {
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  const std::vector<Attempt> rows{row(Drill::frequency, 0, true, 0.5)};
  const Stats stats = Statistics::compute(rows, {{0, {most, most, 0}}}, now_);
  EXPECT_EQ(stats.bands[0].attempts, most);
  EXPECT_EQ(stats.bands[0].hits, most);
}

TEST_F(StatisticsTest, TheWeakestBandNeedsThreeAnswers) {
  std::vector<Attempt> rows{row(Drill::frequency, 3, false, 5), row(Drill::frequency, 3, false, 5)};
  EXPECT_EQ(Statistics::compute(rows, {}, now_).weakest, std::nullopt);
  for (int i = 0; i < 3; ++i)
    rows.push_back(row(Drill::frequency, 20, true, 0.1));
  EXPECT_EQ(Statistics::compute(rows, {}, now_).weakest.value().index, 20);
  rows.push_back(row(Drill::frequency, 3, true, 0));
  EXPECT_EQ(Statistics::compute(rows, {}, now_).weakest.value().index, 3);
}

TEST_F(StatisticsTest, TheWeakestBandHasTheLargestMeanErrorWhateverItsHits) {
  const Lifetime lifetime{{4, {4, 0, 2}}, {9, {4, 4, 2.5}}, {12, {100, 0, 30}}};
  EXPECT_EQ(Statistics::compute({}, lifetime, now_).weakest, (BandStat{9, 4, 4, 0.625}));
}

TEST_F(StatisticsTest, TiesForTheWeakestBandGoToTheLowest) {
  const Lifetime lifetime{{8, {4, 0, 2}}, {3, {8, 8, 4}}, {26, {16, 0, 8}}};
  EXPECT_EQ(Statistics::compute({}, lifetime, now_).weakest.value().index, 3);
}

TEST_F(StatisticsTest, ABandWithoutErrorsCanBeTheWeakest) {
  EXPECT_EQ(Statistics::compute({}, {{7, {3, 3, 0}}}, now_).weakest.value().index, 7);
}

TEST_F(StatisticsTest, AccuracyCoversTheNewestThirtyAnswers) {
  auto rows = numbered(Drill::level, 45);
  for (std::size_t i = 0; i < rows.size(); ++i)
    rows[i].correct = i < 15 || i >= 39; // 6 of the newest 30
  const Stats stats = Statistics::compute(rows, {}, now_);
  EXPECT_EQ(stats.accuracy, (std::map<std::string, double>{{"level", 0.2}}));
}

TEST_F(StatisticsTest, AccuracyOfFewerThanThirtyCoversAll) {
  auto rows = numbered(Drill::polarity, 3);
  rows[1].correct = false;
  EXPECT_EQ(Statistics::compute(rows, {}, now_).accuracy.at("polarity"), 2.0 / 3.0);
}

TEST_F(StatisticsTest, ACurveHasTheNewestSixtyDifficultiesInOrder) {
  const auto of45 = Statistics::compute(numbered(Drill::dynamics, 45), {}, now_);
  ASSERT_EQ(of45.curves.at("dynamics").size(), 45U);
  EXPECT_EQ(of45.curves.at("dynamics").front(), 0);
  EXPECT_EQ(of45.curves.at("dynamics").back(), 44);

  const auto of100 = Statistics::compute(numbered(Drill::dynamics, 100), {}, now_);
  ASSERT_EQ(of100.curves.at("dynamics").size(), 60U);
  EXPECT_EQ(of100.curves.at("dynamics").front(), 40);
  EXPECT_EQ(of100.curves.at("dynamics").back(), 99);
}

TEST_F(StatisticsTest, AStreakEndsTodayOrYesterday) {
  EXPECT_EQ(streakOf({4, 3, 2, 1, 0}), 5);
  EXPECT_EQ(streakOf({4, 3, 2, 1}), 4);
  EXPECT_EQ(streakOf({3, 2}), 0);
  EXPECT_EQ(streakOf({3, 1, 0}), 2);
  EXPECT_EQ(streakOf({3, 1}), 1);
  EXPECT_EQ(streakOf({0}), 1);
  EXPECT_EQ(streakOf({}), 0);
}

TEST_F(StatisticsTest, AStreakDoesNotDependOnTheOrderOfRows) {
  EXPECT_EQ(streakOf({0, 4, 2, 2, 3, 1, 0}), 5);
}

TEST_F(StatisticsTest, FutureDaysDoNotCount) {
  EXPECT_EQ(streakOf({-1}), 0);
  EXPECT_EQ(streakOf({-1, 0, 1}), 2);
}

TEST_F(StatisticsTest, AnswersWithoutAValidDateCountForAccuracyOnly) {
  std::vector<Attempt> rows{row(Drill::level, {}, true, 0, {1e308}),
                            row(Drill::level, {}, true, 0, {-1e18})};
  const Stats stats = Statistics::compute(rows, {}, now_);
  EXPECT_EQ(stats.streak, 0);
  EXPECT_EQ(stats.todayCount, 0);
  EXPECT_EQ(stats.accuracy.at("level"), 1);
  EXPECT_EQ(Statistics::compute(rows, {}, {1e308}).todayCount, 0);
}

TEST_F(StatisticsTest, TodayEndsAtMidnight) {
  const std::vector<Attempt> rows{row(Drill::level, {}, true, 0, utc(2026, 6, 14, 23, 59, 59)),
                                  row(Drill::level, {}, true, 0, utc(2026, 6, 15)),
                                  row(Drill::polarity, {}, true, 0, utc(2026, 6, 15, 23, 59, 59)),
                                  row(Drill::level, {}, true, 0, utc(2026, 6, 16))};
  EXPECT_EQ(Statistics::compute(rows, {}, now_).todayCount, 2);
  EXPECT_EQ(Statistics::compute(rows, {}, utc(2026, 6, 14, 1)).todayCount, 1);
}

TEST_P(StatisticsIn, AMinuteBeforeAndAMinuteAfterMidnightAreTwoDays) {
  const std::vector<Attempt> rows{row(Drill::level, {}, true, 0, local(2026, 6, 14, 23, 59)),
                                  row(Drill::level, {}, true, 0, local(2026, 6, 15, 0, 1))};
  const Stats stats = Statistics::compute(rows, {}, local(2026, 6, 15, 0, 30));
  EXPECT_EQ(stats.streak, 2);
  EXPECT_EQ(stats.todayCount, 1);
  const Stats before = Statistics::compute(rows, {}, local(2026, 6, 14, 23, 59, 30));
  EXPECT_EQ(before.streak, 1);
}

// Practice early, at noon and late, every day of a year with both clock changes.
TEST_P(StatisticsIn, DailyPracticeThroughTheYearIsOneStreak) {
  for (const auto& [hour, minute] : {std::pair{1, 1}, std::pair{12, 0}, std::pair{22, 59}}) {
    std::vector<Attempt> rows;
    for (int day = 0; day < 365; ++day) {
      rows.push_back(row(Drill::level, {}, true, 0, local(2018, 7, 1 + day, hour, minute)));
      const Date now = rows.back().date;
      const Stats stats = Statistics::compute(rows, {}, now);
      ASSERT_EQ(stats.streak, day + 1) << hour << ":" << minute;
      ASSERT_EQ(stats.todayCount, 1);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, StatisticsIn,
                         ::testing::Values("UTC", "Europe/Berlin", "America/Sao_Paulo",
                                           "Pacific/Kiritimati", "Asia/Kolkata",
                                           "Pacific/Pago_Pago", "Australia/Lord_Howe"));

TEST(Statistics, AMissingCalendarDayEndsAStreak) {
  const ScopedTimeZone zone("Pacific/Apia");
  std::vector<Attempt> rows;
  for (const int day : {27, 28, 29, 31, 32})
    rows.push_back(row(Drill::level, {}, true, 0, local(2011, 12, day, 12)));
  EXPECT_EQ(Statistics::compute(rows, {}, local(2012, 1, 1, 13)).streak, 2);
  EXPECT_EQ(Statistics::compute(rows, {}, local(2011, 12, 29, 13)).streak, 3);
}

TEST(Statistics, ReadsTheTimeZoneAtEachCompute) {
  const ScopedTimeZone zone("UTC");
  const std::vector<Attempt> rows{row(Drill::level, {}, true, 0, utc(2026, 6, 14, 22, 30))};
  const Date now = utc(2026, 6, 15, 12);
  EXPECT_EQ(Statistics::compute(rows, {}, now).todayCount, 0);
  const ScopedVariable moved("TZ", "Europe/Berlin");
  EXPECT_EQ(Statistics::compute(rows, {}, now).todayCount, 1);
}

RC_GTEST_PROP(Statistics, AStreakIsTheLongestRunEndingTodayOrElseYesterday,
              (const std::set<std::int8_t>& daysAgo)) {
  std::set<std::int64_t> days;
  for (const std::int8_t ago : daysAgo)
    days.insert(20000 - ago);
  const auto runEndingAt = [&](std::int64_t last) {
    std::int64_t length = 0;
    for (std::int64_t first = last; first > last - 300; --first) {
      const auto count = std::count_if(days.begin(), days.end(),
                                       [&](auto day) { return day >= first && day <= last; });
      if (count == last - first + 1)
        length = count;
    }
    return length;
  };
  const std::int64_t ending = runEndingAt(20000);
  RC_ASSERT(Statistics::streak(days, 20000) == (ending > 0 ? ending : runEndingAt(19999)));
}

// A second computation of the statistics: one pass per figure, days in UTC.

void requireBands(const Stats& stats, const std::vector<Attempt>& rows, const Lifetime& lifetime) {
  RC_ASSERT(stats.bands.size() == 27U);
  double worst = -1;
  for (std::int64_t b = 0; b < 27; ++b) {
    const BandRoll old = lifetime.contains(b) ? lifetime.at(b) : BandRoll{};
    const auto inBand = [&](const Attempt& a) { return a.bandIndex == b; };
    const auto hitInBand = [&](const Attempt& a) { return a.bandIndex == b && a.correct; };
    double errors = old.errorSum; // tenths: the sum depends on the order, oldest first
    for (const Attempt& a : rows)
      errors += inBand(a) ? a.error : 0;
    const BandStat& band = stats.bands[static_cast<std::size_t>(b)];
    RC_ASSERT(band.index == b);
    RC_ASSERT(band.attempts == old.attempts + std::count_if(rows.begin(), rows.end(), inBand));
    RC_ASSERT(band.hits == old.hits + std::count_if(rows.begin(), rows.end(), hitInBand));
    RC_ASSERT(band.meanErrorOct ==
              (band.attempts > 0 ? errors / static_cast<double>(band.attempts) : 0.0));
    if (band.attempts >= 3)
      worst = std::max(worst, band.meanErrorOct);
  }
  const auto named =
      std::find_if(stats.bands.begin(), stats.bands.end(), [&](const BandStat& band) {
        return band.attempts >= 3 && band.meanErrorOct == worst;
      });
  RC_ASSERT(stats.weakest.has_value() == (named != stats.bands.end()));
  if (stats.weakest)
    RC_ASSERT(*stats.weakest == *named);
}

void requireAccuracyAndCurve(const Stats& stats, const std::vector<Attempt>& rows, Drill drill) {
  std::vector<Attempt> own;
  std::copy_if(rows.begin(), rows.end(), std::back_inserter(own),
               [&](const Attempt& a) { return a.drill == drill; });
  const std::string name(drill.rawValue());
  RC_ASSERT(stats.accuracy.contains(name) == !own.empty());
  RC_ASSERT(stats.curves.contains(name) == !own.empty());
  if (own.empty())
    return;
  const std::size_t window = std::min<std::size_t>(own.size(), 30);
  int hits = 0;
  for (std::size_t i = own.size() - window; i < own.size(); ++i)
    hits += own[i].correct ? 1 : 0;
  RC_ASSERT(stats.accuracy.at(name) == hits / static_cast<double>(window));
  const auto& curve = stats.curves.at(name);
  RC_ASSERT(curve.size() == std::min<std::size_t>(own.size(), 60));
  for (std::size_t i = 0; i < curve.size(); ++i)
    RC_ASSERT(curve[i] == own[own.size() - curve.size() + i].difficulty);
}

RC_GTEST_PROP(Statistics, MatchASeparatePassForEachFigure, ()) {
  const ScopedTimeZone zone("UTC");
  const std::int64_t today = 20000;
  std::vector<Attempt> rows;
  const int count = *rc::gen::inRange(0, 200);
  for (int i = 0; i < count; ++i) {
    const auto drill = *anyDrill();
    rows.push_back(row(
        drill,
        drill == Drill::frequency ? std::optional(*rc::gen::inRange<std::int64_t>(0, 27))
                                  : std::nullopt,
        *rc::gen::arbitrary<bool>(), *rc::gen::inRange(0, 64) / 10.0,
        since1970(today * 86400 - *rc::gen::inRange(0, 9) * 86400 + *rc::gen::inRange(0, 86400))));
    rows.back().difficulty = *rc::gen::inRange(0, 100);
  }
  Lifetime lifetime;
  for (int i = *rc::gen::inRange(0, 27); i > 0; --i)
    lifetime[*rc::gen::inRange<std::int64_t>(0, 27)] = {5, 2, *rc::gen::inRange(0, 640) / 10.0};

  const Stats stats = Statistics::compute(rows, lifetime, since1970(today * 86400 + 7));

  requireBands(stats, rows, lifetime);
  RC_ASSERT(stats.todayCount == std::count_if(rows.begin(), rows.end(), [&](const Attempt& a) {
              return a.date.secondsSinceReferenceDate >=
                     since1970(today * 86400).secondsSinceReferenceDate;
            }));
  for (const Drill drill : Drill::allCases)
    requireAccuracyAndCurve(stats, rows, drill);
}

} // namespace
} // namespace velto
