// The lines that the modes without a window print.
//
// Main thread only.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velto::Report {

// Writes `text` and a line feed to standard output in one piece and unbuffered, so that it stays in
// order with what others print. The first failure is told on standard error; later lines are tried
// all the same.
void line(std::string_view text);

// Whether every line so far could be written. A report that nobody could read is no success.
[[nodiscard]] bool isComplete();

// "  PASS  name      detail": the name padded with spaces to `nameWidth` characters, a longer one
// kept whole. Names are ASCII.
[[nodiscard]] std::string check(bool ok, std::string_view name, std::size_t nameWidth,
                                std::string_view detail);

// `text` with spaces before or behind it up to `width` characters; a longer one is kept whole.
// Texts are ASCII.
[[nodiscard]] std::string rightAligned(std::string_view text, std::size_t width);
[[nodiscard]] std::string leftAligned(std::string_view text, std::size_t width);

} // namespace velto::Report
