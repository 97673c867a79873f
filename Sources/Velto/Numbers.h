// Numbers as text, and conversions that must not go wrong silently.
//
// Everything here is independent of the process's locale: a comma locale changes printf and strtod,
// so no other file formats or parses a number.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

namespace Numbers {

// `value` with exactly `decimals` digits (0 or more) after the point, as printf("%.*f") writes it
// in the C locale. Any thread.
[[nodiscard]] std::string fixed(double value, int decimals);

// `value` with at most `digits` significant digits, as printf("%.*g") writes it in the C locale.
// Any thread.
[[nodiscard]] std::string general(double value, int digits);

// The fewest digits that read back as the same double ("0.1", "1e+21", "-0"). `value` is finite.
// Any thread.
[[nodiscard]] std::string shortest(double value);

// Appends what shortest() returns, or the integer, to `text`. Any thread.
void append(std::string& text, double value);
void append(std::string& text, std::int64_t value);
void append(std::string& text, std::uint64_t value);

// The double that the whole of `text` spells: decimal or 0x hexadecimal, "inf", "infinity" or
// "nan", with an optional sign. Too large a magnitude gives an infinity, too small a zero. None for
// anything else (white space around the number included). Any thread.
[[nodiscard]] std::optional<double> parse(std::string_view text);

// The integer that the whole of `text` spells in decimal digits, with an optional sign: "26", "-1".
// None for anything else, and where it does not fit. Any thread.
[[nodiscard]] std::optional<std::int64_t> parseInteger(std::string_view text);

// The integer that a decimal number equals exactly: 5 for "5", "5.0" and "50e-1". `text` is a
// number as JSON writes it. None for other numbers, and where it does not fit. Any thread.
[[nodiscard]] std::optional<std::int64_t> wholeInt64(std::string_view text);
[[nodiscard]] std::optional<std::uint64_t> wholeUInt64(std::string_view text);

// `value` truncated toward zero. A value that is not finite or does not fit into 64 bits is a
// programming error: the process stops.
[[nodiscard]] std::int64_t truncated(double value);

// `count` + 1, or `count` where that would overflow.
[[nodiscard]] std::int64_t saturatingIncrement(std::int64_t count);

} // namespace Numbers

// Writes "Velto: " and `message` to standard error and aborts: for programming errors only.
[[noreturn]] void fatalError(std::string_view message);

} // namespace velto
