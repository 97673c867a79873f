#include "ProfileStore.h"

#include "Coding.h"
#include "FolderLock.h"
#include "Folders.h"
#include "FurtherBackups.h"
#include "Merging.h"
#include "PutAside.h"
#include "UUID.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <utility>

namespace velto {

namespace {

namespace fs = std::filesystem;
using State = SafeFile::Reading::State;
using SafeFile::Written;

constexpr std::string_view savingCopy = "saving"; // in earlier versions without an id
constexpr std::string_view durableCopy = "backup";

void migrate(const ProfileLocation& location) {
  if (!location.earlierFile || !Folders::exists(*location.earlierFile) ||
      Folders::exists(location.file()))
    return;
  Folders::create(location.directory);
  Folders::moveFile(*location.earlierFile, location.file());
}

// The file's path. Creates its folder if needed. Absolute, so that a later change of the current
// folder does not move the record.
fs::path prepare(const ProfileLocation& location) {
  migrate(location);
  Folders::create(location.directory);
  return Folders::absolute(location.file());
}

// An id for this program, with which the names of its copies end.
std::string newId() {
  constexpr std::size_t digits = 8;
  std::string id = UUID::random().string();
  id.resize(digits);
  return id;
}

std::string suffix(std::string_view kind, const std::string& id) {
  return std::string(kind) + '-' + id;
}

// The id of the program that made a copy. For a copy without one, the whole name.
std::string idOf(const fs::path& copy) {
  const std::string name = copy.filename().string();
  return name.substr(name.find_last_of('-') + 1);
}

// What the copies of which only the latest counts have in common: "ID", or "N-ID".
std::string lineOf(const fs::path& copy, const fs::path& file) {
  const std::string name = copy.filename().string();
  return name.substr(name.find('-', file.filename().string().size()) + 1);
}

std::optional<std::int64_t> changedAt(const std::optional<SafeFile::Stamp>& stamp) {
  return stamp ? std::optional(stamp->changed) : std::nullopt;
}

bool decodes(std::string_view bytes) {
  return Coding::decodeStored(bytes).has_value();
}

bool contains(const std::vector<Attempt>& attempts, const Attempt& attempt) {
  return std::any_of(attempts.begin(), attempts.end(),
                     [&](const Attempt& other) { return other.id == attempt.id; });
}

struct Copy {
  std::int64_t changed = 0; // as in SafeFile::Stamp
  Backup backup;
};

// The answers of both lists, each once.
std::vector<Attempt> joined(std::vector<Attempt> attempts, const std::vector<Attempt>& others) {
  std::copy_if(others.begin(), others.end(), std::back_inserter(attempts),
               [&](const Attempt& other) { return !contains(attempts, other); });
  return attempts;
}

// The profile file and its copies, as found in the folder.
struct Found {
  SafeFile::Reading file;
  bool fileDecodes = false;
  bool isOwnWreck = false;         // the file is the beginning of a copy: its write was cut short
  std::optional<Stored> record;    // from all files together
  std::vector<Attempt> unsaved;    // answers that the file lacked when the copies were made
  std::vector<fs::path> abandoned; // copies of programs that have ended, all of them read
  bool areAllRead = true;          // no copy was missed: each could be read, or its program runs
};

// If the file decodes, ignores the copies of running programs, which save their answers themselves.
Found find(const fs::path& file, const std::string& ownId, std::size_t detailRows) {
  Found found;
  found.file = SafeFile::read(file);
  Merging::File current{.exists = found.file.state != State::missing,
                        .changed = changedAt(found.file.stamp).value_or(0),
                        .stored = std::nullopt};
  if (found.file.state == State::complete)
    current.stored = Coding::decodeStored(found.file.bytes);
  found.fileDecodes = current.stored.has_value();

  std::map<std::string, Copy> copies; // the latest of each line
  // The durable copies first: of two copies of one save, they are the later ones.
  auto paths = BackupFile::all(file, durableCopy);
  for (auto& path : BackupFile::all(file, savingCopy))
    paths.push_back(std::move(path));
  for (const fs::path& path : paths) {
    const std::string id = idOf(path);
    const BackupFile::State state = BackupFile::stateOf(path);
    if (state == BackupFile::State::inUse && found.fileDecodes)
      continue;
    const SafeFile::Reading reading = SafeFile::read(path);
    if (state == BackupFile::State::unknown || reading.state != State::complete)
      found.areAllRead = false;
    else if (state == BackupFile::State::abandoned && id != ownId)
      found.abandoned.push_back(path);
    if (BackupFile::isPartial(path))
      continue;
    auto backup = Coding::decodeBackup(reading.bytes);
    if (!backup)
      continue;
    if (found.file.state == State::complete && reading.bytes.starts_with(found.file.bytes))
      found.isOwnWreck = true;
    const auto [place, isFirst] = copies.try_emplace(lineOf(path, file));
    if (isFirst || place->second.backup.save < backup->save)
      place->second = {reading.stamp->changed, std::move(*backup)};
  }
  std::vector<Copy> newestFirst;
  for (auto& [line, copy] : copies)
    newestFirst.push_back(std::move(copy));
  std::sort(newestFirst.begin(), newestFirst.end(),
            [](const Copy& a, const Copy& b) { return a.changed > b.changed; });
  std::vector<Backup> backups;
  for (Copy& copy : newestFirst) {
    found.unsaved.insert(found.unsaved.end(), copy.backup.unsaved.begin(),
                         copy.backup.unsaved.end());
    backups.push_back(std::move(copy.backup));
  }
  found.record = Merging::recovered(current, backups, detailRows);
  std::erase_if(found.unsaved, [&](const Attempt& attempt) {
    return !found.record || !contains(found.record->attempts, attempt);
  });
  return found;
}

} // namespace

// A record to be saved, with what the main thread knew of the file. The bytes encode the record.
struct ProfileStore::Snapshot {
  std::shared_ptr<const std::string> bytes;
  std::optional<Stored> record; // nullopt if the file has these bytes already
  std::vector<Attempt> unsaved;
  std::optional<SafeFile::Stamp> stamp;
  bool isKnown = false;
  bool overwrites = false;
  std::int64_t number = 0; // of the save
  bool ends = false;       // the program ends: remove the backup
  bool isBackedUp = false; // by an earlier attempt to save this snapshot
};

struct ProfileStore::Result {
  bool isBackedUp = false;
  bool isSaved = false;
  bool isRefusedLock = false;
  std::optional<Stored> merged;
  std::vector<Attempt> unsaved;         // of copies, which the merged record has as well
  std::optional<SafeFile::Stamp> stamp; // if saved
};

// The writer's half: everything that may wait.
class ProfileStore::Disk {
public:
  Disk(fs::path file, std::string id, std::size_t detailRows)
      : file_(std::move(file)), id_(std::move(id)), detailRows_(detailRows),
        backup_(file_, suffix(durableCopy, id_)),
        furtherBackups_(file_, std::string(durableCopy), id_) {}

