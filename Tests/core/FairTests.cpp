// Fair trials: guessing does no better than chance, and pink noise has no energy below 20 Hz.
#include "Drills.h"

#include "CoreSupport.h"
#include "kit/Chance.h"
#include "kit/Spectrum.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
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

TEST(FairSeeds, BlindAnswersHitAtTheRateOfChance) {
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
      // Four standard deviations of 4000 trials are 0.032 at most.
      EXPECT_NEAR(hits / static_cast<double>(launches().size()), chance, 0.032)
          << drill << ' ' << difficulty;
    }
}

TEST(Chance, MostHitsOfFortyTrials) {
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

// The trials with the smallest and the largest target of a drill at one difficulty.
std::vector<Trial> extremes(Drill drill, Material material, double difficulty) {
  std::vector<Trial> trials;
  for (std::uint64_t i = 0; i < 4000; ++i)
    trials.push_back(Drills::makeTrial(difficulty, material, Drills::mixedSeed(i), drill));
  const auto [lowest, highest] =
      std::minmax_element(trials.begin(), trials.end(), [](const Trial& a, const Trial& b) {
        return a.targetFreq + a.targetLevelDB + a.targetGRdB <
               b.targetFreq + b.targetLevelDB + b.targetGRdB;
      });
  return {*lowest, *highest};
}

// Noise::asDrawn, in contrast, has nearly all of its energy below 20 Hz.
TEST(AudibleNoise, HasItsLevelAbove20HzAndNoDCOffset) {
  for (const Drill drill : Drill::allCases)
    for (const double difficulty : {0.0, 100.0})
      for (const Trial& trial : extremes(drill, Material::pinkNoise, difficulty)) {
        const auto slots = Drills::render(trial, 3.2, Noise::audible);
        const auto a = kit::loopLevel(*slots[0].l, 20), b = kit::loopLevel(*slots[1].l, 20);
        const auto right = kit::loopLevel(*slots[0].r, 20);
        for (const auto& level : {a, b, right})
          EXPECT_LT(std::abs(level.mean), 0.0005) << drill << ' ' << difficulty;
        EXPECT_NEAR(a.fromLowUpDB, -20, 0.15) << drill << ' ' << difficulty;
        EXPECT_NEAR(right.fromLowUpDB, -20, 0.15) << drill << ' ' << difficulty;
        const double tolerance = drill == Drill::level ? 0.01 : 0.05;
        EXPECT_NEAR(b.fromLowUpDB - a.fromLowUpDB, trial.targetLevelDB, tolerance)
            << drill << ' ' << difficulty;
      }
  const auto drawn =
      Drills::render(Drills::makeTrial(20, Material::pinkNoise, 4242, Drill::level), 3.2);
  EXPECT_LT(kit::loopLevel(*drawn[0].l, 20).fromLowUpDB, -45);
}

TEST(AudibleNoise, ChangesDrumsAndPadOnlyInTheDecorrelation) {
  for (const Material material : {Material::drums, Material::pad})
    for (const Drill drill : Drill::allCases) {
      const Trial trial = Drills::makeTrial(50, material, 4242, drill);
      const auto drawn = Drills::render(trial, 0.4),
                 audible = Drills::render(trial, 0.4, Noise::audible);
      for (std::size_t s = 0; s < drawn.size(); ++s) {
        EXPECT_TRUE(sameBits(*audible[s].l, *drawn[s].l));
        EXPECT_EQ(bool(sameBits(*audible[s].r, *drawn[s].r)), drill != Drill::polarity);
      }
    }
}

} // namespace
} // namespace velto
