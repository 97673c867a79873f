#include "Profile.h"

#include "Bands.h"
#include "Date.h"
#include "ProfileStore.h"
#include "UUID.h"

#include <utility>

namespace velto {

Attempt Profile::answered(const Trial& trial, const Drills::Grade& grade, Date date) {
  Attempt attempt{.id = UUID::random(),
                  .date = date,
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

Profile::Profile() : Profile(ProfileLocation::resolve(Environment::ofProcess())) {}

Profile::Profile(const ProfileLocation& location)
    : Profile(std::make_unique<ProfileStore>(location, detailRows)) {}

Profile::Profile(std::unique_ptr<RecordStore> store) : store_(std::move(store)) {
  load();
}

Profile::Profile(Unsaved) {}

Profile::~Profile() = default;

std::filesystem::path Profile::url() const {
  return store_ ? store_->file() : std::filesystem::path();
}

void Profile::load() {
  auto stored = store_->load();
  if (!stored)
    return;
  stored_ = std::move(*stored);
  recompute();
}

void Profile::record(const Trial& trial, const Drills::Grade& grade) {
  takeMerged();
  Staircase moved = staircase(trial.drill);
  moved.record(grade.correct);
  stored_.staircases[std::string(trial.drill.rawValue())] = moved;

  const Attempt attempt = answered(trial, grade, Date::now());
  objectWillChange.send();
  stored_.attempts.push_back(attempt);
  if (store_)
    store_->add(attempt);

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
  if (stored_.excess(detailRows) == 0)
    return;
  objectWillChange.send();
  stored_.trim(detailRows);
}

void Profile::replace(std::vector<Attempt> attempts, std::map<std::string, Staircase> staircases) {
  objectWillChange.send();
  stored_.attempts = std::move(attempts);
  stored_.staircases = std::move(staircases);
  if (store_)
    store_->overwriteNext();
}

void Profile::save() {
  if (store_)
    store_->save(stored_);
}

bool Profile::waitForDisk(std::chrono::milliseconds most) {
  return !store_ || store_->wait(most);
}

void Profile::takeMerged() {
  auto merged = store_ ? store_->takeMerged(stored_) : std::nullopt;
  if (!merged)
    return;
  objectWillChange.send();
  stored_ = std::move(*merged);
}

} // namespace velto
