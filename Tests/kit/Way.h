// The two ways of starting the program: with fair trials and without.
#pragma once

#include <string>
#include <vector>

namespace velto::kit {

enum class Way { standard, fair };

[[nodiscard]] inline const char* nameOf(Way way) {
  return way == Way::fair ? "fair" : "standard";
}

// `words`, and --fair if `way` asks for it.
[[nodiscard]] inline std::vector<std::string> arguments(std::vector<std::string> words, Way way) {
  if (way == Way::fair)
    words.emplace_back("--fair");
  return words;
}

} // namespace velto::kit
