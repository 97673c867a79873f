// File descriptors.
#pragma once

#include <filesystem>
#include <sys/types.h>

namespace velto::Descriptors {

// Opens `path` for this process only, again where a signal interrupts it. -1, with the error in
// errno, if it cannot be opened. Any thread.
[[nodiscard]] int open(const std::filesystem::path& path, int flags, mode_t mode = 0);

} // namespace velto::Descriptors
