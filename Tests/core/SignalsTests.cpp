#include "Signals.h"

#include "CoreSupport.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <vector>

namespace velto {
namespace {

using namespace tests;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr std::uint64_t zeroSeedReplacement = 0x9E3779B97F4A7C15;
constexpr std::uint64_t seedOfZeroSum = 0 - 7717ULL;

// Xorshift64

TEST(Xorshift64, DrawsAreThoseWorkedOutByHand) {
  const struct {
    std::uint64_t seed;
    std::array<std::uint64_t, 3> states;
  } rows[] = {
      {1, {0x40822041, 0x100041060c011441, 0x9b1e842f6e862629}},
      {zeroSeedReplacement, {0xdc1b77ae0bf34dad, 0x64f0eeb9026e6076, 0x7b07ce91e5906136}},
      {5150, {0x50da5ead3b6, 0xe507ce15c9412b91, 0xe75bd2054ce76d86}},
      {0x8000000000000000, {0x8100000000000000, 0x8002000000000000, 0xc982040000000000}},
      {0xffffffffffffffff, {0x3f801fc0, 0xfffbffe03feefff, 0x70dc404c67d0de0}},
  };
  for (const auto& row : rows) {
    Xorshift64 generator(row.seed);
    for (const std::uint64_t state : row.states)
      EXPECT_EQ(generator.next(), state) << row.seed;
  }
}

TEST(Xorshift64, ASeedOfZeroIsReplaced) {
  EXPECT_EQ(Xorshift64(0).next(), 0xdc1b77ae0bf34dad);
}

TEST(Xorshift64, UnitValuesAreTheTop53Bits) {
  EXPECT_EQ(Xorshift64::unit(0), 0);
  EXPECT_EQ(Xorshift64::unit(0x7ff), 0);
  EXPECT_EQ(Xorshift64::unit(0x800), 0x1p-53);
  EXPECT_EQ(Xorshift64::unit(0x8000000000000000), 0.5);
  EXPECT_EQ(Xorshift64::unit(~std::uint64_t{0}), 1 - 0x1p-53);
  EXPECT_EQ(Xorshift64(0x8000000000000000).nextUnit(), 0.50390625); // 0x81 / 0x100
}

TEST(Xorshift64, NoiseValuesReachFromMinusOneToThree) {
  EXPECT_EQ(Xorshift64(0x8000000000000000).nextNoise(), 1.015625); // 4 * 0x81 / 0x100 - 1
  Xorshift64 one(1);
  EXPECT_EQ(one.nextNoise(), -0.9999999997653202);
  EXPECT_EQ(one.nextNoise(), -0.7499844971607521);
  EXPECT_EQ(one.nextNoise(), 1.4237375701141861);
  EXPECT_EQ(one.nextNoise(), 2.8333103687814045);

  Xorshift64 generator(99);
  double sum = 0, low = 9, high = -9;
  for (int i = 0; i < 100000; ++i) {
    const double value = generator.nextNoise();
    sum += value;
    low = std::min(low, value);
    high = std::max(high, value);
  }
  EXPECT_NEAR(sum / 100000, 1, 0.02); // five standard errors
  EXPECT_GE(low, -1);
  EXPECT_LT(low, -0.999);
  EXPECT_LT(high, 3);
  EXPECT_GT(high, 2.999);
}

// Durations

RC_GTEST_PROP(Xorshift64Law, APairOfNoiseIsTwoDraws, ()) {
  const std::uint64_t seed = *anySeed();
  Xorshift64 one(seed), paired(seed);
  for (int i = 0; i < 20; ++i) {
    const double first = one.nextNoise();
    const Pair noise = paired.nextNoisePair();
    require(sameBits(noise[0], first));
    require(sameBits(noise[1], one.nextNoise()));
  }
}

TEST(FrameCount, IsTheTruncatedProduct) {
  EXPECT_EQ(Signals::frameCount(0), 0u);
  EXPECT_EQ(Signals::frameCount(-0.0), 0u);
  EXPECT_EQ(Signals::frameCount(3.2), 153600u);
  EXPECT_EQ(Signals::frameCount(1), 48000u);
  EXPECT_EQ(Signals::frameCount(0.8999999999999999), 43199u);
  EXPECT_EQ(Signals::frameCount(2.9 / 48000), 2u);
}

TEST(FrameCountDeathTest, StopsAtANegativeOrNonFiniteDuration) {
  const char* message = "Velto: a ";
  for (const double seconds :
       {-1.0, -1e-300, infinity, -infinity, std::numeric_limits<double>::quiet_NaN(), 1e300})
    EXPECT_DEATH((void)Signals::frameCount(seconds), message) << seconds;
}

TEST(SignalsDeathTest, EveryMaterialStopsAtANegativeDuration) {
  for (const Material material : Material::allCases)
    EXPECT_DEATH((void)source(material, -0.1, 1), "Velto: a duration is negative") << material;
}

// Every material

RC_GTEST_PROP(SignalsLaw, MaterialsAreTheModelsToTheLastBit, ()) {
  const Material material = *anyMaterial();
  const double seconds = *anyDuration();
  const std::uint64_t seed = *anySeed();
  require(sameBits(source(material, seconds, seed), referenceSource(material, seconds, seed)));
}

RC_GTEST_PROP(SignalsLaw, DrumsAreTheModelsToTheLastBitOverWholeBars, ()) {
  const double seconds = *between(0, 5);
  const std::uint64_t seed = *anySeed();
  require(sameBits(Signals::drums(seconds, seed), reference::drums(seconds, seed)));
}

TEST(Signals, MaterialsAreTheModelsToTheLastBitOverATrialsLength) {
  for (const Material material : Material::allCases)
    for (const std::uint64_t seed : {0ULL, 1ULL, 5150ULL, 40503ULL, ~0ULL})
      EXPECT_TRUE(sameBits(source(material, 3.2, seed), referenceSource(material, 3.2, seed)))
          << material << " " << seed;
}

RC_GTEST_PROP(SignalsLaw, MaterialsLeaveAtMinusTwentyDecibels, ()) {
  const Samples x = source(*anyMaterial(), *between(0.02, maxSeconds()), *anySeed());
  RC_ASSERT(std::abs(Measure::rmsDB(x) + 20) < 1e-5);
}

RC_GTEST_PROP(SignalsLaw, TheSameSeedGivesTheSameSamples, ()) {
  const Material material = *anyMaterial();
  const double seconds = *anyDuration();
  const std::uint64_t seed = *anySeed();
  require(sameBits(source(material, seconds, seed), source(material, seconds, seed)));
}

TEST(Signals, SeedZeroSoundsAsItsReplacement) {
  for (const Material material : Material::allCases)
    EXPECT_TRUE(sameBits(source(material, 0.1, 0), source(material, 0.1, zeroSeedReplacement)));
}

TEST(Signals, OtherSeedsGiveOtherSamples) {
  for (const Material material : Material::allCases)
    EXPECT_FALSE(sameBits(source(material, 0.1, 5150), source(material, 0.1, 5151)));
}

TEST(Signals, ADurationOfZeroIsAnEmptyBuffer) {
  for (const Material material : Material::allCases) {
    EXPECT_TRUE(source(material, 0, 7).empty());
    EXPECT_TRUE(source(material, 0.5 / 48000, 7).empty());
  }
}

// Pink noise

TEST(Pink, IsTheConvolutionOfTheNoiseWithTheFiltersImpulseResponse) {
  // Six one-pole responses g p^k, the direct path at k = 0 and the delayed one at k = 1.
  const std::array<double, 6> gains{0.0555179, 0.0750759, 0.153852,
                                    0.3104856, 0.5329522, -0.016898};
  const std::array<double, 6> poles{0.99886, 0.99332, 0.969, 0.8665, 0.55, -0.7616};
  // The first noise values of seed 1.
  const std::array<double, 8> noise{-0.9999999997653202, -0.7499844971607521, 1.4237375701141861,
                                    2.8333103687814045,  1.094489977288867,   2.8545119789389886,
                                    1.535522707664279,   2.0964736352501823};
  std::array<double, 8> expected{};
  double power = 0;
  for (std::size_t n = 0; n < expected.size(); ++n) {
    for (std::size_t k = 0; k <= n; ++k) {
      double h = k == 0 ? 0.5362 : k == 1 ? 0.115926 : 0;
      for (std::size_t pole = 0; pole < poles.size(); ++pole)
        h += gains[pole] * std::pow(poles[pole], static_cast<double>(k));
      expected[n] += 0.11 * h * noise[n - k];
    }
    power += expected[n] * expected[n] / 8;
  }
  const Samples actual = Signals::pink(8.5 / 48000, 1);
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t n = 0; n < expected.size(); ++n)
    EXPECT_NEAR(actual[n], 0.1 * expected[n] / std::sqrt(power), 1e-7) << n;
}

TEST(Pink, HasTheSameLevelInEveryOctave) {
  const Samples x = Signals::pink(10, 3);
  const auto bandDB = [&x](double centre) {
    Biquad band = Biquad::bandpass(centre, 2, 48000);
    Samples filtered = x;
    for (float& sample : filtered)
      sample = band.process(sample);
    return Measure::rmsDB(filtered);
  };
  // The mean over ten seconds scatters by a fifth of a decibel at the lowest band.
  for (const double centre : {125.0, 250.0, 500.0, 1000.0, 4000.0})
    EXPECT_NEAR(bandDB(centre), bandDB(2000), 0.8) << centre;
}

// Drums

// The first sample of `x` at `from` or later that is not silent.
std::size_t firstSound(const Samples& x, std::size_t from) {
  while (from < x.size() && x[from] == 0.0f)
    ++from;
  return from;
}

// Whether `x` is silent from `begin` up to, but not including, `end`.
bool isSilent(const Samples& x, std::size_t begin, std::size_t end) {
  return firstSound(x, begin) >= end;
}

TEST(Drums, StepsStartWhereTheRunningSumPutsThem) {
  const Samples x = Signals::drums(4.9, 11);
  // Closed hats end 2640 samples after their step, open ones 7680, kicks 13440, the snare 9600:
  // before the next step there is silence. Steps 3, 9 and 10 start a sample early: the sum of
  // tenths falls short there.
  const struct {
    std::size_t silence, step;
  } rows[] = {{13440, 14400},   {17040, 28800},   {31440, 43199},  {56639, 57600},
              {67200, 72000},   {74640, 86400},   {99840, 100800}, {108480, 115200},
              {128640, 129599}, {132239, 143999}, {146639, 158399}};
  for (const auto& row : rows) {
    EXPECT_TRUE(isSilent(x, row.silence, row.step)) << row.step;
    EXPECT_FALSE(isSilent(x, row.silence - 1, row.silence)) << row.silence;
    EXPECT_EQ(firstSound(x, row.silence), row.step);
  }
}

TEST(Drums, ALoopOf3200MillisecondsHasElevenSteps) {
  EXPECT_EQ(reference::stepStarts(3.2),
            (std::vector<std::int64_t>{0, 14400, 28800, 43199, 57600, 72000, 86400, 100800, 115200,
                                       129599, 143999}));
  const Samples x = Signals::drums(3.2, 11);
  EXPECT_EQ(firstSound(x, 132239), 143999u);
}

TEST(Drums, TheKickIsItsFormula) {
  // Alone between the end of the first hat and its own end, and once more in the second bar.
  const Samples x = Signals::drums(2.7, 4);
  const auto kick = [](int i) {
    const double tau = i / 48000.0;
    return 0.9 * std::exp(-tau / 0.075) *
           std::sin(2 * std::numbers::pi * (55 + 75 * std::exp(-tau / 0.022)) * tau);
  };
  const double scale = static_cast<double>(x[3000]) / kick(3000);
  for (const int i : {2640, 3333, 5000, 8000, 11000, 13439}) {
    for (const int start : {0, 43199, 86400, 115200})
      EXPECT_NEAR(x[static_cast<std::size_t>(start + i)], scale * kick(i), 1e-7)
          << i << " from " << start;
  }
}

// The gain of a band-pass of 1900 Hz, Q 0.7 and of a high-pass of 7800 Hz, Q 0.7 at their first
// sample.
double bandpassB0() {
  const double w0 = 2 * std::numbers::pi * 1900 / 48000;
  const double alpha = std::sin(w0) / 1.4;
  return alpha / (1 + alpha);
}
double highpassB0() {
  const double w0 = 2 * std::numbers::pi * 7800 / 48000;
  return (1 + std::cos(w0)) / 2 / (1 + std::sin(w0) / 1.4);
}

TEST(Drums, VoicesDrawTheirNoiseInTheOrderOfThePattern) {
  // Seed 11. A closed hat draws 2640 values, the snare 9600 before its step's hat, the kick none.
  // Each voice's first sample is its filter's first coefficient times the first value it drew.
  const Samples x = Signals::drums(3.2, 11);
  const double scale = static_cast<double>(x[14400]) / (0.3 * highpassB0() * 1.988759224380829);
  EXPECT_NEAR(x[28800], scale * 0.3 * highpassB0() * 1.494467967734725, 1e-7);
  EXPECT_NEAR(x[43199], scale * 0.3 * highpassB0() * 2.686834069147196, 1e-7);
  EXPECT_NEAR(x[57600],
              scale * (0.55 * 0.8 * bandpassB0() * 0.6215143441765583 +
                       0.3 * highpassB0() * 1.9507299734835817),
              1e-7);
  EXPECT_NEAR(x[72000], scale * 0.3 * highpassB0() * 1.303706279581946, 1e-7);
  EXPECT_NEAR(x[86400], scale * 0.3 * highpassB0() * 1.4641773804636284, 1e-7);
  EXPECT_NEAR(x[100800], scale * 0.3 * highpassB0() * 1.7632780982821474, 1e-7);
  EXPECT_NEAR(x[115200], scale * 0.3 * highpassB0() * 1.4122269331436041, 1e-7);
}

TEST(Drums, AVoiceStopsAtTheEndOfTheBuffer) {
  // The second hat is cut after 480 samples. The level differs, the shape does not.
  const Samples whole = Signals::drums(0.5, 8);
  const Samples cut = Signals::drums(0.31, 8);
  ASSERT_EQ(cut.size(), 14880u);
  const double scale = static_cast<double>(cut[5000]) / static_cast<double>(whole[5000]);
  for (const std::size_t i : {14400u, 14600u, 14879u})
    EXPECT_NEAR(cut[i], scale * static_cast<double>(whole[i]), 1e-6) << i;
}

TEST(Drums, ACutVoiceDrawsNoMoreNoise) {
  // The snare of step 4 is cut after 480 samples, so the step's hat takes its first value from the
  // draw after the snare's 480th: of seed 11 the snare begins with draw 10561, the hat with 11041.
  const Samples x = Signals::drums(58080.5 / 48000, 11);
  ASSERT_EQ(x.size(), 58080u);
  const double scale = static_cast<double>(x[14400]) / (0.3 * highpassB0() * 1.988759224380829);
  EXPECT_NEAR(x[57600],
              scale * (0.55 * 0.8 * bandpassB0() * 0.6215143441765583 +
                       0.3 * highpassB0() * 2.068371790965967),
              1e-7);
}

// Pad

TEST(Pad, IsItsClosedFormOverAFewSamples) {
  // Seed 5150, twelve samples: phases as fractions, the low-pass by convolution with its impulse
  // response, both fades, the level; worked out elsewhere.
  const std::array<double, 12> expected{0,           -0.0094613495, -0.036087725, -0.077489551,
                                        -0.12066409, -0.14971396,   -0.15925991,  -0.15068484,
                                        -0.12762397, -0.093432376,  -0.05042132,  0};
  const Samples actual = Signals::pad(12.5 / 48000, 5150);
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_NEAR(actual[i], expected[i], 1e-7) << i;
}

TEST(Pad, FirstAndLastSamplesAreExactlyZero) {
  for (const double seconds : {1 / 48000.0, 2.5 / 48000, 479.5 / 48000, 0.02, 0.1, 3.2}) {
    const Samples x = Signals::pad(seconds, 21);
    ASSERT_FALSE(x.empty());
    EXPECT_EQ(x.front(), 0.0f) << seconds;
    EXPECT_EQ(x.back(), 0.0f) << seconds;
  }
}

TEST(Pad, HarmonicsOfASawtoothFallAsTheirNumber) {
  // The third and fifth harmonics of the second root lie apart from those of the other roots.
  const Samples x = Signals::pad(6, 77);
  const Biquad filter = Biquad::lowpass(5200, 0.6, 48000);
  for (const double root : {164.81 * 0.994, 164.81, 164.81 * 1.007}) {
    const double first = Measure::magnitudeAt(x, root, 48000);
    for (const int harmonic : {3, 5}) {
      const double ratioDB =
          20 * std::log10(Measure::magnitudeAt(x, harmonic * root, 48000) / first);
      EXPECT_NEAR(ratioDB, filter.responseDB(harmonic * root, 48000) - 20 * std::log10(harmonic),
                  0.1)
          << root << " times " << harmonic;
    }
  }
}

TEST(Pad, AllRootsSoundInThreeTunings) {
  const Samples x = Signals::pad(6, 77);
  const double reference = Measure::magnitudeAt(x, 164.81, 48000);
  // Each within a few tenths of the others: only the roots at 220 Hz share a line with a harmonic.
  for (const double freq :
       {110 * 0.994, 110.0, 110 * 1.007, 277.18 * 0.994, 277.18, 277.18 * 1.007})
    EXPECT_NEAR(20 * std::log10(Measure::magnitudeAt(x, freq, 48000) / reference), 0, 0.2) << freq;
  EXPECT_GT(Measure::magnitudeAt(x, 220 * 1.007, 48000), reference / 3);
}

// stereoise

RC_GTEST_PROP(StereoiseLaw, IsTheModelsToTheLastBit, ()) {
  const Samples mono = *anyBuffer(2000);
  const double correlation =
      *rc::gen::oneOf(between(0, 1), between(-1, 2), rc::gen::element(0.0, 0.35, 1.0, 1.5));
  const std::uint64_t seed = *anySeed();
  const auto [left, right] = Signals::stereoise(mono, correlation, seed);
  const reference::Pair expected = reference::stereoise(mono, correlation, seed);
  require(sameBits(left, expected.l));
  require(sameBits(right, expected.r));
}

RC_GTEST_PROP(StereoiseLaw, LeftIsTheInputAndRightHasItsLevel, ()) {
  const Samples mono = *anyBuffer(2000);
  RC_PRE(Measure::rmsDB(mono) > -200);
  const auto [left, right] = Signals::stereoise(mono, *between(0, 1), *anySeed());
  require(sameBits(left, mono));
  RC_ASSERT(std::abs(Measure::rmsDB(right) - Measure::rmsDB(mono)) < 1e-5);
}

TEST(Stereoise, FullCorrelationMakesRightEqualLeftWithinRounding) {
  const Samples mono = Signals::pink(0.2, 5);
  const auto [left, right] = Signals::stereoise(mono, 1, 5);
  EXPECT_TRUE(sameBits(left, mono));
  for (std::size_t i = 0; i < mono.size(); ++i)
    ASSERT_NEAR(right[i], mono[i], 2e-7 * std::abs(static_cast<double>(mono[i]))) << i;
}

TEST(Stereoise, NoCorrelationLeavesLowPassedNoiseAtTheInputsLevel) {
  const Samples loud = Signals::pink(1, 5);
  const Samples other = Signals::pad(1, 9);
  const Samples right = Signals::stereoise(loud, 0, 5).second;
  EXPECT_NEAR(Measure::rmsDB(right), -20, 1e-5);
  // The same noise whatever the input.
  const Samples rightOfOther = Signals::stereoise(other, 0, 5).second;
  for (const std::size_t i : {0u, 100u, 47999u})
    EXPECT_NEAR(right[i], rightOfOther[i], 1e-6);
  // Low-passed at 6 kHz: 15 kHz lies far below 1 kHz.
  const auto powerDB = [&right](double centre) {
    double power = 0;
    for (int k = 0; k < 100; ++k)
      power += std::pow(Measure::magnitudeAt(right, centre + 7 * k, 48000), 2);
    return 10 * std::log10(power);
  };
  EXPECT_NEAR(powerDB(1000) - powerDB(15000),
              Biquad::lowpass(6000, 0.7, 48000).responseDB(1350, 48000) -
                  Biquad::lowpass(6000, 0.7, 48000).responseDB(15350, 48000),
              2.5);
}

TEST(Stereoise, TheNoiseIsSeededWith7717More) {
  // Without correlation and filtering undone, the first right samples are the generator's.
  const Samples mono = Signals::pink(0.1, 5);
  const Samples right = Signals::stereoise(mono, 0, 1 - 7717ULL).second;
  const double w0 = 2 * std::numbers::pi * 6000 / 48000;
  const double alpha = std::sin(w0) / 1.4;
  const double b0 = (1 - std::cos(w0)) / 2 / (1 + alpha);
  const double a1 = -2 * std::cos(w0) / (1 + alpha);
  // h[0] = b0, h[1] = 2 b0 - a1 b0; the first two noise values of seed 1.
  const double first = b0 * -0.9999999997653202;
  const double second = b0 * -0.7499844971607521 + (2 * b0 - a1 * b0) * -0.9999999997653202;
  EXPECT_NEAR(right[1] / right[0], second / first, 1e-5);
}

TEST(Stereoise, ASeedWhoseSumIsZeroIsReplaced) {
  const Samples mono = Signals::pink(0.05, 5);
  EXPECT_TRUE(sameBits(Signals::stereoise(mono, 0.5, seedOfZeroSum).second,
                       Signals::stereoise(mono, 0.5, zeroSeedReplacement - 7717).second));
}

TEST(Stereoise, OfNothingIsNothing) {
  const auto [left, right] = Signals::stereoise({}, 0.5, 1);
  EXPECT_TRUE(left.empty());
  EXPECT_TRUE(right.empty());
}

} // namespace
} // namespace velto
