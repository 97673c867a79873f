// Checks the reference model against closed forms and known values.

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

TEST(ReferenceGenerator, StepsMatchKnownStates) {
  // State 1, shift by shift: x ^ x << 13 = 0x2001; x ^ x >> 7 = 0x2041; x ^ x << 17 = 0x40822041.
  EXPECT_EQ(step(1), 0x40822041u);
  EXPECT_EQ(step(0x40822041), 0x100041060c011441u);
  EXPECT_EQ(step(0x100041060c011441), 0x9b1e842f6e862629u);
  EXPECT_EQ(step(0x9E3779B97F4A7C15), 0xdc1b77ae0bf34dadu);
  EXPECT_EQ(step(0x8000000000000000), 0x8100000000000000u);
  EXPECT_EQ(step(0xFFFFFFFFFFFFFFFF), 0x3f801fc0u);
}

TEST(ReferenceGenerator, StartsAtTheSeedOrTheReplacementOfZero) {
  EXPECT_EQ(startState(0), 0x9E3779B97F4A7C15u);
  EXPECT_EQ(startState(1), 1u);
}

TEST(ReferenceGenerator, ValuesUseTheTop53Bits) {
  EXPECT_EQ(unitValue(0x8100000000000000), 129.0 / 256);
  EXPECT_EQ(unitValue(0x7FF), 0);
  EXPECT_EQ(noiseValue(0x8100000000000000), 4 * 129.0 / 256 - 1);
  EXPECT_EQ(noiseValue(0), -1);
  EXPECT_EQ(noiseValue(~0ULL), 4 * (1 - 0x1p-53) - 1);
}

// Filters and measurement

void expectSection(const Biquad& f, double b0, double b1, double b2, double a1, double a2) {
  EXPECT_NEAR(f.b0, b0, 1e-14);
  EXPECT_NEAR(f.b1, b1, 1e-14);
  EXPECT_NEAR(f.b2, b2, 1e-14);
  EXPECT_NEAR(f.a1, a1, 1e-14);
  EXPECT_NEAR(f.a2, a2, 1e-14);
}

// At f0 = 12 kHz, cos w0 is 0 and sin w0 is 1: alpha is 1 for a Q of 0.5, and 2 for a Q of 0.25.
TEST(ReferenceFilters, HaveSimpleCoefficientsAtAQuarterOfTheRate) {
  expectSection(lowpass(12000, 0.5, rate), 0.25, 0.5, 0.25, 0, 0);
  expectSection(highpass(12000, 0.25, rate), 1.0 / 6, -1.0 / 3, 1.0 / 6, 0, -1.0 / 3);
  expectSection(bandpass(12000, 0.25, rate), 2.0 / 3, 0, -2.0 / 3, 0, -1.0 / 3);
  expectSection(peaking(12000, 40 * std::log10(2.0), 0.25, rate), 2.5, 0, -1.5, 0, 0); // A = 2
}

TEST(ReferenceFilters, HaveKnownGainsAtZeroCentreAndNyquist) {
  for (const double f0 : {100.0, 1900.0, 7800.0})
    for (const double q : {0.6, 2.0, 5.0}) {
      const double peakDB = 20 * std::log10(q);
      EXPECT_NEAR(responseDB(lowpass(f0, q, rate), 0, rate), 0, 1e-9);
      EXPECT_NEAR(responseDB(lowpass(f0, q, rate), f0, rate), peakDB, 1e-9);
      EXPECT_LT(responseDB(lowpass(f0, q, rate), rate / 2, rate), -200);
      EXPECT_LT(responseDB(highpass(f0, q, rate), 0, rate), -200);
      EXPECT_NEAR(responseDB(highpass(f0, q, rate), f0, rate), peakDB, 1e-9);
      EXPECT_NEAR(responseDB(highpass(f0, q, rate), rate / 2, rate), 0, 1e-9);
      EXPECT_LT(responseDB(bandpass(f0, q, rate), 0, rate), -200);
      EXPECT_NEAR(responseDB(bandpass(f0, q, rate), f0, rate), 0, 1e-9);
      EXPECT_LT(responseDB(bandpass(f0, q, rate), rate / 2, rate), -200);
      EXPECT_NEAR(responseDB(peaking(f0, 6, q, rate), 0, rate), 0, 1e-9);
      EXPECT_NEAR(responseDB(peaking(f0, 6, q, rate), f0, rate), 6, 1e-9);
      EXPECT_NEAR(responseDB(peaking(f0, 6, q, rate), rate / 2, rate), 0, 1e-9);
    }
}

