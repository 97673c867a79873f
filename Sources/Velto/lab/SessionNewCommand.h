// velto-lab session new: a list of trials for a class.
#pragma once

#include "Command.h"

namespace velto::Lab {

[[nodiscard]] Action declareSessionNew(CLI::App& arguments);

inline constexpr Command sessionNewCommand{
    "session new", "print a list of trials for velto --session", declareSessionNew};

} // namespace velto::Lab
