// Mixed seeds: guessing does no better than chance.
#include "Drill.h"
#include "Grading.h"
#include "Trial.h"

#include "kit/Chance.h"
#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <set>
#include <vector>

namespace velto {
namespace {

using namespace tests;

constexpr std::uint64_t seedStep = 40503;

// Launch times in seconds since 1970, spread over a year.
std::vector<std::uint64_t> launches() {
  std::vector<std::uint64_t> seconds;
  for (std::uint64_t i = 0; i < 4000; ++i)
    seconds.push_back(1'790'000'000 + i * 7883);
  return seconds;
}

double targetOf(const Trial& trial) {
  return trial.drill == Drill::level ? trial.targetLevelDB : trial.targetGRdB;
}

RC_GTEST_PROP(MixedSeedLaw, MatchesTheModel, ()) {
  const std::uint64_t counter = *anySeed();
  RC_ASSERT(Drills::mixedSeed(counter) == reference::mixedSeed(counter));
}

TEST(FairSeeds, ReachEveryTarget) {
  for (const Drill drill : {Drill::level, Drill::dynamics})
    for (const double difficulty : {0.0, 20.0, 60.0, 100.0}) {
      std::set<double> plain, mixed;
      for (const std::uint64_t second : launches()) {
        const std::uint64_t counter = second + 2 * seedStep;
        plain.insert(targetOf(Drills::makeTrial(difficulty, Material::drums, counter, drill)));
        mixed.insert(targetOf(
            Drills::makeTrial(difficulty, Material::drums, Drills::mixedSeed(counter), drill)));
      }
      std::set<double> all;
      for (const Trial& trial : kit::equallyLikelyTrials(drill, difficulty))
        all.insert(targetOf(trial));
      EXPECT_LE(plain.size(), 2U) << drill << ' ' << difficulty;
      EXPECT_EQ(mixed, all) << drill << ' ' << difficulty;
    }
}

TEST(FairSeeds, BlindAnswersHitAtChanceLevel) {
  for (const Drill drill : Drill::allCases)
    for (const double difficulty : {0.0, 20.0}) {
      const auto [answer, chance] = kit::bestBlindAnswer(drill, difficulty);
      double hits = 0;
      for (const std::uint64_t second : launches())
        hits += Drills::grade(answer,
                              Drills::makeTrial(difficulty, Material::drums,
                                                Drills::mixedSeed(second + 2 * seedStep), drill))
                        .correct
                    ? 1
                    : 0;
      // Four standard deviations of the hit rate of 4000 trials: at most 4 sqrt(0.25 / 4000).
      EXPECT_NEAR(hits / static_cast<double>(launches().size()), chance, 0.032)
          << drill << ' ' << difficulty;
    }
}

TEST(Chance, LimitsTheHitsOfFortyTrials) {
  const auto bound = [](Drill drill, double difficulty) {
    return kit::mostHitsByChance(kit::bestBlindAnswer(drill, difficulty).chance, 40);
  };
  EXPECT_EQ(bound(Drill::frequency, 0), 10);
  EXPECT_EQ(bound(Drill::polarity, 0), 20);
  EXPECT_EQ(bound(Drill::level, 0), 26);
  EXPECT_EQ(bound(Drill::level, 20), 30);
  EXPECT_EQ(bound(Drill::dynamics, 0), 30);
  EXPECT_EQ(bound(Drill::dynamics, 20), 34);
}

} // namespace
} // namespace velto
