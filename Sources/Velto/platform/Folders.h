// Folders, and files as wholes. Best effort: a failure is not reported.
//
// Any thread.
#pragma once

#include <filesystem>

namespace velto::Folders {

// Where files that do not stay are put.
[[nodiscard]] std::filesystem::path temporary();

// `path` made absolute with the current folder; `path` itself where that is unknown.
[[nodiscard]] std::filesystem::path absolute(const std::filesystem::path& path);

[[nodiscard]] bool exists(const std::filesystem::path& path);

// Creates a folder and those above it.
void create(const std::filesystem::path& folder);

// Moves a file. Across file systems the original is removed only once its copy is complete.
void moveFile(const std::filesystem::path& from, const std::filesystem::path& to);

// Removes a file, or a folder with all that it holds.
void remove(const std::filesystem::path& path);

} // namespace velto::Folders
