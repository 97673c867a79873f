#include "PracticeTime.h"

#include <algorithm>

namespace velto {

namespace {

struct Answer {
  double seconds = 0; // since the reference date
  Calendar::Day day = 0;
  bool hit = false;
};

std::vector<Answer> datedAnswers(std::span<const Attempt> attempts) {
  Calendar calendar;
  std::vector<Answer> answers;
  for (const Attempt& attempt : attempts)
    if (const auto day = calendar.day(attempt.date))
      answers.push_back(
          {.seconds = attempt.date.secondsSinceReferenceDate, .day = *day, .hit = attempt.correct});
  std::stable_sort(answers.begin(), answers.end(),
                   [](const Answer& a, const Answer& b) { return a.seconds < b.seconds; });
  return answers;
}

// The times between successive answers of one sitting, seconds.
std::vector<double> timesBetween(std::span<const Answer> answers) {
  std::vector<double> times;
  for (std::size_t i = 1; i < answers.size(); ++i) {
    const double time = answers[i].seconds - answers[i - 1].seconds;
    if (time <= PracticeTime::longestPause)
      times.push_back(time);
  }
  return times;
}

// 0 without values.
double median(std::vector<double> values) {
  if (values.empty())
    return 0;
  const std::size_t middle = values.size() / 2;
  std::sort(values.begin(), values.end());
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace

PracticeTime PracticeTime::of(std::span<const Attempt> attempts) {
  const std::vector<Answer> answers = datedAnswers(attempts);
  const double firstAnswer = median(timesBetween(answers));
  PracticeTime time;
  for (std::size_t i = 0; i < answers.size(); ++i) {
    const double since = i == 0 ? longestPause + 1 : answers[i].seconds - answers[i - 1].seconds;
    const bool begins = since > longestPause;
    time.sittings += begins ? 1 : 0;
    if (time.days.empty() || time.days.back().day != answers[i].day)
      time.days.push_back({.day = answers[i].day});
    PracticeDay& day = time.days.back();
    ++day.answers;
    day.hits += answers[i].hit ? 1 : 0;
    day.hours += (begins ? firstAnswer : since) / 3600;
  }
  for (const PracticeDay& day : time.days)
    time.hours += day.hours;
  return time;
}

} // namespace velto
