#include "Attenuation.h"

#include "CoreSupport.h"
#include "Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace velto {
namespace {

using tests::sameBits;

Samples literally(std::span<const float> x, std::span<const double> reductionDB) {
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

// A million samples, so that about a hundred of them lie too near the middle between two floats
// for the quick power.
TEST(Attenuation, IsThatOfThePowerToTheLastBit) {
  constexpr std::size_t count = 1'000'000;
  for (const double most : {1.0, 30.0, 200.0}) {
    Xorshift64 generator(7);
    Samples x(count);
    std::vector<double> reductionDB(count);
    for (std::size_t i = 0; i < count; ++i) {
      x[i] = static_cast<float>(2 * generator.nextUnit() - 1);
      reductionDB[i] = most * generator.nextUnit();
    }
    EXPECT_TRUE(sameBits(attenuated(x, reductionDB), literally(x, reductionDB))) << most;
  }
}

TEST(Attenuation, OfZeroDecibelsChangesNothing) {
  const Samples x{0.0f, -0.0f, 1e-45f, -1.0f, 0.1f, std::numeric_limits<float>::max()};
  EXPECT_TRUE(sameBits(attenuated(x, std::vector<double>(x.size())), x));
}

TEST(Attenuation, TakesSamplesThatAreNoNumbers) {
  const float infinity = std::numeric_limits<float>::infinity();
  const Samples x{infinity, -infinity, std::numeric_limits<float>::quiet_NaN(), 1e-40f};
  const std::vector<double> reductionDB(x.size(), 6);
  EXPECT_TRUE(sameBits(attenuated(x, reductionDB), literally(x, reductionDB)));
}

TEST(Attenuation, TakesAnyLength) {
  for (const std::size_t count : {0U, 1U, 255U, 256U, 257U, 600U}) {
    const Samples x(count, 0.7f);
    const std::vector<double> reductionDB(count, 2.5);
    EXPECT_TRUE(sameBits(attenuated(x, reductionDB), literally(x, reductionDB))) << count;
  }
}

} // namespace
} // namespace velto