TEST(ReferenceFilters, FloorTheResponseAndItsDenominator) {
  EXPECT_NEAR(responseDB({0, 0, 0, 0, 0}, 1000, rate), -360, 1e-9);
  EXPECT_NEAR(responseDB({1, 0, 0, -1, 0}, 0, rate), 360, 1e-9); // a pole at 0 Hz
}

TEST(ReferenceFilters, ImpulseResponseMatchesItsClosedForm) {
  // h[n] = r^n sin((n + 1) theta) / sin theta for a1 = -2 r cos theta, a2 = r^2.
  const double r = 0.97, theta = 0.3;
  Biquad resonator{1, 0, 0, -2 * r * std::cos(theta), r * r};
  for (int n = 0; n < 200; n++)
    EXPECT_NEAR(resonator.process(n == 0 ? 1.0f : 0.0f),
                std::pow(r, n) * std::sin((n + 1) * theta) / std::sin(theta), 1e-6)
        << n;
}

TEST(ReferenceFilters, TapsDelayTheInputByOneAndTwo) {
  Biquad taps{1, 0.5, -0.25, 0, 0};
  Samples out;
  for (const float in : {1.0f, 0.0f, 0.0f, 4.0f, 0.0f})
    out.push_back(taps.process(in));
  EXPECT_EQ(out, (Samples{1, 0.5f, -0.25f, 4, 2}));
}

TEST(ReferenceFilters, FeedBackUnroundedOutputs) {
  // y1 = 1 + 2^-30 would round to 1 as a float. The next output, y1 - 1, shows whether it did.
  Biquad section{1 + 0x1p-30, 0, 0, -1, 0};
  EXPECT_EQ(section.process(1), 1.0f);
  section.b0 = -1;
  EXPECT_EQ(section.process(1), 0x1p-30f);
}

