#include "DSP.h"

#include "CoreSupport.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>

namespace velto {
namespace {

using namespace tests;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double rate = sampleRateHz;

Samples sine(double freq, double amplitude, std::size_t frames) {
  Samples x(frames);
  for (std::size_t i = 0; i < frames; ++i)
    x[i] = static_cast<float>(
        amplitude * std::sin(2 * std::numbers::pi * freq * static_cast<double>(i) / rate));
  return x;
}

Samples square(float amplitude, std::size_t frames) {
  Samples x(frames);
  for (std::size_t i = 0; i < frames; ++i)
    x[i] = i % 2 == 0 ? amplitude : -amplitude;
  return x;
}

// Biquad

TEST(Biquad, IsAPlainValueOfNineDoublesAtRest) {
  static_assert(sizeof(Biquad) == 9 * sizeof(double));
  const auto [b0, b1, b2, a1, a2, x1, x2, y1, y2] = Biquad::lowpass(1000, 1, rate);
  EXPECT_NE(b0 * b1 * b2 * a1 * a2, 0);
  EXPECT_EQ(x1, 0);
  EXPECT_EQ(x2, 0);
  EXPECT_EQ(y1, 0);
  EXPECT_EQ(y2, 0);
}

TEST(Biquad, TwoPiIsTheNearestDouble) {
  EXPECT_EQ(twoPi, 2 * std::numbers::pi);
  EXPECT_EQ(sampleRateHz, 48000.0);
}

TEST(Biquad, LowpassCoefficientsAtAQuarterOfTheRate) {
  // At a quarter of the rate cos w0 is 0 and sin w0 is 1: with Q 0.5, alpha is 1 and a0 is 2.
  const Biquad f = Biquad::lowpass(12000, 0.5, rate);
  EXPECT_NEAR(f.b0, 0.25, 1e-15);
  EXPECT_NEAR(f.b1, 0.5, 1e-15);
  EXPECT_NEAR(f.b2, 0.25, 1e-15);
  EXPECT_NEAR(f.a1, 0, 1e-15);
  EXPECT_NEAR(f.a2, 0, 1e-15);
}

TEST(Biquad, HighpassCoefficientsAtAQuarterOfTheRate) {
  const Biquad f = Biquad::highpass(12000, 0.25, rate); // alpha 2, a0 3
  EXPECT_NEAR(f.b0, 1.0 / 6, 1e-15);
  EXPECT_NEAR(f.b1, -1.0 / 3, 1e-15);
  EXPECT_NEAR(f.b2, 1.0 / 6, 1e-15);
  EXPECT_NEAR(f.a1, 0, 1e-15);
  EXPECT_NEAR(f.a2, -1.0 / 3, 1e-15);
}

TEST(Biquad, BandpassCoefficientsAtAQuarterOfTheRate) {
  const Biquad f = Biquad::bandpass(12000, 0.25, rate); // alpha 2, a0 3
  EXPECT_NEAR(f.b0, 2.0 / 3, 1e-15);
  EXPECT_EQ(f.b1, 0);
  EXPECT_NEAR(f.b2, -2.0 / 3, 1e-15);
  EXPECT_NEAR(f.a1, 0, 1e-15);
  EXPECT_NEAR(f.a2, -1.0 / 3, 1e-15);
}

TEST(Biquad, PeakingCoefficientsAtAQuarterOfTheRate) {
  // 40 log10(2) dB make A = 2; Q 0.25 makes alpha 2: a0 = 2, b0 = 5 / 2, b2 = -3 / 2, a2 = 0.
  const Biquad f = Biquad::peaking(12000, 40 * std::log10(2.0), 0.25, rate);
  EXPECT_NEAR(f.b0, 2.5, 1e-14);
  EXPECT_NEAR(f.b1, 0, 1e-14);
  EXPECT_NEAR(f.b2, -1.5, 1e-14);
  EXPECT_EQ(f.a1, f.b1);
  EXPECT_NEAR(f.a2, 0, 1e-14);
}

TEST(Biquad, DesignsHaveTheirGainsAtTheLandmarks) {
  for (const double f0 : {100.0, 1900.0, 5200.0, 7800.0}) {
    for (const double q : {0.6, std::numbers::sqrt2 / 2, 2.0, 5.0}) {
      const double nyquist = rate / 2;
      const double peakDB = 20 * std::log10(q);
      const Biquad low = Biquad::lowpass(f0, q, rate);
      EXPECT_NEAR(low.responseDB(0, rate), 0, 1e-9);
      EXPECT_NEAR(low.responseDB(f0, rate), peakDB, 1e-9);
      EXPECT_LT(low.responseDB(nyquist, rate), -200);

      const Biquad high = Biquad::highpass(f0, q, rate);
      EXPECT_LT(high.responseDB(0, rate), -200);
      EXPECT_NEAR(high.responseDB(f0, rate), peakDB, 1e-9);
      EXPECT_NEAR(high.responseDB(nyquist, rate), 0, 1e-9);

      const Biquad band = Biquad::bandpass(f0, q, rate);
      EXPECT_LT(band.responseDB(0, rate), -200);
      EXPECT_NEAR(band.responseDB(f0, rate), 0, 1e-9);
      EXPECT_LT(band.responseDB(nyquist, rate), -200);

      const Biquad peak = Biquad::peaking(f0, 6, q, rate);
      EXPECT_NEAR(peak.responseDB(0, rate), 0, 1e-9);
      EXPECT_NEAR(peak.responseDB(f0, rate), 6, 1e-9);
      EXPECT_NEAR(peak.responseDB(nyquist, rate), 0, 1e-9);
    }
  }
}

TEST(Biquad, LowpassIsFlatFarBelowItsFrequency) {
  EXPECT_NEAR(Biquad::lowpass(6000, 0.7, rate).responseDB(20, rate), 0, 1e-3);
}

TEST(Biquad, LowpassFollowsTheButterworthCurve) {
  // |H|^2 = 1 / (1 + (tan(w/2) / tan(w0/2))^4) at Q = 1/sqrt 2.
  const double f0 = 3000;
  const Biquad filter = Biquad::lowpass(f0, std::numbers::sqrt2 / 2, rate);
  for (const double f : {50.0, 1000.0, 2999.0, 6000.0, 15000.0}) {
    const double ratio =
        std::tan(std::numbers::pi * f / rate) / std::tan(std::numbers::pi * f0 / rate);
    EXPECT_NEAR(filter.responseDB(f, rate), -10 * std::log10(1 + std::pow(ratio, 4)), 1e-9) << f;
  }
}

TEST(Biquad, ResponseIsFlooredAtMinus360) {
  Biquad nothing;
  nothing.b0 = 0;
  EXPECT_NEAR(nothing.responseDB(1000, rate), -360, 1e-9);
}

TEST(Biquad, AVanishingDenominatorIsFlooredToo) {
  Biquad pole;
  pole.a1 = -1; // 1 / (1 - z^-1): a pole at 0 Hz
  EXPECT_NEAR(pole.responseDB(0, rate), 360, 1e-9);
}

TEST(Biquad, AResonatorRingsAsItsClosedForm) {
  // h[n] = r^n sin((n + 1) theta) / sin theta for a1 = -2 r cos theta, a2 = r^2.
  const double r = 0.97;
  const double theta = 0.3;
  Biquad resonator;
  resonator.a1 = -2 * r * std::cos(theta);
  resonator.a2 = r * r;
  for (int n = 0; n < 200; ++n) {
    const float expected =
        static_cast<float>(std::pow(r, n) * std::sin((n + 1) * theta) / std::sin(theta));
    EXPECT_NEAR(resonator.process(n == 0 ? 1.0f : 0.0f), expected, 1e-6) << n;
  }
}

TEST(Biquad, FeedForwardDelaysByOneAndTwo) {
  Biquad taps;
  taps.b0 = 1;
  taps.b1 = 0.5;
  taps.b2 = -0.25;
  const std::array<float, 5> in{1, 0, 0, 4, 0};
  const std::array<float, 5> expected{1, 0.5f, -0.25f, 4, 2};
  for (std::size_t i = 0; i < in.size(); ++i)
    EXPECT_EQ(taps.process(in[i]), expected[i]) << i;
}

TEST(Biquad, StateIsKeptUnroundedInsideTheSection) {
  // y1 = 2^-30 + 1 would round to 1 as a float; the next output, y1 - 1, tells.
  Biquad section;
  section.b0 = 1 + 0x1p-30;
  section.a1 = -1;
  EXPECT_EQ(section.process(1), 1.0f);
  EXPECT_EQ(section.y1, 1 + 0x1p-30);
  section.b0 = -1;
  EXPECT_EQ(section.process(1), 0x1p-30f);
}

// Every design, by number.
Biquad design(int kind, double f0, double gainDB, double q) {
  switch (kind) {
  case 0:
    return Biquad::lowpass(f0, q, rate);
  case 1:
    return Biquad::highpass(f0, q, rate);
  case 2:
    return Biquad::bandpass(f0, q, rate);
  default:
    return Biquad::peaking(f0, gainDB, q, rate);
  }
}

reference::Biquad literalDesign(int kind, double f0, double gainDB, double q) {
  switch (kind) {
  case 0:
    return reference::lowpass(f0, q, rate);
  case 1:
    return reference::highpass(f0, q, rate);
  case 2:
    return reference::bandpass(f0, q, rate);
  default:
    return reference::peaking(f0, gainDB, q, rate);
  }
}

RC_GTEST_PROP(BiquadLaw, DesignAndProcessingAreTheModelsToTheLastBit, ()) {
  const int kind = *rc::gen::inRange(0, 4);
  const double f0 = *between(20, 23000);
  const double gainDB = *between(-15, 15);
  const double q = *between(0.2, 8);
  Biquad actual = design(kind, f0, gainDB, q);
  reference::Biquad expected = literalDesign(kind, f0, gainDB, q);
  require(sameBits(actual.b0, expected.b0));
  require(sameBits(actual.b1, expected.b1));
  require(sameBits(actual.b2, expected.b2));
  require(sameBits(actual.a1, expected.a1));
  require(sameBits(actual.a2, expected.a2));

  const double freq = *between(0, 24000);
  RC_ASSERT(std::abs(actual.responseDB(freq, rate) - reference::responseDB(expected, freq, rate)) <=
            1e-9);

  const Samples x = *anyBuffer(300);
  Samples actualOut, expectedOut;
  for (const float sample : x) {
    actualOut.push_back(actual.process(sample));
    expectedOut.push_back(expected.process(sample));
  }
  require(sameBits(actualOut, expectedOut));
}

RC_GTEST_PROP(PairedBiquadLaw, TakesUpASectionAndGivesWhatItGives, ()) {
  Biquad section =
      design(*rc::gen::inRange(0, 4), *between(20, 23000), *between(-15, 15), *between(0.2, 8));
  for (const float sample : *anyBuffer(5))
    static_cast<void>(section.process(sample));
  PairedBiquad paired(section);
  const Samples x = *anyBuffer(300);
  for (std::size_t i = 0; i + 1 < x.size(); i += 2) {
    const float first = section.process(x[i]);
    const SamplePair both = paired.process(pairAt(x, i));
    require(sameBits(widened(both[0]), widened(first)));
    require(sameBits(widened(both[1]), widened(section.process(x[i + 1]))));
  }
}

RC_GTEST_PROP(BiquadLaw, ASineComesOutAtItsResponse, ()) {
  const int kind = *rc::gen::inRange(0, 4);
  Biquad filter = design(kind, *between(300, 9000), *between(-12, 12), *between(0.5, 3));
  const double freq = 100 * *rc::gen::inRange(5, 100);
  const double designedDB = filter.responseDB(freq, rate);
  RC_PRE(designedDB > -40);
  Samples out = sine(freq, 0.5, 9600);
  for (float& sample : out)
    sample = filter.process(sample);
  // The second half, settled, holds whole periods.
  const Samples settled(out.end() - 4800, out.end());
  RC_ASSERT(std::abs(Measure::rmsDB(settled) - (20 * std::log10(0.5) - 10 * std::log10(2.0)) -
                     designedDB) < 1e-3);
}

// Measure

TEST(Measure, RmsOfKnownBuffers) {
  EXPECT_EQ(Measure::rmsDB({}), -infinity);
  EXPECT_NEAR(Measure::rmsDB(Samples(100)), -240, 1e-12);
  EXPECT_EQ(Measure::rmsDB(square(1, 100)), 0);
  EXPECT_NEAR(Measure::rmsDB(square(0.5f, 100)), -6.020599913279624, 1e-12);
  // A full-scale sine over whole periods: 1 / sqrt 2.
  EXPECT_NEAR(Measure::rmsDB(sine(1000, 1, 4800)), -3.010299956639812, 1e-6);
  // One full-scale sample in a thousand: -10 log10(1000).
  Samples impulse(1000);
  impulse[3] = -1;
  EXPECT_NEAR(Measure::rmsDB(impulse), -30, 1e-12);
  // Below the floor of 1e-12.
  EXPECT_NEAR(Measure::rmsDB(Samples(10, 1e-13f)), -240, 1e-12);
  EXPECT_NEAR(Measure::rmsDB(Samples(10, 1e-11f)), -220, 1e-5);
}

TEST(Measure, RmsSumsInDoubles) {
  // 2^24 + 1 is no float: a sum in floats would lose every one of the small samples.
  Samples x(1025, 1);
  x[0] = 4096; // 2^24
  EXPECT_NEAR(Measure::rmsDB(x), 10 * std::log10((16777216.0 + 1024) / 1025), 1e-12);
}

TEST(Measure, PeakOfKnownBuffers) {
  EXPECT_EQ(Measure::peakDB({}), -240);
  EXPECT_EQ(Measure::peakDB(Samples(10)), -240);
  EXPECT_NEAR(Measure::peakDB(Samples(10, 1e-13f)), -240, 1e-12);
  EXPECT_EQ(Measure::peakDB(Samples{0.25f, -1, 0.5f}), 0);
  EXPECT_NEAR(Measure::peakDB(Samples{0.25f, -0.5f, 0.1f}), -6.020599913279624, 1e-12);
  EXPECT_NEAR(Measure::peakDB(Samples{2}), 6.020599913279624, 1e-12);
}

TEST(Measure, NormalizeScalesToTheTarget) {
  EXPECT_TRUE(Measure::normalizeRMS({}, -20).empty());
  EXPECT_TRUE(sameBits(Measure::normalizeRMS(Samples(7), -20), Samples(7)));
  EXPECT_TRUE(sameBits(Measure::normalizeRMS(square(0.5f, 8), 0), square(1, 8)));
  EXPECT_NEAR(Measure::rmsDB(Measure::normalizeRMS(sine(440, 0.3, 5000), -20)), -20, 1e-5);
}

TEST(Measure, NormalizeRoundsTheGainToAFloatFirst) {
  Samples x = square(1, 1000);
  for (std::size_t i = 0; i < 100; ++i)
    x[i] = 0.7f + 0.001f * static_cast<float>(i);
  const double gain = std::pow(10.0, (-20 - Measure::rmsDB(x)) / 20);
  const Samples normalized = Measure::normalizeRMS(x, -20);
  int otherInDoubles = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    EXPECT_EQ(normalized[i], x[i] * static_cast<float>(gain)) << i;
    if (normalized[i] != static_cast<float>(static_cast<double>(x[i]) * gain))
      ++otherInDoubles;
  }
  EXPECT_GT(otherInDoubles, 0);
}

TEST(Measure, LevelsOfHugeAndInfiniteSamplesAreTheModels) {
  const float infinite = std::numeric_limits<float>::infinity();
  const float huge = std::numeric_limits<float>::max();
  const float tiny = std::numeric_limits<float>::denorm_min();
  const std::vector<Samples> buffers{{0.5f, infinite, -0.25f},
                                     {-infinite},
                                     {infinite, -infinite},
                                     {huge, -huge},
                                     {huge, tiny},
                                     {tiny, -tiny}};
  for (const Samples& x : buffers) {
    EXPECT_TRUE(sameBits(Measure::rmsDB(x), reference::rmsDB(x))) << x[0];
    EXPECT_TRUE(sameBits(Measure::peakDB(x), reference::peakDB(x))) << x[0];
    for (const double target : {-20.0, 0.0, 700.0})
      EXPECT_TRUE(sameBits(Measure::normalizeRMS(x, target), reference::normalizeRMS(x, target)))
          << x[0] << " " << target;
  }
}

// A buffer that has no level is left alone: a gain computed from one would turn it into zeros and
// NaN.
TEST(Measure, NormalizeLeavesABufferWithoutALevelAlone) {
  const float infinite = std::numeric_limits<float>::infinity();
  const float noNumber = std::numeric_limits<float>::quiet_NaN();
  for (const Samples& x : {Samples{0.5f, infinite}, Samples{-infinite, 1.0f, 0.0f},
                           Samples{0.5f, noNumber, -0.25f}, Samples{noNumber, infinite}})
    EXPECT_TRUE(sameBits(Measure::normalizeRMS(x, -20), x)) << x[0] << " " << x[1];
}

TEST(Measure, MagnitudeOfASineIsHalfItsAmplitude) {
  for (const double freq : {125.0, 1000.0, 3150.0, 12500.0})
    EXPECT_NEAR(Measure::magnitudeAt(sine(freq, 0.8, 48000), freq, rate), 0.4, 1e-4) << freq;
}

TEST(Measure, MagnitudeAtZeroIsTheMeanOfTheWindow) {
  // A Hann window over n samples that reaches 0 at both ends sums to (n - 1) / 2.
  for (const std::size_t n : {3u, 5u, 100u, 4801u}) {
    const double size = static_cast<double>(n);
    EXPECT_NEAR(Measure::magnitudeAt(Samples(n, 1), 0, rate), (size - 1) / size, 1e-12) << n;
  }
}

TEST(Measure, MagnitudeIgnoresOtherFrequencies) {
  EXPECT_LT(Measure::magnitudeAt(sine(1000, 1, 48000), 1250, rate), 1e-6);
}

TEST(Measure, MagnitudeOfNothingIsZero) {
  EXPECT_EQ(Measure::magnitudeAt({}, 1000, rate), 0);
}

RC_GTEST_PROP(MeasureLaw, LevelsAreTheModelsToTheLastBit, ()) {
  const Samples x = *anyBuffer(3000);
  require(sameBits(Measure::rmsDB(x), reference::rmsDB(x)));
  require(sameBits(Measure::peakDB(x), reference::peakDB(x)));
  const double target = *between(-60, 6);
  require(sameBits(Measure::normalizeRMS(x, target), reference::normalizeRMS(x, target)));
}

RC_GTEST_PROP(MeasureLaw, PairsAreMeasuredAsOneSampleAfterTheOther, ()) {
  const Samples x = *anyBuffer(300);
  Measure::RunningRMS rms;
  for (std::size_t i = 0; i + 1 < x.size(); i += 2)
    rms.add(pairAt(x, i));
  if (x.size() % 2 == 1)
    rms.add(x.back());
  require(sameBits(rms.levelDB(x.size()), Measure::rmsDB(x)));
}

RC_GTEST_PROP(MeasureLaw, MagnitudesAreTheModels, ()) {
  Samples x = *anyBuffer(1000);
  RC_PRE(x.size() != 1);
  const double freq = *between(0, 24000);
  RC_ASSERT(std::abs(Measure::magnitudeAt(x, freq, rate) - reference::magnitudeAt(x, freq, rate)) <=
            1e-12);
}

RC_GTEST_PROP(MeasureLaw, ALevelFollowsItsScale, ()) {
  const Samples x = *anyBuffer(1000);
  RC_PRE(Measure::rmsDB(x) > -150);
  Samples half = x;
  for (float& sample : half)
    sample *= 0.5f;
  const double stepDB = 6.020599913279624;
  RC_ASSERT(std::abs(Measure::rmsDB(x) - Measure::rmsDB(half) - stepDB) < 1e-9);
  RC_ASSERT(std::abs(Measure::peakDB(x) - Measure::peakDB(half) - stepDB) < 1e-9);
}

} // namespace
} // namespace velto
