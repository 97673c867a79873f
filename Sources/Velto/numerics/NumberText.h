// Numbers in text that people and other programs write.
//
// Strict: the whole text must be the number, without white space, a plus sign, or anything that is
// not finite. Independent of the process's locale. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace velto::NumberText {

// A decimal number such as "-2", "0.1" or "1e-7", rounded to the nearest double. nullopt for
// anything else, and if it overflows or underflows.
[[nodiscard]] std::optional<double> real(std::string_view text);

// Decimal digits, with a minus sign if need be. nullopt for anything else, and if it does not fit.
[[nodiscard]] std::optional<std::int64_t> integer(std::string_view text);
// Same, without a sign.
[[nodiscard]] std::optional<std::uint64_t> natural(std::string_view text);

} // namespace velto::NumberText
