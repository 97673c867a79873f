#include "TrialSeeds.h"

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
