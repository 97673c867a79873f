#include "Statistics.h"

#include "Calendar.h"
#include "Numbers.h"

#include <algorithm>
#include <array>

namespace velto {

namespace {

// What the pass over the rows gathers.
struct Gathered {
  std::map<std::int64_t, BandRoll> bands;
  std::array<std::vector<const Attempt*>, Drill::allCases.size()> byDrill{};
  std::set<Calendar::Day> days{};
  std::int64_t todayCount = 0;
};

void gatherDay(Gathered& gathered, std::optional<Calendar::Day> day,
               std::optional<Calendar::Day> today) {
  if (!day)
    return;
  gathered.days.insert(gathered.days.end(), *day);
  if (day == today)
    gathered.todayCount = Numbers::saturatingIncrement(gathered.todayCount);
}

BandStat bandStat(std::int64_t index, const std::map<std::int64_t, BandRoll>& table) {
  const auto found = table.find(index);
  if (found == table.end())
    return {.index = index};
  const BandRoll& roll = found->second;
  const double mean = roll.attempts == 0 ? 0.0 : roll.errorSum / static_cast<double>(roll.attempts);
  return {index, roll.attempts, roll.hits, mean};
}

// The lowest of the bands that share the largest mean error.
std::optional<BandStat> weakestOf(std::span<const BandStat> bands) {
  std::optional<BandStat> weakest;
  for (const BandStat& band : bands) {
    if (band.attempts < Statistics::answersToNameABand)
      continue;
    if (!weakest || band.meanErrorOct > weakest->meanErrorOct)
      weakest = band;
  }
  return weakest;
}

std::span<const Attempt* const> newest(std::span<const Attempt* const> rows, std::size_t count) {
  return rows.last(std::min(rows.size(), count));
}

double accuracyOf(std::span<const Attempt* const> rows) {
  const auto hits = std::count_if(rows.begin(), rows.end(),
                                  [](const Attempt* attempt) { return attempt->correct; });
  return static_cast<double>(hits) / static_cast<double>(rows.size());
}

std::vector<double> difficultiesOf(std::span<const Attempt* const> rows) {
  std::vector<double> difficulties;
  difficulties.reserve(rows.size());
  for (const Attempt* attempt : rows)
    difficulties.push_back(attempt->difficulty);
  return difficulties;
}

} // namespace

Stats Statistics::compute(std::span<const Attempt> attempts,
                          const std::map<std::int64_t, BandRoll>& lifetime, Date now) {
  Calendar calendar;
  const auto today = calendar.day(now);

  Gathered gathered{.bands = lifetime};
  for (const Attempt& attempt : attempts) {
    if (const auto band = attempt.mappedBand())
      gathered.bands[*band].add(attempt);
    gathered.byDrill[attempt.drill].push_back(&attempt);
    gatherDay(gathered, calendar.day(attempt.date), today);
  }

  Stats stats;
  for (std::size_t i = 0; i < Bands::centres.size(); ++i)
    stats.bands.push_back(bandStat(static_cast<std::int64_t>(i), gathered.bands));
  stats.weakest = weakestOf(stats.bands);
  stats.streak = today ? streak(gathered.days, *today) : 0;
  stats.todayCount = gathered.todayCount;
  for (const Drill drill : Drill::allCases) {
    const auto& rows = gathered.byDrill[drill];
    if (rows.empty())
      continue;
    const std::string name(drill.rawValue());
    stats.accuracy[name] = accuracyOf(newest(rows, accuracyWindow));
    stats.curves[name] = difficultiesOf(newest(rows, curveLength));
  }
  return stats;
}

std::int64_t Statistics::streak(const std::set<std::int64_t>& days, std::int64_t today) {
  std::int64_t cursor = days.contains(today) ? today : today - 1;
  std::int64_t count = 0;
  while (days.contains(cursor)) {
    ++count;
    --cursor;
  }
  return count;
}

} // namespace velto
