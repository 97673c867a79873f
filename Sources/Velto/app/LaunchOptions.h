// What the command line asks for.
#pragma once

#include "Drills.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

// The program's arguments, program path first. Switches are matched exactly, anywhere; a switch's
// value is the argument after its first occurrence.
class Arguments {
public:
  explicit Arguments(std::vector<std::string> list) : list_(std::move(list)) {}

  [[nodiscard]] bool has(std::string_view name) const;
  // None when the switch is not there or stands last.
  [[nodiscard]] std::optional<std::string> valueOf(std::string_view name) const;

private:
  std::vector<std::string> list_;
};

// What the window is launched with.
struct LaunchOptions {
  std::optional<std::string> shotPath;  // --shot: where the snapshot goes
  Drill drill = Drill::frequency;       // --drill; an unknown drill counts as none
  std::optional<double> scriptedAnswer; // --answer, used with --shot only
  std::optional<bool> fixedDark;        // --appearance: false for "light", true for anything else
  bool fair = false;                    // --fair
};

[[nodiscard]] LaunchOptions launchOptions(const Arguments& arguments);

} // namespace velto
