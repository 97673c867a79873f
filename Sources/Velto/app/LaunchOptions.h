// Command-line options.
#pragma once

#include "Drill.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

// The program's arguments, program path first. Switches match exactly, in any position; the value
// of a switch is the argument after its first occurrence.
class Arguments {
public:
  explicit Arguments(std::vector<std::string> list) : list_(std::move(list)) {}

  [[nodiscard]] bool has(std::string_view name) const;
  // nullopt if the switch is missing or last.
  [[nodiscard]] std::optional<std::string> valueOf(std::string_view name) const;

private:
  std::vector<std::string> list_;
};

// Launch options of the window.
struct LaunchOptions {
  std::optional<std::string> shotPath;  // --shot: where the snapshot goes
  Drill drill = Drill::frequency;       // --drill; frequency if it is unknown
  std::optional<double> scriptedAnswer; // --answer, used with --shot only
  std::optional<bool> fixedDark;        // --appearance: false for "light", true for anything else
  bool fair = false;                    // --fair
  // --session and --results: the list to play, and the file that gets the answers. Both or none.
  struct Files {
    std::string list, results;
  };
  std::optional<Files> assignment;
};

[[nodiscard]] LaunchOptions launchOptions(const Arguments& arguments);

// What is wrong with --session and --results, in one line; nullopt if they are missing or complete.
[[nodiscard]] std::optional<std::string> wrongUse(const Arguments& arguments);

} // namespace velto
