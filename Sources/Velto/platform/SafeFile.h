// A file that is rewritten in place, and what tells whether somebody else changed it.
//
// Nothing here waits for a disk except sync(). Whoever writes holds the FolderLock, and keeps a
// complete BackupFile elsewhere while the file is incomplete. Any thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velto::SafeFile {

// Larger files are treated as unreadable.
inline constexpr std::uintmax_t mostBytes = std::uintmax_t{1} << 30;

// The identity of a file and of its contents. Every write, rename and replacement changes it.
struct Stamp {
  std::int64_t inode = 0;
  std::int64_t size = 0;     // bytes
  std::int64_t modified = 0; // nanoseconds since 1970
  std::int64_t changed = 0;  // same; the system's own clock, which no program sets

  bool operator==(const Stamp&) const = default;
};

// nullopt if there is no file.
[[nodiscard]] std::optional<Stamp> stamp(const std::filesystem::path& file);

struct Reading {
  enum class State : std::uint8_t {
    missing,
    irregular,  // a folder, a pipe or a device: reading it might never end
    unreadable, // for now, or for good
    exhausted,  // this process is out of memory or of descriptors
    complete
  };
  State state = State::missing;
  std::string bytes;          // if complete
  std::optional<Stamp> stamp; // from before the bytes were read; nullopt if missing
};

[[nodiscard]] Reading read(const std::filesystem::path& file);

// Whether a file that could not be written was refused, rather than given up.
enum class Written : std::uint8_t {
  done,
  refused, // no permission to write here
  failed   // the disk is full or faulty, or the folder is gone
};

// Truncates the file and writes `bytes`: an interrupted write leaves a prefix of them, never a
// mixture. Sets the time of modification to the nanosecond, so that two writes within one tick of
// the system's clock have different stamps.
[[nodiscard]] Written overwrite(const std::filesystem::path& file, std::string_view bytes);

// False if the file system keeps times too coarsely for overwrite() to make its stamp unique.
[[nodiscard]] bool isExact(const Stamp& stamp);

// Forces a file's contents, or a folder's entries, to the disk.
bool sync(const std::filesystem::path& path);

} // namespace velto::SafeFile
