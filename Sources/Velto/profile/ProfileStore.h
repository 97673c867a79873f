// The files that hold a practice record, shared with other programs and safe from kills and power
// cuts.
//
// profile.json                  the record, rewritten in place
// profile.json.saving-ID        complete copy by save(), while profile.json may be incomplete or
//                               behind: survives a kill
// profile.json.backup-ID        complete copy by the background writer: survives a power cut
// profile.json.backup-N-ID      same, while the disk is slow
// profile.json.aside-DATE       a former profile.json that could not be read or decoded (PutAside)
//
// ID identifies the program. It removes its copies when it ends cleanly. Copies that a program
// left are read by the next load, and removed once a backup holds what they held.
//
// save() writes profile.json itself if it can do so without waiting: nobody has the lock, the file
// is as this program last left or read it, and a backup holds what the file would lose. Otherwise
// the writer does: it waits for the lock, merges, forces the backup to the disk, puts aside, and
// only then touches the file.
//
// After a power cut, all answers are there but those of the last second and of the time F that the
// disk takes to make one copy durable. An answer that the writer takes up is in the first copy that
// it then forces to the disk; before, it waits at most 0.1 s for the lock. If the writer is busy, a
// further copy is begun 0.8 s after the answer at the latest, on a thread of its own, while F lasts
// less than BackgroundWriter::mostDetours times as long.
#pragma once

#include "BackgroundWriter.h"
#include "BackupFile.h"
#include "ProfileLocation.h"
#include "RecordStore.h"
#include "SafeFile.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// Main thread only.
class ProfileStore final : public RecordStore {
public:
  // How long the destructor waits for the disk and for other programs.
  static constexpr std::chrono::milliseconds endPatience{2000};

  // Moves an earlier version's file to the location and creates the folder, if needed.
  // `detailRows` as in Profile.
  ProfileStore(const ProfileLocation& location, std::size_t detailRows);
  // Waits until all is on the disk and the copies are removed. What takes longer than endPatience
  // is left to the next load.
  ~ProfileStore() override;

  // Does not wait for the lock. Changes nothing on disk.
  [[nodiscard]] std::optional<Stored> load() override;

  void add(const Attempt& attempt) override { unsaved_.push_back(attempt); }

  void overwriteNext() override {
    overwrites_ = true;
    unsaved_.clear();
  }

  void save(const Stored& stored) override;

  // Until it is called, each save merges again.
  [[nodiscard]] std::optional<Stored> takeMerged(const Stored& stored) override;

  // Waits until the writer is idle. False if that takes longer than `most`.
  bool wait(std::chrono::milliseconds most) override;

  [[nodiscard]] const std::filesystem::path& file() const override { return file_; }

private:
  struct Snapshot;
  struct Result;
  class Disk;

  [[nodiscard]] bool writeNow(const std::string& bytes);
  void finish(const Snapshot& snapshot, const Result& result);
  void post(const std::shared_ptr<Snapshot>& snapshot);

  const std::filesystem::path file_;
  const std::optional<std::filesystem::path> earlierFile_;
  const std::size_t detailRows_;

  // The file as this program last read or wrote it; nullopt if it was missing.
  std::optional<SafeFile::Stamp> stamp_;
  bool isKnown_ = false;   // the record in memory includes what the file held at stamp_
  bool isSecured_ = false; // a backup on the disk holds what an interrupted write would destroy
  bool overwrites_ = false;
  std::vector<Attempt> unsaved_;
  std::optional<Stored> merged_; // not taken yet
  std::int64_t saves_ = 0;
  bool isSaved_ = true; // the file has the latest save

  const std::string id_;
  BackupFile saving_;
  std::shared_ptr<Disk> disk_; // writer only
  BackgroundWriter writer_;
};

} // namespace velto
