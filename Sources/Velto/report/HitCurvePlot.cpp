#include "HitCurvePlot.h"

#include "Phrases.h"
#include "Plot.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velto {

namespace {

constexpr double plotHeight = 150;
constexpr double binWidth = 10;                           // points of difficulty
using Bins = std::array<std::array<std::int64_t, 2>, 10>; // answers and hits

Bins binsOf(const DrillReport& report) {
  Bins bins{};
  for (std::size_t i = report.answers.size() - report.newest; i < report.answers.size(); ++i) {
    const ReportAnswer& answer = report.answers[i];
    const double position = std::clamp(answer.difficulty / binWidth, 0.0, bins.size() - 1.0);
    auto& [answers, hits] = bins.at(static_cast<std::size_t>(position));
    ++answers;
    hits += answer.hit ? 1 : 0;
  }
  return bins;
}

std::string binText(std::size_t index, const Bins& bins) {
  const double lowest = binWidth * static_cast<double>(index);
  const auto [answers, hits] = bins.at(index);
  return "difficulty " + Phrases::points(lowest) + " to " + Phrases::points(lowest + binWidth) +
         ": " + std::to_string(hits) + " of " + std::to_string(answers) + " hit";
}

std::string described(const std::string& caption, const Bins& bins) {
  std::string text = caption;
  for (std::size_t i = 0; i < bins.size(); ++i)
    if (bins.at(i)[0] > 0)
      text += " At " + binText(i, bins) + ".";
  return text;
}

std::string draw(const DrillReport& report, const ThresholdFit& fit, const std::string& caption) {
  const std::string name(report.analysis.drill.rawValue());
  const Bins bins = binsOf(report);
  Plot plot("Hits at each difficulty, " + name, described(caption, bins), plotHeight,
            {.lowest = 0,
             .highest = 100,
             .label = "difficulty (0 to 100)",
             .ticks = evenTicks(0, 100, 5)},
            {.lowest = 0, .highest = 100, .label = "hits (%)", .ticks = evenTicks(0, 100, 4)});

  const double from = plot.x(fit.lower.value_or(0)), to = plot.x(fit.upper.value_or(100));
  plot.rect("interval", from, plot.top(), to - from, plot.bottom() - plot.top(),
            "95 % interval of the threshold: " + Phrases::bounds(fit));
  const double guess = plot.y(fit.guessRate * 100);
  plot.line("guess", plot.left(), guess, plot.right(), guess);
  for (std::size_t i = 0; i < bins.size(); ++i) {
    const auto [answers, hits] = bins.at(i);
    if (answers == 0)
      continue;
    const double share = static_cast<double>(hits) / static_cast<double>(answers);
    const double radius = std::min(1.5 + std::sqrt(static_cast<double>(answers)) * 0.35, 6.0);
    plot.circle("answers", plot.x(binWidth * (static_cast<double>(i) + 0.5)), plot.y(share * 100),
                radius, binText(i, bins));
  }
  std::vector<Plot::Point> curve;
  for (double difficulty = 0; difficulty <= 100; difficulty += 2)
    curve.push_back({.x = plot.x(difficulty), .y = plot.y(fit.hitRate(difficulty) * 100)});
  plot.polyline("curve", curve);
  if (fit.threshold >= 0 && fit.threshold <= 100)
    plot.line("threshold", plot.x(fit.threshold), plot.top(), plot.x(fit.threshold), plot.bottom());
  plot.label("name", plot.left() + 4, guess - 4, "start",
             "without listening " + Phrases::percent(fit.guessRate));
  return plot.finish();
}

} // namespace

Figure HitCurvePlot::of(const DrillReport& report) {
  const auto& newest = report.analysis.newest;
  if (!newest || !newest->threshold)
    return {.drawing = {}, .caption = "Too few answers for a curve."};
  const ThresholdFit& fit = *newest->threshold;
  std::string caption = "On average over " + Phrases::counted(newest->answers, "answer") +
                        " you heard it half of the time at difficulty " + Phrases::threshold(fit);
  if (fit.lower || fit.upper)
    caption += " (95 % interval: " + Phrases::bounds(fit) + ")";
  else
    caption += ", but they bound it on neither side";
  if (fit.threshold >= 0 && fit.threshold <= 100)
    caption += ", which is " + Phrases::meaning(report.analysis.drill, fit.threshold);
  caption +=
      ". Without listening, the best fixed answer hits " + Phrases::percent(fit.guessRate) + ".";
  return {.drawing = draw(report, fit, caption), .caption = caption};
}

} // namespace velto
