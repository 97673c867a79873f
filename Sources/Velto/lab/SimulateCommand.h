// velto-lab simulate: what can be had without listening.
#pragma once

#include "Command.h"

namespace velto::Lab {

[[nodiscard]] Action declareSimulate(CLI::App& arguments);

inline constexpr Command simulateCommand{
    "simulate", "how often the best answer without listening hits", declareSimulate};

} // namespace velto::Lab
