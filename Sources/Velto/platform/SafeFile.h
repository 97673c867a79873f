// Rewrites a file in place, with a complete backup beside it in case the save is interrupted.
//
// A save
//   1. writes the new bytes to a partial backup and renames it: a backup is always complete,
//   2. overwrites the file itself,
//   3. removes the backup.
// At any time the file or its backup is complete, unless no file can be created in the folder. A
// backup left by an interrupted save is removed by the next successful one.
//
// There is no fsync: this protects against a crash, a full disk and write errors, not against a
// loss of power.
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

// Larger files are treated as unreadable.
inline constexpr std::uintmax_t mostBytes = std::uintmax_t{1} << 30;

// Paths of the backup of `file` and of the partial backup.
[[nodiscard]] std::filesystem::path backup(const std::filesystem::path& file);
[[nodiscard]] std::filesystem::path backupPart(const std::filesystem::path& file);

// Saves `bytes`. Returns false on failure; load() then finds the previous bytes or the new ones. If
// no file can be created in the folder, there is no backup, and an interrupted or failed write can
// lose the file. Waits up to 250 ms for other programs that lock the folder, then fails. Any
// thread.
bool write(const std::filesystem::path& file, std::string_view bytes);

// The bytes of a regular file; nullopt if it cannot be read. Any thread.
[[nodiscard]] std::optional<std::string> contents(const std::filesystem::path& file);

// Decodes the file or, if it exists but does not decode, its backup. `decode` returns an optional;
// nullopt if neither decodes. Changes nothing. Any thread.
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
