// The lines that the modes without a window print.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velto::Report {

// Writes `text` and a line feed to standard output at once, so that it stays in order with what
// others print. A failed write is ignored.
void line(std::string_view text);

// "  PASS  name      detail": the name padded with spaces to `nameWidth` characters, a longer one
// kept whole. Texts are ASCII.
[[nodiscard]] std::string check(bool ok, std::string_view name, std::size_t nameWidth,
                                std::string_view detail);

} // namespace velto::Report
