// velto-lab report: the record as a page to read and print.
#pragma once

#include "Command.h"

namespace velto::Lab {

[[nodiscard]] Action declareReport(CLI::App& arguments);

inline constexpr Command reportCommand{"report", "the record as a page to read and print",
                                       declareReport};

} // namespace velto::Lab
