#include "UUID.h"

#include "RandomBytes.h"

#include <array>
#include <cstddef>

namespace velto {

namespace {

bool isHyphenPosition(std::size_t position) {
  return position == 8 || position == 13 || position == 18 || position == 23;
}

constexpr std::uint8_t noDigit = 0xFF;

// The value of each character as a hexadecimal digit, or noDigit.
constexpr auto hexadecimalDigits = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(noDigit);
  for (std::uint8_t value = 0; value < 16; ++value) {
    values[static_cast<unsigned char>("0123456789ABCDEF"[value])] = value;
    values[static_cast<unsigned char>("0123456789abcdef"[value])] = value;
  }
  return values;
}();

std::uint8_t hexadecimalDigit(char character) {
  return hexadecimalDigits[static_cast<unsigned char>(character)];
}

// The positions of the first digits of the bytes; hyphens separate some of them.
constexpr std::array<std::size_t, 16> bytePositions{0,  2,  4,  6,  9,  11, 14, 16,
                                                    19, 21, 24, 26, 28, 30, 32, 34};

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
  for (const std::size_t position : {8U, 13U, 18U, 23U})
    if (text[position] != '-')
      return std::nullopt;
  UUID uuid;
  for (std::size_t index = 0; index < bytePositions.size(); ++index) {
    const std::size_t position = bytePositions[index];
    const unsigned high = hexadecimalDigit(text[position]);
    const unsigned low = hexadecimalDigit(text[position + 1]);
    if (high == noDigit || low == noDigit)
      return std::nullopt;
    uuid.bytes[index] = static_cast<std::uint8_t>(high << 4U | low);
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
