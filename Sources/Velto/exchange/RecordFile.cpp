#include "RecordFile.h"

#include "BackupFile.h"
#include "Coding.h"
#include "FolderLock.h"
#include "Folders.h"
#include "Merging.h"
#include "Profile.h"
#include "ProfileStore.h"
#include "PutAside.h"
#include "SafeFile.h"
#include "UUID.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

namespace velto {

namespace {

namespace fs = std::filesystem;
using RecordFile::Copy;
using RecordFile::Replacement;
using State = SafeFile::Reading::State;

bool decodes(std::string_view bytes) {
  return Coding::decodeStored(bytes).has_value();
}

std::optional<Stored> recordIn(const fs::path& file) {
  return Coding::decodeStored(SafeFile::read(file).bytes);
}

double rolledUp(const Stored& stored) {
  double count = 0; // the counters saturate
  for (const auto& [band, roll] : stored.lifetime)
    count += static_cast<double>(roll.attempts);
  return count;
}

bool hasAllOf(const Stored& record, const Stored& other) {
  std::set<std::array<std::uint8_t, 16>> ids;
  for (const Attempt& attempt : record.attempts)
    ids.insert(attempt.id.bytes);
  return std::all_of(other.attempts.begin(), other.attempts.end(),
                     [&](const Attempt& attempt) { return ids.contains(attempt.id.bytes); });
}

Replacement failure(std::string problem) {
  return {.problem = std::move(problem), .isChanged = false, .former = std::nullopt};
}

// Where bytes that were put aside are; the newest file if they are unknown.
std::optional<fs::path> formerIn(const fs::path& file, const SafeFile::Reading& reading) {
  if (reading.state == State::missing ||
      (reading.state == State::complete && reading.bytes.empty()))
    return std::nullopt;
  const auto all = PutAside::all(file);
  if (all.empty())
    return std::nullopt;
  const auto found = std::find_if(all.begin(), all.end(), [&](const fs::path& kept) {
    return SafeFile::read(kept).bytes == reading.bytes;
  });
  return found == all.end() ? all.back() : *found;
}

// Keeps the file's bytes. A file that Velto can load is not renamed: it must stay where it is if
// the disk is full.
bool putAside(const fs::path& file, const SafeFile::Reading& before) {
  return before.state == State::complete ? PutAside::keepBytes(file, before.bytes, decodes)
                                         : PutAside::keep(file, before, decodes);
}

// The files put aside that are not among `earlier`.
void removeNew(const fs::path& file, const std::vector<fs::path>& earlier) {
  for (const fs::path& kept : PutAside::all(file))
    if (std::find(earlier.begin(), earlier.end(), kept) == earlier.end())
      Folders::remove(kept);
}

enum class Writing : std::uint8_t { done, notBegun, failed };

// Writes as Velto does: a complete copy on the disk, then the file in place.
Writing writeSafely(const fs::path& file, std::string_view bytes) {
  constexpr std::size_t digits = 8;
  BackupFile copy(file, "backup-" + UUID::random().string().substr(0, digits));
  const auto stamp = SafeFile::stamp(file);
  const auto text =
      Coding::encodeBackup(bytes, {}, stamp ? std::optional(stamp->changed) : std::nullopt, 1);
  using enum BackupFile::Durability;
  if (!text || copy.write(*text, survivePowerCut) == SafeFile::Written::failed)
    return Writing::notBegun;
  if (SafeFile::overwrite(file, bytes) != SafeFile::Written::done)
    return Writing::failed;
  if (SafeFile::sync(file) && SafeFile::sync(Folders::of(file)))
    copy.remove();
  return Writing::done;
}

Replacement writeChecked(const fs::path& file, const SafeFile::Reading& before,
                         const std::string& bytes) {
  if (before.state == State::complete && before.bytes == bytes)
    return {};
  const auto earlier = PutAside::all(file);
  if (!putAside(file, before))
    return failure("the present record cannot be put aside; nothing was changed");
  const auto stamp = SafeFile::stamp(file);
  if (stamp && stamp != before.stamp)
    return failure("another program changed the record meanwhile; nothing was changed");
  Replacement done{.problem = {}, .isChanged = true, .former = formerIn(file, before)};
  switch (writeSafely(file, bytes)) {
  case Writing::done:
    return done;
  case Writing::notBegun:
    if (before.state == State::complete)
      removeNew(file, earlier);
    return failure("there is no room to replace the record safely; nothing was changed");
  case Writing::failed:
    break;
  }
  return failure("the record cannot be written: no permission, or the disk is full or faulty");
}

} // namespace

std::optional<Stored> RecordFile::load(const ProfileLocation& location) {
  if (location.earlierFile && !Folders::exists(location.file()) &&
      Folders::exists(*location.earlierFile))
    return recordIn(*location.earlierFile);
  if (!Folders::exists(location.directory))
    return std::nullopt;
  return ProfileStore({location.directory, std::nullopt}, Profile::detailRows).load();
}

std::vector<Copy> RecordFile::copies(const fs::path& file) {
  std::vector<std::pair<std::int64_t, Copy>> found;
  for (const std::string_view prefix : {"saving", "backup", "aside-"})
    for (const fs::path& path : BackupFile::all(file, prefix)) {
      const auto stamp = SafeFile::stamp(path);
      if (!stamp || BackupFile::isPartial(path))
        continue;
      const bool isAside = prefix == "aside-";
      const bool isInUse = BackupFile::stateOf(path) == BackupFile::State::inUse;
      const Copy::Kind kind = isAside   ? Copy::Kind::putAside
                              : isInUse ? Copy::Kind::running
                                        : Copy::Kind::left;
      found.push_back({stamp->changed, {path, kind, recordIn(path)}});
    }
  std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) {
    return a.first != b.first ? a.first > b.first : a.second.path > b.second.path;
  });
  std::vector<Copy> copies;
  for (auto& [changed, copy] : found)
    copies.push_back(std::move(copy));
  return copies;
}

