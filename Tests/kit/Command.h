// Runs a command line and takes what it prints.
#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace velto::kit {

struct CommandResult {
  int status = -1; // exit status; 128 and the signal's number if one ended it
  std::string output;
};

// Runs `command` with the shell; its standard output is returned, its standard error too where the
// command redirects it.
[[nodiscard]] inline CommandResult runCommand(const std::string& command) {
  CommandResult result;
  std::FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr)
    return result;
  std::array<char, 4096> block{};
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), pipe))
    result.output.append(block.data(), count);
  const int status = ::pclose(pipe);
  result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  return result;
}

} // namespace velto::kit