TEST(ReferenceMeasure, LevelsMatchClosedForms) {
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

TEST(ReferenceMeasure, FloorsLevelsAtMinus240) {
  EXPECT_NEAR(rmsDB(Samples(10, 1e-13f)), -240, 1e-12);
  EXPECT_NEAR(rmsDB(Samples(10, 1e-11f)), -220, 1e-5);
  EXPECT_NEAR(peakDB({1e-13f}), -240, 1e-12);
  EXPECT_NEAR(peakDB({-1e-11f}), -220, 1e-5);
}

TEST(ReferenceMeasure, NormalizeReachesItsTarget) {
  EXPECT_EQ(normalizeRMS({}, -20), Samples());
  EXPECT_EQ(normalizeRMS({0, 0}, -20), Samples(2));
  EXPECT_EQ(normalizeRMS({0.5f, -0.5f}, 0), (Samples{1, -1}));
  EXPECT_NEAR(rmsDB(normalizeRMS({0.3f, 0.1f, -0.7f}, -20)), -20, 1e-6);
}

TEST(ReferenceMeasure, NormalizeMultipliesByAFloatGain) {
  Samples x;
  for (std::size_t i = 0; i < 100; i++)
    x.push_back(0.7f + 0.001f * static_cast<float>(i));
  const double gain = std::pow(10.0, (-20 - rmsDB(x)) / 20);
  const Samples normalized = normalizeRMS(x, -20);
  int otherInDoubles = 0;
  for (std::size_t i = 0; i < x.size(); i++) {
    EXPECT_EQ(normalized[i], x[i] * static_cast<float>(gain)) << i;
    if (normalized[i] != static_cast<float>(static_cast<double>(x[i]) * gain))
      otherInDoubles++;
  }
  EXPECT_GT(otherInDoubles, 0);
}

TEST(ReferenceMeasure, NormalizeKeepsABufferWithoutAFiniteLevel) {
  const float infinite = std::numeric_limits<float>::infinity();
  EXPECT_EQ(normalizeRMS({0.5f, infinite, -0.25f}, -20), (Samples{0.5f, infinite, -0.25f}));
}

// Materials

// The noise values after a seed.
std::vector<double> draws(std::uint64_t seed, std::size_t count) {
  std::vector<double> values;
  std::uint64_t x = startState(seed);
  for (std::size_t i = 0; i < count; i++) {
    x = step(x);
    values.push_back(noiseValue(x));
  }
  return values;
}

// Pink noise before normalisation: `noise` convolved with six one-pole responses g p^k, the direct
// path at k = 0 and the delayed one at k = 1.
std::vector<double> pinkByConvolution(const std::vector<double>& noise) {
  const std::array<double, 6> gains{0.0555179, 0.0750759, 0.153852,
                                    0.3104856, 0.5329522, -0.016898};
  const std::array<double, 6> poles{0.99886, 0.99332, 0.969, 0.8665, 0.55, -0.7616};
  std::vector<double> pink(noise.size());
  for (std::size_t n = 0; n < noise.size(); n++)
    for (std::size_t k = 0; k <= n; k++) {
      double h = k == 0 ? 0.5362 : k == 1 ? 0.115926 : 0;
      for (std::size_t pole = 0; pole < poles.size(); pole++)
        h += gains[pole] * std::pow(poles[pole], static_cast<double>(k));
      pink[n] += 0.11 * h * noise[n - k];
    }
  return pink;
}

// The same filter in another structure: transposed direct form II, in doubles.
std::vector<double> filtered(const Biquad& f, const std::vector<double>& in) {
  std::vector<double> out;
  double s1 = 0, s2 = 0;
  for (const double x : in) {
    const double y = f.b0 * x + s1;
    s1 = f.b1 * x - f.a1 * y + s2;
    s2 = f.b2 * x - f.a2 * y;
    out.push_back(y);
  }
  return out;
}

// Expects `actual` to be `expected` scaled to an RMS level of -20 dB.
void expectAtLevel(const Samples& actual, const std::vector<double>& expected, double tolerance) {
  ASSERT_EQ(actual.size(), expected.size());
  double power = 0;
  for (const double value : expected)
    power += value * value / static_cast<double>(expected.size());
  for (std::size_t n = 0; n < expected.size(); n++)
    ASSERT_NEAR(actual[n], 0.1 * expected[n] / std::sqrt(power), tolerance) << n;
}

TEST(ReferencePink, EqualsNoiseConvolvedWithItsImpulseResponse) {
  expectAtLevel(pink(200.5 / rate, 1), pinkByConvolution(draws(1, 200)), 1e-7);
}

TEST(ReferencePink, AudibleIsMeanFreeNoiseThroughAButterworthHighPass) {
  std::vector<double> noise = draws(1, 2000);
  for (double& value : noise)
    value -= 1;
  // A fourth-order Butterworth filter's sections have Qs of 1 / (2 cos(pi / 8)) and of
  // 1 / (2 cos(3 pi / 8)).
  const auto section = [](int i) {
    const double q = 1 / (2 * std::cos(i * std::numbers::pi / 8));
    return highpass(20, std::round(q * 1e4) / 1e4, rate);
  };
  expectAtLevel(pink(2000.5 / rate, 1, true),
                filtered(section(3), filtered(section(1), pinkByConvolution(noise))), 1e-6);
}

TEST(ReferenceDrums, StepsStartAtTheTruncatedRunningSum) {
  EXPECT_EQ(stepStarts(3.2), (std::vector<std::int64_t>{0, 14400, 28800, 43199, 57600, 72000, 86400,
                                                        100800, 115200, 129599, 143999}));
  EXPECT_EQ(stepStarts(0), std::vector<std::int64_t>());
  EXPECT_EQ(stepStarts(1e-9), std::vector<std::int64_t>{0});
  EXPECT_EQ(stepStarts(0.3), std::vector<std::int64_t>{0});
  EXPECT_EQ(stepStarts(0.31), (std::vector<std::int64_t>{0, 14400}));
}

// A bar and a half, seed 11. In a step with snare and hat, the snare draws its noise first.
TEST(ReferenceDrums, VoicesMatchTheirFormulas) {
  const std::vector<std::size_t> starts{0,     14400,  28800,  43199,  57600,  72000,
                                        86400, 100800, 115200, 129599, 143999, 158399};
  std::vector<double> expected(172000);
  const std::vector<double> noise = draws(11, 60000);
  std::size_t drawn = 0;
  const auto take = [&](std::size_t count) {
    const auto begin = noise.begin() + static_cast<std::ptrdiff_t>(drawn);
    drawn += count;
    return std::vector<double>(begin, begin + static_cast<std::ptrdiff_t>(count));
  };
  for (std::size_t k = 0; k < starts.size(); k++) {
    const auto tau = [](std::size_t i) { return static_cast<double>(i) / 48000; };
    const std::size_t place = k % 8;
    if (place % 3 == 0)
      for (std::size_t i = 0; i < 13440 && starts[k] + i < expected.size(); i++)
        expected[starts[k] + i] +=
            0.9 * std::exp(-tau(i) / 0.075) *
            std::sin(2 * std::numbers::pi * (55 + 75 * std::exp(-tau(i) / 0.022)) * tau(i));
    if (place == 4) {
      std::vector<double> sine;
      for (std::size_t i = 0; i < 9600; i++)
        sine.push_back(std::sin(2 * std::numbers::pi * 185 * tau(i)));
      const auto tone = filtered(bandpass(190, 2, rate), sine);
      const auto hiss = filtered(bandpass(1900, 0.7, rate), take(9600));
      for (std::size_t i = 0; i < 9600; i++)
        expected[starts[k] + i] +=
            0.55 * std::exp(-tau(i) / 0.055) * (1.4 * tone[i] + 0.8 * hiss[i]);
    }
    const bool open = place == 7;
    const auto hiss = filtered(highpass(7800, 0.7, rate), take(open ? 7680 : 2640));
    for (std::size_t i = 0; i < hiss.size(); i++)
      expected[starts[k] + i] += 0.3 * std::exp(-tau(i) / (open ? 0.05 : 0.014)) * hiss[i];
  }
  expectAtLevel(drums(172000.5 / rate, 11), expected, 1e-6);
}

TEST(ReferenceDrums, ATruncatedVoiceDrawsNoFurtherNoise) {
  // The snare of step 4 ends after 480 samples, so the step's hat starts at draw 11041.
  const Samples cut = drums(58080.5 / rate, 11);
  const std::vector<double> noise = draws(11, 11041);
  const double snare = 0.55 * 0.8 * bandpass(1900, 0.7, rate).b0;
  const double hat = 0.3 * highpass(7800, 0.7, rate).b0;
  ASSERT_EQ(cut.size(), 58080U);
  EXPECT_NEAR(cut[57600] / cut[14400],
              (snare * noise[10560] + hat * noise[11040]) / (hat * noise[2640]), 1e-5);
}

TEST(ReferencePad, MatchesTwelveKnownSamples) {
  const std::array<double, 12> expected{0,           -0.0094613495, -0.036087725, -0.077489551,
                                        -0.12066409, -0.14971396,   -0.15925991,  -0.15068484,
                                        -0.12762397, -0.093432376,  -0.05042132,  0};
  const Samples actual = pad(12.5 / 48000, 5150);
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); i++)
    EXPECT_NEAR(actual[i], expected[i], 1e-7) << i;
}

