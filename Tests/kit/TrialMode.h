// Starts the program with fair trials or without.
#pragma once

#include "Session.h"

#include <string>
#include <vector>

namespace velto::kit {

using TrialMode = Session::Trials;

[[nodiscard]] inline const char* nameOf(TrialMode mode) {
  return mode == TrialMode::fair ? "fair" : "standard";
}

// `words`, with --fair appended for fair trials.
[[nodiscard]] inline std::vector<std::string> arguments(std::vector<std::string> words,
                                                        TrialMode mode) {
  if (mode == TrialMode::fair)
    words.emplace_back("--fair");
  return words;
}

} // namespace velto::kit
