#include "Phrases.h"

#include "Numbers.h"
#include "Trial.h"

#include <array>
#include <chrono>

namespace velto {

namespace {

constexpr const char* narrowGap = "\u00A0"; // does not break

std::chrono::year_month_day civil(Calendar::Day day) {
  return std::chrono::year_month_day{std::chrono::sys_days{std::chrono::days{day}}};
}

std::string twoDigits(unsigned number) {
  std::string text = std::to_string(number);
  if (number < 10)
    text.insert(text.begin(), '0');
  return text;
}

} // namespace

std::string Phrases::percent(double share) {
  return Numbers::fixed(share * 100, 0) + narrowGap + "%";
}

std::string Phrases::counted(std::int64_t count, std::string_view thing) {
  return std::to_string(count) + narrowGap + std::string(thing) + (count == 1 ? "" : "s");
}

std::string Phrases::octaves(double octaves) {
  return Numbers::fixed(octaves, 2);
}

std::string Phrases::decibels(double decibels) {
  return Numbers::fixed(decibels, 2);
}

std::string Phrases::points(double difficulty) {
  return Numbers::fixed(difficulty, 0);
}

std::string Phrases::hours(double hours) {
  return Numbers::fixed(hours, 1);
}

std::string Phrases::bounds(const ThresholdFit& fit) {
  if (fit.lower && fit.upper)
    return points(*fit.lower) + " to " + points(*fit.upper);
  if (fit.lower)
    return "above " + points(*fit.lower);
  if (fit.upper)
    return "below " + points(*fit.upper);
  return "not bounded";
}

std::string Phrases::threshold(const ThresholdFit& fit) {
  if (fit.threshold < 0)
    return "below 0";
  if (fit.threshold > 100)
    return "above 100";
  return points(fit.threshold);
}

std::string Phrases::date(Calendar::Day day) {
  return month(day) + "-" + twoDigits(static_cast<unsigned>(civil(day).day()));
}

std::string Phrases::month(Calendar::Day day) {
  const auto ymd = civil(day);
  return std::to_string(static_cast<int>(ymd.year())) + "-" +
         twoDigits(static_cast<unsigned>(ymd.month()));
}

std::string Phrases::shortMonth(Calendar::Day day) {
  static constexpr std::array names{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  return names.at(static_cast<unsigned>(civil(day).month()) - 1);
}

std::string Phrases::title(Drill drill) {
  std::string title(drill.rawValue());
  title.front() = static_cast<char>(title.front() - 'a' + 'A');
  return title;
}

std::string Phrases::meaning(Drill drill, double difficulty) {
  constexpr std::uint64_t any = 1; // no seed changes what is read here
  const Trial trial = Drills::makeTrial(difficulty, Drills::defaultMaterial(drill), any, drill);
  switch (drill) {
  case Drill::frequency:
    return "a boost of " + Numbers::fixed(trial.boostDB, 1) + narrowGap + "dB with Q " +
           Numbers::fixed(trial.boostQ, 1);
  case Drill::polarity:
    return "channels with a correlation of " + Numbers::fixed(trial.correlation, 2);
  case Drill::level:
  case Drill::dynamics:
    break;
  }
  return {};
}

} // namespace velto
