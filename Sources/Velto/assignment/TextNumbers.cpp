#include "TextNumbers.h"

#include "NumberText.h"
#include "Numbers.h"

#include <charconv>
#include <system_error>

namespace velto {

std::optional<double> TextNumbers::real(std::string_view text) {
  const auto value = NumberText::real(text);
  if (!value || Numbers::shortest(*value) != text)
    return std::nullopt;
  return value;
}

std::optional<double> TextNumbers::fixed(std::string_view text, int decimals) {
  const auto value = NumberText::real(text);
  if (!value || Numbers::fixed(*value, decimals) != text)
    return std::nullopt;
  return value;
}

std::optional<std::uint64_t> TextNumbers::count(std::string_view text) {
  const auto value = NumberText::natural(text);
  if (!value || std::to_string(*value) != text)
    return std::nullopt;
  return value;
}

std::optional<std::uint64_t> TextNumbers::hexadecimal(std::string_view text) {
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (result.ec != std::errc{} || hexadecimal(value) != text)
    return std::nullopt;
  return value;
}

std::string TextNumbers::hexadecimal(std::uint64_t value) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text(16, '0');
  for (std::size_t i = text.size(); i-- > 0; value >>= 4)
    text[i] = digits[value & 15];
  return text;
}

std::uint64_t TextNumbers::hash(std::string_view text) {
  std::uint64_t value = 0xcbf29ce484222325;
  for (const char byte : text)
    value = (value ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  return value;
}

} // namespace velto
