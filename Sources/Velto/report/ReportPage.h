// The report as one self-contained page of HTML.
#pragma once

#include "ReportData.h"

#include <string>

namespace velto {

// HTML that is well-formed XML too, without script and without addresses. The same data give the
// same bytes. Any thread.
[[nodiscard]] std::string reportPage(const ReportData& data);

} // namespace velto
