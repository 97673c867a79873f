// Records to report on.
#pragma once

#include "Bands.h"
#include "ReportData.h"
#include "Xorshift64.h"
#include "kit/RecordTesting.h"

#include <cmath>
#include <map>
#include <string>

namespace velto::testing {

inline constexpr int year = 2026;

// The moment of the reports.
inline Date reportTime() {
  return local(year, 11, 22);
}

// Answers of a listener who hears difficulty 50 half of the time, `perDay` on each of `days` days
// up to the day of the report.
inline Stored practised(int days, int perDay) {
  Stored record;
  Xorshift64 random(20261122);
  std::map<std::string, Staircase> staircases;
  for (int i = 0; i < days * perDay; ++i) {
    const Drill drill = Drill::allCases.at(random.next() % 4);
    const auto band = static_cast<std::int64_t>(random.next() % Bands::centres.size());
    const std::string name(drill.rawValue());
    Staircase& staircase = staircases[name];
    const double heard = 1 / (1 + std::exp((staircase.difficulty - 50) / 8));
    const bool hit = random.nextUnit() < heard + (1 - heard) * 0.2;
    const double miss = band < 6 ? 1.5 : 0.6; // octaves: the low bands are weak
    const int daysBack = days - 1 - i / perDay, answersBack = perDay - i % perDay;
    Attempt attempt =
        row(drill, std::nullopt, hit, hit ? 0.2 : miss,
            Date{reportTime().secondsSinceReferenceDate - 86400.0 * daysBack - 20.0 * answersBack});
    if (drill == Drill::frequency)
      attempt.bandIndex = band;
    attempt.difficulty = staircase.difficulty;
    staircase.record(hit);
    record.attempts.push_back(attempt);
  }
  record.staircases = staircases;
  return record;
}

inline ReportData reported(const Stored& record, SeedSource seeds = SeedSource::spread) {
  return ReportData::of(record, reportTime(), seeds);
}

} // namespace velto::testing
