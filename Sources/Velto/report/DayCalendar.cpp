#include "DayCalendar.h"

#include "Markup.h"
#include "Numbers.h"
#include "Phrases.h"
#include "Plot.h"
#include "StyleSheet.h"

#include <array>
#include <map>

namespace velto {

namespace {

constexpr double cell = 12.2, box = 10, leftMargin = 34, topMargin = 18;

// 0 is Monday.
Calendar::Day weekday(Calendar::Day day) {
  constexpr Calendar::Day week = 7, offset = 3; // 1970-01-01 was a Thursday
  return ((day + offset) % week + week) % week;
}

// The left edge of the week of `day`.
double leftOf(Calendar::Day day, Calendar::Day first) {
  const Calendar::Day week = (day - first) / 7;
  return leftMargin + static_cast<double>(week) * cell;
}

std::string at(double value) {
  return Numbers::fixed(value, 1);
}

void drawLabel(Markup& markup, double x, double y, const std::string& text) {
  markup.element("text", {{"class", "tick"}, {"x", at(x)}, {"y", at(y)}}, text);
}

void drawDay(Markup& markup, Calendar::Day day, Calendar::Day first, bool isToday,
             std::int64_t answers) {
  const double x = leftOf(day, first);
  const double y = topMargin + static_cast<double>(weekday(day)) * cell;
  markup.open("rect", {{"class", StyleSheet::dayClass(answers) + (isToday ? " today" : "")},
                       {"x", at(x)},
                       {"y", at(y)},
                       {"width", at(box)},
                       {"height", at(box)},
                       {"rx", "2"}});
  markup.element("title", Phrases::date(day) + ": " + Phrases::counted(answers, "answer"));
  markup.close();
}

std::string draw(const std::map<Calendar::Day, std::int64_t>& answers, Calendar::Day today,
                 const std::string& caption) {
  const Calendar::Day first = DayCalendar::firstDay(today);
  const double width = Plot::drawingWidth, height = topMargin + 7 * cell + 2;
  Markup markup;
  beginDrawing(markup, width, height, "Calendar of days", caption);
  static constexpr std::array names{"Mon", "", "Wed", "", "Fri", "", "Sun"};
  for (std::size_t i = 0; i < names.size(); ++i)
    drawLabel(markup, 8, topMargin + static_cast<double>(i) * cell + 8.5, names.at(i));
  // A week has the name of its month if the month begins in it.
  for (Calendar::Day day = first; day <= today; ++day) {
    const bool begins = Phrases::month(day) != Phrases::month(day - 1);
    if (begins && (day - first) / 7 < DayCalendar::weeks - 1)
      drawLabel(markup, leftOf(day, first), 12, Phrases::shortMonth(day));
    const auto found = answers.find(day);
    drawDay(markup, day, first, day == today, found == answers.end() ? 0 : found->second);
  }
  markup.close();
  return markup.finish();
}

} // namespace

Calendar::Day DayCalendar::firstDay(Calendar::Day today) {
  return today - weekday(today) - 7 * (weeks - 1);
}

Figure DayCalendar::of(const PracticeTime& practice, Calendar::Day today) {
  const Calendar::Day first = firstDay(today);
  std::map<Calendar::Day, std::int64_t> answers;
  std::int64_t count = 0;
  for (const PracticeDay& day : practice.days)
    if (day.day >= first && day.day <= today) {
      answers[day.day] = day.answers;
      count += day.answers;
    }
  const std::string caption =
      "Since " + Phrases::date(first) + ": " + Phrases::counted(count, "answer") + " on " +
      Phrases::counted(static_cast<std::int64_t>(answers.size()), "day") +
      ". A square is a day, a column a week; the stronger its colour, the more answers: up to " +
      std::to_string(StyleSheet::dayLimits[0]) + ", " + std::to_string(StyleSheet::dayLimits[1]) +
      ", " + std::to_string(StyleSheet::dayLimits[2]) + " and more. Today has an outline.";
  return {.drawing = draw(answers, today, caption), .caption = caption};
}

std::vector<DayCalendar::Month> DayCalendar::months(std::span<const PracticeDay> days) {
  std::vector<Month> months;
  for (auto day = days.rbegin(); day != days.rend(); ++day) {
    const std::string name = Phrases::month(day->day);
    if (months.empty() || months.back().name != name)
      months.push_back({.name = name});
    Month& month = months.back();
    ++month.days;
    month.answers += day->answers;
    month.hits += day->hits;
    month.hours += day->hours;
  }
  return months;
}

} // namespace velto
