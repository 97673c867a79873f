#include "Attenuation.h"

#include "Xorshift64.h"
#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace velto {
namespace {

using tests::sameBits;

Samples byReference(std::span<const float> x, std::span<const double> reductionDB) {
  Samples out(x.size());
  for (std::size_t i = 0; i < x.size(); ++i)
    out[i] = static_cast<float>(static_cast<double>(x[i]) * std::pow(10.0, -reductionDB[i] / 20));
  return out;
}

Samples attenuated(std::span<const float> x, std::span<const double> reductionDB) {
  Samples out(x.size());
  attenuate(x, reductionDB, out);
  return out;
}

// Of a million samples, about a hundred are so near to a rounding boundary that only std::pow
// decides.
TEST(Attenuation, MatchesPowBitForBit) {
  constexpr std::size_t count = 1'000'000;
  for (const double most : {1.0, 30.0, 200.0}) {
    Xorshift64 generator(7);
    Samples x(count);
    std::vector<double> reductionDB(count);
    for (std::size_t i = 0; i < count; ++i) {
      x[i] = static_cast<float>(2 * generator.nextUnit() - 1);
      reductionDB[i] = most * generator.nextUnit();
    }
    EXPECT_TRUE(sameBits(attenuated(x, reductionDB), byReference(x, reductionDB))) << most;
  }
}

TEST(Attenuation, ZeroDecibelsLeaveSamplesUnchanged) {
  const Samples x{0.0f, -0.0f, 1e-45f, -1.0f, 0.1f, std::numeric_limits<float>::max()};
  EXPECT_TRUE(sameBits(attenuated(x, std::vector<double>(x.size())), x));
}

TEST(Attenuation, AcceptsInfinityAndNaN) {
  const float infinity = std::numeric_limits<float>::infinity();
  const Samples x{infinity, -infinity, std::numeric_limits<float>::quiet_NaN(), 1e-40f};
  const std::vector<double> reductionDB(x.size(), 6);
  EXPECT_TRUE(sameBits(attenuated(x, reductionDB), byReference(x, reductionDB)));
}

TEST(Attenuation, AcceptsHugeAndTinySamplesAndReductions) {
  const float huge = std::numeric_limits<float>::max();
  const float tiny = std::numeric_limits<float>::denorm_min();
  const float infinity = std::numeric_limits<float>::infinity();
  const Samples x{huge, -huge, 1.0f, -1.0f, 1e-30f, -1e-30f, tiny, -tiny, infinity, -infinity};
  for (double reductionDB = 0; reductionDB < 5900; reductionDB += 0.25) {
    const std::vector<double> reductions(x.size(), reductionDB);
    ASSERT_TRUE(sameBits(attenuated(x, reductions), byReference(x, reductions))) << reductionDB;
  }
}

// Reductions that bring a sample close to the midpoint of two floats, from both sides and with both
// signs. There the approximated power alone could round either way.
TEST(Attenuation, RoundsLikePowHalfwayBetweenFloats) {
  Xorshift64 generator(11);
  Samples x;
  std::vector<double> reductionDB;
  for (int i = 0; i < 20000; ++i) {
    const auto result = static_cast<float>(0.1 + 0.9 * generator.nextUnit());
    const double middle =
        (static_cast<double>(result) + static_cast<double>(std::nextafter(result, 2.0f))) / 2;
    const auto sample = static_cast<float>(1 + generator.nextUnit());
    const double off = (generator.nextUnit() - 0.5) * 1e-12;
    x.push_back(i % 2 == 0 ? sample : -sample);
    reductionDB.push_back(-20 * std::log10(middle / static_cast<double>(sample) * (1 + off)));
  }
  EXPECT_TRUE(sameBits(attenuated(x, reductionDB), byReference(x, reductionDB)));
}

TEST(Attenuation, AcceptsAnyLength) {
  for (const std::size_t count : {0U, 1U, 255U, 256U, 257U, 600U}) {
    Samples x(count);
    std::vector<double> reductionDB(count);
    for (std::size_t i = 0; i < count; ++i) {
      x[i] = 0.7f + 1e-4f * static_cast<float>(i);
      reductionDB[i] = 2.5 + 0.01 * static_cast<double>(i);
    }
    EXPECT_TRUE(sameBits(attenuated(x, reductionDB), byReference(x, reductionDB))) << count;
  }
}

// Every sample of a block needs the exact power.
TEST(Attenuation, FallsBackToPowAnywhereInABlock) {
  const float sample = 1.25f;
  const float result = 0.5f;
  const double middle =
      (static_cast<double>(result) + static_cast<double>(std::nextafter(result, 2.0f))) / 2;
  const double toMiddleDB = -20 * std::log10(middle / static_cast<double>(sample));
  for (const double offDB : {-2e-13, 0.0, 2e-13}) {
    const Samples x(600, sample);
    const std::vector<double> reductionDB(x.size(), toMiddleDB + offDB);
    EXPECT_TRUE(sameBits(attenuated(x, reductionDB), byReference(x, reductionDB))) << offDB;
  }
}

} // namespace
} // namespace velto
