#include "Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <system_error>

namespace velto {

namespace {

// Room for any double in fixed notation: 309 digits before the point, a sign, and the decimals.
constexpr std::size_t longestNumber = 512;

template <typename Number, typename... Format>
void appendText(std::string& text, Number value, Format... format) {
  std::array<char, longestNumber> buffer; // NOLINT(*-member-init): to_chars writes it first
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format...);
  if (result.ec != std::errc{})
    fatalError("a number does not fit into its text");
  text.append(buffer.data(), result.ptr);
}

template <typename... Format>
std::string toText(double value, Format... format) {
  std::string text;
  appendText(text, value, format...);
  return text;
}

template <typename Integer>
std::optional<Integer> integer(std::string_view text) {
  Integer value = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc{} || result.ptr != end)
    return std::nullopt;
  return value;
}

// The power of ten behind the "e" of a number, 0 without one; none if it is out of all proportion.
std::optional<std::int64_t> exponentPart(std::string_view text) {
  const std::size_t mark = text.find_first_of("eE");
  if (mark == text.npos)
    return 0;
  constexpr std::int64_t farthest = std::numeric_limits<std::int32_t>::max();
  const auto exponent = Numbers::parseInteger(text.substr(mark + 1));
  if (!exponent || *exponent > farthest || *exponent < -farthest)
    return std::nullopt;
  return exponent;
}

// The decimal digits of the whole number that the unsigned number `text` equals; none if it has a
// fraction or more digits than any integer here. Exact, where a detour through a double is not.
std::optional<std::string> wholeDigits(std::string_view text) {
  const std::string_view mantissa = text.substr(0, text.find_first_of("eE"));
  const std::string_view whole = mantissa.substr(0, mantissa.find('.'));
  const std::string_view fraction = mantissa.substr(std::min(whole.size() + 1, mantissa.size()));

  std::string digits(whole);
  digits += fraction;
  digits.erase(0, digits.find_first_not_of('0'));
  if (digits.empty())
    return "0";
  const std::size_t significant = digits.find_last_not_of('0') + 1;
  const auto trailingZeros = static_cast<std::int64_t>(digits.size() - significant);
  digits.resize(significant);

  const auto exponent = exponentPart(text);
  if (!exponent)
    return std::nullopt;
  constexpr std::int64_t mostZeros = std::numeric_limits<std::uint64_t>::digits10;
  const std::int64_t zeros = *exponent + trailingZeros - static_cast<std::int64_t>(fraction.size());
  if (zeros < 0 || zeros > mostZeros)
    return std::nullopt;
  return digits.append(static_cast<std::size_t>(zeros), '0');
}

// A number's text without its sign and its 0x.
struct Spelling {
  std::string_view text;
  std::chars_format format;
};

// Whether what follows a sign or 0x may be given to from_chars, which would take another sign, an
// infinity in hexadecimal, or a payload behind "nan".
bool isPlain(const Spelling& spelling) {
  const auto [text, format] = spelling;
  if (text.empty() || text.front() == '-' || text.back() == ')')
    return false;
  constexpr std::string_view hexStart = ".0123456789abcdefABCDEF";
  return format != std::chars_format::hex || hexStart.find(text.front()) != hexStart.npos;
}

// Whether a number that no double can hold lies below 1: from_chars does not say which end of the
// range was missed. It does when the first digit other than 0, moved by the exponent, stands
// behind the point.
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
  // An exponent beyond 64 bits decides by its sign.
  std::int64_t exponent = 0;
  const char* end = exponentText.data() + exponentText.size();
  if (std::from_chars(exponentText.data(), end, exponent).ec == std::errc::result_out_of_range)
    return exponentText.starts_with('-');
  const double bitsOrDecimals = static_cast<double>(point - first) * (hexadecimal ? 4 : 1);
  return static_cast<double>(exponent) + bitsOrDecimals < 0;
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

std::optional<double> Numbers::parse(std::string_view text) {
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

std::optional<std::int64_t> Numbers::parseInteger(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-'))
      return std::nullopt;
  }
  return integer<std::int64_t>(text);
}

std::optional<std::int64_t> Numbers::wholeInt64(std::string_view text) {
  const bool negative = text.starts_with('-');
  const auto digits = wholeDigits(text.substr(negative ? 1 : 0));
  return digits ? integer<std::int64_t>((negative ? "-" : "") + *digits) : std::nullopt;
}

std::optional<std::uint64_t> Numbers::wholeUInt64(std::string_view text) {
  const bool negative = text.starts_with('-');
  const auto digits = wholeDigits(text.substr(negative ? 1 : 0));
  if (!digits || (negative && *digits != "0"))
    return std::nullopt;
  return integer<std::uint64_t>(*digits);
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
