#include "Scores.h"

#include "ListMaker.h"
#include "kit/Answers.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velto;

namespace {

TrialList listOf(Drill drill, double difficulty, std::size_t count, std::uint64_t randomSeed) {
  return makeList({.parts = {{.drill = drill, .difficulty = difficulty}},
                   .count = count,
                   .randomSeed = randomSeed});
}

// The results of a listener who answers each trial with answer(trial), read from their file.
template <typename Answer>
Results::Reading resultsOf(const TrialList& list, Answer answer) {
  Sitting sitting(list);
  std::string text(Results::header());
  std::size_t number = 0;
  while (const auto trial = sitting.next()) {
    const Results::Given given{.answer = answer(*trial), .seconds = 2, .switches = 3};
    text += Results::line(list.id(), ++number,
                          {.trial = *trial, .given = given, .grade = sitting.take(given.answer)});
  }
  return std::get<Results::Reading>(Results::read(list, text));
}

} // namespace

TEST(Scores, CountEachDrillAndShowWhatGuessingGets) {
  ListRequest request{.parts = {{Drill::polarity, 30}, {Drill::level, 40}}, .count = 9};
  const TrialList list = makeList(request);
  BlindAnswers blind = blindAnswersTo(list);
  const auto reading = resultsOf(list, [](const Trial& trial) {
    return trial.drill == Drill::level ? kit::missOf(trial) : kit::truthOf(trial);
  });
  const auto scores = scoresOf(reading, blind);
  ASSERT_EQ(scores.size(), 2U);
  EXPECT_EQ(scores[0].drill, Drill::level);
  EXPECT_EQ(scores[0].answers, 4U);
  EXPECT_EQ(scores[0].hits, 0U);
  EXPECT_GT(scores[0].error, 0.75);
  EXPECT_NEAR(scores[0].blindHits, 0.75, 0.01);
  EXPECT_EQ(scores[0].byGuessing, 1);
  EXPECT_EQ(scores[1].drill, Drill::polarity);
  EXPECT_EQ(scores[1].answers, 5U);
  EXPECT_EQ(scores[1].hits, 5U);
  EXPECT_EQ(scores[1].error, 0);
  EXPECT_NEAR(scores[1].blindError, 2.0 / 3, 1e-12);
  EXPECT_NEAR(scores[1].byGuessing, std::pow(1.0 / 3, 5), 1e-12);
  EXPECT_EQ(scores[1].seconds, 2);
  EXPECT_EQ(scores[1].switches, 3);
  EXPECT_EQ(scores[1].difficulty, 30);
}

TEST(Scores, AreZeroWithoutAnswers) {
  const TrialList list = listOf(Drill::dynamics, 20, 3, 1);
  BlindAnswers blind = blindAnswersTo(list);
  const auto scores = scoresOf(std::get<Results::Reading>(Results::read(list, "")), blind);
  ASSERT_EQ(scores.size(), 1U);
  EXPECT_EQ(scores[0].trials, 3U);
  EXPECT_EQ(scores[0].answers, 0U);
  EXPECT_EQ(scores[0].error, 0);
}

// Without weights the best band to name hits for itself and both neighbours; 400 Hz, the heaviest
// one here, hits for 500 Hz, too, but not for 315 Hz.
TEST(Scores, KnowHowOftenAListAsksForEachBand) {
  ListRequest request{.parts = {{Drill::frequency, 40}}, .count = 1};
  EXPECT_NEAR(blindAnswersTo(makeList(request)).at(Drill::frequency, 40).hitRate, 3.0 / 27, 1e-12);
  request.bandWeights = Targets::evenBands;
  request.bandWeights->at(10) = 4;
  EXPECT_NEAR(blindAnswersTo(makeList(request)).at(Drill::frequency, 40).hitRate, 5.0 / 30, 1e-12);
}

TEST(Scores, AddUpToThoseOfTheClass) {
  const Score all =
      totalOf({{.drill = Drill::level, .trials = 5, .answers = 4, .hits = 3, .error = 1},
               {.drill = Drill::level, .trials = 5, .answers = 1, .error = 2},
               {.drill = Drill::level, .trials = 5}});
  EXPECT_EQ(all.trials, 15U);
  EXPECT_EQ(all.answers, 5U);
  EXPECT_EQ(all.hits, 3U);
  EXPECT_DOUBLE_EQ(all.error, 1.2);
}

// By hand, from three coins of 1/2, 1/4 and 1/8.
TEST(Scores, KnowTheProbabilityOfSoManyHits) {
  const std::vector<double> chances{0.5, 0.25, 0.125};
  EXPECT_DOUBLE_EQ(probabilityOfAtLeast(0, chances), 1);
  EXPECT_DOUBLE_EQ(probabilityOfAtLeast(1, chances), 1 - 0.5 * 0.75 * 0.875);
  EXPECT_DOUBLE_EQ(probabilityOfAtLeast(3, chances), 0.5 * 0.25 * 0.125);
  EXPECT_DOUBLE_EQ(probabilityOfAtLeast(4, chances), 0);
}
