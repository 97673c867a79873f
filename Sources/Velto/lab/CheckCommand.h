// velto-lab check: the state of the practice record.
#pragma once

#include "Command.h"

namespace velto::Lab {

[[nodiscard]] Action declareCheck(CLI::App& arguments);

inline constexpr Command checkCommand{"check", "the state of the practice record", declareCheck};

} // namespace velto::Lab
