#include "Plot.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <string>

namespace velto {
namespace {

std::string labels(double lowest, double highest, int most) {
  std::string text;
  for (const PlotTick& tick : evenTicks(lowest, highest, most))
    text += (text.empty() ? "" : " ") + tick.label;
  return text;
}

TEST(Plot, PutsTicksAtRoundNumbers) {
  EXPECT_EQ(labels(0, 100, 4), "0 50 100");
  EXPECT_EQ(labels(0, 100, 5), "0 20 40 60 80 100");
  EXPECT_EQ(labels(0, 1.5, 4), "0.0 0.5 1.0 1.5");
  EXPECT_EQ(labels(0, 0.8, 5), "0.0 0.2 0.4 0.6 0.8");
  EXPECT_EQ(labels(0, 0.12, 5), "0.00 0.05 0.10");
  EXPECT_EQ(labels(1, 2, 5), "1.0 1.2 1.4 1.6 1.8 2.0");
  EXPECT_EQ(labels(1, 160, 5), "50 100 150");
  EXPECT_EQ(labels(1, 5000, 5), "1000 2000 3000 4000 5000");
}

RC_GTEST_PROP(PlotLaw, TicksAreFewAndWithinTheAxis, ()) {
  const double lowest = *rc::gen::inRange(0, 1000) / 10.0;
  const double highest = lowest + *rc::gen::inRange(1, 100000) / 100.0;
  const int most = *rc::gen::inRange(3, 8);
  const auto ticks = evenTicks(lowest, highest, most);
  RC_ASSERT(ticks.size() >= 1U);
  RC_ASSERT(ticks.size() <= static_cast<std::size_t>(most) + 1);
  for (const PlotTick& tick : ticks) {
    RC_ASSERT(tick.value >= lowest - 1e-9);
    RC_ASSERT(tick.value <= highest + 1e-6);
    RC_ASSERT(std::abs(std::stod(tick.label) - tick.value) < 1e-6 * std::abs(tick.value) + 1e-9);
  }
}

Plot plot() {
  return {"A <title>",
          "What it shows",
          100,
          {.lowest = 0, .highest = 10, .label = "time (s)", .ticks = evenTicks(0, 10, 2)},
          {.lowest = -1, .highest = 1, .label = "level (dB)", .ticks = evenTicks(-1, 1, 2)}};
}

TEST(Plot, MapsValuesToPositions) {
  const Plot one = plot();
  EXPECT_EQ(one.x(0), one.left());
  EXPECT_EQ(one.x(10), one.right());
  EXPECT_EQ(one.y(-1), one.bottom());
  EXPECT_EQ(one.y(1), one.top());
  EXPECT_EQ(one.x(5), (one.left() + one.right()) / 2);
  // Beyond the axes, values stay at their ends.
  EXPECT_EQ(one.x(1e300), one.right());
  EXPECT_EQ(one.y(-1e300), one.bottom());
}

TEST(Plot, SaysWhatItIs) {
  const std::string drawing = plot().finish();
  EXPECT_TRUE(drawing.starts_with("<svg viewBox=\"0 0 360 100\" role=\"img\" "
                                  "preserveAspectRatio=\"xMinYMid\">"
                                  "<title>A &lt;title&gt;</title><desc>What it shows</desc>"))
      << drawing;
  EXPECT_NE(drawing.find(">time (s)<"), std::string::npos);
  EXPECT_NE(drawing.find(">level (dB)<"), std::string::npos);
}

} // namespace
} // namespace velto
