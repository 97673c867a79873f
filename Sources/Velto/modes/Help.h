// What --help and --version print.
#pragma once

#include "ProfileLocation.h"

#include <span>
#include <string>
#include <string_view>

namespace velto::Help {

struct Switch {
  std::string_view name;        // "--drill"
  std::string_view value;       // what stands for its value in the text; empty where it takes none
  std::string_view explanation; // one line
  bool startsWindow;
};

// Every switch of the program: first those of the window, then the modes without one in the order
// in which they decide.
[[nodiscard]] std::span<const Switch> switches();

// The text of --help, without the last line feed. Its lines fit 80 columns, but for the path of the
// record, about which `environment` is asked; it need not know any place.
[[nodiscard]] std::string text(const Environment& environment);

// "velto 1.2.3".
[[nodiscard]] std::string version();

} // namespace velto::Help
