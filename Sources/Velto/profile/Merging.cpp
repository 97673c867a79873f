#include "Merging.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <unordered_set>
#include <utility>

namespace velto {

namespace {

double secondsOf(const Attempt& attempt) {
  return attempt.date.secondsSinceReferenceDate;
}

// Inserts the attempt before the newer rows at the end.
void insert(std::vector<Attempt>& rows, const Attempt& attempt) {
  auto place = rows.end();
  while (place != rows.begin() && secondsOf(*(place - 1)) > secondsOf(attempt))
    --place;
  rows.insert(place, attempt);
}

// The date of each drill's latest answer.
std::map<std::string, double> latestAnswers(const std::vector<Attempt>& rows) {
  std::map<std::string, double> latest;
  for (const Attempt& row : rows) {
    const auto [place, isFirst] =
        latest.try_emplace(std::string(row.drill.rawValue()), secondsOf(row));
    if (!isFirst)
      place->second = std::max(place->second, secondsOf(row));
  }
  return latest;
}

double latestOf(const std::map<std::string, double>& latest, const std::string& drill) {
  const auto found = latest.find(drill);
  return found == latest.end() ? -std::numeric_limits<double>::infinity() : found->second;
}

void takeLaterStaircases(Stored& base, const Stored& mine) {
  const auto ofBase = latestAnswers(base.attempts);
  const auto ofMine = latestAnswers(mine.attempts);
  for (const auto& [drill, staircase] : mine.staircases)
    if (!base.staircases.contains(drill) || latestOf(ofMine, drill) > latestOf(ofBase, drill))
      base.staircases[drill] = staircase;
}

// Ids are random, so some of their bytes serve as a hash.
struct IdHash {
  std::size_t operator()(const std::array<std::uint8_t, 16>& id) const {
    std::size_t hash = 0;
    std::memcpy(&hash, id.data(), sizeof hash);
    return hash;
  }
};
using Ids = std::unordered_set<std::array<std::uint8_t, 16>, IdHash>;

// The number of leading rows that a full `base` has rolled up: those before the first row that both
// have. If there is none, those before the first row that is newer than `base`'s first one.
std::size_t rolledUpRows(const std::vector<Attempt>& rows, const std::vector<Attempt>& base,
                         const Ids& idsOfBase) {
  const auto common = std::find_if(rows.begin(), rows.end(), [&](const Attempt& row) {
    return idsOfBase.contains(row.id.bytes);
  });
  if (common != rows.end())
    return static_cast<std::size_t>(common - rows.begin());
  const auto newer = std::find_if(rows.begin(), rows.end(), [&](const Attempt& row) {
    return secondsOf(row) > secondsOf(base.front());
  });
  return static_cast<std::size_t>(newer - rows.begin());
}

// True if `backup` holds what the file held when the file was last changed, or a later state.
bool supersedes(const Backup& backup, const Merging::File& file) {
  if (!file.exists)
    return !backup.fileChanged;
  return !file.stored || (backup.fileChanged && file.changed <= *backup.fileChanged);
}

} // namespace

Stored Merging::merged(Stored base, const Stored& mine, const std::vector<Attempt>& unsaved,
                       std::size_t detailRows) {
  takeLaterStaircases(base, mine);
  Ids known;
  known.reserve(base.attempts.size());
  for (const Attempt& row : base.attempts)
    known.insert(row.id.bytes);
  const std::size_t rolledUp =
      base.attempts.size() < detailRows ? 0 : rolledUpRows(mine.attempts, base.attempts, known);
  const auto add = [&](const Attempt& row) {
    if (known.insert(row.id.bytes).second)
      insert(base.attempts, row);
  };
  std::for_each(unsaved.begin(), unsaved.end(), add);
  std::for_each(mine.attempts.begin() + static_cast<std::ptrdiff_t>(rolledUp), mine.attempts.end(),
                add);
  return base;
}

std::optional<Stored> Merging::recovered(const File& file, const std::vector<Backup>& backups,
                                         std::size_t detailRows) {
  std::optional<Stored> record;
  for (const Backup& backup : backups) {
    if (!supersedes(backup, file))
      continue;
    if (!record)
      record = merged(backup.record(), file.stored.value_or(Stored{}), {}, detailRows);
    else
      record = merged(*std::move(record), backup, backup.unsaved, detailRows);
  }
  if (!record)
    record = file.stored;
  // If the file is missing, the other backups are of a deleted one.
  if (!file.exists)
    return record;
  for (const Backup& backup : backups) {
    const Stored unsaved{backup.unsaved, backup.staircases, {}};
    if (!supersedes(backup, file))
      record = merged(*std::move(record), unsaved, {}, detailRows);
  }
  return record;
}

} // namespace velto
