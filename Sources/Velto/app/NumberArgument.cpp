#include "NumberArgument.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <system_error>

namespace velto {

namespace {

// A number's text without sign and 0x.
struct Spelling {
  std::string_view text;
  std::chars_format format;
};

// True if the text after a sign or 0x may be passed to from_chars, which would also accept a second
// sign, an infinity in hexadecimal, or a payload after "nan".
bool isPlain(const Spelling& spelling) {
  const auto [text, format] = spelling;
  if (text.empty() || text.front() == '-' || text.back() == ')')
    return false;
  constexpr std::string_view hexStart = ".0123456789abcdefABCDEF";
  return format != std::chars_format::hex || hexStart.find(text.front()) != hexStart.npos;
}

// True if an out-of-range literal underflowed rather than overflowed, which from_chars does not
// distinguish. It underflowed if its first non-zero digit, shifted by the exponent, comes after the
// point.
bool isBelowOne(const Spelling& spelling) {
  const auto [text, format] = spelling;
  const bool hexadecimal = format == std::chars_format::hex;
  const std::size_t mark = std::min(text.find_first_of(hexadecimal ? "pP" : "eE"), text.size());
  const std::string_view digits = text.substr(0, mark);
  const auto point = static_cast<std::int64_t>(std::min(digits.find('.'), digits.size()));
  const auto first = static_cast<std::int64_t>(digits.find_first_not_of("0."));

  std::string_view exponentText = text.substr(std::min(mark + 1, text.size()));
  if (exponentText.starts_with('+'))
    exponentText.remove_prefix(1);
  // For an exponent beyond 64 bits, its sign decides.
  std::int64_t exponent = 0;
  const char* end = exponentText.data() + exponentText.size();
  if (std::from_chars(exponentText.data(), end, exponent).ec == std::errc::result_out_of_range)
    return exponentText.starts_with('-');
  const double bitsOrDecimals = static_cast<double>(point - first) * (hexadecimal ? 4 : 1);
  return static_cast<double>(exponent) + bitsOrDecimals < 0;
}

} // namespace

std::optional<double> numberArgument(std::string_view text) {
  bool negative = false;
  if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  Spelling spelling{text, std::chars_format::general};
  if (text.starts_with("0x") || text.starts_with("0X"))
    spelling = {text.substr(2), std::chars_format::hex};
  if (!isPlain(spelling))
    return std::nullopt;

  double magnitude = 0;
  const char* end = spelling.text.data() + spelling.text.size();
  const auto result = std::from_chars(spelling.text.data(), end, magnitude, spelling.format);
  if (result.ptr != end || result.ec == std::errc::invalid_argument)
    return std::nullopt;
  if (result.ec == std::errc::result_out_of_range)
    magnitude = isBelowOne(spelling) ? 0.0 : std::numeric_limits<double>::infinity();
  return negative ? -magnitude : magnitude;
}

} // namespace velto