  // Saves the snapshot as far as it can be saved. Call again with the same one if the lock is
  // refused.
  Result save(Snapshot& snapshot) {
    Result result;
    if (snapshot.record) {
      std::string bytes = *snapshot.bytes;
      result = write(snapshot, bytes);
      // Now the backup can tell that the file has everything.
      if (result.isSaved)
        result.isBackedUp = backUp(bytes, {}, result.stamp, snapshot.number);
      return result;
    }
    if (snapshot.ends)
      result.isRefusedLock = !end();
    else
      result.isBackedUp =
          backUp(*snapshot.bytes, snapshot.unsaved, snapshot.stamp, snapshot.number);
    return result;
  }

  // Makes the snapshot durable while save() takes its time. Any thread; several at once.
  void backUpMeanwhile(const Snapshot& snapshot) {
    const auto text = Coding::encodeBackup(*snapshot.bytes, snapshot.unsaved,
                                           changedAt(snapshot.stamp), snapshot.number);
    if (text)
      furtherBackups_.write(*text, snapshot.number);
  }

private:
  static constexpr std::chrono::milliseconds lockPatience{100};

  // Writes the record to the file, merged with the file's content. `bytes` encode the record, and
  // afterwards the merged one.
  Result write(Snapshot& snapshot, std::string& bytes) {
    Result result;
    const FolderLock lock(file_, FolderLock::Use::writing, lockPatience);
    if (lock.isRefused()) {
      if (!snapshot.isBackedUp)
        snapshot.isBackedUp =
            backUp(*snapshot.bytes, snapshot.unsaved, snapshot.stamp, snapshot.number);
      result.isRefusedLock = true;
      return result;
    }
    std::vector<fs::path> abandoned;
    std::optional<SafeFile::Stamp> stamp = SafeFile::stamp(file_);
    std::optional<SafeFile::Reading> unreadable;
    if (!snapshot.isKnown || !stamp || stamp != snapshot.stamp) {
      Found found = find(file_, id_, detailRows_);
      stamp = found.file.stamp;
      if (found.record && !snapshot.overwrites) {
        result.merged = merge(std::move(*found.record), snapshot, bytes);
        result.unsaved = std::move(found.unsaved);
      }
      abandoned = std::move(found.abandoned);
      if (!found.fileDecodes && !found.isOwnWreck) {
        unreadable = std::move(found.file);
        stamp.reset();
      }
    }
    result.isBackedUp =
        backUp(bytes, joined(snapshot.unsaved, result.unsaved), stamp, snapshot.number);
    if (!result.isBackedUp)
      return result;
    const bool mayOverwrite = !unreadable || PutAside::keep(file_, *unreadable, decodes);
    result.isSaved = mayOverwrite && SafeFile::overwrite(file_, bytes) == Written::done;
    if (result.isSaved)
      result.stamp = SafeFile::stamp(file_);
    if (result.isSaved || backup_.exists())
      for (const fs::path& copy : abandoned)
        drop(copy, result.merged ? *result.merged : *snapshot.record);
    return result;
  }

