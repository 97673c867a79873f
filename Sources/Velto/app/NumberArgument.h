// Numbers on the command line.
#pragma once

#include <optional>
#include <string_view>

namespace velto {

// The double that the whole of `text` spells: decimal, 0x hexadecimal, "inf", "infinity" or "nan",
// with an optional sign. Overflow gives an infinity, underflow zero. nullopt for anything else,
// including white space around the number. Any thread.
[[nodiscard]] std::optional<double> numberArgument(std::string_view text);

} // namespace velto
