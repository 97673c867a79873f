#include "RecordAnalysis.h"

#include "SimulatedListener.h"
#include "kit/RecordTesting.h"

namespace velto {
namespace {

using testing::practise;
using testing::row;
using testing::utc;

const Date inMay = utc(2026, 5, 4, 10);

Stored recordOf(Drill drill, int count, double difficulty, bool hit, double error) {
  Stored record;
  for (int i = 0; i < count; ++i) {
    record.attempts.push_back(row(drill, std::nullopt, hit, error, inMay));
    record.attempts.back().difficulty = difficulty;
  }
  return record;
}

TEST(DrillAnalysis, OfAnEmptyRecordHasNoFigures) {
  for (const Drill drill : Drill::allCases) {
    const auto analysis = DrillAnalysis::of(drill, {}, SeedSource::clock);
    EXPECT_EQ(analysis.answers, 0);
    EXPECT_EQ(analysis.difficulty, 20);
    EXPECT_FALSE(analysis.newest);
  }
}

TEST(DrillAnalysis, CountsRowsAndRollUpOfItsDrill) {
  Stored record = recordOf(Drill::level, 3, 20, true, 0.1);
  record.attempts.push_back(row(Drill::frequency, 3, false, 1.5, inMay));
  record.lifetime[3] = {.attempts = 10, .hits = 4, .errorSum = 5};
  record.lifetime[9] = {.attempts = 2, .hits = 2, .errorSum = 0};
  record.staircases["frequency"].difficulty = 44;
  const auto frequency = DrillAnalysis::of(Drill::frequency, record, SeedSource::clock);
  EXPECT_EQ(frequency.answers, 13);
  EXPECT_EQ(frequency.hits, 6);
  EXPECT_EQ(frequency.difficulty, 44);
  EXPECT_EQ(frequency.newest.value().answers, 1);
  const auto level = DrillAnalysis::of(Drill::level, record, SeedSource::clock);
  EXPECT_EQ(level.answers, 3);
  EXPECT_EQ(level.hits, 3);
}

TEST(DrillAnalysis, BearsAnyCountsInTheRollUp) {
  Stored record;
  for (std::int64_t band = 0; band < 27; ++band)
    record.lifetime[band] = {.attempts = INT64_MAX, .hits = INT64_MIN, .errorSum = 0};
  const auto analysis = DrillAnalysis::of(Drill::frequency, record, SeedSource::clock);
  EXPECT_GT(analysis.answers, 0);
  EXPECT_EQ(analysis.hits, 0);
}

TEST(DrillAnalysis, TakesTheNewestAnswers) {
  Stored record = recordOf(Drill::dynamics, 30, 20, false, 4);
  for (const Attempt& attempt : recordOf(Drill::dynamics, 10, 20, true, 1).attempts)
    record.attempts.push_back(attempt);
  const auto ten = DrillAnalysis::of(Drill::dynamics, record, SeedSource::spread, 10);
  EXPECT_EQ(ten.newest.value().answers, 10);
  EXPECT_EQ(ten.newest->hits, 10);
  EXPECT_EQ(ten.newest->error.value().mean, 1);
  const auto all = DrillAnalysis::of(Drill::dynamics, record, SeedSource::spread);
  EXPECT_EQ(all.newest.value().answers, 40);
  EXPECT_EQ(all.newest->error.value().mean, 3.25);
  EXPECT_EQ(DrillAnalysis::of(Drill::dynamics, record, SeedSource::spread, 0).newest->answers, 1);
}

TEST(DrillAnalysis, GivesAThresholdOrTheSizeOfTheError) {
  for (const Drill drill : Drill::allCases) {
    const auto newest =
        DrillAnalysis::of(drill, recordOf(drill, 20, 20, true, 0.1), SeedSource::spread)
            .newest.value();
    const bool hasThreshold = drill == Drill::frequency || drill == Drill::polarity;
    EXPECT_EQ(newest.threshold.has_value(), hasThreshold);
    EXPECT_EQ(newest.error.has_value(), !hasThreshold);
  }
}

TEST(DrillAnalysis, FitsWithTheRateOfTheBestBlindAnswer) {
  const auto frequency = DrillAnalysis::of(
      Drill::frequency, recordOf(Drill::frequency, 9, 20, true, 0), SeedSource::spread);
  EXPECT_NEAR(frequency.newest.value().threshold.value().guessRate, 3.0 / 27, 1e-9);
  const auto polarity = DrillAnalysis::of(
      Drill::polarity, recordOf(Drill::polarity, 9, 20, true, 0), SeedSource::spread);
  EXPECT_NEAR(polarity.newest.value().threshold.value().guessRate, 1.0 / 3, 1e-9);
}

// Twelve hits of twelve, which whoever reads the difficulty off the window has as well.
TEST(DrillAnalysis, SaysThatHitsOnTheClocksTrialsProveNothing) {
  for (const Drill drill : {Drill::level, Drill::dynamics}) {
    const Stored record = recordOf(drill, 12, 20, true, 0.4);
    const auto byClock = DrillAnalysis::of(drill, record, SeedSource::clock).newest.value();
    EXPECT_EQ(byClock.blindHitRate, 1);
    EXPECT_FALSE(byClock.hitsShowHearing());
    EXPECT_FALSE(byClock.error.value().showsHearing());
    const auto fair = DrillAnalysis::of(drill, record, SeedSource::spread).newest.value();
    EXPECT_TRUE(fair.hitsShowHearing());
    EXPECT_TRUE(fair.error.value().showsHearing());
  }
}

TEST(DrillAnalysis, SaysThatHitsOfEasyTrialsProveNothing) {
  const auto newest = DrillAnalysis::of(Drill::level, recordOf(Drill::level, 200, 60, true, 0.5),
                                        SeedSource::spread)
                          .newest.value();
  EXPECT_EQ(newest.blindHitRate, 1);
  EXPECT_FALSE(newest.hitsShowHearing());
  EXPECT_FALSE(newest.error.value().showsHearing());
}

TEST(DrillAnalysis, AveragesTheBlindRateOverTheDifficulties) {
  Stored record = recordOf(Drill::level, 5, 0, true, 0);
  for (const Attempt& attempt : recordOf(Drill::level, 5, 100, true, 0).attempts)
    record.attempts.push_back(attempt);
  const auto newest = DrillAnalysis::of(Drill::level, record, SeedSource::spread).newest.value();
  EXPECT_NEAR(newest.blindHitRate, (0.47 + 1) / 2, 0.005);
  EXPECT_NEAR(newest.error.value().blindMean, (3.3 / 4 + 0.2 / 4) / 2, 0.01);
}

TEST(DrillAnalysis, NeedsFiveAnswersForAnErrorsInterval) {
  const auto four =
      DrillAnalysis::of(Drill::level, recordOf(Drill::level, 4, 0, true, 0), SeedSource::spread);
  EXPECT_FALSE(four.newest.value().error.value().interval);
  EXPECT_FALSE(four.newest->error->showsHearing());
}

TEST(BandAnalysis, CountsRowsAndRollUp) {
  Stored record;
  for (const double error : {0.0, 0.0, 0.32, 0.64, 1.04})
    record.attempts.push_back(row(Drill::frequency, 5, error < 0.33, error, inMay));
  record.attempts.push_back(row(Drill::frequency, std::nullopt, true, 0, inMay));
  record.attempts.push_back(row(Drill::level, 5, true, 0.2, inMay));
  record.lifetime[5] = {.attempts = 5, .hits = 1, .errorSum = 8};
  record.lifetime[6] = {.attempts = 1, .hits = 0, .errorSum = 2};
  const auto bands = BandAnalysis::all(record);
  ASSERT_EQ(bands.size(), 27U);
  EXPECT_EQ(bands[5].index, 5);
  EXPECT_EQ(bands[5].answers, 10);
  EXPECT_EQ(bands[5].hits, 4);
  EXPECT_EQ(bands[5].hitShare, Intervals::ofShare(4, 10));
  EXPECT_NEAR(bands[5].meanErrorOct, 1, 1e-12);
  // The interval is that of the rows, whose mean is 0.4.
  EXPECT_LT(bands[5].meanError.value().lower, 0.4);
  EXPECT_GT(bands[5].meanError->upper, 0.4);
  EXPECT_LT(bands[5].meanError->upper, 1);
  EXPECT_EQ(bands[6].meanErrorOct, 2);
  EXPECT_FALSE(bands[6].meanError);
  EXPECT_EQ(bands[0].answers, 0);
  EXPECT_EQ(bands[0].meanErrorOct, 0);
}

} // namespace
} // namespace velto
