// File descriptors.
#pragma once

#include <filesystem>
#include <sys/types.h>

namespace velto::Descriptors {

// Opens `path` with O_CLOEXEC and retries on EINTR. Returns -1 and sets errno on failure. Any
// thread.
[[nodiscard]] int open(const std::filesystem::path& path, int flags, mode_t mode = 0);

} // namespace velto::Descriptors
