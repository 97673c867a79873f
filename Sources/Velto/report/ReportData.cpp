#include "ReportData.h"

#include "Bands.h"
#include "Statistics.h"

#include <algorithm>

namespace velto {

namespace {

// Dates outside have no day: not even a clock that is wrong gives them.
constexpr double firstSecond = -Date::referenceSince1970;    // 1970
constexpr double lastSecond = 253'402'300'799 + firstSecond; // 9999
constexpr Date noDay{1e300};

Date plausible(Date date) {
  const double seconds = date.secondsSinceReferenceDate;
  return seconds >= firstSecond && seconds <= lastSecond ? date : noDay;
}

// A file may hold any numbers. These are the nearest that Velto could have written, so that sums
// and plots stay finite.
Stored plausible(Stored record) {
  constexpr double mostError = 100;            // octaves or dB
  constexpr std::int64_t mostRolled = 1 << 30; // answers in a band
  for (Attempt& attempt : record.attempts) {
    attempt.date = plausible(attempt.date);
    attempt.difficulty = std::clamp(attempt.difficulty, 0.0, 100.0);
    attempt.error = std::clamp(attempt.error, 0.0, mostError);
  }
  for (auto& [name, staircase] : record.staircases)
    staircase.difficulty = std::clamp(staircase.difficulty, 0.0, 100.0);
  std::erase_if(record.lifetime, [](const auto& entry) {
    return entry.first < 0 || entry.first >= static_cast<std::int64_t>(Bands::centres.size());
  });
  for (auto& [band, roll] : record.lifetime) {
    roll.attempts = std::clamp<std::int64_t>(roll.attempts, 0, mostRolled);
    roll.hits = std::clamp<std::int64_t>(roll.hits, 0, roll.attempts);
    roll.errorSum = std::clamp(roll.errorSum, 0.0, mostError * static_cast<double>(roll.attempts));
  }
  return record;
}

} // namespace

std::optional<Calendar::Day> DrillReport::lastDay() const {
  std::optional<Calendar::Day> last;
  for (const ReportAnswer& answer : answers)
    if (answer.day && (!last || *answer.day > *last))
      last = answer.day;
  return last;
}

ReportData ReportData::of(const Stored& any, Date now, SeedSource seeds, std::size_t newest,
                          const std::function<void()>& step) {
  const Stored record = plausible(any);
  Calendar calendar;
  ReportData data;
  data.today = calendar.day(plausible(now));
  data.seeds = seeds;
  for (const Drill drill : Drill::allCases) {
    DrillReport report{
        .analysis = DrillAnalysis::of(drill, record, seeds, newest), .answers = {}, .newest = 0};
    for (const Attempt& attempt : record.attempts)
      if (attempt.drill == drill)
        report.answers.push_back({.day = calendar.day(attempt.date),
                                  .difficulty = attempt.difficulty,
                                  .hit = attempt.correct});
    report.newest = std::min(std::max<std::size_t>(newest, 1), report.answers.size());
    data.drills.push_back(std::move(report));
    if (step)
      step();
  }
  data.bands = BandAnalysis::all(record);
  data.practice = PracticeTime::of(record.attempts);
  data.streak = Statistics::compute(record.attempts, record.lifetime, now).streak;
  return data;
}

} // namespace velto
