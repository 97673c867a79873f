// The command line of velto-lab.
#pragma once

#include "Command.h"

#include <span>
#include <string>
#include <vector>

namespace velto::Lab {

// Exit statuses.
inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int wrongUse = 2;

// Runs the command that `words`, the arguments without the program's name, ask for. Returns the
// exit status, after one line on standard error unless that is `done`. Main thread only.
[[nodiscard]] int run(std::span<const Command> commands, std::vector<std::string> words);

} // namespace velto::Lab
