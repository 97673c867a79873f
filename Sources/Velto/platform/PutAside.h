// Keeps a file that could not be read or decoded and is about to be overwritten.
#pragma once

#include "SafeFile.h"

#include <filesystem>
#include <functional>
#include <string_view>
#include <vector>

namespace velto::PutAside {

// A file that does not decode is junk if it has at most this size.
inline constexpr std::size_t mostBytesOfJunk = 1024;
// With this many files or more, the oldest junk is removed for a new one.
inline constexpr std::size_t mostFiles = 8;

using Decodes = std::function<bool(std::string_view)>;

// Puts the bytes of `file`, as read, beside it in a file called "FILE.aside-DATE-TIME" (UTC).
// If the bytes are unknown or there is no room for a copy, renames the file itself. Does nothing if
// the file is empty or its bytes have been put aside before. `decodes` tells records from junk.
//
// Returns false if the file may not be overwritten: it could not be kept, or is not a regular file.
// Waits for the disk. Any thread; the caller holds the FolderLock.
[[nodiscard]] bool keep(const std::filesystem::path& file, const SafeFile::Reading& reading,
                        const Decodes& decodes);

// Same for bytes alone. Returns false if there is no room for them.
[[nodiscard]] bool keepBytes(const std::filesystem::path& file, std::string_view bytes,
                             const Decodes& decodes);

// The files put aside, oldest first.
[[nodiscard]] std::vector<std::filesystem::path> all(const std::filesystem::path& file);

} // namespace velto::PutAside
