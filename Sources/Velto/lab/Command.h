// The commands of velto-lab.
//
// A command is one pair of files, which defines a `Command`, and one line in Commands.cpp.
#pragma once

#include <functional>
#include <span>
#include <stdexcept>
#include <string_view>

namespace CLI {
class App;
}

namespace velto::Lab {

// What a command does once its arguments have been parsed: it prints the result, or throws one of
// the errors below.
using Action = std::function<void()>;

struct Command {
  std::string_view name;        // "check", or "session new" for a command of the group "session"
  std::string_view explanation; // one line of the help
  // Declares the arguments. What they are stored in belongs to the action.
  Action (*declare)(CLI::App& arguments);
};

// An error ends the program with one line on standard error. The text does not begin with a capital
// and does not end with a full stop.

// The command could not do its work: status 1.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The arguments are wrong: status 2.
struct WrongUse : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// All commands, in the order of the help.
[[nodiscard]] std::span<const Command> commands();

} // namespace velto::Lab
