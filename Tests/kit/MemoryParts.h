// What the resident memory of a process consists of.
#pragma once

#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <sys/types.h>
#include <utility>

namespace velto::kit {

// Resident memory by what it is for, in megabytes (10^6 bytes).
using MemoryParts = std::map<std::string, double>;

// What a mapping is for, by the path that the kernel gives for it.
[[nodiscard]] inline std::string partOf(const std::string& path) {
  static const std::pair<std::regex, const char*> kinds[] = {
      {std::regex("^$|^\\[heap\\]|^\\[anon.*"), "heaps, the trial, pictures of items"},
      {std::regex("^\\[stack.*|^\\[v.*"), "stacks"},
      {std::regex(".*/libQt6.*|.*/qt6/.*"), "Qt"},
      {std::regex(".*/lib(cubeb|pulse|asound|jack|sndfile|FLAC|vorbis|ogg|opus|mpg123|mp3lame).*"),
       "sound libraries"},
      {std::regex(".*\\.(ttf|otf|pfb)|.*fontconfig.*"), "fonts"},
      {std::regex("/memfd:.*|/SYSV.*|/dev/shm/.*"), "shared with the display and the sound server"},
      {std::regex(".*\\.so[.0-9]*( .*)?"), "other libraries"},
  };
  for (const auto& [pattern, part] : kinds)
    if (std::regex_match(path, pattern))
      return part;
  return path.find("/velto") != std::string::npos ? "the program" : "other files";
}

// Of the process `pid`; empty if it does not exist.
[[nodiscard]] inline MemoryParts memoryParts(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/smaps");
  MemoryParts parts;
  std::string part;
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string first;
    words >> first;
    if (first == "Rss:") {
      double kibibytes = 0;
      words >> kibibytes;
      parts[part] += kibibytes * 1024 / 1e6;
    } else if (first.find('-') != std::string::npos) {
      std::string permissions, offset, device, node, path;
      words >> permissions >> offset >> device >> node >> std::ws;
      std::getline(words, path);
      part = partOf(path);
    }
  }
  return parts;
}

} // namespace velto::kit
