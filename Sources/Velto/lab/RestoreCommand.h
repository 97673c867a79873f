// velto-lab restore: brings a former practice record back.
#pragma once

#include "Command.h"

namespace velto::Lab {

[[nodiscard]] Action declareRestore(CLI::App& arguments);

inline constexpr Command restoreCommand{"restore", "bring a former practice record back",
                                        declareRestore};

} // namespace velto::Lab
