#include "ApproximateLevel.h"

#include "Xorshift64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velto {
namespace {

double errorDB(double amplitude) {
  return std::abs(approximateLevelDB(amplitude) - 20 * std::log10(amplitude));
}

TEST(ApproximateLevel, StaysWithinItsErrorForAnyAmplitude) {
  Xorshift64 generator(3);
  double largest = 0;
  for (int i = 0; i < 1'000'000; ++i)
    largest = std::max(largest, errorDB(std::exp2(400 * generator.nextUnit() - 200)));
  EXPECT_LT(largest, approximateLevelErrorDB);
}

// Where one interval of the table ends and the next begins the approximation is at its worst.
TEST(ApproximateLevel, StaysWithinItsErrorAtTheEndsOfTheIntervals) {
  for (int i = 0; i <= 256; ++i)
    for (const double octave : {1e-9, 0.25, 1.0, 1e38}) {
      const double end = octave * (1 + i / 256.0);
      EXPECT_LT(errorDB(end), approximateLevelErrorDB) << end;
      EXPECT_LT(errorDB(std::nextafter(end, 0.0)), approximateLevelErrorDB) << end;
    }
  EXPECT_LT(errorDB(std::numeric_limits<double>::min()), approximateLevelErrorDB);
  EXPECT_LT(errorDB(std::numeric_limits<double>::max()), approximateLevelErrorDB);
}

} // namespace
} // namespace velto
