#include "Statistics.h"

#include "Bands.h"
#include "Calendar.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace velto {

namespace {

using BandTable = std::array<BandRoll, Bands::centres.size()>;

BandTable bandTable(const std::map<std::int64_t, BandRoll>& lifetime) {
  BandTable table{};
  for (const auto& [band, roll] : lifetime)
    if (band >= 0 && band < std::ssize(table))
      table[static_cast<std::size_t>(band)] = roll;
  return table;
}

void addTo(BandTable& table, const Attempt& attempt) {
  if (attempt.isMapped() && *attempt.bandIndex >= 0 && *attempt.bandIndex < std::ssize(table))
    table[static_cast<std::size_t>(*attempt.bandIndex)].add(attempt);
}

// Days with practice, and today's number of answers. A date on the same day as the one before it
// costs only a comparison.
class PracticeDays {
public:
  explicit PracticeDays(Date now) : today_(calendar_.day(now)), isToday_(today_.has_value()) {}

  void add(Date date) {
    if (calendar_.isOnSameDay(date) || enterDayOf(date))
      todayCount_ += isToday_ ? 1 : 0;
  }

  [[nodiscard]] std::int64_t todayCount() const { return todayCount_; }
  [[nodiscard]] std::int64_t streak() {
    if (!today_)
      return 0;
    if (todayCount_ > 0)
      days_.insert(*today_);
    return Statistics::streak(days_, *today_);
  }

private:
  // False if the calendar has no day for `date`.
  bool enterDayOf(Date date) {
    const auto day = calendar_.day(date);
    if (!day)
      return false;
    days_.insert(*day);
    isToday_ = day == today_;
    return true;
  }

  Calendar calendar_;
  std::optional<Calendar::Day> today_;
  std::set<Calendar::Day> days_; // streak() adds today
  bool isToday_;                 // whether the calendar last found today
  std::int64_t todayCount_ = 0;
};

BandStat bandStat(std::size_t index, const BandRoll& roll) {
  const double mean = roll.attempts == 0 ? 0.0 : roll.errorSum / static_cast<double>(roll.attempts);
  return {static_cast<std::int64_t>(index), roll.attempts, roll.hits, mean};
}

// The band with the largest mean error; the lowest one on a tie.
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

// The newest answers of one drill, newest first, at most `curveLength`.
struct Newest {
  std::array<const Attempt*, Statistics::curveLength> rows{};
  std::size_t count = 0;
};
using NewestByDrill = std::array<Newest, Drill::allCases.size()>;

// Scans backwards from the newest row until every drill has `curveLength` rows.
NewestByDrill newestOf(std::span<const Attempt> attempts) {
  NewestByDrill drills;
  std::size_t complete = 0;
  for (std::size_t i = attempts.size(); i-- > 0 && complete < drills.size();) {
    Newest& drill = drills[attempts[i].drill];
    if (drill.count == drill.rows.size())
      continue;
    drill.rows[drill.count++] = &attempts[i];
    if (drill.count == drill.rows.size())
      ++complete;
  }
  return drills;
}

double accuracyOf(const Newest& newest) {
  const std::size_t window = std::min(newest.count, Statistics::accuracyWindow);
  const auto begin = newest.rows.begin();
  const auto hits = std::count_if(begin, begin + static_cast<std::ptrdiff_t>(window),
                                  [](const Attempt* attempt) { return attempt->correct; });
  return static_cast<double>(hits) / static_cast<double>(window);
}

std::vector<double> difficultiesOf(const Newest& newest) {
  std::vector<double> difficulties(newest.count);
  std::transform(newest.rows.begin(),
                 newest.rows.begin() + static_cast<std::ptrdiff_t>(newest.count),
                 difficulties.rbegin(), [](const Attempt* attempt) { return attempt->difficulty; });
  return difficulties;
}

} // namespace

Stats Statistics::compute(std::span<const Attempt> attempts,
                          const std::map<std::int64_t, BandRoll>& lifetime, Date now) {
  PracticeDays days(now);
  BandTable bands = bandTable(lifetime);
  for (const Attempt& attempt : attempts) {
    addTo(bands, attempt);
    days.add(attempt.date);
  }

  Stats stats;
  stats.bands.reserve(bands.size());
  for (std::size_t i = 0; i < bands.size(); ++i)
    stats.bands.push_back(bandStat(i, bands[i]));
  stats.weakest = weakestOf(stats.bands);
  stats.streak = days.streak();
  stats.todayCount = days.todayCount();
  const NewestByDrill newest = newestOf(attempts);
  for (const Drill drill : Drill::allCases) {
    if (newest[drill].count == 0)
      continue;
    const std::string name(drill.rawValue());
    stats.accuracy[name] = accuracyOf(newest[drill]);
    stats.curves[name] = difficultiesOf(newest[drill]);
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
