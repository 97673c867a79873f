#include "DSP.h"

#include "reference/ReferenceComparison.h"

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

// Biquad

TEST(Biquad, HoldsNineDoublesAndStartsWithZeroState) {
  static_assert(sizeof(Biquad) == 9 * sizeof(double));
  const auto [b0, b1, b2, a1, a2, x1, x2, y1, y2] = Biquad::lowpass(1000, 1, rate);
  EXPECT_NE(b0 * b1 * b2 * a1 * a2, 0);
  EXPECT_EQ(x1, 0);
  EXPECT_EQ(x2, 0);
  EXPECT_EQ(y1, 0);
  EXPECT_EQ(y2, 0);
}

TEST(DSP, ConstantsAreTwoPiAnd48Kilohertz) {
  EXPECT_EQ(twoPi, 2 * std::numbers::pi);
  EXPECT_EQ(sampleRateHz, 48000.0);
}

TEST(Biquad, ResponseAndItsDenominatorAreFloored) {
  Biquad nothing;
  nothing.b0 = 0;
  EXPECT_NEAR(nothing.responseDB(1000, rate), -360, 1e-9);
  Biquad pole;
  pole.a1 = -1; // 1 / (1 - z^-1): a pole at 0 Hz
  EXPECT_NEAR(pole.responseDB(0, rate), 360, 1e-9);
}

// A filter of one of the four designs, `kind` 0 to 3.
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

RC_GTEST_PROP(BiquadLaw, MatchesTheModelBitForBit, ()) {
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

RC_GTEST_PROP(PairedBiquadLaw, MatchesTwoStepsOfTheBiquad, ()) {
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

// Measure

TEST(Measure, LevelsOfHugeAndInfiniteSamplesMatchTheModel) {
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

RC_GTEST_PROP(MeasureLaw, LevelsMatchTheModelBitForBit, ()) {
  const Samples x = *anyBuffer(3000);
  require(sameBits(Measure::rmsDB(x), reference::rmsDB(x)));
  require(sameBits(Measure::peakDB(x), reference::peakDB(x)));
  const double target = *between(-60, 6);
  require(sameBits(Measure::normalizeRMS(x, target), reference::normalizeRMS(x, target)));
}

RC_GTEST_PROP(MeasureLaw, AddingAPairEqualsAddingItsSamples, ()) {
  const Samples x = *anyBuffer(300);
  Measure::RunningRMS rms;
  for (std::size_t i = 0; i + 1 < x.size(); i += 2)
    rms.add(pairAt(x, i));
  if (x.size() % 2 == 1)
    rms.add(x.back());
  require(sameBits(rms.levelDB(x.size()), Measure::rmsDB(x)));
}

RC_GTEST_PROP(MeasureLaw, MagnitudesMatchTheModel, ()) {
  Samples x = *anyBuffer(1000);
  RC_PRE(x.size() != 1);
  const double freq = *between(0, 24000);
  RC_ASSERT(std::abs(Measure::magnitudeAt(x, freq, rate) - reference::magnitudeAt(x, freq, rate)) <=
            1e-12);
}

} // namespace
} // namespace velto
