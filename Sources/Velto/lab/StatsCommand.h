// velto-lab stats: what the practice record says about the listener.
#pragma once

#include "Command.h"

namespace velto::Lab {

[[nodiscard]] Action declareStats(CLI::App& arguments);

inline constexpr Command statsCommand{"stats", "what the practice record says about the listener",
                                      declareStats};

} // namespace velto::Lab
