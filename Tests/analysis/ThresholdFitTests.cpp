#include "ThresholdFit.h"

#include "SimulatedListener.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

using testing::practise;
using testing::SimulatedListener;

std::vector<HitOrMiss> all(int count, double difficulty, bool hit) {
  return std::vector<HitOrMiss>(static_cast<std::size_t>(count),
                                {.difficulty = difficulty, .hit = hit});
}

TEST(ThresholdFit, NeedsAnAnswer) {
  EXPECT_FALSE(ThresholdFit::of({}, 0.1));
  EXPECT_TRUE(ThresholdFit::of(all(1, 20, true), 0.1));
}

TEST(ThresholdFit, FindsThresholdAndWidth) {
  const SimulatedListener listener{.name = "", .threshold = 62, .width = 30};
  const auto fit = ThresholdFit::of(practise(listener, 3000, 1.0 / 3, 5).answers, 1.0 / 3).value();
  EXPECT_NEAR(fit.threshold, 62, 3);
  EXPECT_NEAR(fit.width, 30, 8);
  EXPECT_LT(fit.lapseRate, 0.06);
  EXPECT_EQ(fit.guessRate, 1.0 / 3);
}

TEST(ThresholdFit, ReadsTheHitRateOffItsCurve) {
  ThresholdFit fit;
  fit.threshold = 40;
  fit.width = 30;
  fit.lapseRate = 0.02;
  fit.guessRate = 0.1;
  EXPECT_NEAR(fit.hitRate(40), 0.1 + 0.88 / 2, 1e-12);
  EXPECT_NEAR(fit.hitRate(25), 0.1 + 0.88 * 0.95, 1e-12);
  EXPECT_NEAR(fit.hitRate(55), 0.1 + 0.88 * 0.05, 1e-12);
}

TEST(ThresholdFit, LeavesOpenWhatNoAnswerBounds) {
  const auto hits = ThresholdFit::of(all(100, 100, true), 0.1).value();
  EXPECT_GT(hits.threshold, 100);
  EXPECT_FALSE(hits.upper);
  EXPECT_GT(hits.lower.value(), 90);

  const auto misses = ThresholdFit::of(all(100, 0, false), 0.1).value();
  EXPECT_LT(misses.threshold, 0);
  EXPECT_FALSE(misses.lower);
  EXPECT_LT(misses.upper.value(), 10);

  const auto one = ThresholdFit::of(all(1, 50, true), 0.1).value();
  EXPECT_FALSE(one.upper);
}

TEST(ThresholdFit, KeepsItsEndsWithinTheScale) {
  const auto hits = ThresholdFit::of(all(400, 100, true), 0.1).value();
  EXPECT_EQ(hits.lower, 100);
  const auto misses = ThresholdFit::of(all(400, 0, false), 0.1).value();
  EXPECT_EQ(misses.upper, 0);
}

// One hit in three is as many as a guesser has, and far more than one in nine.
TEST(ThresholdFit, TakesGuessesForWhatTheyAre) {
  std::vector<HitOrMiss> answers;
  for (int i = 0; i < 120; ++i)
    answers.push_back({.difficulty = 50, .hit = i % 3 == 0});
  const auto guessed = ThresholdFit::of(answers, 1.0 / 3).value();
  const auto heard = ThresholdFit::of(answers, 1.0 / 9).value();
  EXPECT_FALSE(guessed.lower);
  EXPECT_LT(guessed.threshold + 5, heard.threshold);
}

TEST(ThresholdFit, ClampsDifficultiesLikeTrials) {
  auto answers = practise({.name = ""}, 60, 0.1, 3).answers;
  answers.push_back({.difficulty = 100, .hit = false});
  answers.push_back({.difficulty = 0, .hit = true});
  const auto within = ThresholdFit::of(answers, 0.1).value();
  answers[60].difficulty = 1e300;
  answers[61].difficulty = -250;
  const auto beyond = ThresholdFit::of(answers, 0.1).value();
  EXPECT_EQ(beyond.threshold, within.threshold);
  EXPECT_EQ(beyond.lower, within.lower);
  EXPECT_EQ(beyond.upper, within.upper);
}

// The staircase follows, so that hits are as frequent at 30 as at 60.
TEST(ThresholdFit, FollowsAListenerWhoImproves) {
  for (const std::uint64_t seed : {1U, 2U, 3U}) {
    const auto practice = practise({.name = "", .change = 30}, 400, 1.0 / 9, seed);
    const auto fit = ThresholdFit::of(practice.answers, 1.0 / 9).value();
    EXPECT_NEAR(fit.threshold, practice.meanThreshold, 8);
    EXPECT_LT(fit.upper.value() - fit.lower.value(), 25);
  }
}

TEST(ThresholdFit, GivesTheSameFigureAgain) {
  const auto answers = practise({.name = ""}, 80, 0.1, 9).answers;
  const auto first = ThresholdFit::of(answers, 0.1).value();
  const auto second = ThresholdFit::of(answers, 0.1).value();
  EXPECT_EQ(first.threshold, second.threshold);
  EXPECT_EQ(first.lower, second.lower);
  EXPECT_EQ(first.upper, second.upper);
}

} // namespace
} // namespace velto
