#include "Signals.h"

#include "CoreSupport.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace velto {
namespace {

using namespace tests;

constexpr double infinity = std::numeric_limits<double>::infinity();

// Xorshift64

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

// Durations

TEST(FrameCount, IsTheTruncatedProduct) {
  EXPECT_EQ(Signals::frameCount(0), 0u);
  EXPECT_EQ(Signals::frameCount(-0.0), 0u);
  EXPECT_EQ(Signals::frameCount(3.2), 153600u);
  EXPECT_EQ(Signals::frameCount(1), 48000u);
  EXPECT_EQ(Signals::frameCount(0.8999999999999999), 43199u);
  EXPECT_EQ(Signals::frameCount(2.9 / 48000), 2u);
}

TEST(FrameCountDeathTest, DiesOfANegativeOrNonFiniteDuration) {
  const char* message = "Velto: a ";
  for (const double seconds :
       {-1.0, -1e-300, infinity, -infinity, std::numeric_limits<double>::quiet_NaN(), 1e300})
    EXPECT_DEATH((void)Signals::frameCount(seconds), message) << seconds;
}

TEST(SignalsDeathTest, EveryMaterialDiesOfANegativeDuration) {
  for (const Material material : Material::allCases)
    EXPECT_DEATH((void)source(material, -0.1, 1), "Velto: a duration is negative") << material;
}

// Every material

RC_GTEST_PROP(SignalsLaw, MaterialsMatchTheModelBitForBit, ()) {
  const Material material = *anyMaterial();
  const double seconds = *anyDuration();
  const std::uint64_t seed = *anySeed();
  require(sameBits(source(material, seconds, seed), referenceSource(material, seconds, seed)));
}

RC_GTEST_PROP(SignalsLaw, DrumsMatchTheModelOverWholeBars, ()) {
  const double seconds = *between(0, 5);
  const std::uint64_t seed = *anySeed();
  require(sameBits(Signals::drums(seconds, seed), reference::drums(seconds, seed)));
}

TEST(Signals, MaterialsMatchTheModelOverATrialsLength) {
  for (const Material material : Material::allCases)
    for (const std::uint64_t seed : {0ULL, 1ULL, 5150ULL, 40503ULL, ~0ULL})
      EXPECT_TRUE(sameBits(source(material, 3.2, seed), referenceSource(material, 3.2, seed)))
          << material << " " << seed;
}

RC_GTEST_PROP(StereoiseLaw, MatchesTheModelBitForBit, ()) {
  const Samples mono = *anyBuffer(2000);
  const double correlation =
      *rc::gen::oneOf(between(0, 1), between(-1, 2), rc::gen::element(0.0, 0.35, 1.0, 1.5));
  const std::uint64_t seed = *anySeed();
  const auto [left, right] = Signals::stereoise(mono, correlation, seed);
  const reference::Pair expected = reference::stereoise(mono, correlation, seed);
  require(sameBits(left, expected.l));
  require(sameBits(right, expected.r));
}

} // namespace
} // namespace velto
