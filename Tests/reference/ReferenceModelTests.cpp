// The yardstick itself, against figures that no program made: closed forms and draws by hand.

#include "ReferenceModel.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <vector>

namespace reference {
namespace {

constexpr double rate = 48000;

// Generator

TEST(ReferenceGenerator, StepsAreThoseWorkedOutByHand) {
  // Of the state 1, bit by bit: 1 ^ 1 << 13 = 0x2001; ^ >> 7 = 0x2041; ^ << 17 = 0x40822041.
  EXPECT_EQ(step(1), 0x40822041u);
  EXPECT_EQ(step(0x40822041), 0x100041060c011441u);
  EXPECT_EQ(step(0x100041060c011441), 0x9b1e842f6e862629u);
  EXPECT_EQ(step(0x9E3779B97F4A7C15), 0xdc1b77ae0bf34dadu);
  EXPECT_EQ(step(0x8000000000000000), 0x8100000000000000u);
  EXPECT_EQ(step(0xFFFFFFFFFFFFFFFF), 0x3f801fc0u);
}

TEST(ReferenceGenerator, SeedsStartAsThemselvesButZero) {
  EXPECT_EQ(startState(0), 0x9E3779B97F4A7C15u);
  EXPECT_EQ(startState(1), 1u);
}

TEST(ReferenceGenerator, ValuesTakeTheTop53Bits) {
  EXPECT_EQ(unitValue(0x8100000000000000), 129.0 / 256);
  EXPECT_EQ(unitValue(0x7FF), 0);
  EXPECT_EQ(noiseValue(0x8100000000000000), 4 * 129.0 / 256 - 1);
  EXPECT_EQ(noiseValue(0), -1);
  EXPECT_EQ(noiseValue(~0ULL), 4 * (1 - 0x1p-53) - 1);
}

// Filters and measurement

TEST(ReferenceFilters, HaveTheirGainsAtTheLandmarks) {
  EXPECT_NEAR(responseDB(lowpass(5200, 0.6, rate), 0, rate), 0, 1e-9);
  EXPECT_NEAR(responseDB(lowpass(5200, 0.6, rate), 5200, rate), 20 * std::log10(0.6), 1e-9);
  EXPECT_NEAR(responseDB(highpass(7800, 0.7, rate), 24000, rate), 0, 1e-9);
  EXPECT_NEAR(responseDB(highpass(7800, 0.7, rate), 7800, rate), 20 * std::log10(0.7), 1e-9);
  EXPECT_NEAR(responseDB(bandpass(190, 2, rate), 190, rate), 0, 1e-9);
  EXPECT_LT(responseDB(bandpass(190, 2, rate), 0, rate), -200);
  EXPECT_NEAR(responseDB(peaking(1000, 9, 3, rate), 1000, rate), 9, 1e-9);
  EXPECT_NEAR(responseDB(peaking(1000, 9, 3, rate), 0, rate), 0, 1e-9);
}

TEST(ReferenceFilters, RingAsAGeometricSeries) {
  Biquad onePole{1, 0, 0, -0.5, 0};
  for (int n = 0; n < 60; n++)
    EXPECT_EQ(onePole.process(n == 0 ? 1.0f : 0.0f), std::ldexp(1.0f, -n)) << n;
}

TEST(ReferenceMeasure, LevelsOfKnownBuffers) {
  EXPECT_EQ(rmsDB({}), -std::numeric_limits<double>::infinity());
  EXPECT_NEAR(rmsDB(Samples(10)), -240, 1e-12);
  EXPECT_EQ(rmsDB({1, -1, 1, -1}), 0);
  EXPECT_EQ(peakDB({}), -240);
  EXPECT_EQ(peakDB({0, 0}), -240);
  EXPECT_EQ(peakDB({0.5f, -1}), 0);
  Samples sine(4800);
  for (std::size_t i = 0; i < sine.size(); i++)
    sine[i] =
        static_cast<float>(std::sin(2 * std::numbers::pi * 1000 * static_cast<double>(i) / rate));
  EXPECT_NEAR(rmsDB(sine), -10 * std::log10(2.0), 1e-6);
  EXPECT_NEAR(magnitudeAt(sine, 1000, rate), 0.5, 1e-3);
  EXPECT_NEAR(magnitudeAt(Samples(100, 1), 0, rate), 0.99, 1e-12);
  EXPECT_EQ(magnitudeAt({}, 0, rate), 0);
}

TEST(ReferenceMeasure, NormalizeReachesItsTarget) {
  EXPECT_EQ(normalizeRMS({}, -20), Samples());
  EXPECT_EQ(normalizeRMS({0, 0}, -20), Samples(2));
  EXPECT_EQ(normalizeRMS({0.5f, -0.5f}, 0), (Samples{1, -1}));
  EXPECT_NEAR(rmsDB(normalizeRMS({0.3f, 0.1f, -0.7f}, -20)), -20, 1e-6);
}

// Materials

TEST(ReferencePink, FirstSamplesFollowFromTheGains) {
  // Seed 0x8000000000000000: the first noise value is 1.015625, the second
  // 4 * 0x8002 / 0x10000 - 1 = 1.0001220703125. The impulse response starts with the sum of all
  // gains, then the gains times their poles and the delayed path.
  const double h0 = 0.0555179 + 0.0750759 + 0.153852 + 0.3104856 + 0.5329522 - 0.016898 + 0.5362;
  const double h1 = 0.99886 * 0.0555179 + 0.99332 * 0.0750759 + 0.969 * 0.153852 +
                    0.8665 * 0.3104856 + 0.55 * 0.5329522 + 0.7616 * 0.016898 + 0.115926;
  const Samples x = pink(2.5 / 48000, 0x8000000000000000);
  ASSERT_EQ(x.size(), 2u);
  const double first = h0 * 1.015625;
  const double second = h0 * 1.0001220703125 + h1 * 1.015625;
  EXPECT_NEAR(x[1] / x[0], second / first, 1e-6);
  EXPECT_NEAR(rmsDB(x), -20, 1e-6);
}

TEST(ReferenceDrums, StepsStartAtTheRunningSum) {
  EXPECT_EQ(stepStarts(3.2), (std::vector<std::int64_t>{0, 14400, 28800, 43199, 57600, 72000, 86400,
                                                        100800, 115200, 129599, 143999}));
  EXPECT_EQ(stepStarts(0), std::vector<std::int64_t>());
  EXPECT_EQ(stepStarts(1e-9), std::vector<std::int64_t>{0});
  EXPECT_EQ(stepStarts(0.3), std::vector<std::int64_t>{0});
  EXPECT_EQ(stepStarts(0.31), (std::vector<std::int64_t>{0, 14400}));
}

TEST(ReferenceDrums, TheKickIsItsFormula) {
  // At 4800 samples, a tenth of a second: 55 + 75 e^(-0.1 / 0.022) = 55.7959... Hz.
  const Samples x = drums(0.29, 5);
  const double atTenth = 0.9 * std::exp(-0.1 / 0.075) *
                         std::sin(2 * std::numbers::pi * 0.1 * (55 + 75 * std::exp(-0.1 / 0.022)));
  const double atFifth = 0.9 * std::exp(-0.2 / 0.075) *
                         std::sin(2 * std::numbers::pi * 0.2 * (55 + 75 * std::exp(-0.2 / 0.022)));
  EXPECT_NEAR(static_cast<double>(x[9600]) / static_cast<double>(x[4800]), atFifth / atTenth, 1e-5);
  EXPECT_NE(x[13439], 0);
  EXPECT_EQ(x[13440], 0);
}

TEST(ReferenceDrums, AHatsFirstSampleIsItsFirstDraw) {
  // Seed 11, the draws 2641 and 5281, 1.988759224380829 and 1.494467967734725.
  const Samples x = drums(0.7, 11);
  EXPECT_EQ(x[14399], 0);
  EXPECT_EQ(x[28799], 0);
  EXPECT_NEAR(static_cast<double>(x[28800]) / static_cast<double>(x[14400]),
              1.494467967734725 / 1.988759224380829, 1e-6);
}

TEST(ReferencePad, IsItsClosedFormOverAFewSamples) {
  const std::array<double, 12> expected{0,           -0.0094613495, -0.036087725, -0.077489551,
                                        -0.12066409, -0.14971396,   -0.15925991,  -0.15068484,
                                        -0.12762397, -0.093432376,  -0.05042132,  0};
  const Samples actual = pad(12.5 / 48000, 5150);
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); i++)
    EXPECT_NEAR(actual[i], expected[i], 1e-7) << i;
}

