// Statistics of the practice record: weakness map, streak, accuracy and curves.
#pragma once

#include "Date.h"
#include "Record.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace velto {

// One band of the weakness map.
struct BandStat {
  std::int64_t index = 0;    // in Bands::centres
  std::int64_t attempts = 0; // frequency answers in roll-up and rows
  std::int64_t hits = 0;
  double meanErrorOct = 0; // octaves; 0 without attempts

  bool operator==(const BandStat&) const = default;
};

// All figures shown about the record. The maps omit drills without answers.
struct Stats {
  std::vector<BandStat> bands;            // one per band, in order; empty before the first compute
  std::optional<BandStat> weakest;        // largest mean error among bands with enough answers
  std::int64_t streak = 0;                // consecutive practice days that end today or yesterday
  std::int64_t todayCount = 0;            // answers of all drills given today
  std::map<std::string, double> accuracy; // by raw drill name: share of hits, 0 to 1
  std::map<std::string, std::vector<double>>
      curves; // by raw drill name: difficulties, oldest first

  bool operator==(const Stats&) const = default;
};

namespace Statistics {

inline constexpr std::int64_t answersToNameABand = 3; // answers a band needs to be the weakest
inline constexpr std::size_t accuracyWindow = 30;     // newest answers of a drill
inline constexpr std::size_t curveLength = 60;        // newest answers of a drill

// The statistics at the moment `now`, in one pass over `attempts`, oldest first. Dates out of the
// calendar's range count neither for the streak nor for today. Days are local: the time zone (the
// variable TZ, else the system's) is read again on each call. Any thread; no other thread may
// change the environment during the call.
[[nodiscard]] Stats compute(std::span<const Attempt> attempts,
                            const std::map<std::int64_t, BandRoll>& lifetime, Date now);

// Number of consecutive days in `days` that end with `today` or, if `today` is missing, with the
// day before it. Days are numbered as in Calendar::Day.
[[nodiscard]] std::int64_t streak(const std::set<std::int64_t>& days, std::int64_t today);

} // namespace Statistics

} // namespace velto
