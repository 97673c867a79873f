// Runs a command line and captures its output.
#pragma once

#include "Processes.h"

#include <array>
#include <cstdio>
#include <string>

namespace velto::kit {

struct CommandResult {
  int status = -1; // exit status, or 128 + n if signal n ended it
  std::string output;
};

// Runs `command` in the shell. Captures its standard output, and its standard error only if the
// command redirects it.
[[nodiscard]] inline CommandResult runCommand(const std::string& command) {
  CommandResult result;
  std::FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr)
    return result;
  std::array<char, 4096> block{};
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), pipe))
    result.output.append(block.data(), count);
  result.status = shellStatus(::pclose(pipe));
  return result;
}

} // namespace velto::kit
