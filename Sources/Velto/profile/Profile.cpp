#include "Profile.h"

#include "Bands.h"
#include "Coding.h"
#include "Date.h"
#include "Folders.h"
#include "SafeFile.h"
#include "UUID.h"

#include <algorithm>
#include <utility>

namespace velto {

namespace {

void migrate(const ProfileLocation& location) {
  if (!location.earlierFile || !Folders::exists(*location.earlierFile) ||
      Folders::exists(location.file()))
    return;
  Folders::create(location.directory);
  Folders::moveFile(*location.earlierFile, location.file());
}

// The file's path. Creates its folder if needed. Absolute, so that a later change of the current
// folder does not move the record.
std::filesystem::path prepare(const ProfileLocation& location) {
  migrate(location);
  Folders::create(location.directory);
  return Folders::absolute(location.file());
}

Attempt answered(const Trial& trial, const Drills::Grade& grade) {
  Attempt attempt{.id = UUID::random(),
                  .date = Date::now(),
                  .drill = trial.drill,
                  .material = trial.material,
                  .difficulty = trial.difficulty,
                  .correct = grade.correct,
                  .error = grade.error,
                  .bandIndex = std::nullopt};
  if (trial.drill == Drill::frequency)
    attempt.bandIndex = static_cast<std::int64_t>(Bands::nearestIndex(trial.targetFreq));
  return attempt;
}

} // namespace

Profile::Profile() : Profile(ProfileLocation::resolve(Environment::ofProcess())) {}

Profile::Profile(const ProfileLocation& location) : url_(prepare(location)) {
  load();
}

void Profile::load() {
  auto stored = SafeFile::load(url_, Coding::decodeStored);
  if (!stored)
    return;
  stored_ = std::move(*stored);
  recompute();
}

void Profile::record(const Trial& trial, const Drills::Grade& grade) {
  Staircase moved = staircase(trial.drill);
  moved.record(grade.correct);
  stored_.staircases[std::string(trial.drill.rawValue())] = moved;

  const Attempt attempt = answered(trial, grade);
  objectWillChange.send();
  stored_.attempts.push_back(attempt);

  trim();
  recompute();
  save();
}

Staircase Profile::staircase(Drill drill) const {
  const auto found = stored_.staircases.find(std::string(drill.rawValue()));
  return found == stored_.staircases.end() ? Staircase{} : found->second;
}

std::optional<double> Profile::accuracy(Drill drill) const {
  const auto found = stats_.accuracy.find(std::string(drill.rawValue()));
  if (found == stats_.accuracy.end())
    return std::nullopt;
  return found->second;
}

std::span<const double> Profile::curve(Drill drill) const {
  const auto found = stats_.curves.find(std::string(drill.rawValue()));
  if (found == stats_.curves.end())
    return {};
  return found->second;
}

void Profile::recompute() {
  Stats stats = Statistics::compute(stored_.attempts, stored_.lifetime, Date::now());
  objectWillChange.send();
  stats_ = std::move(stats);
}

void Profile::trim() {
  auto& attempts = stored_.attempts;
  if (attempts.size() <= detailRows)
    return;
  const auto firstKept = attempts.end() - static_cast<std::ptrdiff_t>(detailRows);
  std::for_each(attempts.begin(), firstKept, [this](const Attempt& attempt) {
    if (const auto band = attempt.mappedBand())
      stored_.lifetime[*band].add(attempt);
  });
  objectWillChange.send();
  attempts.erase(attempts.begin(), firstKept);
}

void Profile::replace(std::vector<Attempt> attempts, std::map<std::string, Staircase> staircases) {
  objectWillChange.send();
  stored_.attempts = std::move(attempts);
  stored_.staircases = std::move(staircases);
}

void Profile::save() const {
  if (const auto bytes = Coding::encode(stored_))
    SafeFile::write(url_, *bytes);
}

} // namespace velto
