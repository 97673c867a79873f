#include "DemoData.h"

#include "Bands.h"
#include "Profile.h"
#include "Xorshift64.h"

#include <cstdio>
#include <cstdlib>

namespace velto {

namespace {

// Hit probability of the fictitious listener: lowest at 160 to 315 Hz, highest in the middle.
double hitProbability(Drill drill, double bandCentre) {
  if (drill != Drill::frequency)
    return 0.68;
  if (bandCentre < 160)
    return 0.45;
  if (bandCentre < 400)
    return 0.3;
  if (bandCentre < 4000)
    return 0.8;
  if (bandCentre < 10000)
    return 0.55;
  return 0.35;
}

double errorOf(Drill drill, bool hit, double v) {
  if (drill == Drill::frequency)
    return hit ? 0.3 * v : 1.1 * v + 0.4;
  return hit ? 0.6 * v : 2 * v + 0.8;
}

} // namespace

void DemoData::seed() {
  constexpr int answers = 160;
  constexpr double secondsBetween = 260;

  if (std::getenv("VELTO_PROFILE_DIR") == nullptr) {
    std::fputs("refusing to seed demo data without VELTO_PROFILE_DIR set\n", stderr);
    return;
  }
  Profile profile;
  std::map<std::string, Staircase> staircases;
  for (const Drill drill : Drill::allCases)
    staircases[std::string(drill.rawValue())] = Staircase{};
  const double now = Date::now().secondsSinceReferenceDate;
  Xorshift64 generator(20260918);
  std::vector<Attempt> attempts;
  for (int k = answers; k >= 1; --k) {
    const Drill drill = Drill::allCases[generator.next() % Drill::allCases.size()];
    const std::uint64_t band = generator.next() % Bands::centres.size();
    const bool hit = generator.nextUnit() < hitProbability(drill, Bands::centres[band]);
    const double error = errorOf(drill, hit, generator.nextUnit());

    Staircase& staircase = staircases[std::string(drill.rawValue())];
    Attempt attempt{.id = UUID::random(),
                    .date = {now - k * secondsBetween},
                    .drill = drill,
                    .material = Material::allCases.front(),
                    .difficulty = staircase.difficulty,
                    .correct = hit,
                    .error = error,
                    .bandIndex = std::nullopt};
    if (drill == Drill::frequency)
      attempt.bandIndex = static_cast<std::int64_t>(band);
    attempts.push_back(attempt);
    staircase.record(hit);
  }
  profile.replace(std::move(attempts), std::move(staircases));
  profile.trim();
  profile.recompute();
  profile.save();
  std::fprintf(stderr, "seeded %zu demo attempts\n", profile.attempts().size());
}

} // namespace velto
