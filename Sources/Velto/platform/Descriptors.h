// File descriptors.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>

// All retry on EINTR and set errno on failure. Any thread.
namespace velto::Descriptors {

// Opens `path` with O_CLOEXEC. Returns -1 on failure.
[[nodiscard]] int open(const std::filesystem::path& path, int flags, mode_t mode = 0);

[[nodiscard]] bool writeAll(int descriptor, std::string_view bytes);

// Reads `size` bytes. Fails if there are fewer.
[[nodiscard]] bool readAll(int descriptor, std::size_t size, std::string& bytes);

// Some file systems report a failed write only here. The descriptor is closed in any case.
bool close(int descriptor);

// True if the last operation failed for lack of permission rather than for the state of the disk.
[[nodiscard]] bool isRefused();

} // namespace velto::Descriptors
