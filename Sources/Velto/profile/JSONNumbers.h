// Numbers in JSON text (RFC 8259).
//
// Any thread. Independent of the process's locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace velto::JSONNumbers {

// The length in bytes of the number at the beginning of `text`; 0 if there is none. Does not look
// at what follows it.
[[nodiscard]] std::size_t length(std::string_view text);

// The double that is nearest to the JSON number `text`; nullopt if it is not finite.
[[nodiscard]] std::optional<double> real(std::string_view text);

// The integer in `text`: decimal digits with an optional sign, such as "26" or "-1". nullopt if the
// whole of `text` is not such a number, or if it does not fit.
[[nodiscard]] std::optional<std::int64_t> integer(std::string_view text);

// The integer that the JSON number `text` equals exactly: 5 for "5", "5.0" and "50e-1". nullopt if
// there is none, or if it does not fit.
[[nodiscard]] std::optional<std::int64_t> wholeInt64(std::string_view text);
[[nodiscard]] std::optional<std::uint64_t> wholeUInt64(std::string_view text);

} // namespace velto::JSONNumbers
