// Merges the records of programs that write one file, and those found in several files.
//
// Answers carry ids and are counted once. Roll-ups carry none: they come from one side, and
// answers that only the other side has are rolled up anew. Nothing here accesses the disk. Any
// thread.
#pragma once

#include "Record.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace velto {

// Contents of a backup of the profile file.
struct Backup : Stored {
  [[nodiscard]] const Stored& record() const { return *this; }

  // Answers that the profile file did not have when the backup was written.
  std::vector<Attempt> unsaved;
  // When the profile file was last changed before the backup, in nanoseconds since 1970; nullopt if
  // there was no file.
  std::optional<std::int64_t> fileChanged;
  // Number of the save, counted by the program that made the backup.
  std::int64_t save = 0;
};

namespace Merging {

// The profile file as it was found.
struct File {
  bool exists = false;
  std::int64_t changed = 0;     // as in Backup
  std::optional<Stored> stored; // nullopt if it cannot be read or decoded
};

// `base`, with all answers in `unsaved` and with those of `mine` that `base` has not rolled up.
// Only a full `base` has rolled up answers: those of `mine` before the first one that both have.
// Staircases come from the side with the later answer of their drill. Rows are ordered by date as
// far as those of `base` are. Does not trim.
[[nodiscard]] Stored merged(Stored base, const Stored& mine, const std::vector<Attempt>& unsaved,
                            std::size_t detailRows);

// The record, from the profile file and from the backups that programs left without a clean end;
// `backups` are ordered from the newest. A backup wins over a file that does not decode, and over
// one that has not changed since: a power cut may have undone later changes. Of other backups only
// unsaved answers, and staircases that are later, count. A missing file was deleted, unless there
// was none when the backup was written. nullopt if nothing is left.
[[nodiscard]] std::optional<Stored> recovered(const File& file, const std::vector<Backup>& backups,
                                              std::size_t detailRows);

} // namespace Merging
} // namespace velto
