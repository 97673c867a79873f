// Text of --help and --version.
#pragma once

#include "ProfileLocation.h"

#include <span>
#include <string>
#include <string_view>

namespace velto::Help {

struct Switch {
  std::string_view name;        // "--drill"
  std::string_view value;       // placeholder for its value; empty if it takes none
  std::string_view explanation; // one line
  bool startsWindow;
};

// All switches: those of the window, then the modes without one, in order of precedence.
[[nodiscard]] std::span<const Switch> switches();

// The text of --help, without the last line feed. Lines fit 80 columns, except the path of the
// record, which depends on `environment` and may be unknown.
[[nodiscard]] std::string text(const Environment& environment);

// "velto 1.2.3".
[[nodiscard]] std::string version();

} // namespace velto::Help
