// What the report is about: a practice record, measured.
#pragma once

#include "Calendar.h"
#include "PracticeTime.h"
#include "Record.h"
#include "RecordAnalysis.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace velto {

// One answer in detail.
struct ReportAnswer {
  std::optional<Calendar::Day> day; // nullopt for dates out of the calendar's range
  double difficulty = 0;
  bool hit = false;
};

// One drill.
struct DrillReport {
  DrillAnalysis analysis;
  std::vector<ReportAnswer> answers; // all in detail, oldest first
  std::size_t newest = 0;            // how many of them the analysis is about

  // The last day with an answer; nullopt without answers.
  [[nodiscard]] std::optional<Calendar::Day> lastDay() const;
};

struct ReportData {
  std::optional<Calendar::Day> today; // nullopt if `now` is out of the calendar's range
  SeedSource seeds = SeedSource::clock;
  std::vector<DrillReport> drills; // all, in order
  std::vector<BandAnalysis> bands; // all, in order
  PracticeTime practice;
  std::int64_t streak = 0; // days, as the window has it

  // Measures a record as of `now`. Numbers that Velto cannot have written count as the nearest that
  // it can; dates before 1970 and after 9999 have no day. Calls `step` after each of the drills,
  // which take up to a second each. Reads the time zone like Calendar.
  [[nodiscard]] static ReportData of(const Stored& any, Date now, SeedSource seeds,
                                     std::size_t newest = DrillAnalysis::defaultNewest,
                                     const std::function<void()>& step = {});
};

} // namespace velto
