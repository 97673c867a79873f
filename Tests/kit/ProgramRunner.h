// Runs a program as a child with a practice record of its own.
#pragma once

#include "Files.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velto::kit {

// A running program. Its profile folder, and whatever else it writes through `scratch`, lives as
// long as this object; the process does not outlive it either: it is asked to end, then ended, and
// always reaped. What goes wrong is thrown as a std::runtime_error.
class ProgramRunner {
public:
  // Changes to the environment: a value, or none to take a variable away.
  using Environment = std::map<std::string, std::optional<std::string>>;

  explicit ProgramRunner(const std::string& program, std::vector<std::string> arguments = {},
                         const Environment& changes = {});
  // NOLINTNEXTLINE(bugprone-exception-escape): a program that cannot be waited for ends the test
  ~ProgramRunner();
  ProgramRunner(const ProgramRunner&) = delete;
  ProgramRunner& operator=(const ProgramRunner&) = delete;

  [[nodiscard]] pid_t pid() const { return pid_; }
  [[nodiscard]] std::chrono::steady_clock::time_point startTime() const { return startTime_; }
  [[nodiscard]] std::filesystem::path profileFile() const;
  [[nodiscard]] const std::filesystem::path& scratch() const { return scratch_.path(); }

  [[nodiscard]] bool isRunning();
  // Its exit status, 128 + n if signal n ended it; none if it still runs after a generous while.
  [[nodiscard]] std::optional<int> waitForExit();
  // Asks it to end and waits until it is gone.
  void terminate();

  // What it has written so far, both without a pause in between.
  [[nodiscard]] std::string errors() const;
  [[nodiscard]] std::string output() const;

private:
  [[nodiscard]] bool reap(std::chrono::milliseconds patience);

  ScratchFolder scratch_;
  pid_t pid_ = -1;
  int pidFd_ = -1;
  std::optional<int> status_;
  std::chrono::steady_clock::time_point startTime_;
};

} // namespace velto::kit