TEST(ReferencePad, MatchesItsFormulaWithFadesOf480Samples) {
  const std::array<double, 4> roots{110, 164.81, 220, 277.18};
  const std::array<double, 3> tunings{0.994, 1, 1.007};
  std::vector<double> means(1200);
  std::uint64_t x = startState(21);
  for (const double root : roots)
    for (const double tuning : tunings) {
      x = step(x);
      for (std::size_t n = 0; n < means.size(); n++) {
        const double turns = unitValue(x) + static_cast<double>(n + 1) * root * tuning / rate;
        means[n] += (2 * (turns - std::floor(turns)) - 1) / 12;
      }
    }
  std::vector<double> expected = filtered(lowpass(5200, 0.6, rate), means);
  for (std::size_t i = 0; i < 480; i++) {
    expected[i] *= static_cast<double>(i) / 480;
    expected[1199 - i] *= static_cast<double>(i) / 480;
  }
  expectAtLevel(pad(1200.5 / rate, 21), expected, 1e-6);
}

TEST(ReferenceStereoise, ACorrelationOf1OrMoreCopiesTheInput) {
  const Samples mono = drums(0.1, 3);
  const Pair identical = stereoise(mono, 1, 3);
  EXPECT_EQ(identical.l, mono);
  for (std::size_t i = 0; i < mono.size(); i++)
    ASSERT_NEAR(identical.r[i], mono[i], 2e-7 * std::fabs(static_cast<double>(mono[i])));
  // Above 1 the noise has no weight, and normalisation cancels the factor.
  const Pair beyond = stereoise(mono, 2, 3);
  for (std::size_t i = 0; i < mono.size(); i++)
    ASSERT_NEAR(beyond.r[i], mono[i], 2e-7 * std::fabs(static_cast<double>(mono[i])));
}

