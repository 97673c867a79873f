#include "Bench.h"

#include "Bands.h"
#include "Numbers.h"
#include "Profile.h"
#include "Rendering.h"
#include "Report.h"
#include "Slot.h"
#include "TemporaryRecord.h"
#include "Xorshift64.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace velto {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

double millisecondsSince(Clock::time_point start) {
  return Milliseconds(Clock::now() - start).count();
}

std::string figure(double value, std::size_t width, int decimals) {
  return Report::rightAligned(Numbers::fixed(value, decimals), width);
}

// ---- Rendering ----

void timeRendering(Drill drill) {
  constexpr int runs = 10;
  constexpr double seconds = 3.2;
  const Trial trial = Drills::makeTrial(50, Drills::defaultMaterial(drill), 4242, drill);
  double total = 0;
  double best = 0;
  for (int run = 0; run < runs; ++run) {
    const auto start = Clock::now();
    const std::vector<Slot> slots = Drills::render(trial, seconds);
    const double taken = millisecondsSince(start);
    total += taken;
    best = run == 0 ? taken : std::min(best, taken);
  }
  Report::line("  " + Report::leftAligned(drill.rawValue(), 10) + " mean " +
               figure(total / runs, 7, 1) + " ms   best " + figure(best, 7, 1) + " ms");
}

// ---- Statistics ----

// Sums everything that a view reads after an update.
double readAll(const Profile& profile) {
  const Stats& stats = profile.stats();
  auto sum = static_cast<double>(stats.streak + stats.todayCount);
  for (const Drill drill : Drill::allCases) {
    sum += profile.accuracy(drill).value_or(0);
    for (const double difficulty : profile.curve(drill))
      sum += difficulty;
  }
  for (const BandStat& band : stats.bands)
    sum += static_cast<double>(band.attempts + band.hits) + band.meanErrorOct;
  return sum;
}

void timeStatistics(std::int64_t count) {
  constexpr int updates = 50;
  const TemporaryRecord scratch("velto-bench-");
  Profile profile;
  profile.replace(Bench::syntheticAttempts(count), {});
  profile.trim();
  profile.recompute();

  [[maybe_unused]] volatile double read = 0; // keeps the reads from being optimised away
  const auto start = Clock::now();
  for (int update = 0; update < updates; ++update) {
    profile.recompute();
    read = readAll(profile);
  }
  const double taken = millisecondsSince(start);
  Report::line("  " + Report::rightAligned(std::to_string(count), 6) + " attempts   " +
               figure(taken / updates, 6, 3) + " ms per view update  (detail rows kept: " +
               std::to_string(profile.attempts().size()) + ")");
}

} // namespace

std::vector<Attempt> Bench::syntheticAttempts(std::int64_t count) {
  Xorshift64 generator(4242);
  const Date now = Date::now();
  std::vector<Attempt> attempts;
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    Attempt attempt{.id = UUID::random(),
                    .date = now,
                    .drill = Drill::allCases[i % Drill::allCases.size()],
                    .material = Material::allCases[i % Material::allCases.size()],
                    .difficulty = 50,
                    .correct = generator.nextUnit() < 0.7,
                    .error = generator.nextUnit(),
                    .bandIndex = std::nullopt};
    const auto band = static_cast<std::int64_t>(generator.next() % Bands::centres.size());
    if (attempt.drill == Drill::frequency)
      attempt.bandIndex = band;
    attempts.push_back(attempt);
  }
  return attempts;
}

void Bench::run() {
  Report::line("per-trial render cost (10 runs each, 3.2 s of audio)");
  for (const Drill drill : Drill::allCases)
    timeRendering(drill);
  Report::line("");
  Report::line("profile stats cost (what recomputes on every view update)");
  for (const std::int64_t count : {200, 2000, 20000})
    timeStatistics(count);
}

} // namespace velto
