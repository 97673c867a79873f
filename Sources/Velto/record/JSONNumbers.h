// Integers as they stand in JSON.
//
// Any thread. Nothing here depends on the process's locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace velto::JSONNumbers {

// The integer that the whole of `text` spells in decimal digits, with an optional sign: "26", "-1".
// None for anything else, and where it does not fit.
[[nodiscard]] std::optional<std::int64_t> integer(std::string_view text);

// The integer that a decimal number equals exactly: 5 for "5", "5.0" and "50e-1". `text` is a
// number as JSON writes it. None for other numbers, and where it does not fit.
[[nodiscard]] std::optional<std::int64_t> wholeInt64(std::string_view text);
[[nodiscard]] std::optional<std::uint64_t> wholeUInt64(std::string_view text);

} // namespace velto::JSONNumbers
