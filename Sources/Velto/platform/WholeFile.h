// Files that are read and written whole, named by the user.
//
// Any thread, except that "-" belongs to the main thread. Waits for the disk.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace velto::WholeFile {

// Larger files are refused with EFBIG.
inline constexpr std::uintmax_t mostBytes = std::uintmax_t{1} << 30;

struct Reading {
  std::string bytes;
  int error = 0; // errno; 0 on success
};

// All bytes of a file, a pipe or a device; of standard input for "-". EBUSY if a file changed
// meanwhile.
[[nodiscard]] Reading read(const std::filesystem::path& path);

// Replaces a file, whose folder exists; "-" is standard output. The bytes are written under another
// name first, so that a failure leaves what was there; pipes and devices are written to directly.
// Follows symbolic links; a file that exists keeps its permissions. Returns 0, or errno.
[[nodiscard]] int write(const std::filesystem::path& path, std::string_view bytes);

} // namespace velto::WholeFile