TEST(ReferenceStereoise, MixesLowPassNoiseSeededWithSeedPlus7717) {
  Samples mono = drums(0.05, 3);
  for (float& sample : mono)
    sample *= 0.5f; // -26 dB
  for (const bool audible : {false, true}) {
    std::vector<double> noise = draws(1, mono.size());
    for (double& value : noise)
      value -= audible ? 1 : 0;
    noise = filtered(lowpass(6000, 0.7, rate), noise);
    double noisePower = 0, monoPower = 0, power = 0;
    for (std::size_t i = 0; i < mono.size(); i++) {
      noisePower += noise[i] * noise[i];
      monoPower += static_cast<double>(mono[i]) * static_cast<double>(mono[i]);
    }
    std::vector<double> mix;
    for (std::size_t i = 0; i < mono.size(); i++) {
      mix.push_back(0.25 * static_cast<double>(mono[i]) +
                    0.75 * noise[i] * std::sqrt(monoPower / noisePower));
      power += mix[i] * mix[i];
    }
    const Samples right = stereoise(mono, 0.25, 1 - 7717ULL, audible).r;
    for (std::size_t i = 0; i < mono.size(); i++)
      ASSERT_NEAR(right[i], mix[i] * std::sqrt(monoPower / power), 1e-6) << i;
  }
}

// Trials

// States after one step, and values derived from them, computed separately in exact integers:
//   seed                  state               mod 27  mod 3  fraction
//   0                     dc1b77ae0bf34dad    12      0      0.8597941
//   1                     0000000040822041    6       0      5.9e-11
//   17                    000000448a0245..    20      2
//   34                                        13      1
//   8000000000000000      8100000000000000    3       0      0.50390625
//   895ebbb1d038278b      ffffa2741368d504    12      0      0.9999944
TEST(ReferenceTrial, TargetsMatchKnownValues) {
  const struct {
    std::uint64_t seed;
    double difficulty, targetFreq, targetLevelDB, targetGRdB;
    std::int64_t oddSlot;
  } rows[] = {{0, 0, 630, 5.55, 11.0, 0},
              {0, 50, 630, 2.95, 6.4, 0},
              {0, 100, 630, 0.35, 1.8, 0},
              {1, 0, 160, 2.7, 4.8, 0},
              {1, 100, 160, 0.2, 0.8, 0},
              {0x8000000000000000, 0, 80, 4.35, 8.4, 0},
              {0x895ebbb1d038278b, 0, 630, 6.0, 12.0, 0},
              {0x895ebbb1d038278b, 100, 630, 0.4, 2.0, 0}};
  for (const auto& row : rows) {
    const auto trial = [&](Drill drill) {
      return makeTrial(row.difficulty, Material::pad, row.seed, drill);
    };
    EXPECT_EQ(trial(Drill::frequency).targetFreq, row.targetFreq);
    EXPECT_EQ(trial(Drill::level).targetLevelDB, row.targetLevelDB);
    EXPECT_EQ(trial(Drill::dynamics).targetGRdB, row.targetGRdB);
    EXPECT_EQ(trial(Drill::polarity).oddSlot, row.oddSlot);
  }
  EXPECT_EQ(makeTrial(0, Material::pad, 17, Drill::frequency).targetFreq, 4000);
  EXPECT_EQ(makeTrial(0, Material::pad, 17, Drill::polarity).oddSlot, 2);
  EXPECT_EQ(makeTrial(0, Material::pad, 27, Drill::frequency).targetFreq, 16000);
  EXPECT_EQ(makeTrial(0, Material::pad, 34, Drill::polarity).oddSlot, 1);
}

