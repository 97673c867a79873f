#include "Bands.h"
#include "Drill.h"
#include "Grading.h"
#include "Trial.h"

#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <string>

namespace velto {
namespace {

using namespace tests;
using Drills::Grade;
using Drills::grade;

constexpr double infinity = std::numeric_limits<double>::infinity();

Trial frequencyTrial(double targetFreq) {
  return {.drill = Drill::frequency, .targetFreq = targetFreq};
}
Trial levelTrial(double targetLevelDB) {
  return {.drill = Drill::level, .targetLevelDB = targetLevelDB};
}
Trial dynamicsTrial(double targetGRdB) {
  return {.drill = Drill::dynamics, .targetGRdB = targetGRdB};
}
Trial polarityTrial(std::int64_t oddSlot) {
  return {.drill = Drill::polarity, .slots = 3, .oddSlot = oddSlot};
}

void expectTexts(const Grade& g, const char* error, const char* truth, const char* answer) {
  EXPECT_EQ(g.errorText, error);
  EXPECT_EQ(g.truthText, truth);
  EXPECT_EQ(g.answerText, answer);
}

TEST(Grade, FrequencyRatioOf1_25IsAHit) {
  const Grade g = grade(1250, frequencyTrial(1000));
  EXPECT_TRUE(g.correct);
  EXPECT_NEAR(g.error, 0.32192809488736235, 1e-15);
  expectTexts(g, "0.32 oct off", "1k Hz", "1.25k Hz");
}

TEST(Grade, FrequencyErrorIsInOctaves) {
  EXPECT_EQ(grade(2000, frequencyTrial(1000)).error, 1);
  EXPECT_EQ(grade(500, frequencyTrial(1000)).error, 1);
  EXPECT_EQ(grade(4000, frequencyTrial(1000)).error, 2);
}

TEST(Grade, FrequencyHitsAreTheBandAndNeighboursWithinAThirdOfAnOctave) {
  // The lower band of each two neighbours that are at most a third of an octave apart.
  const std::set<double> lower{40,   80,   100,  160,  200,  400,  800,
                               1000, 1600, 2000, 4000, 8000, 10000};
  for (std::size_t i = 0; i < Bands::centres.size(); ++i)
    for (std::size_t k = 0; k < Bands::centres.size(); ++k) {
      const auto [low, high] = std::minmax(i, k);
      const bool hit = low == high || (low + 1 == high && lower.contains(Bands::centres[low]));
      EXPECT_EQ(grade(Bands::centres[i], frequencyTrial(Bands::centres[k])).correct, hit)
          << Bands::centres[i] << " for " << Bands::centres[k];
    }
}

TEST(Grade, FrequencyThresholdIsTheDoubleNearestOneThird) {
  // No double's log2 is computed as exactly 1/3, so test the nearest error on each side.
  double answer = 1.2599210498948;
  while (std::log2(std::nextafter(answer, 2)) <= 1.0 / 3)
    answer = std::nextafter(answer, 2);
  ASSERT_NEAR(answer, 1.2599210498948732, 1e-15); // 2^(1/3)
  EXPECT_TRUE(grade(answer, frequencyTrial(1)).correct);
  EXPECT_FALSE(grade(std::nextafter(answer, 2), frequencyTrial(1)).correct);
  // Below the truth, the largest error that is a hit is the double before 1/3.
  const Grade below = grade(0.7937005259840998, frequencyTrial(1));
  EXPECT_EQ(below.error, std::nextafter(1.0 / 3, 0));
  EXPECT_TRUE(below.correct);
  EXPECT_FALSE(grade(std::nextafter(0.7937005259840998, 0), frequencyTrial(1)).correct);
}

TEST(Grade, ZeroAndNegativeFrequenciesAreMisses) {
  const Grade zero = grade(0, frequencyTrial(1000));
  EXPECT_FALSE(zero.correct);
  expectTexts(zero, "inf oct off", "1k Hz", "0 Hz");
  EXPECT_FALSE(grade(-1000, frequencyTrial(1000)).correct);
}

TEST(Grade, LevelErrorIsInDecibels) {
  const Grade hit = grade(3.5, levelTrial(3));
  EXPECT_TRUE(hit.correct);
  EXPECT_EQ(hit.error, 0.5);
  expectTexts(hit, "0.50 dB off", "3.00 dB", "3.50 dB");

  const Grade miss = grade(4.0, levelTrial(3));
  EXPECT_FALSE(miss.correct);
  EXPECT_EQ(miss.error, 1);
  expectTexts(miss, "1.00 dB off", "3.00 dB", "4.00 dB");
}

TEST(Grade, LevelThresholdIsInclusive) {
  EXPECT_TRUE(grade(3.75, levelTrial(3)).correct);
  EXPECT_TRUE(grade(2.25, levelTrial(3)).correct);
  EXPECT_FALSE(grade(std::nextafter(3.75, 4), levelTrial(3)).correct);
  EXPECT_FALSE(grade(std::nextafter(2.25, 0), levelTrial(3)).correct);
}

TEST(Grade, DynamicsErrorIsInDecibels) {
  const Grade hit = grade(8.0, dynamicsTrial(6));
  EXPECT_TRUE(hit.correct);
  EXPECT_EQ(hit.error, 2);
  expectTexts(hit, "2.0 dB off", "6.0 dB GR", "8.0 dB GR");

  const Grade miss = grade(8.1, dynamicsTrial(6));
  EXPECT_FALSE(miss.correct);
  expectTexts(miss, "2.1 dB off", "6.0 dB GR", "8.1 dB GR");
}

TEST(Grade, DynamicsThresholdIsInclusive) {
  EXPECT_TRUE(grade(4.0, dynamicsTrial(6)).correct);
  EXPECT_FALSE(grade(std::nextafter(8.0, 9), dynamicsTrial(6)).correct);
  EXPECT_FALSE(grade(std::nextafter(4.0, 0), dynamicsTrial(6)).correct);
}

TEST(Grade, PolarityTextsNumberSlotsFromOne) {
  const Grade hit = grade(1.0, polarityTrial(1));
  EXPECT_TRUE(hit.correct);
  EXPECT_TRUE(sameBits(hit.error, 0.0));
  expectTexts(hit, "hit", "slot 2", "slot 2");

  const Grade miss = grade(2.0, polarityTrial(1));
  EXPECT_FALSE(miss.correct);
  EXPECT_EQ(miss.error, 1);
  expectTexts(miss, "miss", "slot 2", "slot 3");
}

TEST(Grade, PolarityAnswersAreTruncated) {
  EXPECT_TRUE(grade(1.9, polarityTrial(1)).correct);
  EXPECT_TRUE(grade(-0.9, polarityTrial(0)).correct);
  expectTexts(grade(-1.9, polarityTrial(0)), "miss", "slot 1", "slot 0");
  EXPECT_EQ(grade(-0x1p63, polarityTrial(0)).answerText, "slot -9223372036854775807");
}

TEST(GradeDeathTest, PolarityDiesIfTheAnswerDoesNotFitAnInteger) {
  const char* message = "Velto: a number cannot be converted to an integer";
  for (const double answer : {infinity, -infinity, 0x1p63, -0x1.0000000000001p63,
                              std::numeric_limits<double>::quiet_NaN()})
    EXPECT_DEATH((void)grade(answer, polarityTrial(1)), message) << answer;
}

RC_GTEST_PROP(GradeLaw, MatchesTheModelBitForBit, ()) {
  const Trial trial = Drills::makeTrial(*anyDifficulty(), *anyMaterial(), *anySeed(), *anyDrill());
  const double truth = trial.targetFreq + trial.targetLevelDB + trial.targetGRdB +
                       static_cast<double>(trial.oddSlot);
  const double answer =
      *rc::gen::oneOf(between(0, 13), between(20, 20000), rc::gen::just(truth),
                      between(truth - 3, truth + 3), between(truth / 2, truth * 2),
                      rc::gen::elementOf(Bands::centres), rc::gen::element(0.0, 1.0, 2.0, -1.0));
  const Grade actual = grade(answer, trial);
  const reference::Grade expected = reference::grade(answer, referenceTrial(trial));
  RC_ASSERT(actual.correct == expected.correct);
  require(sameBits(actual.error, expected.error));
  RC_ASSERT(actual.errorText == expected.errorText);
  RC_ASSERT(actual.truthText == expected.truthText);
  RC_ASSERT(actual.answerText == expected.answerText);
}

} // namespace
} // namespace velto
