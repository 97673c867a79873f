// Resources used by a process.
#pragma once

#include "Files.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace velto::kit {

struct Footprint {
  double residentMegabytes = 0;     // 10^6 bytes
  double proportionalMegabytes = 0; // pages shared with other processes counted in part
  std::size_t handles = 0;          // open files
  std::size_t threads = 0;
  double processorSeconds = 0; // of all threads so far

  // Of the process `pid`; all 0 if it does not exist.
  [[nodiscard]] static Footprint of(pid_t pid) {
    const std::filesystem::path folder = "/proc/" + std::to_string(pid);
    Footprint footprint;
    std::ifstream file(folder / "statm");
    double size = 0, resident = 0;
    file >> size >> resident;
    file.close();
    footprint.residentMegabytes = resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
    footprint.proportionalMegabytes = proportionalIn(folder / "smaps_rollup");
    footprint.handles = entries(folder / "fd");
    footprint.threads = entries(folder / "task");
    footprint.processorSeconds = processorSecondsIn(folder / "stat");
    // Reading the folder took a handle.
    if (pid == getpid())
      --footprint.handles;
    return footprint;
  }

  [[nodiscard]] static Footprint ofThisProcess() { return of(getpid()); }

private:
  [[nodiscard]] static double proportionalIn(const std::filesystem::path& rollup) {
    std::istringstream words(contentOf(rollup));
    double kibibytes = 0;
    for (std::string word; words >> word && word != "Pss:";) {
    }
    words >> kibibytes;
    return kibibytes * 1024 / 1e6;
  }

  [[nodiscard]] static double processorSecondsIn(const std::filesystem::path& stat) {
    const std::string text = contentOf(stat);
    // The name in brackets may contain spaces; the times are the 12th and 13th fields after it.
    std::istringstream fields(text.substr(std::min(text.rfind(')') + 1, text.size())));
    std::string skipped;
    for (int field = 1; field < 12; ++field)
      fields >> skipped;
    double user = 0, system = 0;
    fields >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
  }

  [[nodiscard]] static std::size_t entries(const std::filesystem::path& folder) {
    std::error_code gone;
    std::size_t count = 0;
    for (std::filesystem::directory_iterator entry(folder, gone), end; !gone && entry != end;
         entry.increment(gone))
      ++count;
    return count;
  }
};

} // namespace velto::kit
