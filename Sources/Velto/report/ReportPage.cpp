#include "ReportPage.h"

#include "Advice.h"
#include "BandMap.h"
#include "Bands.h"
#include "DayCalendar.h"
#include "DifficultyPlot.h"
#include "ErrorPlot.h"
#include "HitCurvePlot.h"
#include "Markup.h"
#include "Phrases.h"
#include "StyleSheet.h"

#include <algorithm>
#include <span>

namespace velto {

namespace {

// Text in which "--fair" is not broken.
void appendText(Markup& page, std::string_view text) {
  constexpr std::string_view whole = "--fair";
  for (std::size_t at = text.find(whole); at != text.npos; at = text.find(whole)) {
    page.text(text.substr(0, at)).element("code", whole);
    text.remove_prefix(at + whole.size());
  }
  page.text(text);
}

void appendFigure(Markup& page, const Figure& figure) {
  page.open("figure").raw(figure.drawing).element("figcaption", figure.caption).close();
}

std::string totals(const ReportData& data) {
  std::int64_t answers = 0;
  for (const DrillReport& report : data.drills)
    answers += report.analysis.answers;
  std::string text = Phrases::counted(answers, "answer");
  const auto days = static_cast<std::int64_t>(data.practice.days.size());
  if (days > 0)
    text += ", " + Phrases::counted(days, "day") + ", about " +
            Phrases::hours(data.practice.hours) + " hours of practice";
  if (data.streak > 0)
    text += ", a streak of " + Phrases::counted(data.streak, "day");
  return text;
}

void appendHead(Markup& page, const ReportData& data) {
  page.element("h1", "Velto practice report");
  page.open("p", {{"class", "sub"}});
  appendText(page, (data.today ? "As of " + Phrases::date(*data.today) + ": " : "") + totals(data) +
                       ". Trials are taken for those of velto " +
                       (data.seeds == SeedSource::spread ? "--fair." : "without --fair."));
  page.close();
}

void appendAdvice(Markup& page, const ReportData& data) {
  page.open("section").element("h2", "What to practise next").open("ol");
  for (const Advice& advice : Advice::from(data)) {
    page.open("li").open("strong");
    appendText(page, advice.what);
    page.close();
    appendText(page, " " + advice.why);
    page.close();
  }
  page.close().close();
}

using Cells = std::vector<std::string>;

// The first cell names the row. With `heads`, each cell says what it is, for narrow screens.
void appendRow(Markup& page, const Cells& cells, const Cells& heads = {}) {
  page.open("tr").element("th", {{"scope", "row"}}, cells.front());
  for (std::size_t i = 1; i < cells.size(); ++i) {
    if (heads.empty())
      page.element("td", cells[i]);
    else
      page.element("td", {{"data-label", heads[i]}}, cells[i]);
  }
  page.close();
}

void appendHeads(Markup& page, const Cells& heads) {
  page.open("thead").open("tr");
  for (const std::string& head : heads)
    page.element("th", {{"scope", "col"}}, head);
  page.close().close();
}

// The figure by which a drill is judged, with its interval.
std::string judged(const NewestAnswers& newest) {
  if (newest.threshold)
    return "half heard at " + Phrases::threshold(*newest.threshold) + " (" +
           Phrases::bounds(*newest.threshold) + ")";
  if (newest.error)
    return Phrases::decibels(newest.error->mean) + " dB off" +
           (newest.error->interval
                ? " (" + Phrases::decibels(newest.error->interval->lower) + " to " +
                      Phrases::decibels(newest.error->interval->upper) + ")"
                : "");
  return "-";
}

std::string withoutListening(const NewestAnswers& newest) {
  std::string text = Phrases::percent(newest.blindHitRate);
  if (newest.error)
    text += ", " + Phrases::decibels(newest.error->blindMean) + " dB off";
  return text;
}

bool provesHearing(const NewestAnswers& newest) {
  return newest.error ? newest.error->showsHearing() : newest.hitsShowHearing();
}

void appendSummary(Markup& page, const ReportData& data) {
  const Cells heads{"Drill",
                    "Answers",
                    "Difficulty",
                    "Newest",
                    "Hits",
                    "Without listening",
                    "Figure (95 % interval)",
                    "Proves hearing"};
  page.open("section").element("h2", "Drills").open("table", {{"class", "stack"}});
  appendHeads(page, heads);
  page.open("tbody");
  for (const DrillReport& report : data.drills) {
    const DrillAnalysis& drill = report.analysis;
    Cells cells{Phrases::title(drill.drill), std::to_string(drill.answers),
                Phrases::points(drill.difficulty)};
    if (const auto& newest = drill.newest)
      cells.insert(cells.end(), {std::to_string(newest->answers),
                                 Phrases::percent(static_cast<double>(newest->hits) /
                                                  static_cast<double>(newest->answers)),
                                 withoutListening(*newest), judged(*newest),
                                 provesHearing(*newest) ? "yes" : "no"});
    else
      cells.insert(cells.end(), {"0", "-", "-", "-", "-"});
    appendRow(page, cells, heads);
  }
  page.close().close();
  page.element("p", {{"class", "note"}},
               "Hits and figures are those of the newest answers. Half heard: the difficulty at "
               "which you heard the difference half of the time on average over these answers, "
               "corrected for guessing. Without "
               "listening: the best answers of somebody who reads the difficulty off the window. "
               "A figure proves hearing if chance explains it in less than 1 of 40 cases.");
  page.close();
}

void appendDrill(Markup& page, const DrillReport& report) {
  page.open("section").element("h2", Phrases::title(report.analysis.drill));
  if (report.answers.empty()) {
    page.element("p", "No answers in detail.").close();
    return;
  }
  page.open("div", {{"class", "pair"}});
  appendFigure(page, DifficultyPlot::of(report));
  const bool hasThreshold =
      report.analysis.drill == Drill::frequency || report.analysis.drill == Drill::polarity;
  appendFigure(page, hasThreshold ? HitCurvePlot::of(report) : ErrorPlot::of(report));
  page.close().close();
}

Cells bandCells(const BandAnalysis& band) {
  Cells cells{Bands::label(Bands::centres.at(static_cast<std::size_t>(band.index))),
              std::to_string(band.answers)};
  if (band.answers == 0)
    cells.insert(cells.end(), {"-", "-", "-"});
  else
    cells.insert(cells.end(), {Phrases::percent(static_cast<double>(band.hits) /
                                                static_cast<double>(band.answers)),
                               Phrases::octaves(band.meanErrorOct),
                               band.meanError ? Phrases::octaves(band.meanError->lower) + " to " +
                                                    Phrases::octaves(band.meanError->upper)
                                              : "-"});
  return cells;
}

void appendBandTable(Markup& page, std::span<const BandAnalysis> bands) {
  page.open("table");
  appendHeads(page, {"Band, Hz", "Answers", "Hits", "Mean error, octaves", "95 % interval"});
  page.open("tbody");
  for (const BandAnalysis& band : bands)
    appendRow(page, bandCells(band));
  page.close().close();
}

// The map and three tables, in four fields of equal size.
void appendBands(Markup& page, const ReportData& data) {
  constexpr std::size_t rows = 9;
  page.open("section").element("h2", "Weakness map").open("div", {{"class", "pair"}});
  const Figure map = BandMap::of(data.bands);
  appendFigure(page, map);
  const std::span bands(data.bands);
  if (!map.drawing.empty())
    for (std::size_t first = 0; first < bands.size(); first += rows)
      appendBandTable(page, bands.subspan(first, std::min(rows, bands.size() - first)));
  page.close().close();
}

void appendDays(Markup& page, const ReportData& data) {
  constexpr std::size_t mostMonths = 7;
  page.open("section").element("h2", "Days");
  if (!data.today || data.practice.days.empty()) {
    page.element("p", "No days of practice.").close();
    return;
  }
  page.open("div", {{"class", "pair"}});
  appendFigure(page, DayCalendar::of(data.practice, *data.today));
  page.open("table");
  appendHeads(page, {"Month", "Days", "Answers", "Hits", "Hours"});
  page.open("tbody");
  const auto months = DayCalendar::months(data.practice.days);
  DayCalendar::Month earlier{.name = "earlier"};
  for (std::size_t i = 0; i < months.size(); ++i) {
    const auto& month = months[i];
    const auto row = [&page](const DayCalendar::Month& one) {
      appendRow(page,
                {one.name, std::to_string(one.days), std::to_string(one.answers),
                 Phrases::percent(static_cast<double>(one.hits) / static_cast<double>(one.answers)),
                 Phrases::hours(one.hours)});
    };
    if (i < mostMonths) {
      row(month);
      continue;
    }
    earlier.days += month.days;
    earlier.answers += month.answers;
    earlier.hits += month.hits;
    earlier.hours += month.hours;
    if (i + 1 == months.size())
      row(earlier);
  }
  page.close().close().close();
  page.close();
}

} // namespace

std::string reportPage(const ReportData& data) {
  Markup page;
  page.raw("<!DOCTYPE html>\n").open("html", {{"lang", "en"}}).open("head");
  page.empty("meta", {{"charset", "utf-8"}});
  page.empty("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
  page.element("title", "Velto practice report");
  page.open("style").raw(StyleSheet::text()).close().close();
  page.open("body").open("main");
  appendHead(page, data);
  appendAdvice(page, data);
  appendSummary(page, data);
  for (const DrillReport& report : data.drills)
    appendDrill(page, report);
  appendBands(page, data);
  appendDays(page, data);
  page.close().close().close();
  return page.finish() + "\n";
}

} // namespace velto
