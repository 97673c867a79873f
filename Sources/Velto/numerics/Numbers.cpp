#include "Numbers.h"

#include "FatalError.h"

#include <array>
#include <charconv>
#include <limits>
#include <system_error>

namespace velto {

namespace {

// Room for any double in fixed notation: 309 digits before the point, sign and decimals.
constexpr std::size_t longestNumber = 512;

template <typename Number, typename... Format>
void appendText(std::string& text, Number value, Format... format) {
  std::array<char, longestNumber> buffer; // NOLINT(*-member-init): to_chars writes it first
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format...);
  if (result.ec != std::errc{})
    fatalError("a formatted number exceeds its buffer");
  text.append(buffer.data(), result.ptr);
}

template <typename... Format>
std::string toText(double value, Format... format) {
  std::string text;
  appendText(text, value, format...);
  return text;
}

} // namespace

std::string Numbers::fixed(double value, int decimals) {
  return toText(value, std::chars_format::fixed, decimals);
}

std::string Numbers::general(double value, int digits) {
  return toText(value, std::chars_format::general, digits);
}

std::string Numbers::shortest(double value) {
  return toText(value);
}

void Numbers::append(std::string& text, double value) {
  appendText(text, value);
}

void Numbers::append(std::string& text, std::int64_t value) {
  appendText(text, value);
}

void Numbers::append(std::string& text, std::uint64_t value) {
  appendText(text, value);
}

std::int64_t Numbers::truncated(double value) {
  // 2^63 is the first double above the range; -2^63 is the lowest inside it.
  if (!(value >= -0x1p63 && value < 0x1p63))
    fatalError("a number cannot be converted to an integer");
  return static_cast<std::int64_t>(value);
}

std::int64_t Numbers::saturatingIncrement(std::int64_t count) {
  return count == std::numeric_limits<std::int64_t>::max() ? count : count + 1;
}

} // namespace velto
