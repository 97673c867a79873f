#include "Signals.h"

#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <limits>

namespace velto {
namespace {

using namespace tests;

constexpr double infinity = std::numeric_limits<double>::infinity();

// Durations

TEST(FrameCount, TruncatesDurationTimesSampleRate) {
  EXPECT_EQ(Signals::frameCount(0), 0u);
  EXPECT_EQ(Signals::frameCount(-0.0), 0u);
  EXPECT_EQ(Signals::frameCount(3.2), 153600u);
  EXPECT_EQ(Signals::frameCount(1), 48000u);
  EXPECT_EQ(Signals::frameCount(0.8999999999999999), 43199u);
  EXPECT_EQ(Signals::frameCount(2.9 / 48000), 2u);
}

TEST(FrameCountDeathTest, DiesIfTheDurationIsNegativeOrNotFinite) {
  const char* message = "Velto: a ";
  for (const double seconds :
       {-1.0, -1e-300, infinity, -infinity, std::numeric_limits<double>::quiet_NaN(), 1e300})
    EXPECT_DEATH((void)Signals::frameCount(seconds), message) << seconds;
}

TEST(SignalsDeathTest, EveryMaterialDiesIfTheDurationIsNegative) {
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

RC_GTEST_PROP(SignalsLaw, DrumsMatchTheModelForUpToFiveSeconds, ()) {
  const double seconds = *between(0, 5);
  const std::uint64_t seed = *anySeed();
  require(sameBits(Signals::drums(seconds, seed), reference::drums(seconds, seed)));
}

TEST(Signals, MaterialsMatchTheModelForTheLengthOfATrial) {
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
