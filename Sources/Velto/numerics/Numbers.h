// Number formatting and checked integer conversions.
//
// Independent of the process's locale, unlike printf and strtod, whose decimal point depends on it.
#pragma once

#include <cstdint>
#include <string>

namespace velto::Numbers {

// `value` with exactly `decimals` (0 or more) digits after the point, like printf("%.*f") in the C
// locale. Any thread.
[[nodiscard]] std::string fixed(double value, int decimals);

// `value` with at most `digits` significant digits, like printf("%.*g") in the C locale. Any
// thread.
[[nodiscard]] std::string general(double value, int digits);

// Shortest text that reads back as the same double: "0.1", "1e+21", "-0". `value` is finite. Any
// thread.
[[nodiscard]] std::string shortest(double value);

// Appends shortest(value), or the digits of an integer, to `text`. Any thread.
void append(std::string& text, double value);
void append(std::string& text, std::int64_t value);
void append(std::string& text, std::uint64_t value);

// `value` truncated toward zero. Aborts if it is not finite or does not fit into 64 bits. Any
// thread.
[[nodiscard]] std::int64_t truncated(double value);

// `count` + 1, or `count` if that would overflow. Any thread.
[[nodiscard]] std::int64_t saturatingIncrement(std::int64_t count);

} // namespace velto::Numbers
