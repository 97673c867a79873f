// The probe's gate for the practice record: roll-up and streak.

#include "ProbeGates.h"

#include "Calendar.h"
#include "Drill.h"
#include "Numbers.h"
#include "Probe.h"
#include "Profile.h"
#include "TemporaryRecord.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace velto {

namespace {

using Numbers::fixed;

// ---- Roll-up ----

constexpr std::int64_t weakBand = 5;   // 125 Hz
constexpr std::int64_t strongBand = 6; // 160 Hz

Attempt frequencyAnswer(Date date, bool correct) {
  return {.id = UUID::random(),
          .date = date,
          .drill = Drill::frequency,
          .material = Material::pinkNoise,
          .difficulty = 50,
          .correct = correct,
          .error = correct ? 0.1 : 1.0,
          .bandIndex = correct ? strongBand : weakBand};
}

// Misses in the weak band alternating with hits in the strong one.
std::vector<Attempt> alternatingAnswers(std::size_t count) {
  const Date now = Date::now();
  std::vector<Attempt> attempts;
  for (std::size_t i = 0; i < count; ++i)
    attempts.push_back(frequencyAnswer(now, i % 2 == 1));
  return attempts;
}

std::int64_t answersKept(const Profile& profile) {
  std::int64_t kept = 0;
  for (const std::int64_t band : {weakBand, strongBand}) {
    const auto roll = profile.lifetime().find(band);
    kept += roll == profile.lifetime().end() ? 0 : roll->second.attempts;
    kept += std::count_if(profile.attempts().begin(), profile.attempts().end(),
                          [band](const Attempt& row) { return row.mappedBand() == band; });
  }
  return kept;
}

BandStat statOf(const Profile& profile, std::int64_t band) {
  const auto& bands = profile.stats().bands;
  const auto found = std::find_if(bands.begin(), bands.end(),
                                  [band](const BandStat& stat) { return stat.index == band; });
  return found == bands.end() ? BandStat{} : *found;
}

std::string hitsOf(const BandStat& stat) {
  return std::to_string(stat.hits) + " of " + std::to_string(stat.attempts);
}

void checkRollUp() {
  constexpr std::int64_t answers = 6000;
  const TemporaryRecord scratch("velto-probe-");
  Profile profile;
  profile.replace(alternatingAnswers(answers), {});
  profile.trim();
  profile.recompute();
  profile.save();

  const std::size_t rows = profile.attempts().size();
  Probe::check("detail rows are capped", rows == 5000,
               std::to_string(rows) + " kept of " + std::to_string(answers));
  const std::int64_t kept = answersKept(profile);
  Probe::check("no attempt is lost to the roll-up", kept == answers,
               std::to_string(kept) + " in all");
  const BandStat weak = statOf(profile, weakBand);
  const BandStat strong = statOf(profile, strongBand);
  Probe::check("rolled-up mean error is exact", std::abs(weak.meanErrorOct - 1.0) < 1e-9,
               fixed(weak.meanErrorOct, 9) + " oct");
  Probe::check("rolled-up accuracy is exact",
               weak.attempts > 0 && weak.hits == 0 && strong.attempts > 0 &&
                   strong.hits == strong.attempts,
               "band 5: " + hitsOf(weak) + ", band 6: " + hitsOf(strong));
  const auto weakest = profile.stats().weakest;
  Probe::check("the weak band is the one that was always wrong",
               weakest && weakest->index == weakBand,
               "weakest = band " + (weakest ? std::to_string(weakest->index) : "none"));
}

void checkUnderTheCap() {
  constexpr std::size_t answers = 100;
  const TemporaryRecord scratch("velto-probe-");
  Profile profile;
  profile.replace(alternatingAnswers(answers), {});
  profile.trim();
  profile.recompute();
  const std::size_t rows = profile.attempts().size();
  Probe::check("under the cap nothing is rolled up (negative control)",
               rows == answers && profile.lifetime().empty(), std::to_string(rows) + " rows");
}

// ---- Streak ----

// A moment `days` civil days before the day of `now`, at the same time of day, or near it if the
// clocks changed in between.
Date daysBefore(Date now, std::int64_t days) {
  constexpr double hour = 3600;
  Calendar calendar;
  const auto wanted = *calendar.day(now) - days;
  Date date{now.secondsSinceReferenceDate - static_cast<double>(days) * 24 * hour};
  while (calendar.day(date) > wanted)
    date.secondsSinceReferenceDate -= hour;
  while (calendar.day(date) < wanted)
    date.secondsSinceReferenceDate += hour;
  return date;
}

// The streak after practice on each of the days `daysAgo`. Retries if midnight passed in between.
std::int64_t streakAfter(std::initializer_list<std::int64_t> daysAgo) {
  const TemporaryRecord scratch("velto-probe-");
  while (true) {
    const Date now = Date::now();
    std::vector<Attempt> attempts;
    for (const std::int64_t days : daysAgo)
      attempts.push_back(frequencyAnswer(daysBefore(now, days), true));
    Profile profile;
    profile.replace(std::move(attempts), {});
    profile.recompute();
    Calendar calendar;
    if (calendar.day(now) == calendar.day(Date::now()))
      return profile.stats().streak;
  }
}

void checkStreaks() {
  const std::int64_t consecutive = streakAfter({2, 1, 0});
  Probe::check("streak counts consecutive days", consecutive == 3,
               std::to_string(consecutive) + " days");
  Probe::check("streak stops at a gap", streakAfter({3, 1, 0}) == 2, "gap at day 2");
  Probe::check("streak survives not having practised yet today", streakAfter({2, 1}) == 2,
               "yesterday-anchored");
  Probe::check("streak is zero after missing two days (negative control)",
               streakAfter({4, 3, 2}) == 0, "stale");
}

} // namespace

void ProbeGates::record() {
  Probe::line("── profile roll-up");
  checkRollUp();
  checkUnderTheCap();
  checkStreaks();
}

} // namespace velto
