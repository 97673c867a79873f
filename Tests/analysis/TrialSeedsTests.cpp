#include "TrialSeeds.h"

#include "BlindAnswer.h"
#include "Trial.h"
#include "kit/RecordTesting.h"

#include <algorithm>
#include <map>

namespace velto {
namespace {

using testing::utc;

TEST(TrialSeeds, SpreadOnesAskEachBandAndSlotEquallyOften) {
  std::map<double, std::size_t> bands;
  std::map<std::int64_t, std::size_t> slots;
  const auto seeds = TrialSeeds::spread();
  for (const std::uint64_t seed : seeds) {
    ++bands[Drills::makeTrial(50, Material::pad, seed, Drill::frequency).targetFreq];
    ++slots[Drills::makeTrial(50, Material::pad, seed, Drill::polarity).oddSlot];
  }
  EXPECT_EQ(bands.size(), 27U);
  EXPECT_EQ(slots.size(), 3U);
  for (const auto& [band, count] : bands)
    EXPECT_EQ(count * 27, seeds.size()) << band;
  for (const auto& [slot, count] : slots)
    EXPECT_EQ(count * 3, seeds.size()) << slot;
}

TEST(TrialSeeds, SpreadOnesFillTheRangeOfTargetsEvenly) {
  // 2.7 to 6 dB: the halves below and above 4.35 dB, and the ends.
  std::vector<double> targets;
  for (const std::uint64_t seed : TrialSeeds::spread())
    targets.push_back(Drills::makeTrial(0, Material::pad, seed, Drill::level).targetLevelDB);
  std::sort(targets.begin(), targets.end());
  EXPECT_EQ(targets.front(), 2.7);
  EXPECT_EQ(targets.back(), 6);
  EXPECT_EQ(targets[targets.size() / 2], 4.35);
  EXPECT_EQ(targets[targets.size() / 4], 3.55);
}

TEST(TrialSeeds, SpreadOnesLeaveTheSameToGuessersAsAllSeeds) {
  const auto seeds = TrialSeeds::spread();
  for (const Drill drill : Drill::allCases)
    for (double difficulty = 0; difficulty <= 100; difficulty += 4.75) {
      const auto sampled = BlindAnswer::best(Targets::of(drill, difficulty, seeds));
      const auto exact = BlindAnswer::best(Targets::spread(drill, difficulty));
      EXPECT_NEAR(sampled.hitRate, exact.hitRate, 5e-4) << drill.rawValue() << " " << difficulty;
      EXPECT_NEAR(sampled.meanError, exact.meanError, 5e-4)
          << drill.rawValue() << " " << difficulty;
      EXPECT_EQ(sampled.targets, exact.targets) << drill.rawValue() << " " << difficulty;
    }
}

TEST(TrialSeeds, ClockOnesAskForOneValueOfLevelAndDynamics) {
  const auto seeds = TrialSeeds::clock(utc(2026, 11, 22));
  const std::map<double, double> targets{{0, 3.05}, {20, 2.5}, {40, 1.9}, {60, 1.35}};
  for (const auto& [difficulty, target] : targets) {
    const auto answer = BlindAnswer::best(Targets::of(Drill::level, difficulty, seeds));
    EXPECT_EQ(answer.hitRate, 1);
    EXPECT_EQ(answer.answer, target);
    EXPECT_NEAR(answer.lowestTarget, target, 0.051);
    EXPECT_NEAR(answer.highestTarget, target, 0.051);
    EXPECT_LT(answer.meanError, 0.025);
    EXPECT_EQ(BlindAnswer::best(Targets::of(Drill::dynamics, difficulty, seeds)).hitRate, 1);
  }
}

TEST(TrialSeeds, ClockOnesAskForAllBandsAndSlots) {
  const auto seeds = TrialSeeds::clock(utc(2026, 11, 22));
  for (const double difficulty : {0.0, 37.0, 100.0}) {
    EXPECT_NEAR(BlindAnswer::best(Targets::of(Drill::frequency, difficulty, seeds)).hitRate,
                3.0 / 27, 0.005);
    EXPECT_NEAR(BlindAnswer::best(Targets::of(Drill::polarity, difficulty, seeds)).hitRate, 1.0 / 3,
                0.005);
  }
}

TEST(TrialSeeds, ClockCountsSecondsThroughAYear) {
  const auto seeds = TrialSeeds::clock(utc(2026, 1, 1));
  EXPECT_EQ(seeds.front(), 1'767'225'600U);
  EXPECT_GT(seeds.back(), 1'767'225'600U + 365 * 86'400U);
  EXPECT_LE(seeds.back(), 1'767'225'600U + 366 * 86'400U);
  EXPECT_GT(seeds.size(), 90000U);
}

TEST(TrialSeeds, ClockStaysWithinItsYears) {
  EXPECT_EQ(TrialSeeds::clock({-1e300}).front(), 0U);
  EXPECT_EQ(TrialSeeds::clock({1e300}).front(), 253'402'300'800U);
  EXPECT_EQ(TrialSeeds::clock({std::nan("")}).front(), 0U);
}

} // namespace
} // namespace velto
