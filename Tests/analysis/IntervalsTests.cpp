#include "Intervals.h"

#include "SimulatedListener.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace velto {
namespace {

// Worked out by hand from Wilson's formula with z = 1.96.
TEST(Intervals, OfAShareAreWilsons) {
  const Interval half = Intervals::ofShare(5, 10);
  EXPECT_NEAR(half.lower, 0.2366, 1e-4);
  EXPECT_NEAR(half.upper, 0.7634, 1e-4);
  const Interval none = Intervals::ofShare(0, 10);
  EXPECT_EQ(none.lower, 0);
  EXPECT_NEAR(none.upper, 0.2775, 1e-4);
  const Interval all = Intervals::ofShare(12, 12);
  EXPECT_NEAR(all.lower, 0.7575, 1e-4);
  EXPECT_EQ(all.upper, 1);
}

TEST(Intervals, OfAShareBearAnyCounts) {
  EXPECT_EQ(Intervals::ofShare(0, 0), (Interval{0, 1}));
  EXPECT_EQ(Intervals::ofShare(3, -1), (Interval{0, 1}));
  EXPECT_EQ(Intervals::ofShare(20, 10), Intervals::ofShare(10, 10));
  EXPECT_EQ(Intervals::ofShare(-20, 10), Intervals::ofShare(0, 10));
}

TEST(Intervals, OfAMeanHoldIt) {
  testing::ListenerRandom random(7);
  int held = 0;
  constexpr int runs = 400;
  for (int run = 0; run < runs; ++run) {
    std::vector<double> errors(60);
    for (double& error : errors)
      error = std::abs(random.normal());
    const Interval interval = Intervals::ofMean(errors).value();
    const double truth = std::sqrt(2 / M_PI);
    held += interval.lower <= truth && truth <= interval.upper ? 1 : 0;
  }
  // 95 % of 400 with a standard deviation of 4.4; the bootstrap is a little too narrow.
  EXPECT_GE(held, 360);
  EXPECT_LE(held, 395);
}

TEST(Intervals, OfAMeanDependOnTheValuesAlone) {
  std::vector<double> values{0.1, 0.9, 0.4, 0.4, 1.3, 0.2, 0.6};
  const auto first = Intervals::ofMean(values);
  EXPECT_EQ(Intervals::ofMean(values), first);
  std::reverse(values.begin(), values.end());
  EXPECT_EQ(Intervals::ofMean(values), first);
}

TEST(Intervals, OfAMeanNeedFiveValues) {
  EXPECT_EQ(Intervals::ofMean({}), std::nullopt);
  EXPECT_EQ(Intervals::ofMean(std::vector<double>(4, 1.0)), std::nullopt);
  EXPECT_EQ(Intervals::ofMean(std::vector<double>(5, 1.0)), (Interval{1, 1}));
}

} // namespace
} // namespace velto
