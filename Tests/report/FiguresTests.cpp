// The drawings and what they say in words.
#include "BandMap.h"
#include "DifficultyPlot.h"
#include "ErrorPlot.h"
#include "HitCurvePlot.h"

#include "ReportRecords.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

using testing::practised;
using testing::reported;

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
    ++count;
  return count;
}

DrillReport answered(const std::vector<std::pair<Calendar::Day, double>>& answers) {
  DrillReport report;
  for (const auto& [day, difficulty] : answers)
    report.answers.push_back({.day = day, .difficulty = difficulty, .hit = true});
  return report;
}

TEST(DifficultyPlot, HasAPointForEachAnswerOfFewDays) {
  const Figure figure = DifficultyPlot::of(answered({{1, 20}, {1, 32}, {2, 8}, {4, 44}}));
  EXPECT_EQ(figure.caption, "Difficulty over 4\u00A0answers on 3\u00A0days: from 20 to 44, lowest "
                            "8, highest 44.");
  EXPECT_EQ(countOf(figure.drawing, "class=\"day\""), 2U);
  EXPECT_EQ(countOf(figure.drawing, "class=\"course\""), 1U);
}

TEST(DifficultyPlot, HasAPointForEachOfManyDays) {
  const Figure figure =
      DifficultyPlot::of(answered({{1, 20}, {1, 30}, {1, 70}, {2, 8}, {3, 9}, {4, 9}, {365, 10}}));
  EXPECT_EQ(countOf(figure.drawing, "class=\"range\""), 5U);
  EXPECT_NE(figure.drawing.find(">1970-01-02<"), std::string::npos);
  EXPECT_NE(figure.drawing.find(">1971-01-01<"), std::string::npos);
  EXPECT_NE(figure.caption.find("each day's median"), std::string::npos);
}

TEST(DifficultyPlot, DrawsASingleAnswerAsADot) {
  EXPECT_EQ(countOf(DifficultyPlot::of(answered({{1, 20}})).drawing, "class=\"dot\""), 1U);
  EXPECT_EQ(DifficultyPlot::of(answered({})).drawing, "");
}

ThresholdFit fitOf(double threshold, std::optional<double> lower, std::optional<double> upper,
                   double guessRate = 0) {
  ThresholdFit fit;
  fit.threshold = threshold;
  fit.lower = lower;
  fit.upper = upper;
  fit.width = 20;
  fit.guessRate = guessRate;
  return fit;
}

DrillReport fitted(const ThresholdFit& fit) {
  DrillReport report = answered({{1, 20}, {1, 25}, {1, 32}, {2, 100}});
  report.newest = 3; // the first is too old
  report.answers[1].hit = false;
  NewestAnswers newest;
  newest.answers = 3;
  newest.threshold = fit;
  report.analysis.newest = newest;
  return report;
}

TEST(HitCurvePlot, SaysWhereHalfIsHeard) {
  const Figure figure = HitCurvePlot::of(fitted(fitOf(40, 30.4, 51.6, 0.074)));
  EXPECT_EQ(figure.caption,
            "On average over 3\u00A0answers you heard it half of the time at difficulty 40 (95 % "
            "interval: 30 to 52), which is a "
            "boost of 8.4\u00A0dB with Q 3.2. Without listening, the best fixed answer hits "
            "7\u00A0%.");
  EXPECT_NE(figure.drawing.find("At difficulty 20 to 30: 0 of 1 hit. At difficulty 30 to 40: 1 of "
                                "1 hit. At difficulty 90 to 100: 1 of 1 hit."),
            std::string::npos)
      << figure.drawing;
  EXPECT_EQ(countOf(figure.drawing, "class=\"answers\""), 3U);
  EXPECT_EQ(countOf(figure.drawing, "class=\"threshold\""), 1U);
  EXPECT_EQ(countOf(figure.drawing, "class=\"guess\""), 1U);
}

TEST(HitCurvePlot, LeavesOpenWhatTheAnswersDoNotBound) {
  const Figure below = HitCurvePlot::of(fitted(fitOf(20, std::nullopt, 45)));
  EXPECT_NE(below.caption.find("(95 % interval: below 45)"), std::string::npos);
  const Figure open = HitCurvePlot::of(fitted(fitOf(120, std::nullopt, std::nullopt)));
  EXPECT_TRUE(open.caption.find("half of the time at difficulty above 100, but they bound it on "
                                "neither side.") != std::string::npos)
      << open.caption;
  EXPECT_EQ(countOf(open.drawing, "class=\"threshold\""), 0U);
  EXPECT_EQ(HitCurvePlot::of({}).drawing, "");
}

TEST(ErrorPlot, ComparesWithNotListening) {
  DrillReport report;
  report.analysis.drill = Drill::level;
  NewestAnswers newest;
  newest.error = ErrorSize{.mean = 0.42, .interval = Interval{0.4, 0.5}, .blindMean = 0.9};
  report.analysis.newest = newest;
  EXPECT_EQ(ErrorPlot::of(report).caption,
            "Your mean error is 0.42 dB (95 % interval: 0.40 to 0.50). Without listening, the best "
            "fixed answers have 0.90 dB: you hear the difference.");
  report.analysis.newest->error->blindMean = 0.5;
  EXPECT_TRUE(ErrorPlot::of(report).caption.ends_with("these answers do not prove that you hear "
                                                      "the difference."));
  report.analysis.newest->error->interval = std::nullopt;
  EXPECT_EQ(countOf(ErrorPlot::of(report).drawing, "class=\"interval\""), 0U);
  EXPECT_EQ(ErrorPlot::of({}).drawing, "");
}

TEST(BandMap, ShowsEveryBandWithItsCount) {
  std::vector<BandAnalysis> bands(27);
  for (std::size_t i = 0; i < bands.size(); ++i)
    bands[i].index = static_cast<std::int64_t>(i);
  EXPECT_EQ(BandMap::of(bands).drawing, "");
  bands[3].answers = 2; // too few to be named
  bands[3].meanErrorOct = 2;
  bands[19].answers = 12;
  bands[19].meanErrorOct = 0.6;
  bands[19].meanError = Interval{0.4, 0.8};
  const Figure figure = BandMap::of(bands);
  EXPECT_EQ(countOf(figure.drawing, "class=\"count\""), 27U);
  EXPECT_EQ(countOf(figure.drawing, "<rect "), 2U);
  EXPECT_EQ(countOf(figure.drawing, "class=\"w10\""), 1U);
  EXPECT_EQ(countOf(figure.drawing, "class=\"w5\""), 1U);
  EXPECT_EQ(countOf(figure.drawing, "class=\"whisker\""), 1U);
  EXPECT_TRUE(figure.caption.starts_with("Mean error in 2 of 27 bands. The weakest is 3.15k Hz: "
                                         "0.60 octaves over 12\u00A0answers."))
      << figure.caption;
}

// From a whole record.
TEST(Figures, AreAllThereOnceThereAreAnswers) {
  const ReportData data = reported(practised(12, 40));
  for (const DrillReport& drill : data.drills) {
    EXPECT_NE(DifficultyPlot::of(drill).drawing, "");
    const bool hasThreshold = drill.analysis.newest->threshold.has_value();
    EXPECT_EQ(HitCurvePlot::of(drill).drawing.empty(), !hasThreshold);
    EXPECT_EQ(ErrorPlot::of(drill).drawing.empty(), hasThreshold);
  }
  EXPECT_NE(BandMap::of(data.bands).drawing, "");
}

} // namespace
} // namespace velto
