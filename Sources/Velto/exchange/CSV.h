// Comma-separated values by RFC 4180.
//
// Any thread.
#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velto::CSV {

// Text that is not what it should be. what() begins with the number of the line: "line 7: ...".
struct Damaged : std::runtime_error {
  Damaged(std::size_t line, const std::string& problem)
      : std::runtime_error("line " + std::to_string(line) + ": " + problem) {}
};

// Appends a record, ended by CR and LF. Only fields that need quotes get them.
void append(std::string& text, std::span<const std::string> fields);

struct Row {
  std::size_t line = 0; // on which it begins, from 1
  std::vector<std::string> fields;
};

// The records of `text`, which may begin with a byte order mark. Lines end with CR LF or with LF,
// the last one too: a record without an end was cut off. Throws Damaged for anything else that RFC
// 4180 does not allow: a quote inside a field without quotes, or behind a field with quotes, or an
// open one at the end.
[[nodiscard]] std::vector<Row> parse(std::string_view text);

} // namespace velto::CSV