std::optional<RecordFile::Candidate> RecordFile::candidate(const ProfileLocation& location) {
  const fs::path file = location.file();
  const auto present = recordIn(file);
  auto loaded = load(location);
  if (loaded && loaded != present)
    return Candidate{file, *std::move(loaded)};
  for (Copy& copy : copies(file)) {
    if (!copy.record || copy.kind == Copy::Kind::running || copy.record == present)
      continue;
    if (copy.kind == Copy::Kind::left && present && hasAllOf(*present, *copy.record))
      continue;
    return Candidate{copy.path, *std::move(copy.record)};
  }
  return std::nullopt;
}

Stored RecordFile::merged(const std::optional<Stored>& present, const Stored& imported) {
  if (!present || *present == Stored{})
    return imported;
  const bool isBase = rolledUp(imported) > rolledUp(*present);
  Stored record = Merging::merged(isBase ? imported : *present, isBase ? *present : imported, {},
                                  Profile::detailRows);
  record.trim(Profile::detailRows);
  return record;
}

Replacement
RecordFile::replace(const ProfileLocation& location,
                    const std::function<Stored(const std::optional<Stored>& present)>& change,
                    bool unlessRunning, std::chrono::milliseconds patience) {
  ProfileStore store(location, Profile::detailRows); // moves the file of an earlier version here
  const fs::path& file = store.file();
  if (!Folders::exists(Folders::of(file)))
    return failure("the folder of the record cannot be created");
  const FolderLock lock(file, FolderLock::Use::writing, patience);
  if (lock.isRefused())
    return failure("another program is saving the record; try again");
  if (unlessRunning) {
    const auto all = copies(file);
    if (std::any_of(all.begin(), all.end(),
                    [](const Copy& copy) { return copy.kind == Copy::Kind::running; }))
      return failure("Velto is running with this record; close it first");
  }
  const SafeFile::Reading before = SafeFile::read(file);
  if (before.state == State::irregular || before.state == State::exhausted)
    return failure("the present record is no regular file, or cannot be read now");
  const auto bytes = Coding::encode(change(store.load()));
  if (!bytes || !decodes(*bytes))
    return failure("the record has what its file cannot hold");
  return writeChecked(file, before, *bytes);
}

} // namespace velto