  // Removes a copy of a program that has ended. If it has answers that `record` has not, because
  // the user has deleted or replaced the file, puts it aside. A no-op if it cannot be read.
  void drop(const fs::path& copy, const Stored& record) const {
    const SafeFile::Reading reading = SafeFile::read(copy);
    if (reading.state != State::complete)
      return;
    const auto old = Coding::decodeBackup(reading.bytes);
    const bool isCovered =
        BackupFile::isPartial(copy) || !old ||
        Merging::merged(record, *old, old->unsaved, detailRows_).attempts.size() ==
            record.attempts.size();
    if (isCovered || PutAside::keepBytes(file_, reading.bytes, decodes))
      Folders::remove(copy);
  }

  // Encodes the merged record to `bytes`. nullopt if it cannot be encoded.
  std::optional<Stored> merge(Stored found, const Snapshot& snapshot, std::string& bytes) const {
    Stored record =
        Merging::merged(std::move(found), *snapshot.record, snapshot.unsaved, detailRows_);
    record.trim(detailRows_);
    auto encoded = Coding::encode(record);
    if (!encoded)
      return std::nullopt;
    bytes = std::move(*encoded);
    return record;
  }

  // True if the file may be truncated now: the backup is on the disk, or the folder takes no files.
  //
  // A backup that knows of a file says that the file was deleted if it is missing. The file's entry
  // in the folder reaches the disk no later than the backup's, which is newer: journals keep the
  // order, and the flush of the folder makes both durable. Its contents need not be on the disk: a
  // backup wins over contents that are older or incomplete.
  bool backUp(std::string_view bytes, const std::vector<Attempt>& unsaved,
              const std::optional<SafeFile::Stamp>& stamp, std::int64_t number) {
    const auto text = Coding::encodeBackup(bytes, unsaved, changedAt(stamp), number);
    if (!text || backup_.write(*text, BackupFile::Durability::survivePowerCut) == Written::failed)
      return false;
    if (backup_.exists())
      furtherBackups_.removeUpTo(number);
    return true;
  }

  // Forces the file to the disk, where it replaces the backup. False if the lock is refused.
  bool end() {
    const FolderLock lock(file_, FolderLock::Use::reading, lockPatience);
    if (lock.isRefused())
      return false;
    if (SafeFile::sync(file_) && SafeFile::sync(Folders::of(file_))) {
      backup_.remove();
      furtherBackups_.removeUpTo(std::numeric_limits<std::int64_t>::max());
      SafeFile::sync(Folders::of(file_));
    }
    return true;
  }

