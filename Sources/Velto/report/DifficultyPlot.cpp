#include "DifficultyPlot.h"

#include "Phrases.h"
#include "Plot.h"

#include <algorithm>
#include <map>

namespace velto {

namespace {

constexpr double plotHeight = 150;

PlotAxis difficultyAxis() {
  return {
      .lowest = 0, .highest = 100, .label = "difficulty (0 to 100)", .ticks = evenTicks(0, 100, 4)};
}

// Difficulties by day.
std::map<Calendar::Day, std::vector<double>> byDay(const DrillReport& report) {
  std::map<Calendar::Day, std::vector<double>> days;
  for (const ReportAnswer& answer : report.answers)
    if (answer.day)
      days[*answer.day].push_back(answer.difficulty);
  return days;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// First, last and two or three days between.
std::vector<PlotTick> dateTicks(Calendar::Day first, Calendar::Day last) {
  constexpr Calendar::Day parts = 3;
  std::vector<PlotTick> ticks;
  for (Calendar::Day i = 0; i <= parts; ++i) {
    const Calendar::Day day = first + (last - first) * i / parts;
    ticks.push_back({.value = static_cast<double>(day), .label = Phrases::date(day)});
  }
  return ticks;
}

std::string drawDays(const std::string& title, const std::string& caption,
                     const std::map<Calendar::Day, std::vector<double>>& days) {
  const Calendar::Day first = days.begin()->first, last = days.rbegin()->first;
  // A margin of 4 % keeps the outer dates within the drawing.
  const double gap = static_cast<double>(last - first) * 0.08;
  Plot plot(title, caption, plotHeight,
            {.lowest = static_cast<double>(first) - gap,
             .highest = static_cast<double>(last) + gap,
             .label = "date",
             .ticks = dateTicks(first, last)},
            difficultyAxis());
  std::vector<Plot::Point> medians;
  for (const auto& [day, difficulties] : days) {
    const auto [low, high] = std::minmax_element(difficulties.begin(), difficulties.end());
    const double x = plot.x(static_cast<double>(day));
    plot.line("range", x, plot.y(*low), x, plot.y(*high));
    medians.push_back({.x = x, .y = plot.y(median(difficulties))});
  }
  plot.polyline("course", medians);
  return plot.finish();
}

std::string drawAnswers(const std::string& title, const std::string& caption,
                        const DrillReport& report) {
  const auto count = static_cast<double>(report.answers.size());
  Plot plot(title, caption, plotHeight,
            {.lowest = 1,
             .highest = std::max(count, 2.0),
             .label = "answer, oldest first; a line begins a day",
             .ticks = evenTicks(1, std::max(count, 2.0), 5)},
            difficultyAxis());
  std::vector<Plot::Point> points;
  std::optional<Calendar::Day> before;
  double number = 0;
  for (const ReportAnswer& answer : report.answers) {
    const double x = plot.x(++number);
    if (before && answer.day && *answer.day != *before)
      plot.line("day", x, plot.top(), x, plot.bottom());
    if (answer.day)
      before = answer.day;
    points.push_back({.x = x, .y = plot.y(answer.difficulty)});
  }
  if (points.size() == 1)
    plot.circle("dot", points.front().x, points.front().y, 3, {});
  else
    plot.polyline("course", points);
  return plot.finish();
}

} // namespace

Figure DifficultyPlot::of(const DrillReport& report) {
  const std::vector<ReportAnswer>& answers = report.answers;
  if (answers.empty())
    return {.drawing = {}, .caption = "No answers yet."};
  const auto days = byDay(report);
  const bool hasDates = days.size() >= daysForDates;
  const auto [low, high] =
      std::minmax_element(answers.begin(), answers.end(),
                          [](const auto& a, const auto& b) { return a.difficulty < b.difficulty; });
  std::string caption =
      "Difficulty over " + Phrases::counted(static_cast<std::int64_t>(answers.size()), "answer");
  if (!days.empty())
    caption += " on " + Phrases::counted(static_cast<std::int64_t>(days.size()), "day");
  caption += ": from " + Phrases::points(answers.front().difficulty) + " to " +
             Phrases::points(answers.back().difficulty) + ", lowest " +
             Phrases::points(low->difficulty) + ", highest " + Phrases::points(high->difficulty) +
             ".";
  if (hasDates)
    caption += " The line is each day's median, the bars reach from its lowest to its highest.";
  const std::string name(report.analysis.drill.rawValue());
  const std::string title = "Difficulty over time, " + name;
  return {.drawing =
              hasDates ? drawDays(title, caption, days) : drawAnswers(title, caption, report),
          .caption = caption};
}

} // namespace velto
