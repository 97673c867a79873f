#include "kit/Alignment.h"
#include "kit/Slots.h"
#include "kit/Spectrum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace velto::kit {
namespace {

Recording loopOf(const Slot& slot, std::size_t phase, std::size_t frames) {
  Recording recording;
  for (std::size_t i = 0; i < frames; ++i) {
    recording.l.push_back((*slot.l)[(phase + i) % slot.l->size()]);
    recording.r.push_back((*slot.r)[(phase + i) % slot.r->size()]);
  }
  return recording;
}

TEST(Alignment, findsThePhaseOfALoop) {
  const Slot slot = noiseSlot(1000, 1);
  const Recording recording = loopOf(slot, 321, 5000);
  EXPECT_EQ(loopPhase(recording, 0, 5000, slot), 321U);
  EXPECT_EQ(loopPhase(recording, 900, 100, slot), 221U);
}

TEST(Alignment, findsNoPhaseWhereAFrameIsLostDoubledOrChanged) {
  const Slot slot = noiseSlot(1000, 1);
  Recording changed = loopOf(slot, 0, 3000);
  changed.r[1234] = std::nextafter(changed.r[1234], 1.0F);
  EXPECT_EQ(loopPhase(changed, 0, 3000, slot), std::nullopt);
  EXPECT_EQ(firstDifference(changed, 0, 3000, slot, 0), 1234U);
  Recording lost = loopOf(slot, 0, 500);
  lost.append(loopOf(slot, 501, 500));
  EXPECT_EQ(firstDifference(lost, 0, 1000, slot, 0), 500U);
  Recording doubled = loopOf(slot, 0, 500);
  doubled.append(loopOf(slot, 499, 500));
  EXPECT_EQ(firstDifference(doubled, 0, 1000, slot, 0), 500U);
}

TEST(Alignment, saysNothingWhereASlotIsTooRegularToTell) {
  const Slot slot = constantSlot(1000, 0.5F, 0.5F);
  EXPECT_EQ(loopPhase(loopOf(slot, 0, 2000), 0, 2000, slot), std::nullopt);
}

TEST(Alignment, findsSoundAndSilence) {
  Recording recording{std::vector<float>(100), std::vector<float>(100)};
  EXPECT_EQ(firstSound(recording, 0), 100U);
  recording.r[40] = 1e-20F;
  EXPECT_EQ(firstSound(recording, 0), 40U);
  EXPECT_EQ(firstSound(recording, 41), 100U);
  EXPECT_EQ(firstSilence(recording, 0, 40), 0U);
  EXPECT_EQ(firstSilence(recording, 0, 41), 41U);
  EXPECT_EQ(firstSilence(recording, 0, 60), 100U);
}

// A sine of amplitude 1 under a Hann window: half its power by the amplitude, 3/8 by the window.
TEST(Spectrum, aSineLiesInItsBins) {
  const Slot slot = sineSlot(4096, 512, 1); // 6 kHz
  const auto power = powerSpectrum(*slot.l);
  ASSERT_EQ(power.size(), 2049U);
  double whole = 0;
  for (const double bin : power)
    whole += bin;
  EXPECT_NEAR(whole, 0.5 * 0.375, 1e-6);
  EXPECT_NEAR(power[511] + power[512] + power[513], whole, 1e-9);
  EXPECT_NEAR(partAboveDB(*slot.l, 5000), 0, 1e-6);
  EXPECT_LT(partAboveDB(*slot.l, 7000), -140);
  EXPECT_NEAR(peakAboveDB(*slot.l, 5000), 0, 1e-3);
}

TEST(Spectrum, aFaintHighToneIsMeasuredBesideALowOne) {
  const Slot low = sineSlot(16384, 341, 0.5), high = sineSlot(16384, 3413, 0.5e-4); // 1 and 10 kHz
  std::vector<float> both(16384);
  for (std::size_t i = 0; i < both.size(); ++i)
    both[i] = (*low.l)[i] + (*high.l)[i];
  EXPECT_NEAR(partAboveDB(both, 5000), -80, 0.01);
  EXPECT_NEAR(peakAboveDB(both, 5000), 20 * std::log10(0.5e-4), 0.1);
}

TEST(Spectrum, theResidualIsTheLevelOfTheDifference) {
  const std::vector<float> a{0.5F, -0.5F}, b{0.25F, -0.25F};
  EXPECT_NEAR(residualDB(a, b), 20 * std::log10(0.25), 1e-9);
  EXPECT_EQ(residualDB(a, a), -std::numeric_limits<double>::infinity());
}

} // namespace
} // namespace velto::kit
