// Output of the modes that run without a window.
//
// Main thread only.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velto::Report {

// Writes `text` and a line feed to standard output, unbuffered, to keep the order with other
// output. Reports the first failure on standard error; later lines are still tried. A closed pipe
// does not count as a failure.
void line(std::string_view text);

// True unless a line could not be written.
[[nodiscard]] bool isComplete();

// "  PASS  name      detail". `name` is padded with spaces to `nameWidth` characters; a longer name
// is kept whole. ASCII only.
[[nodiscard]] std::string check(bool ok, std::string_view name, std::size_t nameWidth,
                                std::string_view detail);

// `text` padded with spaces to `width` characters; longer text is kept whole. ASCII only.
[[nodiscard]] std::string rightAligned(std::string_view text, std::size_t width);
[[nodiscard]] std::string leftAligned(std::string_view text, std::size_t width);

} // namespace velto::Report
