#include "ListMaker.h"

#include "Trial.h"

#include <gtest/gtest.h>

#include <bitset>
#include <set>

using namespace velto;

namespace {

ListRequest requestFor(const std::vector<Drill>& drills, std::size_t count,
                       std::uint64_t randomSeed) {
  ListRequest request{.count = count, .randomSeed = randomSeed};
  for (const Drill drill : drills)
    request.parts.push_back({.drill = drill, .difficulty = 40});
  return request;
}

} // namespace

TEST(ListMaker, TakesTurnsAmongTheDrills) {
  const TrialList list = makeList(requestFor({Drill::level, Drill::polarity}, 5, 7));
  ASSERT_EQ(list.trials.size(), 5U);
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(list.trials[i].drill, i % 2 == 0 ? Drill::level : Drill::polarity);
    EXPECT_EQ(list.trials[i].material, i % 2 == 0 ? Material::pinkNoise : Material::pad);
    EXPECT_EQ(list.trials[i].difficulty, 40);
  }
}

TEST(ListMaker, MakesTheSameListFromTheSameRequest) {
  EXPECT_EQ(makeList(requestFor({Drill::level}, 20, 7)),
            makeList(requestFor({Drill::level}, 20, 7)));
  EXPECT_NE(makeList(requestFor({Drill::level}, 20, 7)),
            makeList(requestFor({Drill::level}, 20, 8)));
}

// Of 40000 seeds each bit is set in half, within five standard deviations (2.5 %), and none comes
// twice, also among lists of neighbouring random seeds.
TEST(ListMaker, SpreadsSeedsOver64Bits) {
  std::set<std::uint64_t> seeds;
  std::array<int, 64> set{};
  for (std::uint64_t randomSeed = 0; randomSeed < 40; ++randomSeed)
    for (const ListedTrial& trial : makeList(requestFor({Drill::level}, 1000, randomSeed)).trials) {
      EXPECT_TRUE(seeds.insert(trial.seed).second);
      for (std::size_t bit = 0; bit < 64; ++bit)
        set[bit] += std::bitset<64>(trial.seed).test(bit) ? 1 : 0;
    }
  for (const int count : set)
    EXPECT_NEAR(count, 20000, 500);
}

// Of 20000 frequency trials a band that weighs 4 of 30 is the target of 2667, within five standard
// deviations (240), and one that weighs nothing of none.
TEST(ListMaker, WeightsTheBands) {
  ListRequest request = requestFor({Drill::frequency}, 1000, 0);
  request.bandWeights = Targets::evenBands;
  request.bandWeights->at(10) = 4;
  request.bandWeights->at(3) = 0;
  std::array<int, 27> targets{};
  for (; request.randomSeed < 20; ++request.randomSeed)
    for (const ListedTrial& listed : makeList(request).trials)
      ++targets[Bands::nearestIndex(
          Drills::makeTrial(40, listed.material, listed.seed, listed.drill).targetFreq)];
  const double all = 20000, weights = 25 + 4;
  EXPECT_EQ(targets[3], 0);
  EXPECT_NEAR(targets[10], all * 4 / weights, 240);
  EXPECT_NEAR(targets[11], all / weights, 130);
}

TEST(ListMaker, StoresTheWeightsInThousandthsOfTheHeaviest) {
  ListRequest request = requestFor({Drill::frequency}, 1, 0);
  EXPECT_FALSE(makeList(request).bandWeights);
  request.bandWeights.emplace().fill(0.1);
  request.bandWeights->at(26) = 0.3;
  BandWeights stored{};
  stored.fill(333);
  stored[26] = 1000;
  EXPECT_EQ(makeList(request).bandWeights, stored);
}
