#include "DayCalendar.h"

#include "Phrases.h"

#include <gtest/gtest.h>

#include <chrono>

namespace velto {
namespace {

using namespace std::chrono;

Calendar::Day on(int y, unsigned m, unsigned d) {
  return sys_days{year{y} / month{m} / day{d}}.time_since_epoch().count();
}

TEST(DayCalendar, BeginsOnAMondayAndEndsInThisWeek) {
  for (Calendar::Day today = on(2026, 1, 1); today < on(2027, 2, 1); ++today) {
    const Calendar::Day first = DayCalendar::firstDay(today);
    EXPECT_EQ(weekday{sys_days{days{first}}}, Monday);
    EXPECT_EQ((today - first) / 7, DayCalendar::weeks - 1);
  }
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
    ++count;
  return count;
}

TEST(DayCalendar, DrawsEveryDayOnce) {
  const Calendar::Day today = on(2026, 11, 22); // a Sunday
  PracticeTime practice;
  practice.days = {{.day = on(2025, 1, 1), .answers = 7},
                   {.day = on(2026, 11, 1), .answers = 19},
                   {.day = on(2026, 11, 2), .answers = 20},
                   {.day = today, .answers = 100},
                   {.day = today + 1, .answers = 3}};
  const Figure figure = DayCalendar::of(practice, today);
  EXPECT_EQ(countOf(figure.drawing, "<rect "), 26U * 7);
  EXPECT_EQ(countOf(figure.drawing, "class=\"d0\""), 26U * 7 - 3);
  EXPECT_NE(figure.drawing.find("2026-11-01: 19\u00A0answers"), std::string::npos);
  EXPECT_EQ(countOf(figure.drawing, "class=\"d1\""), 1U);
  EXPECT_EQ(countOf(figure.drawing, "class=\"d2\""), 1U);
  EXPECT_EQ(countOf(figure.drawing, "class=\"d4 today\""), 1U);
  // Of the days outside of the weeks nothing counts.
  EXPECT_TRUE(figure.caption.starts_with("Since 2026-05-25: 139\u00A0answers on 3\u00A0days."))
      << figure.caption;
}

TEST(DayCalendar, SumsMonths) {
  const std::vector<PracticeDay> days{
      {.day = on(2025, 12, 31), .answers = 1, .hits = 1, .hours = 1},
      {.day = on(2026, 1, 1), .answers = 2, .hits = 1, .hours = 0.5},
      {.day = on(2026, 1, 31), .answers = 3, .hits = 1, .hours = 0.25}};
  const auto months = DayCalendar::months(days);
  ASSERT_EQ(months.size(), 2U);
  EXPECT_EQ(months[0].name, "2026-01");
  EXPECT_EQ(months[0].days, 2);
  EXPECT_EQ(months[0].answers, 5);
  EXPECT_EQ(months[0].hits, 2);
  EXPECT_EQ(months[0].hours, 0.75);
  EXPECT_EQ(months[1].name, "2025-12");
  EXPECT_EQ(months[1].answers, 1);
}

} // namespace
} // namespace velto
