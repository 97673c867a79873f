// Runs another program for a limited time.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace velto::Subprocess {

// Runs `arguments` (the program's path first) without standard streams until it ends, for up to
// `patience`; then kills it. Returns its exit status; nullopt if it could not be started, was
// killed, or was ended by a signal. Any thread.
[[nodiscard]] std::optional<int> run(std::vector<std::string> arguments,
                                     std::chrono::milliseconds patience);

// Ends this process after `time` by SIGALRM, whatever it is doing.
void endAfter(std::chrono::seconds time);

// The path of the running program.
[[nodiscard]] std::string ownPath();

} // namespace velto::Subprocess
