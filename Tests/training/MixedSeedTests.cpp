// Spread seeds: guessing does no better than chance.
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

// x -> x ^ (x >> shift), undone.
std::uint64_t unshifted(std::uint64_t x, int shift) {
  std::uint64_t result = x;
  for (int known = shift; known < 64; known += shift)
    result = x ^ (result >> shift);
  return result;
}

// The inverse of an odd number modulo 2^64, by Newton's method.
std::uint64_t inverse(std::uint64_t odd) {
  std::uint64_t x = odd;
  for (int i = 0; i < 6; ++i)
    x *= 2 - odd * x;
  return x;
}

TEST(MixedSeed, IsSplitMix64) {
  // The first three outputs of the published generator from the state 0.
  constexpr std::uint64_t gamma = 0x9E3779B97F4A7C15;
  EXPECT_EQ(Drills::mixedSeed(0), 0xE220A8397B1DCDAFU);
  EXPECT_EQ(Drills::mixedSeed(gamma), 0x6E789E6AA1B965F4U);
  EXPECT_EQ(Drills::mixedSeed(2 * gamma), 0x06C45D188009454FU);
}

RC_GTEST_PROP(MixedSeed, MatchesTheModelAndIsInvertible, ()) {
  const std::uint64_t counter = *anySeed();
  const std::uint64_t seed = Drills::mixedSeed(counter);
  RC_ASSERT(seed == reference::mixedSeed(counter));
  std::uint64_t z = unshifted(seed, 31) * inverse(0x94D049BB133111EB);
  z = unshifted(z, 27) * inverse(0xBF58476D1CE4E5B9);
  RC_ASSERT(unshifted(z, 30) - 0x9E3779B97F4A7C15 == counter);
}

TEST(FairSeeds, GiveTargetsTheirWholeRange) {
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

// Always giving the best blind answer hits as often as chance predicts.
TEST(FairSeeds, LeaveABlindAnswerToChance) {
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

TEST(Chance, BoundsTheHitsOfFortyTrials) {
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
