// Numbers as text, and conversions that must not go wrong silently.
//
// Everything here is independent of the process's locale: a comma locale changes printf and strtod,
// so no other file formats a number.
#pragma once

#include <cstdint>
#include <string>

namespace velto::Numbers {

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

// `value` truncated toward zero. A value that is not finite or does not fit into 64 bits is a
// programming error: the process stops.
[[nodiscard]] std::int64_t truncated(double value);

// `count` + 1, or `count` where that would overflow.
[[nodiscard]] std::int64_t saturatingIncrement(std::int64_t count);

} // namespace velto::Numbers
