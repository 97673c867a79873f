#include "Targets.h"

#include "Grading.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velto {
namespace {

TEST(Targets, OfSeedsCountTheirTrials) {
  std::vector<std::uint64_t> seeds;
  for (std::uint64_t i = 0; i < 300; ++i)
    seeds.push_back(Drills::mixedSeed(i));
  for (const Drill drill : Drill::allCases) {
    const auto targets = Targets::of(drill, 20, seeds);
    double trials = 0;
    for (std::size_t i = 0; i < targets.size(); ++i) {
      const double truth = Drills::truth(targets[i].trial);
      EXPECT_TRUE(i == 0 || truth > Drills::truth(targets[i - 1].trial)) << drill.rawValue();
      double same = 0;
      for (const std::uint64_t seed : seeds)
        same += Drills::truth(Drills::makeTrial(20, Material::pad, seed, drill)) == truth ? 1 : 0;
      EXPECT_EQ(targets[i].weight, same);
      trials += targets[i].weight;
    }
    EXPECT_EQ(trials, 300);
  }
}

// Of 100000 mixed seeds: each target comes as often as it weighs, within five standard deviations.
TEST(Targets, SpreadAreThoseOfManySeeds) {
  constexpr std::size_t count = 100'000;
  std::vector<std::uint64_t> seeds;
  for (std::uint64_t i = 0; i < count; ++i)
    seeds.push_back(Drills::mixedSeed(i));
  for (const Drill drill : Drill::allCases)
    for (const double difficulty : {0.0, 57.0, 100.0}) {
      const auto found = Targets::of(drill, difficulty, seeds);
      const auto exact = Targets::spread(drill, difficulty);
      ASSERT_EQ(found.size(), exact.size()) << drill.rawValue() << " " << difficulty;
      double all = 0;
      for (const Target& target : exact)
        all += target.weight;
      for (std::size_t i = 0; i < exact.size(); ++i) {
        EXPECT_EQ(Drills::truth(found[i].trial), Drills::truth(exact[i].trial));
        const double expected = count * exact[i].weight / all;
        EXPECT_NEAR(found[i].weight, expected, 5 * std::sqrt(expected))
            << drill.rawValue() << " " << difficulty << " " << i;
      }
    }
}

TEST(Targets, LeaveOutBandsThatWeighNothing) {
  BandWeights weights = Targets::evenBands;
  weights[3] = 0;
  weights[10] = 4;
  const auto targets = Targets::spread(Drill::frequency, 20, weights);
  ASSERT_EQ(targets.size(), 26U);
  EXPECT_EQ(targets[3].trial.targetFreq, Bands::centres[4]);
  EXPECT_EQ(targets[9].weight, 4);
}

} // namespace
} // namespace velto
