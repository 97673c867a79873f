#include "Scores.h"

#include "Blind.h"
#include "ListMaker.h"
#include "kit/Answers.h"
#include "kit/Chance.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velto;

namespace {

BlindTable table;

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

// The chances that were measured in the window with spread seeds.
TEST(Blind, HitsAsOftenAsAFixedAnswerInTheWindow) {
  const struct {
    Drill drill;
    double difficulty, hits;
  } cases[] = {
      {Drill::level, 0, 0.47},     {Drill::level, 20, 0.58},    {Drill::level, 40, 0.75},
      {Drill::level, 50, 0.88},    {Drill::dynamics, 0, 0.57},  {Drill::dynamics, 20, 0.68},
      {Drill::dynamics, 40, 0.85}, {Drill::dynamics, 50, 0.96}, {Drill::polarity, 70, 1.0 / 3}};
  for (const auto& [drill, difficulty, hits] : cases)
    EXPECT_NEAR(Blind::at(drill, difficulty).hits, hits, 0.01)
        << drill.rawValue() << " " << difficulty;
}

// The kit splits the range of targets into small parts instead.
TEST(Blind, AgreesWithCountingSmallPartsOfTheRange) {
  for (const Drill drill : Drill::allCases)
    for (const double difficulty : {0.0, 33.0, 80.0, 100.0})
      EXPECT_NEAR(Blind::at(drill, difficulty).hits, kit::bestBlindAnswer(drill, difficulty).chance,
                  2e-4)
          << drill.rawValue() << " " << difficulty;
}

// By hand: two thirds of the slots are wrong; the middle band (800 Hz) of 27; and at difficulty 100
// dynamics targets lie from 0.8 to 2 dB, so that 1.5 is 0.3 off in the mean.
TEST(Blind, KnowsTheSmallestMeanError) {
  EXPECT_NEAR(Blind::at(Drill::polarity, 50).error, 2.0 / 3, 1e-12);
  double sum = 0;
  for (const double centre : Bands::centres)
    sum += std::abs(std::log2(centre / Bands::centres[13]));
  EXPECT_NEAR(Blind::at(Drill::frequency, 50).error, sum / 27, 1e-12);
  EXPECT_NEAR(Blind::at(Drill::dynamics, 100).error, (0.49 + 0.25) / 2 / 1.2, 0.01);
}

TEST(Blind, KnowsTheWeightsOfTheBands) {
  Blind::Weights weights = Blind::even;
  weights[5] = 13; // 125 Hz; the answer 100 Hz hits 80, 100 and 125 Hz
  EXPECT_NEAR(Blind::at(Drill::frequency, 0, weights).hits, 15.0 / 39, 1e-12);
}

TEST(Scores, CountEachDrillAndShowWhatGuessingGets) {
  ListRequest request{.parts = {{Drill::polarity, 30}, {Drill::level, 40}}, .count = 9};
  const auto reading = resultsOf(makeList(request), [](const Trial& trial) {
    return trial.drill == Drill::level ? kit::missOf(trial) : kit::truthOf(trial);
  });
  const auto scores = scoresOf(reading, table);
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
  const auto scores = scoresOf(std::get<Results::Reading>(Results::read(list, "")), table);
  ASSERT_EQ(scores.size(), 1U);
  EXPECT_EQ(scores[0].trials, 3U);
  EXPECT_EQ(scores[0].answers, 0U);
  EXPECT_EQ(scores[0].error, 0);
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

// Twenty listeners a drill who always give the best answer without listening, each to 100 trials of
// a list of their own. All their hits lie within four standard deviations of the binomial
// distribution with Blind's rate (1 in 16000 runs would not), and those of each within 4.5 (of 80
// listeners, 1 in 1800 runs one would not). The lists are fixed, so that the outcome is as well.
TEST(Scores, OfTwentyBlindListenersADrillAreWhatBlindPredicts) {
  constexpr std::size_t listeners = 20, trials = 100;
  for (const Drill drill : Drill::allCases) {
    const double difficulty = 40;
    const kit::BlindAnswer best = kit::bestBlindAnswer(drill, difficulty);
    const double rate = Blind::at(drill, difficulty).hits;
    const double deviation = std::sqrt(trials * rate * (1 - rate));
    double all = 0;
    for (std::uint64_t listener = 0; listener < listeners; ++listener) {
      const auto scores = scoresOf(resultsOf(listOf(drill, difficulty, trials, listener),
                                             [&](const Trial&) { return best.answer; }),
                                   table);
      EXPECT_NEAR(static_cast<double>(scores[0].hits), rate * trials, 4.5 * deviation)
          << drill.rawValue() << " " << listener;
      EXPECT_NEAR(scores[0].blindHits, rate, 1e-12);
      EXPECT_GT(scores[0].byGuessing, 1e-6);
      all += static_cast<double>(scores[0].hits);
    }
    EXPECT_NEAR(all, rate * trials * listeners, 4 * deviation * std::sqrt(listeners))
        << drill.rawValue();
  }
}
