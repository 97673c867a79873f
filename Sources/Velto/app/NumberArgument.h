// Numbers on the command line.
#pragma once

#include <optional>
#include <string_view>

namespace velto {

// The double that the whole of `text` spells: decimal or 0x hexadecimal, "inf", "infinity" or
// "nan", with an optional sign. Too large a magnitude gives an infinity, too small a zero. None for
// anything else (white space around the number included). Any thread.
[[nodiscard]] std::optional<double> numberArgument(std::string_view text);

} // namespace velto
