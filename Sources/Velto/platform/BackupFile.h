// A complete copy of a file, beside it, that belongs to one running program.
#pragma once

#include "SafeFile.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

// The copy is written under another name and renamed: under its own name it is always complete. It
// survives a kill of the program. The program holds a lock on it, which shows others that it still
// runs. Readable by the user only.
//
// One object belongs to one thread at a time.
class BackupFile {
public:
  enum class Durability : std::uint8_t {
    surviveKill,    // complete for other programs as soon as write() returns
    survivePowerCut // also on the disk, for which write() waits
  };

  // The copy of `file` is called "FILE.SUFFIX". Nothing is written yet.
  BackupFile(std::filesystem::path file, std::string_view suffix);
  BackupFile(const BackupFile&) = delete;
  BackupFile& operator=(const BackupFile&) = delete;
  // Leaves the copy to the next program.
  ~BackupFile();

  // Replaces the copy. If this fails, the previous copy stays.
  [[nodiscard]] SafeFile::Written write(std::string_view bytes, Durability durability);

  // True if write() has succeeded since the last remove().
  [[nodiscard]] bool exists() const { return locked_ >= 0; }

  // Removes the copy, if there is one.
  void remove();

  // The copies of `file` whose suffix begins with `prefix`, in no order, including partial ones.
  [[nodiscard]] static std::vector<std::filesystem::path> all(const std::filesystem::path& file,
                                                              std::string_view prefix);
  enum class State : std::uint8_t {
    inUse,     // its program runs, and may replace or remove the copy at any time
    abandoned, // its program has ended, or the file system has no locks
    unknown    // there is no copy, or it cannot be opened
  };
  [[nodiscard]] static State stateOf(const std::filesystem::path& copy);
  // True if the copy was never completed.
  [[nodiscard]] static bool isPartial(const std::filesystem::path& copy);

private:
  [[nodiscard]] SafeFile::Written writeOnce(std::string_view bytes, Durability durability);
  void release();

  std::filesystem::path path_;
  int locked_ = -1; // descriptor of the current copy
};

} // namespace velto
