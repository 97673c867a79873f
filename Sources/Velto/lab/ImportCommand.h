// velto-lab import: answers from CSV into the practice record.
#pragma once

#include "Command.h"

namespace velto::Lab {

[[nodiscard]] Action declareImport(CLI::App& arguments);

inline constexpr Command importCommand{"import", "add the answers of a CSV file to the record",
                                       declareImport};

} // namespace velto::Lab
