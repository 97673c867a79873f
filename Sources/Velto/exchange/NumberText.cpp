#include "NumberText.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace velto {

namespace {

template <typename Number>
std::optional<Number> parsed(std::string_view text) {
  Number value{};
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc{} || result.ptr != end)
    return std::nullopt;
  return value;
}

} // namespace

std::optional<double> NumberText::real(std::string_view text) {
  const auto value = parsed<double>(text);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<std::int64_t> NumberText::integer(std::string_view text) {
  return parsed<std::int64_t>(text);
}

std::optional<std::uint64_t> NumberText::natural(std::string_view text) {
  return parsed<std::uint64_t>(text);
}

} // namespace velto
