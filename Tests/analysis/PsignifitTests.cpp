// The fit against an independent program, psignifit, on listeners who do not change.
#include "ThresholdFit.h"

#include "Numbers.h"
#include "SimulatedListener.h"
#include "kit/Command.h"
#include "kit/Files.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <sstream>

namespace velto {
namespace {

using kit::ScratchFolder;
using testing::ListenerRandom;
using testing::SimulatedListener;

// `perLevel` answers at each of eleven difficulties, in turn.
std::vector<HitOrMiss> answersInTurn(const SimulatedListener& listener, int perLevel,
                                     double guessRate, std::uint64_t seed) {
  ListenerRandom random(seed);
  std::vector<HitOrMiss> answers;
  for (int n = 0; n < perLevel; ++n) {
    for (int level = 0; level <= 10; ++level) {
      const double difficulty = 10.0 * ((level * 7 + n * 3) % 11);
      const double hitRate = guessRate + (1 - guessRate - listener.lapseRate) *
                                             listener.heard(listener.threshold - difficulty);
      answers.push_back({.difficulty = difficulty, .hit = random.unit() < hitRate});
    }
  }
  return answers;
}

struct Estimate {
  double threshold = 0;
  double lower = 0;
  double upper = 0;
};

std::vector<double> numbersIn(const std::string& text) {
  std::istringstream words(text);
  std::vector<double> numbers;
  for (double number = 0; words >> number; words.ignore(1))
    numbers.push_back(number);
  return numbers;
}

// Its curves rise: it gets the ease, 100 - difficulty, and finds 100 - threshold.
Estimate estimateOfPsignifit(const std::vector<HitOrMiss>& answers, double guessRate) {
  std::map<double, std::array<int, 2>> counts;
  for (const HitOrMiss& answer : answers)
    ++counts[100 - answer.difficulty][answer.hit ? 0 : 1];
  std::string data;
  for (const auto& [ease, count] : counts)
    data += Numbers::shortest(ease) + " " + std::to_string(count[0]) + " " +
            std::to_string(count[1]) + "\n";
  const ScratchFolder folder;
  const auto run = [&](const std::string& what) {
    kit::put(folder.path() / "data", data);
    kit::put(folder.path() / "options",
             "#SHAPE logistic\n#N_INTERVALS 2\n#FIX_GAMMA " + Numbers::shortest(guessRate) +
                 "\n#MATRIX_FORMAT xrw\n#CUTS 0.5\n#CONF 0.025 0.975\n"
                 "#LAMBDA_PRIOR -beta 0, 1, 1, 30\n#RUNS 999\n#RANDOM_SEED 7\n#SENS 0\n"
                 "#VERBOSE FALSE\n#WRITE_TH_" +
                 what + " -\n");
    const auto result = kit::runCommand("cd '" + folder.path().string() +
                                        "' && psignifit data options 2>/dev/null");
    EXPECT_EQ(result.status, 0);
    return numbersIn(result.output);
  };
  const auto threshold = run("EST");
  const auto quantiles = run("QUANT");
  if (threshold.size() != 1 || quantiles.size() != 2) {
    ADD_FAILURE() << "psignifit printed " << threshold.size() << " and " << quantiles.size()
                  << " numbers";
    return {};
  }
  return {
      .threshold = 100 - threshold[0], .lower = 100 - quantiles[1], .upper = 100 - quantiles[0]};
}

TEST(ThresholdFit, AgreesWithPsignifit) {
  if (kit::runCommand("command -v psignifit").status != 0)
    GTEST_SKIP() << "psignifit is missing (Debian package psignifit)";
  struct Set {
    SimulatedListener listener;
    int perLevel;
    double guessRate;
  };
  const std::vector<Set> sets{
      {{.name = "", .threshold = 50, .width = 40}, 40, 1.0 / 3},
      {{.name = "", .threshold = 35, .width = 30}, 40, 1.0 / 9},
      {{.name = "", .threshold = 70, .width = 60}, 40, 1.0 / 9},
      {{.name = "", .threshold = 45, .width = 50, .lapseRate = 0.04}, 40, 1.0 / 3},
      {{.name = "", .threshold = 60, .width = 45}, 10, 1.0 / 9},
  };
  std::uint64_t seed = 11;
  for (const Set& set : sets) {
    const auto answers = answersInTurn(set.listener, set.perLevel, set.guessRate, ++seed);
    const Estimate other = estimateOfPsignifit(answers, set.guessRate);
    const auto fit = ThresholdFit::of(answers, set.guessRate).value();
    // Both look at the same answers: they differ by far less than the interval is wide.
    const double width = other.upper - other.lower;
    EXPECT_NEAR(fit.threshold, other.threshold, 0.2 * width) << set.listener.threshold;
    EXPECT_NEAR(fit.lower.value(), other.lower, 0.35 * width) << set.listener.threshold;
    EXPECT_NEAR(fit.upper.value(), other.upper, 0.35 * width) << set.listener.threshold;
  }
}

} // namespace
} // namespace velto
