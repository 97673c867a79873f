#include "Profile.h"

#include "Coding.h"
#include "Date.h"
#include "Numbers.h"
#include "SafeFile.h"
#include "UUID.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace velto {

namespace {

namespace fs = std::filesystem;

// None of the file operations below reports anything: what fails is as if it had not been tried.

// Across file systems a move is a copy first; the original goes only once that is complete.
void move(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::rename(from, to, error);
  if (error != std::errc::cross_device_link)
    return;
  if (fs::copy_file(from, to, error))
    fs::remove(from, error);
}

void migrate(const ProfileLocation& location) {
  std::error_code error;
  if (!location.earlierFile || !fs::exists(*location.earlierFile, error) ||
      fs::exists(location.file(), error))
    return;
  fs::create_directories(location.directory, error);
  move(*location.earlierFile, location.file());
}

// The file's path, and its folder made if need be. Absolute, so that a later change of the current
// folder does not move the record.
fs::path prepare(const ProfileLocation& location) {
  migrate(location);
  std::error_code error;
  fs::create_directories(location.directory, error);
  const fs::path absolute = fs::absolute(location.file(), error);
  return error ? location.file() : absolute;
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
