// velto-lab export: the practice record as CSV.
#pragma once

#include "Command.h"

namespace velto::Lab {

[[nodiscard]] Action declareExport(CLI::App& arguments);

inline constexpr Command exportCommand{"export", "write the practice record as CSV", declareExport};

} // namespace velto::Lab