TEST(ReferenceTrial, GetsHarderBetween0And100) {
  const struct {
    double difficulty, boostDB, boostQ, correlation;
  } rows[] = {{-5, 12, 2, 1},        {0, 12, 2, 1},     {20, 10.2, 2.6, 0.87},
              {50, 7.5, 3.5, 0.675}, {100, 3, 5, 0.35}, {250, 3, 5, 0.35}};
  for (const auto& row : rows) {
    const Trial boosted = makeTrial(row.difficulty, Material::drums, 17, Drill::frequency);
    EXPECT_NEAR(boosted.boostDB, row.boostDB, 1e-14);
    EXPECT_NEAR(boosted.boostQ, row.boostQ, 1e-14);
    EXPECT_EQ(boosted.difficulty, row.difficulty);
    EXPECT_EQ(boosted.slots, 2);
    EXPECT_EQ(boosted.correlation, 1);
    const Trial flipped = makeTrial(row.difficulty, Material::drums, 17, Drill::polarity);
    EXPECT_NEAR(flipped.correlation, row.correlation, 1e-15);
    EXPECT_EQ(flipped.slots, 3);
    EXPECT_EQ(flipped.boostDB, 0);
  }
}

TEST(ReferenceTrial, MixedSeedsAreSplitMix64) {
  // The first three outputs of the published generator from the state 0.
  constexpr std::uint64_t gamma = 0x9E3779B97F4A7C15;
  EXPECT_EQ(mixedSeed(0), 0xE220A8397B1DCDAFU);
  EXPECT_EQ(mixedSeed(gamma), 0x6E789E6AA1B965F4U);
  EXPECT_EQ(mixedSeed(2 * gamma), 0x06C45D188009454FU);
}

// This seed's first state is 1, which gives a fraction of 0: both targets are at their minimum.
TEST(ReferenceTrial, RoundsHalvesAwayFromZero) {
  constexpr std::uint64_t seed = 13721891023265367629U;
  EXPECT_EQ(makeTrial(62.5, Material::pad, seed, Drill::level).targetLevelDB, 1.15); // 22.5 steps
  EXPECT_EQ(makeTrial(3.75, Material::pad, seed, Drill::dynamics).targetGRdB, 4.7);  // 46.5 steps
}

TEST(ReferenceGrade, TextsMatchKnownOnes) {
  Trial trial = makeTrial(0, Material::pad, 0, Drill::frequency);
  trial.targetFreq = 1000;
  const Grade g = grade(1250, trial);
  EXPECT_TRUE(g.correct);
  EXPECT_EQ(g.errorText, "0.32 oct off");
  EXPECT_EQ(g.truthText, "1k Hz");
  EXPECT_EQ(g.answerText, "1.25k Hz");
  EXPECT_FALSE(grade(1600, trial).correct);
}

