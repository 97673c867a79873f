// Runs a program as a child process with its own practice record.
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

// A running program. Its profile folder and everything in `scratch` exist as long as this object.
// The destructor ends the process, with SIGTERM and then SIGKILL, and reaps it. Failures throw
// std::runtime_error.
class ProgramRunner {
public:
  // Changes to the environment: a value, or nullopt to remove a variable.
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
  // The exit status, or 128 + n if signal n ended it; nullopt on a timeout.
  [[nodiscard]] std::optional<int> waitForExit();
  // Sends SIGTERM and waits for the end.
  void terminate();

  // Standard error and standard output so far.
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
