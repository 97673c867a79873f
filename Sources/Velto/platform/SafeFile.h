// A file that is rewritten in place and still outlives a writer that dies on the way: while that
// goes on, a backup holds the same bytes whole.
//
// A save
//   1. writes the new bytes to a part of a backup and gives it the backup's name, so that a
//      backup is always whole,
//   2. writes the file itself, plainly,
//   3. removes the backup.
// Whatever happens, the file or its backup is whole. A backup that a save left behind goes with
// the next one that succeeds.
//
// What is written is not forced to the disk: this guards against the death of the program, a full
// disk and errors, not against a loss of power.
#pragma once

#include "FolderLock.h"
#include "Folders.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace velto::SafeFile {

// Larger files are as good as unreadable.
inline constexpr std::uintmax_t mostBytes = std::uintmax_t{1} << 30;

// Where the backup of `file` lies, and the part that becomes the backup.
[[nodiscard]] std::filesystem::path backup(const std::filesystem::path& file);
[[nodiscard]] std::filesystem::path backupPart(const std::filesystem::path& file);

// Saves `bytes`; says whether the file now holds them. If not, what was saved before is still
// there. Where the folder takes no new file the plain write goes on without a backup. Programs
// that save the same file at once take turns; one that keeps it for a quarter of a second makes
// the save fail. Any thread.
bool write(const std::filesystem::path& file, std::string_view bytes);

// The bytes of a regular file; none if it cannot be read. Any thread.
[[nodiscard]] std::optional<std::string> contents(const std::filesystem::path& file);

// What `decode` makes of the file's bytes or, only where the file is there but gives nothing, of
// its backup's. Changes nothing. Any thread.
template <typename Decode>
[[nodiscard]] std::invoke_result_t<Decode, std::string_view> load(const std::filesystem::path& file,
                                                                  Decode decode) {
  const auto decoded = [&](const std::filesystem::path& path) {
    const auto bytes = contents(path);
    return bytes ? decode(*bytes) : std::nullopt;
  };
  const FolderLock lock(file, FolderLock::Use::reading);
  if (auto value = decoded(file))
    return value;
  if (!Folders::exists(file))
    return std::nullopt;
  return decoded(backup(file));
}

} // namespace velto::SafeFile
