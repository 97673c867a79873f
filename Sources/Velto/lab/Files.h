// Files that the user names on the command line.
//
// Main thread only.
#pragma once

#include <string>
#include <string_view>

namespace velto::Lab::Files {

// All bytes of a file; of standard input for "-". Throws Failure.
[[nodiscard]] std::string read(const std::string& path);

// Replaces a file whole, or leaves it as it was and throws Failure; "-" is standard output.
void write(const std::string& path, std::string_view bytes);

} // namespace velto::Lab::Files
