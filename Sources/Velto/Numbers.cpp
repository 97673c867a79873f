#include "Numbers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <system_error>

namespace velto {

namespace {

// Room for any double in fixed notation: 309 digits before the point, a sign, and the decimals.
constexpr std::size_t longestNumber = 512;

template <typename... Format>
std::string toText(double value, Format... format) {
  std::array<char, longestNumber> buffer;
  const auto result =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format...);
  if (result.ec != std::errc{})
    fatalError("a number does not fit into its text");
  return {buffer.data(), result.ptr};
}

bool isDigitlessRemainder(std::string_view text) {
  return text.empty() || text.front() == '+' || text.front() == '-';
}

} // namespace

std::string Numbers::fixed(double value, int decimals) {
  return toText(value, std::chars_format::fixed, decimals);
}

std::string Numbers::general(double value, int digits) {
  return toText(value, std::chars_format::general, digits);
}

std::string Numbers::shortest(double value) { return toText(value); }

std::optional<double> Numbers::parse(std::string_view text) {
  bool negative = false;
  if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  auto format = std::chars_format::general;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    format = std::chars_format::hex;
    text.remove_prefix(2);
  }
  if (isDigitlessRemainder(text))
    return std::nullopt;

  double magnitude = 0;
  const char* end = text.data() + text.size();
  auto result = std::from_chars(text.data(), end, magnitude, format);
  if (result.ptr != end || result.ec == std::errc::invalid_argument)
    return std::nullopt;
  if (result.ec == std::errc::result_out_of_range) {
    // from_chars does not say which end was missed; the wider type tells, or else the exponent.
    long double wide = 0;
    result = std::from_chars(text.data(), end, wide, format);
    const bool tiny = result.ec == std::errc{} ? wide < 1.0L
                                               : text.find_first_of("eEpP") != text.npos &&
                                                     text.find("-") != text.npos;
    magnitude = tiny ? 0.0 : std::numeric_limits<double>::infinity();
  }
  return negative ? -magnitude : magnitude;
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

void fatalError(std::string_view message) {
  std::fprintf(stderr, "Velto: %.*s\n", static_cast<int>(message.size()), message.data());
  std::abort();
}

} // namespace velto
