#include "BlindAnswer.h"

#include "Grading.h"
#include "Trial.h"
#include "TrialSeeds.h"
#include "kit/Chance.h"
#include "kit/RecordTesting.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

using testing::utc;

BlindAnswer fair(Drill drill, double difficulty) {
  return bestBlindAnswer(drill, difficulty, TrialSeeds::spread());
}

BlindAnswer byClock(Drill drill, double difficulty) {
  return bestBlindAnswer(drill, difficulty, TrialSeeds::clock(utc(2026, 11, 22)));
}

// 1.55 of 3.3 dB, and so on: the tolerance over the range of targets.
TEST(BlindAnswer, HitsFairTrialsAsOftenAsTheToleranceCoversTheirTargets) {
  EXPECT_NEAR(fair(Drill::level, 0).hitRate, 0.47, 0.005);
  EXPECT_NEAR(fair(Drill::level, 20).hitRate, 0.58, 0.005);
  EXPECT_NEAR(fair(Drill::level, 40).hitRate, 0.75, 0.005);
  EXPECT_NEAR(fair(Drill::level, 50).hitRate, 0.88, 0.005);
  EXPECT_EQ(fair(Drill::level, 60).hitRate, 1);
  EXPECT_NEAR(fair(Drill::dynamics, 0).hitRate, 0.57, 0.005);
  EXPECT_NEAR(fair(Drill::dynamics, 20).hitRate, 0.68, 0.005);
  EXPECT_NEAR(fair(Drill::dynamics, 40).hitRate, 0.85, 0.005);
  EXPECT_NEAR(fair(Drill::dynamics, 50).hitRate, 0.96, 0.008);
}

// A band and its two neighbours, where both are hits; one slot of three.
TEST(BlindAnswer, HitsThreeBandsOfTwentySevenAndOneSlotOfThree) {
  for (const double difficulty : {0.0, 37.0, 100.0}) {
    EXPECT_NEAR(fair(Drill::frequency, difficulty).hitRate, 3.0 / 27, 1e-12);
    EXPECT_NEAR(fair(Drill::polarity, difficulty).hitRate, 1.0 / 3, 1e-12);
    EXPECT_NEAR(byClock(Drill::frequency, difficulty).hitRate, 3.0 / 27, 0.005);
    EXPECT_NEAR(byClock(Drill::polarity, difficulty).hitRate, 1.0 / 3, 0.005);
  }
}

TEST(BlindAnswer, HitsEveryTrialOfTheClockInLevelAndDynamics) {
  const std::map<double, double> targets{{0, 3.05}, {20, 2.5}, {40, 1.9}, {60, 1.35}};
  for (const auto& [difficulty, target] : targets) {
    const BlindAnswer answer = byClock(Drill::level, difficulty);
    EXPECT_EQ(answer.hitRate, 1);
    EXPECT_EQ(answer.answer, target);
    EXPECT_NEAR(answer.lowestTarget, target, 0.051);
    EXPECT_NEAR(answer.highestTarget, target, 0.051);
    EXPECT_LT(answer.meanError, 0.025);
    EXPECT_EQ(byClock(Drill::dynamics, difficulty).hitRate, 1);
  }
}

// At difficulty 100 every answer hits all targets, which lie between 0.2 and 0.4 dB, and between
// 0.8 and 2 dB.
TEST(BlindAnswer, IsTheClosestOfThoseThatHitAlike) {
  EXPECT_EQ(fair(Drill::level, 100).answer, 0.3);
  EXPECT_EQ(fair(Drill::dynamics, 100).answer, 1.5);
}

// The mean distance from the middle of an even distribution is a quarter of its range.
TEST(BlindAnswer, TellsTheSmallestMeanError) {
  EXPECT_NEAR(fair(Drill::level, 0).meanError, 3.3 / 4, 0.01);
  EXPECT_NEAR(fair(Drill::dynamics, 0).meanError, 7.2 / 4, 0.01);
  EXPECT_NEAR(fair(Drill::polarity, 0).meanError, 2.0 / 3, 1e-12);
}

TEST(BlindAnswer, CountsTheTargets) {
  EXPECT_EQ(fair(Drill::frequency, 0).targets, 27U);
  EXPECT_EQ(fair(Drill::level, 0).targets, 67U);
  EXPECT_EQ(fair(Drill::dynamics, 0).targets, 73U);
  EXPECT_EQ(fair(Drill::polarity, 0).targets, 3U);
  EXPECT_EQ(fair(Drill::polarity, 0).highestTarget, 2);
}

// The drills' description, computed in another way, and the answers of the window.
TEST(BlindAnswer, AgreesWithAnIndependentModel) {
  for (const Drill drill : Drill::allCases)
    for (const double difficulty : {13.0, 45.0})
      EXPECT_NEAR(fair(drill, difficulty).hitRate, kit::bestBlindAnswer(drill, difficulty).chance,
                  0.002)
          << drill.rawValue() << " " << difficulty;
}

TEST(BlindAnswer, HitsMixedSeedsAsOftenAsPredicted) {
  constexpr int count = 20000;
  for (const Drill drill : Drill::allCases) {
    const BlindAnswer predicted = fair(drill, 30);
    int hits = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
      const Trial trial =
          Drills::makeTrial(30, Material::pad, Drills::mixedSeed(1'795'000'000 + 40503 * i), drill);
      hits += Drills::grade(predicted.answer, trial).correct ? 1 : 0;
    }
    EXPECT_NEAR(static_cast<double>(hits) / count, predicted.hitRate, 0.015) << drill.rawValue();
  }
}

TEST(BlindAnswers, AreThoseOfTheDrillAndDifficulty) {
  BlindAnswers answers(TrialSeeds::spread());
  for (int times = 0; times < 2; ++times) {
    EXPECT_EQ(answers.at(Drill::level, 20), fair(Drill::level, 20));
    EXPECT_EQ(answers.at(Drill::dynamics, 20), fair(Drill::dynamics, 20));
    EXPECT_EQ(answers.at(Drill::level, 40), fair(Drill::level, 40));
  }
}

} // namespace
} // namespace velto
