#include "NumberText.h"

#include <charconv>
#include <locale>
#include <sstream>
#include <string>
#include <system_error>

namespace velto {

namespace {

bool isZero(std::string_view text) {
  return text.substr(0, text.find_first_of("eE")).find_first_of("123456789") == text.npos;
}

template <typename Integer>
std::optional<Integer> parsed(std::string_view text) {
  Integer value = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc{} || result.ptr != end)
    return std::nullopt;
  return value;
}

} // namespace

// Not by from_chars, which the C++ library for wasm32 lacks for doubles.
std::optional<double> NumberText::real(std::string_view text) {
  // A stream would take white space and a plus sign, too.
  if (text.starts_with('+') || text.find_first_not_of("0123456789.eE+-") != text.npos)
    return std::nullopt;
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double value = 0;
  if (!(stream >> value) || !stream.eof() || (value == 0 && !isZero(text)))
    return std::nullopt;
  return value;
}

std::optional<std::int64_t> NumberText::integer(std::string_view text) {
  return parsed<std::int64_t>(text);
}

std::optional<std::uint64_t> NumberText::natural(std::string_view text) {
  return parsed<std::uint64_t>(text);
}

} // namespace velto
