#include "UUID.h"

#include "RandomBytes.h"

#include <cstddef>

namespace velto {

namespace {

bool isHyphenPosition(std::size_t position) {
  return position == 8 || position == 13 || position == 18 || position == 23;
}

std::optional<unsigned> hexadecimalDigit(char character) {
  if (character >= '0' && character <= '9')
    return static_cast<unsigned>(character - '0');
  if (character >= 'A' && character <= 'F')
    return static_cast<unsigned>(character - 'A' + 10);
  if (character >= 'a' && character <= 'f')
    return static_cast<unsigned>(character - 'a' + 10);
  return std::nullopt;
}

} // namespace

UUID UUID::random() {
  UUID uuid;
  fillRandomly(uuid.bytes);
  uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40); // version 4
  uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80); // RFC 4122
  return uuid;
}

std::optional<UUID> UUID::fromString(std::string_view text) {
  if (text.size() != textLength)
    return std::nullopt;
  UUID uuid;
  std::size_t digits = 0;
  for (std::size_t position = 0; position < textLength; ++position) {
    if (isHyphenPosition(position)) {
      if (text[position] != '-')
        return std::nullopt;
      continue;
    }
    const auto digit = hexadecimalDigit(text[position]);
    if (!digit)
      return std::nullopt;
    auto& byte = uuid.bytes[digits / 2];
    byte = static_cast<std::uint8_t>((static_cast<unsigned>(byte) << 4) | *digit);
    ++digits;
  }
  return uuid;
}

std::string UUID::string() const {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string text;
  text.reserve(textLength);
  for (const std::uint8_t byte : bytes) {
    if (isHyphenPosition(text.size()))
      text += '-';
    text += digits[byte >> 4];
    text += digits[byte & 0xF];
  }
  return text;
}

} // namespace velto