TEST(ReferenceGrade, ThresholdsAreInclusive) {
  Trial trial = makeTrial(0, Material::pad, 0, Drill::frequency);
  trial.targetFreq = 500;
  EXPECT_FALSE(grade(630, trial).correct); // 0.3334 octaves
  EXPECT_EQ(grade(1000, trial).answerText, "1k Hz");
  trial.drill = Drill::level;
  trial.targetLevelDB = 3;
  EXPECT_TRUE(grade(3.75, trial).correct);
  EXPECT_FALSE(grade(3.76, trial).correct);
  EXPECT_EQ(grade(3.5, trial).errorText, "0.50 dB off");
  trial.drill = Drill::dynamics;
  trial.targetGRdB = 6;
  EXPECT_TRUE(grade(8, trial).correct);
  EXPECT_FALSE(grade(8.1, trial).correct);
  EXPECT_EQ(grade(8, trial).answerText, "8.0 dB GR");
  trial.drill = Drill::polarity;
  trial.oddSlot = 1;
  EXPECT_TRUE(grade(1.9, trial).correct);
  EXPECT_EQ(grade(2, trial).answerText, "slot 3");
}

// Records `correct` in a staircase and checks its fields afterwards.
void expectStep(Staircase& staircase, bool correct, double difficulty, std::int64_t streak,
                std::int64_t reversals, std::int64_t direction) {
  staircase.record(correct);
  EXPECT_EQ(staircase.difficulty, difficulty);
  EXPECT_EQ(staircase.consecutiveCorrect, streak);
  EXPECT_EQ(staircase.reversals, reversals);
  EXPECT_EQ(staircase.lastDirection, direction);
}

TEST(ReferenceStaircase, MatchesKnownFields) {
  Staircase s;
  expectStep(s, true, 20, 1, 0, 0);  // one correct answer does not move it
  expectStep(s, false, 8, 0, 0, -1); // the first move is not a reversal
  expectStep(s, true, 8, 1, 0, -1);
  expectStep(s, true, 20, 0, 1, 1);
  expectStep(s, false, 8, 0, 2, -1); // this move still uses the larger step
  expectStep(s, true, 8, 1, 2, -1);
  expectStep(s, true, 16, 0, 3, 1);
  expectStep(s, false, 8, 0, 4, -1);
  expectStep(s, true, 8, 1, 4, -1);
  expectStep(s, true, 13, 0, 5, 1);
  expectStep(s, true, 13, 1, 5, 1);
  expectStep(s, true, 18, 0, 5, 1); // a move in the same direction is not a reversal
}

TEST(ReferenceStaircase, ClampedMovesSetTheDirectionAndCountReversals) {
  Staircase easiest{2, 0, 7, 1};
  expectStep(easiest, false, 0, 0, 8, -1);
  expectStep(easiest, false, 0, 0, 8, -1);
  Staircase hardest{99, 1, 7, 0};
  expectStep(hardest, true, 100, 0, 7, 1);
  Staircase atTheTop{100, 1, 2, -1};
  expectStep(atTheTop, true, 100, 0, 3, 1);
}

TEST(ReferenceStaircase, StepsShrinkWithTheReversals) {
  const std::array<double, 9> steps{12, 12, 8, 8, 5, 5, 5, 3, 3};
  for (std::size_t reversals = 0; reversals < steps.size(); reversals++) {
    const auto count = static_cast<std::int64_t>(reversals);
    Staircase down{50, 0, count, 0}, up{50, 1, count, 0};
    expectStep(down, false, 50 - steps[reversals], 0, count, -1);
    expectStep(up, true, 50 + steps[reversals], 0, count, 1);
  }
}

// Rendering

TEST(ReferenceCompressor, MatchesItsStaticCurve) {
  // A constant at full scale is reduced by 0.75 dB for each decibel that it exceeds the threshold.
  const Samples x(48000, 1);
  EXPECT_NEAR(compressorHitting(6, x).grDB, 0.75 * 7.998046875, 1e-9);
  EXPECT_NEAR(compressorHitting(1000, x).grDB, 0.75 * (40 - 40.0 / 4096), 1e-9);
  // After one sample the smoothing has covered a fraction of 1 - 0.99584200184511.
  EXPECT_NEAR(compressorHitting(1000, {1}).grDB, 0.75 * (40 - 40.0 / 4096) * (1 - 0.99584200184511),
              1e-9);
  EXPECT_EQ(compressorHitting(8, {}).grDB, 0);
}