TEST(ReferenceStereoise, EndsOfTheCorrelation) {
  const Samples mono = pink(0.1, 3);
  const Pair identical = stereoise(mono, 1, 3);
  EXPECT_EQ(identical.l, mono);
  for (std::size_t i = 0; i < mono.size(); i++)
    ASSERT_NEAR(identical.r[i], mono[i], 2e-7 * std::fabs(static_cast<double>(mono[i])));
  EXPECT_NEAR(rmsDB(stereoise(mono, 0, 3).r), -20, 1e-5);
  // Beyond 1 the noise has no weight; the normalisation takes the factor back.
  const Pair beyond = stereoise(mono, 2, 3);
  for (std::size_t i = 0; i < mono.size(); i++)
    ASSERT_NEAR(beyond.r[i], mono[i], 2e-7 * std::fabs(static_cast<double>(mono[i])));
}

// Trials

TEST(ReferenceTrial, HasTheValuesWorkedOutByHand) {
  EXPECT_EQ(makeTrial(0, Material::pad, 0, Drill::frequency).targetFreq, 630);
  EXPECT_EQ(makeTrial(50, Material::pad, 0, Drill::frequency).boostDB, 7.5);
  EXPECT_EQ(makeTrial(50, Material::pad, 0, Drill::frequency).boostQ, 3.5);
  EXPECT_EQ(makeTrial(0, Material::pad, 0, Drill::level).targetLevelDB, 5.55);
  EXPECT_EQ(makeTrial(100, Material::pad, 1, Drill::level).targetLevelDB, 0.2);
  EXPECT_EQ(makeTrial(50, Material::pad, 0, Drill::dynamics).targetGRdB, 6.4);
  EXPECT_EQ(makeTrial(250, Material::pad, 1, Drill::dynamics).targetGRdB, 0.8);
  EXPECT_EQ(makeTrial(100, Material::pad, 17, Drill::polarity).oddSlot, 2);
  EXPECT_EQ(makeTrial(100, Material::pad, 17, Drill::polarity).slots, 3);
  EXPECT_EQ(makeTrial(-5, Material::pad, 17, Drill::polarity).correlation, 1);
}

