// File and folder operations. Best effort: failures are not reported.
//
// Any thread.
#pragma once

#include <cstdint>
#include <filesystem>

namespace velto::Folders {

// The system's folder for temporary files, by default /tmp.
[[nodiscard]] std::filesystem::path temporary();

// `path` made absolute against the current folder; unchanged if that is unknown.
[[nodiscard]] std::filesystem::path absolute(const std::filesystem::path& path);

[[nodiscard]] bool exists(const std::filesystem::path& path);

// Creates a folder and its parents.
void create(const std::filesystem::path& folder);

// Moves a file. Across file systems, copies it under a temporary name, waits for the disk, renames
// the copy and only then removes the original: a move that is cut short leaves the original.
void moveFile(const std::filesystem::path& from, const std::filesystem::path& to);

// The folder of `file`; "." if it names none.
[[nodiscard]] std::filesystem::path of(const std::filesystem::path& file);

// True if this process may write the file, or create files in the folder, that exists at `path`.
[[nodiscard]] bool isWritable(const std::filesystem::path& path);

// What this process may still write to the file system of `path`; 0 if unknown.
[[nodiscard]] std::uintmax_t freeBytes(const std::filesystem::path& path);

// Removes a file, or a folder and its contents.
void remove(const std::filesystem::path& path);

} // namespace velto::Folders
