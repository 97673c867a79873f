#include "Advice.h"

#include "Bands.h"
#include "Phrases.h"
#include "StyleSheet.h"

#include <algorithm>
#include <optional>

namespace velto {

namespace {

using Advices = std::vector<Advice>;

// "200 to 400 Hz", or "315 Hz"
std::string span(std::size_t first, std::size_t last) {
  const std::string from = Bands::label(Bands::centres.at(first));
  return (first == last ? from : from + " to " + Bands::label(Bands::centres.at(last))) +
         "\u00A0Hz";
}

// Sums over a range of bands.
struct Range {
  std::size_t first = 0, last = 0;
  std::int64_t answers = 0;
  double errorSum = 0;

  [[nodiscard]] double mean() const {
    return answers == 0 ? 0 : errorSum / static_cast<double>(answers);
  }
};

Range rangeOf(const std::vector<BandAnalysis>& bands, std::size_t first, std::size_t last) {
  Range range{.first = first, .last = last};
  for (std::size_t i = first; i <= last; ++i) {
    range.answers += bands[i].answers;
    range.errorSum += bands[i].meanErrorOct * static_cast<double>(bands[i].answers);
  }
  return range;
}

// The neighbouring bands, three at least, with the largest mean error; nullopt with too few answers
// or if they are hardly weaker than all bands.
std::optional<Range> weakestRange(const std::vector<BandAnalysis>& bands) {
  constexpr std::size_t length = 3;  // an octave
  constexpr std::int64_t fewest = 9; // as many as name three bands
  constexpr double factor = 1.3;     // weaker than all bands by this
  const double all = rangeOf(bands, 0, bands.size() - 1).mean();
  std::optional<Range> weakest;
  for (std::size_t first = 0; first + length <= bands.size(); ++first) {
    const Range range = rangeOf(bands, first, first + length - 1);
    if (range.answers >= fewest && range.mean() > all * factor &&
        (!weakest || range.mean() > weakest->mean()))
      weakest = range;
  }
  return weakest;
}

void adviseBands(Advices& advices, const ReportData& data) {
  const auto range = weakestRange(data.bands);
  if (!range)
    return;
  const double all = rangeOf(data.bands, 0, data.bands.size() - 1).mean();
  advices.push_back({.what = "Learn the bands from " + span(range->first, range->last) + ".",
                     .why = "There your answers are " + Phrases::octaves(range->mean()) +
                            " octaves off on average (" +
                            Phrases::counted(range->answers, "answer") + "), over all bands " +
                            Phrases::octaves(all) + "."});
}

void adviseBlind(Advices& advices, const ReportData& data) {
  for (const DrillReport& report : data.drills) {
    const auto& newest = report.analysis.newest;
    if (!newest || newest->answers < Advice::fewAnswers)
      continue;
    const std::string name(report.analysis.drill.rawValue());
    if (newest->error) {
      if (newest->error->showsHearing())
        continue;
      const bool isClock = data.seeds == SeedSource::clock;
      advices.push_back(
          {.what = "Practise " + name + (isClock ? " with --fair." : "."),
           .why = "Your mean error of " + Phrases::decibels(newest->error->mean) +
                  " dB is no smaller than the " + Phrases::decibels(newest->error->blindMean) +
                  " dB that one has without listening." +
                  (isClock ? " Without --fair a difficulty has a single target." : "")});
    } else if (!newest->hitsShowHearing()) {
      advices.push_back({.what = "Practise " + name + ", and check what you listen on.",
                         .why = std::to_string(newest->hits) + " hits of " +
                                std::to_string(newest->answers) +
                                " can be had without listening, where the best fixed answer hits " +
                                Phrases::percent(newest->blindHitRate) + "."});
    }
  }
}

void adviseFewAnswers(Advices& advices, const ReportData& data) {
  std::string titles, counts;
  for (const DrillReport& report : data.drills) {
    if (report.analysis.answers >= Advice::fewAnswers)
      continue;
    titles += (titles.empty() ? "" : ", ") + std::string(report.analysis.drill.rawValue());
    counts += (counts.empty() ? "" : ", ") + std::to_string(report.analysis.answers);
  }
  if (!titles.empty())
    advices.push_back({.what = "Give more answers in " + titles + ".",
                       .why = "So far there are " + counts + ". With fewer than " +
                              std::to_string(Advice::fewAnswers) +
                              ", the figures of a drill are too vague to go by."});
}

void adviseForgotten(Advices& advices, const ReportData& data) {
  if (!data.today)
    return;
  for (const DrillReport& report : data.drills) {
    const auto last = report.lastDay();
    if (last && *data.today - *last >= Advice::longAgo)
      advices.push_back(
          {.what = "Take up " + std::string(report.analysis.drill.rawValue()) + " again.",
           .why = "Your last answer is " + Phrases::counted(*data.today - *last, "day") + " old."});
  }
}

void adviseRegularity(Advices& advices, const ReportData& data) {
  if (!data.today)
    return;
  const auto days = std::count_if(
      data.practice.days.begin(), data.practice.days.end(), [&](const PracticeDay& day) {
        return day.day <= *data.today && day.day > *data.today - Advice::lately;
      });
  if (days < Advice::regularDays)
    advices.push_back(
        {.what = "Practise on more days, a quarter of an hour each.",
         .why = "You practised on " + Phrases::counted(days, "day") + " of the last " +
                std::to_string(Advice::lately) +
                ". What is learnt settles between sittings, and long ones add little."});
}

} // namespace

std::vector<Advice> Advice::from(const ReportData& data) {
  const bool isEmpty =
      std::all_of(data.drills.begin(), data.drills.end(),
                  [](const DrillReport& report) { return report.analysis.answers == 0; });
  if (isEmpty)
    return {
        {.what = "Start with 20 trials of each drill.", .why = "The record has no answers yet."}};
  Advices advices;
  adviseBlind(advices, data);
  adviseBands(advices, data);
  adviseFewAnswers(advices, data);
  adviseForgotten(advices, data);
  adviseRegularity(advices, data);
  if (advices.size() > most)
    advices.resize(most);
  if (advices.empty())
    advices.push_back(
        {.what = "Go on as you do.", .why = "No drill, band or pause stands out in the figures."});
  return advices;
}

} // namespace velto