// The state after this seed is 1, and the fraction of it 0: the targets are the lowest ones.
TEST(ReferenceTrial, RoundsHalvesAwayFromZero) {
  constexpr std::uint64_t seed = 13721891023265367629U;
  EXPECT_EQ(makeTrial(62.5, Material::pad, seed, Drill::level).targetLevelDB, 1.15); // 22.5 steps
  EXPECT_EQ(makeTrial(3.75, Material::pad, seed, Drill::dynamics).targetGRdB, 4.7);  // 46.5 steps
}

TEST(ReferenceGrade, HasTheTextsWorkedOutByHand) {
  Trial trial = makeTrial(0, Material::pad, 0, Drill::frequency);
  trial.targetFreq = 1000;
  const Grade g = grade(1250, trial);
  EXPECT_TRUE(g.correct);
  EXPECT_EQ(g.errorText, "0.32 oct off");
  EXPECT_EQ(g.truthText, "1k Hz");
  EXPECT_EQ(g.answerText, "1.25k Hz");
  EXPECT_FALSE(grade(1600, trial).correct);
}

TEST(ReferenceStaircase, WalksAsWorkedOutByHand) {
  Staircase s;
  std::vector<double> walk;
  for (const bool correct : {true, false, true, true, false, true, true, false, true, true}) {
    s.record(correct);
    walk.push_back(s.difficulty);
  }
  EXPECT_EQ(walk, (std::vector<double>{20, 8, 8, 20, 8, 8, 16, 8, 8, 13}));
  EXPECT_EQ(s.reversals, 5);
}

// Rendering

TEST(ReferenceCompressor, FollowsItsStaticCurve) {
  // A full-scale constant: 0.75 dB of reduction for each decibel of threshold below it.
  const Samples x(48000, 1);
  EXPECT_NEAR(compressorHitting(6, x).grDB, 0.75 * 7.998046875, 1e-9);
  EXPECT_NEAR(compressorHitting(1000, x).grDB, 0.75 * (40 - 40.0 / 4096), 1e-9);
  // After one sample the smoothing has gone a fraction of 1 - 0.99584200184511 of the way.
  EXPECT_NEAR(compressorHitting(1000, {1}).grDB, 0.75 * (40 - 40.0 / 4096) * (1 - 0.99584200184511),
              1e-9);
  EXPECT_EQ(compressorHitting(8, {}).grDB, 0);
}

TEST(ReferenceRender, SlotsAreWhatTheDrillSays) {
  for (const Material material : {Material::pinkNoise, Material::drums, Material::pad}) {
    const auto level = render(makeTrial(0, material, 1, Drill::level), 0.1);
    ASSERT_EQ(level.size(), 2u);
    EXPECT_NEAR(rmsDB(level[1].l) - rmsDB(level[0].l), 2.7, 1e-5);

    const auto polarity = render(makeTrial(50, material, 17, Drill::polarity), 0.1);
    ASSERT_EQ(polarity.size(), 3u);
    EXPECT_EQ(polarity[0].r, polarity[1].r);
    for (std::size_t i = 0; i < polarity[2].r.size(); i++)
      ASSERT_EQ(polarity[2].r[i], -polarity[0].r[i]);

    const auto frequency = render(makeTrial(0, material, 1, Drill::frequency), 0.1);
    EXPECT_NEAR(rmsDB(frequency[1].r), -20, 1e-5);
    EXPECT_NE(frequency[1].r, frequency[0].r);
  }
}

} // namespace
} // namespace reference