TEST(ReferenceCompressor, KneeIsSixDecibelsWide) {
  // A target of 0 raises the threshold twelve times, to 40 / 4096 dB below the peak, so the peak is
  // within the knee.
  const double step = 40.0 / 4096;
  EXPECT_NEAR(compressorHitting(0, Samples(48000, 1)).grDB, 0.75 * (step + 3) * (step + 3) / 12,
              1e-9);
  // A sample 2.5 dB below the threshold is still reduced.
  Samples x(48000, static_cast<float>(std::pow(10, (-step - 2.5) / 20)));
  x[47999] = 1;
  EXPECT_NEAR(compressorHitting(0, x).out[47998] / x[47998],
              std::pow(10, -0.75 * 0.5 * 0.5 / 12 / 20), 1e-7);
}

TEST(ReferenceCompressor, DetectsSilenceAtMinus180Decibels) {
  // The peak of silence is -240 dB, the detector's floor -180 dB: 60 dB above any threshold.
  EXPECT_NEAR(compressorHitting(8, Samples(48000)).grDB, 0.75 * (60 + 40.0 / 4096), 1e-9);
}

TEST(ReferenceCompressor, AttackIs5AndRelease120Milliseconds) {
  // 100 ms at full scale, then 100 ms far below the threshold.
  Samples x(9600, 1);
  for (std::size_t i = 4800; i < x.size(); i++)
    x[i] = 1e-6f;
  const Compressed result = compressorHitting(1000, x);
  const double settled = 0.75 * (40 - 40.0 / 4096);
  const double attack = 0.99584200184511, release = 0.9998264039584257;
  const double peak = settled * (1 - std::pow(attack, 4800));
  EXPECT_NEAR(result.grDB, peak, 1e-9);
  for (const int i : {0, 239, 4799}) {
    const auto rising = static_cast<std::size_t>(i), falling = 4800 + rising;
    EXPECT_NEAR(result.out[rising] / x[rising],
                std::pow(10, -settled * (1 - std::pow(attack, i + 1)) / 20), 1e-6);
    EXPECT_NEAR(result.out[falling] / x[falling],
                std::pow(10, -peak * std::pow(release, i + 1) / 20), 1e-6);
  }
}

TEST(ReferenceCompressor, AReductionEqualToTheTargetReachesIt) {
  // At the first threshold, -20 dB, the static reduction of a full-scale sample is 15 dB.
  const Samples x(1000, 1);
  double reached = 0;
  for (std::size_t i = 0; i < x.size(); i++)
    reached = 15 + std::exp(-1 / (0.005 * rate)) * (reached - 15);
  EXPECT_LT(compressorHitting(reached, x).grDB, reached + 1e-6);
  EXPECT_NE(compressorHitting(reached, x).grDB,
            compressorHitting(std::nextafter(reached, 100.0), x).grDB);
}

TEST(ReferenceRender, SlotsDifferInTheDrillsProperty) {
  for (const Material material : {Material::pinkNoise, Material::drums, Material::pad}) {
    const auto level = render(makeTrial(0, material, 1, Drill::level), 0.1);
    ASSERT_EQ(level.size(), 2u);
    EXPECT_NEAR(rmsDB(level[1].l) - rmsDB(level[0].l), 2.7, 1e-5);

    const auto polarity = render(makeTrial(50, material, 17, Drill::polarity), 0.1);
    ASSERT_EQ(polarity.size(), 3u);
    EXPECT_EQ(polarity[0].r, polarity[1].r);
    for (std::size_t i = 0; i < polarity[2].r.size(); i++)
      ASSERT_EQ(polarity[2].r[i], -polarity[0].r[i]);

    for (const Drill drill : {Drill::frequency, Drill::dynamics}) {
      const auto slots = render(makeTrial(0, material, 1, drill), 0.1);
      ASSERT_EQ(slots.size(), 2u);
      EXPECT_NEAR(rmsDB(slots[1].r), -20, 1e-5);
      EXPECT_EQ(slots[1].l, slots[1].r);
      EXPECT_NE(slots[1].r, slots[0].r);
    }
  }
}

} // namespace
} // namespace reference
