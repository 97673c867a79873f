#include "Bands.h"
#include "Progress.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace velto;

namespace {

BandStat band(std::int64_t index, std::int64_t attempts, double meanErrorOct) {
  return {.index = index, .attempts = attempts, .hits = 0, .meanErrorOct = meanErrorOct};
}

Progress::Bar barOf(std::int64_t attempts, double meanErrorOct) {
  return Progress::bar(band(3, attempts, meanErrorOct));
}

} // namespace

TEST(ProgressFigures, ShowADashForNone) {
  EXPECT_EQ(Progress::streak(0), "—");
  EXPECT_EQ(Progress::accuracy(std::nullopt), "—");
}

TEST(ProgressFigures, CountDaysAndPercent) {
  EXPECT_EQ(Progress::streak(5), "5d");
  EXPECT_EQ(Progress::streak(1), "1d");
  EXPECT_EQ(Progress::accuracy(0.85), "85%");
  EXPECT_EQ(Progress::accuracy(0), "0%");
  EXPECT_EQ(Progress::accuracy(1), "100%");
  EXPECT_EQ(Progress::accuracy(2.0 / 3), "67%");
}

TEST(ProgressFigures, AreSpokenWithTheirNames) {
  EXPECT_EQ(Progress::spokenStreak(0), "Streak, none");
  EXPECT_EQ(Progress::spokenStreak(1), "Streak, 1 day");
  EXPECT_EQ(Progress::spokenStreak(2), "Streak, 2 days");
  EXPECT_EQ(Progress::spokenToday(0), "Today, 0 answers");
  EXPECT_EQ(Progress::spokenToday(1), "Today, 1 answer");
  EXPECT_EQ(Progress::spokenToday(12), "Today, 12 answers");
  EXPECT_EQ(Progress::spokenAccuracy(std::nullopt), "Accuracy, none");
  EXPECT_EQ(Progress::spokenAccuracy(2.0 / 3), "Accuracy, 67 percent");
}

TEST(ProgressTitles, NameTheDrillInLowerCase) {
  EXPECT_EQ(Progress::curveTitle(Drill::frequency), "progress · frequency");
  EXPECT_EQ(Progress::curveTitle(Drill::polarity), "progress · polarity");
}

TEST(ProgressWeakest, NamesTheBandItsErrorAndItsCount) {
  EXPECT_EQ(Progress::weakest(band(19, 7, 0.42)),
            "weakest · 3.15k Hz — 0.42 oct mean error over 7");
  EXPECT_EQ(Progress::weakest(band(9, 12, 1.254)),
            "weakest · 315 Hz — 1.25 oct mean error over 12");
}

TEST(ProgressWeakest, StatesWhatIsNeededWithoutOne) {
  EXPECT_EQ(Progress::weakest(std::nullopt),
            "needs 3 answers in a band before it names a weak spot");
}

TEST(ProgressBars, AreLowWithoutAnswers) {
  EXPECT_EQ(barOf(0, 0), (Progress::Bar{6, std::nullopt}));
}

TEST(ProgressBars, GrowWithTheMeanErrorUpToTheirLimit) {
  EXPECT_EQ(barOf(1, 0), (Progress::Bar{12, 0.0}));
  EXPECT_EQ(barOf(1, 0.6), (Progress::Bar{23, 0.5}));
  EXPECT_EQ(barOf(1, 1.2), (Progress::Bar{34, 1.0}));
  EXPECT_EQ(barOf(1, 5), (Progress::Bar{34, 1.0}));
  EXPECT_EQ(barOf(1, std::numeric_limits<double>::infinity()), (Progress::Bar{34, 1.0}));
  EXPECT_EQ(barOf(1, std::numeric_limits<double>::quiet_NaN()), (Progress::Bar{34, 1.0}));
  EXPECT_EQ(barOf(1, -0.3), (Progress::Bar{12, 0.0}));
}

TEST(ProgressBars, LabelFiveBands) {
  std::vector<std::string> labels;
  for (const std::size_t index : Progress::labelledBands)
    labels.push_back(Bands::label(Bands::centres[index]));
  EXPECT_EQ(labels, (std::vector<std::string>{"40", "250", "1k", "4k", "16k"}));
}

TEST(ProgressWords, DescribeTheMapBandByBand) {
  std::vector<BandStat> bands(27);
  for (std::size_t i = 0; i < bands.size(); ++i)
    bands[i].index = static_cast<std::int64_t>(i);
  EXPECT_EQ(Progress::mapDescription({}), "no answers yet");
  EXPECT_EQ(Progress::mapDescription(bands), "no answers yet");
  bands[0].attempts = 7;
  bands[0].meanErrorOct = 0.42;
  bands[19].attempts = 1;
  EXPECT_EQ(Progress::mapDescription(bands), "40 Hz 0.42 oct over 7, 3.15 kHz 0.00 oct over 1");
}

TEST(ProgressWords, DescribeTheCurveByItsEndsAndExtremes) {
  EXPECT_EQ(Progress::curveDescription({}), "too few answers for a curve");
  EXPECT_EQ(Progress::curveDescription(std::vector{20.0}), "too few answers for a curve");
  EXPECT_EQ(Progress::curveDescription(std::vector{20.0, 14.0, 26.4, 23.4}),
            "difficulty over 4 answers: from 20 to 23, lowest 14, highest 26");
}

TEST(ProgressCurve, NeedsTwoPoints) {
  EXPECT_TRUE(Progress::curve({}, 320, 64).empty());
  EXPECT_TRUE(Progress::curve(std::vector{50.0}, 320, 64).empty());
}

TEST(ProgressCurve, RunsFromEdgeToEdgeWithTheHardestOnTop) {
  const auto points = Progress::curve(std::vector{0.0, 100.0, 25.0}, 320, 64);
  EXPECT_EQ(points, (std::vector<Progress::CurvePoint>{{0, 64}, {160, 0}, {320, 48}}));
}

// Clipping does not move the part of the line within the picture.
TEST(ProgressCurve, IsClippedFarOutsideThePicture) {
  const auto points = Progress::curve(std::vector{50.0, 1e6, 50.0, -1e300, -1e300}, 400, 100);
  for (const auto& point : points) {
    EXPECT_GE(point.y, -100);
    EXPECT_LE(point.y, 200);
  }
  ASSERT_EQ(points.size(), 8U);
  EXPECT_EQ(points[0], (Progress::CurvePoint{0, 50}));
  EXPECT_NEAR(points[1].x, 100 * 150.0 / 999950, 1e-9);
  EXPECT_EQ(points[1].y, -100);
  EXPECT_EQ(points[2], (Progress::CurvePoint{100, -100}));
  EXPECT_NEAR(points[3].x, 200 - 100 * 150.0 / 999950, 1e-9);
  EXPECT_EQ(points[4], (Progress::CurvePoint{200, 50}));
  EXPECT_EQ(points[5].y, 200);
  EXPECT_EQ(points[7], (Progress::CurvePoint{400, 200}));
}

RC_GTEST_PROP(ProgressCurveLaws, PointsAreEvenlySpaced, ()) {
  const auto count = *rc::gen::inRange<std::size_t>(2, 61);
  const auto points = Progress::curve(std::vector<double>(count, 20.0), 320, 64);
  RC_ASSERT(points.size() == count);
  RC_ASSERT(points.front().x == 0);
  RC_ASSERT(points.back().x == 320);
  for (std::size_t i = 1; i < count; ++i) {
    const double step = points[i].x - points[i - 1].x;
    RC_ASSERT(std::abs(step - 320 / static_cast<double>(count - 1)) < 1e-9);
  }
}