  const fs::path file_;
  const std::string id_;
  const std::size_t detailRows_;
  BackupFile backup_;
  FurtherBackups furtherBackups_; // the snapshots that backup_ has are newer or merged
};

ProfileStore::ProfileStore(const ProfileLocation& location, std::size_t detailRows)
    : file_(prepare(location)), earlierFile_(location.earlierFile), detailRows_(detailRows),
      id_(newId()), saving_(file_, suffix(savingCopy, id_)),
      disk_(std::make_shared<Disk>(file_, id_, detailRows)) {}

ProfileStore::~ProfileStore() {
  using std::chrono::steady_clock;
  const auto deadline = steady_clock::now() + endPatience;
  if (saves_ == 0 || !wait(endPatience) || !isSaved_)
    return;
  const auto last = std::make_shared<Snapshot>();
  last->ends = true;
  post(last);
  wait(std::chrono::duration_cast<std::chrono::milliseconds>(deadline - steady_clock::now()));
}

// Where others hold the lock, somebody may be writing: what was read while the file changed is read
// again. If it changes all the time, the first save merges.
std::optional<Stored> ProfileStore::load() {
  constexpr int attempts = 4;
  const FolderLock lock(file_, FolderLock::Use::reading, std::chrono::milliseconds(0));
  Found found;
  bool isStable = false;
  for (int attempt = 0; !isStable && attempt < attempts; ++attempt) {
    found = find(file_, id_, detailRows_);
    isStable = !lock.isRefused() || ((found.fileDecodes || found.file.state == State::missing) &&
                                     SafeFile::stamp(file_) == found.file.stamp);
  }
  // An unreadable file may be renamed aside: then it would look deleted to copies that know of it.
  if (found.fileDecodes)
    stamp_ = found.file.stamp;
  unsaved_ = std::move(found.unsaved);
  const bool isMissing = found.file.state == State::missing;
  isKnown_ =
      isStable && found.abandoned.empty() && found.areAllRead && (isMissing || found.fileDecodes);
  // After a failed move, the earlier file is the record.
  if (isMissing && !found.record && earlierFile_)
    found.record = Coding::decodeStored(SafeFile::read(*earlierFile_).bytes);
  isSecured_ = isKnown_ && isMissing && !found.record;
  return std::move(found.record);
}

void ProfileStore::save(const Stored& stored) {
  auto bytes = Coding::encode(stored);
  if (!bytes)
    return;
  ++saves_;
  isSaved_ = false;
  const auto copy = Coding::encodeBackup(*bytes, unsaved_, changedAt(stamp_), saves_);
  const bool hasCopy =
      copy && saving_.write(*copy, BackupFile::Durability::surviveKill) != Written::failed;

  const auto snapshot = std::make_shared<Snapshot>();
  snapshot->number = saves_;
  if (hasCopy && isSecured_ && !merged_ && writeNow(*bytes)) {
    unsaved_.clear();
    overwrites_ = false;
    isSaved_ = true;
    saving_.remove();
  } else {
    snapshot->record = stored;
    snapshot->unsaved = unsaved_;
    snapshot->isKnown = isKnown_ && !merged_;
    snapshot->overwrites = overwrites_;
  }
  snapshot->stamp = stamp_;
  snapshot->bytes = std::make_shared<const std::string>(*std::move(bytes));
  post(snapshot);
}

// Writes the file without waiting. Returns false if it would have to wait, or on failure.
bool ProfileStore::writeNow(const std::string& bytes) {
  const FolderLock lock(file_, FolderLock::Use::writing, std::chrono::milliseconds(0));
  if (lock.isRefused() || !isKnown_ || SafeFile::stamp(file_) != stamp_)
    return false;
  const bool isWritten = SafeFile::overwrite(file_, bytes) == Written::done;
  stamp_ = SafeFile::stamp(file_);
  isKnown_ = isWritten && stamp_ && SafeFile::isExact(*stamp_);
  return isWritten;
}

void ProfileStore::post(const std::shared_ptr<Snapshot>& snapshot) {
  BackgroundWriter::Detour detour;
  if (!snapshot->ends)
    detour = [disk = disk_, snapshot] { disk->backUpMeanwhile(*snapshot); };
  writer_.post(
      [this, disk = disk_, snapshot]() -> BackgroundWriter::Outcome {
        const auto result = std::make_shared<Result>(disk->save(*snapshot));
        if (result->isRefusedLock)
          return {.finish = {}, .again = true};
        return {.finish = [this, snapshot, result] { finish(*snapshot, *result); }, .again = false};
      },
      std::move(detour));
}

void ProfileStore::finish(const Snapshot& snapshot, const Result& result) {
  if (snapshot.ends)
    return;
  isSecured_ = result.isBackedUp;
  if (!snapshot.record)
    return;
  isKnown_ = result.isSaved && result.stamp && SafeFile::isExact(*result.stamp);
  if (result.merged)
    merged_ = result.merged;
  if (!result.isSaved) {
    unsaved_ = joined(std::move(unsaved_), result.unsaved);
    return;
  }
  stamp_ = result.stamp;
  std::erase_if(unsaved_,
                [&](const Attempt& attempt) { return contains(snapshot.unsaved, attempt); });
  if (snapshot.number != saves_)
    return;
  isSaved_ = true;
  overwrites_ = false;
  saving_.remove();
}

std::optional<Stored> ProfileStore::takeMerged(const Stored& stored) {
  writer_.collect();
  if (!merged_)
    return std::nullopt;
  auto other = std::exchange(merged_, std::nullopt);
  return Merging::merged(*std::move(other), stored, unsaved_, detailRows_);
}

bool ProfileStore::wait(std::chrono::milliseconds most) {
  const bool isIdle = writer_.wait(most);
  writer_.collect();
  return isIdle;
}

} // namespace velto
