// The practice record as a file for spreadsheets and statistics programs.
//
// The file has one header and one row per answer, per staircase and per band of the roll-up; the
// column `kind` tells them apart. Its last row counts the others, so that a file that was cut off
// shows. Documentation/record-format.md describes every column. Numbers are written so that reading
// them gives the same double. Any thread.
#pragma once

#include "CSV.h"
#include "Record.h"

#include <string>
#include <string_view>

namespace velto::ProfileCSV {

// A file that read() gives back as the same record. The numbers of `stored` are finite.
[[nodiscard]] std::string write(const Stored& stored);

// Throws CSV::Damaged unless all of `text` is such a file. Answers keep their order.
[[nodiscard]] Stored read(std::string_view text);

} // namespace velto::ProfileCSV
