#include "ErrorPlot.h"

#include "Phrases.h"
#include "Plot.h"

#include <algorithm>

namespace velto {

namespace {

constexpr double plotHeight = 110;

std::string draw(Drill drill, const ErrorSize& error, const std::string& caption) {
  const std::string name(drill.rawValue());
  const double most =
      std::max({error.mean, error.blindMean, error.interval ? error.interval->upper : 0.0, 0.1});
  const std::vector<PlotTick> ticks = evenTicks(0, most * 1.15, 5);
  Plot plot("Size of the errors, " + name, caption, plotHeight,
            {.lowest = 0, .highest = most * 1.15, .label = "mean error (dB)", .ticks = ticks},
            {.lowest = 0, .highest = 1, .label = {}, .ticks = {}});
  const double yours = plot.y(0.62), theirs = plot.y(0.12);
  if (error.interval)
    plot.rect("interval", plot.x(error.interval->lower), yours - 6,
              plot.x(error.interval->upper) - plot.x(error.interval->lower), 12,
              "95 % interval: " + Phrases::decibels(error.interval->lower) + " to " +
                  Phrases::decibels(error.interval->upper) + " dB");
  plot.circle("yours", plot.x(error.mean), yours, 4,
              "you: " + Phrases::decibels(error.mean) + " dB");
  plot.circle("theirs", plot.x(error.blindMean), theirs, 4,
              "without listening: " + Phrases::decibels(error.blindMean) + " dB");
  // The names stand above their marks, at the side where there is room.
  const auto nameAbove = [&plot](double x, double y, const std::string& text) {
    const bool isLeft = x < (plot.left() + plot.right()) / 2;
    plot.label("name", isLeft ? std::max(x - 4, plot.left()) : x + 4, y - 11,
               isLeft ? "start" : "end", text);
  };
  nameAbove(plot.x(error.mean), yours, "you " + Phrases::decibels(error.mean));
  nameAbove(plot.x(error.blindMean), theirs,
            "without listening " + Phrases::decibels(error.blindMean));
  return plot.finish();
}

} // namespace

Figure ErrorPlot::of(const DrillReport& report) {
  const auto& newest = report.analysis.newest;
  if (!newest || !newest->error)
    return {.drawing = {}, .caption = "No answers yet."};
  const ErrorSize& error = *newest->error;
  std::string caption = "Your mean error is " + Phrases::decibels(error.mean) + " dB";
  if (error.interval)
    caption += " (95 % interval: " + Phrases::decibels(error.interval->lower) + " to " +
               Phrases::decibels(error.interval->upper) + ")";
  caption += ". Without listening, the best fixed answers have " +
             Phrases::decibels(error.blindMean) + " dB: ";
  if (error.showsHearing())
    caption += "you hear the difference.";
  else
    caption += "these answers do not prove that you hear the difference.";
  return {.drawing = draw(report.analysis.drill, error, caption), .caption = caption};
}

} // namespace velto
