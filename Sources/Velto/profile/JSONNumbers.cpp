#include "JSONNumbers.h"

#include "CLocale.h"
#include "NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <system_error>

namespace velto {

namespace {

// The number of digits at the beginning.
std::size_t digitsIn(std::string_view text) {
  const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
  const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
  return static_cast<std::size_t>(end - text.begin());
}

// The exponent of a number, 0 if it has none; nullopt if it exceeds 32 bits.
std::optional<std::int64_t> exponentPart(std::string_view text) {
  const std::size_t mark = text.find_first_of("eE");
  if (mark == text.npos)
    return 0;
  constexpr std::int64_t farthest = std::numeric_limits<std::int32_t>::max();
  const auto exponent = JSONNumbers::integer(text.substr(mark + 1));
  if (!exponent || *exponent > farthest || *exponent < -farthest)
    return std::nullopt;
  return exponent;
}

// The decimal digits of the integer that the unsigned number `text` equals; nullopt if it is not an
// integer, or longer than any integer type here. Exact, unlike a conversion to double.
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

// Slow, for any number.
double realInCLocale(std::string_view text) {
  double value = 0;
  runInCLocale([&] { value = std::strtod(std::string(text).c_str(), nullptr); });
  return value;
}

} // namespace

std::size_t JSONNumbers::length(std::string_view text) {
  std::size_t at = text.starts_with('-') ? 1 : 0;
  const std::size_t whole = digitsIn(text.substr(at));
  if (whole == 0 || (whole > 1 && text[at] == '0'))
    return 0;
  at += whole;
  if (at < text.size() && text[at] == '.') {
    const std::size_t fraction = digitsIn(text.substr(at + 1));
    if (fraction == 0)
      return 0;
    at += 1 + fraction;
  }
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    ++at;
    if (at < text.size() && (text[at] == '+' || text[at] == '-'))
      ++at;
    const std::size_t exponent = digitsIn(text.substr(at));
    if (exponent == 0)
      return 0;
    at += exponent;
  }
  return at;
}

std::optional<double> JSONNumbers::real(std::string_view text) {
  double value = 0;
#ifdef __cpp_lib_to_chars // libc++ before version 20 has no from_chars for doubles
  const char* const end = text.data() + text.size();
  if (std::from_chars(text.data(), end, value).ec == std::errc{})
    return value;
#endif
  // from_chars does not tell what rounds to 0 from what is infinite.
  value = realInCLocale(text);
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<std::int64_t> JSONNumbers::integer(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-'))
      return std::nullopt;
  }
  return NumberText::integer(text);
}

std::optional<std::int64_t> JSONNumbers::wholeInt64(std::string_view text) {
  if (const auto plain = NumberText::integer(text))
    return plain;
  const bool negative = text.starts_with('-');
  const auto digits = wholeDigits(text.substr(negative ? 1 : 0));
  return digits ? NumberText::integer((negative ? "-" : "") + *digits) : std::nullopt;
}

std::optional<std::uint64_t> JSONNumbers::wholeUInt64(std::string_view text) {
  if (const auto plain = NumberText::natural(text))
    return plain;
  const bool negative = text.starts_with('-');
  const auto digits = wholeDigits(text.substr(negative ? 1 : 0));
  if (!digits || (negative && *digits != "0"))
    return std::nullopt;
  return NumberText::natural(*digits);
}

} // namespace velto
