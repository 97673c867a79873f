#include "JSONStrings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <system_error>

namespace velto {

namespace {

// True for ASCII characters that stand for themselves.
constexpr auto isPlain = [] {
  std::array<bool, 256> plain{};
  for (std::size_t byte = 0x20; byte < 0x80; ++byte)
    plain[byte] = byte != '"' && byte != '\\';
  return plain;
}();

// The number of plain characters with which `text` begins.
std::size_t plainLength(std::string_view text) {
  const auto end = std::find_if_not(text.begin(), text.end(), [](char character) {
    return isPlain[static_cast<unsigned char>(character)];
  });
  return static_cast<std::size_t>(end - text.begin());
}

// The number of bytes of the UTF-8 sequence (RFC 3629) with which `text` begins, beyond ASCII; 0 if
// it is malformed.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t index) {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
  };
  const unsigned lead = byte(0);
  const std::size_t length = lead < 0xC2   ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  // The second byte excludes overlong forms, surrogates, and characters above U+10FFFF.
  const unsigned least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (length == 0 || byte(1) < least || byte(1) > most)
    return 0;
  for (std::size_t index = 2; index < length; ++index)
    if (byte(index) < 0x80 || byte(index) > 0xBF)
      return 0;
  return length;
}

void appendUTF8(std::string& text, std::uint32_t character) {
  const auto append = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
  const auto appendSixBits = [&](unsigned shift) {
    append(0x80U | ((character >> shift) & 0x3FU));
  };
  if (character < 0x80) {
    append(character);
    return;
  }
  if (character < 0x800) {
    append(0xC0U | (character >> 6U));
  } else {
    if (character < 0x10000) {
      append(0xE0U | (character >> 12U));
    } else {
      append(0xF0U | (character >> 18U));
      appendSixBits(12);
    }
    appendSixBits(6);
  }
  appendSixBits(0);
}

// The number of four hexadecimal digits at `place`.
std::optional<std::uint32_t> codeUnit(std::string_view text, std::size_t place) {
  constexpr std::size_t digits = 4;
  if (place > text.size() || text.size() - place < digits)
    return std::nullopt;
  std::uint32_t unit = 0;
  const char* const begin = text.data() + place;
  const auto result = std::from_chars(begin, begin + digits, unit, 16);
  if (result.ec != std::errc{} || result.ptr != begin + digits)
    return std::nullopt;
  return unit;
}

// Appends the character of the escape "\uXXXX", or of two that form a surrogate pair, with which
// `text` begins. Returns the length of the escapes; 0 if they are malformed.
std::size_t appendNumbered(std::string& buffer, std::string_view text) {
  constexpr std::size_t length = 6;
  const auto unit = codeUnit(text, 2);
  if (!unit)
    return 0;
  if (*unit < 0xD800 || *unit > 0xDFFF) {
    appendUTF8(buffer, *unit);
    return length;
  }
  if (*unit > 0xDBFF || text.substr(length, 2) != "\\u")
    return 0;
  const auto low = codeUnit(text, length + 2);
  if (!low || *low < 0xDC00 || *low > 0xDFFF)
    return 0;
  appendUTF8(buffer, 0x10000 + ((*unit - 0xD800) << 10U) + (*low - 0xDC00));
  return 2 * length;
}

// Same for any escape.
std::size_t appendEscaped(std::string& buffer, std::string_view text) {
  constexpr std::string_view names = "\"\\/bfnrt";
  constexpr std::string_view characters = "\"\\/\b\f\n\r\t";
  if (text.size() < 2)
    return 0;
  if (text[1] == 'u')
    return appendNumbered(buffer, text);
  const std::size_t index = names.find(text[1]);
  if (index == names.npos)
    return 0;
  buffer += characters[index];
  return 2;
}

} // namespace

std::optional<JSONStrings::Token> JSONStrings::first(std::string_view text, std::string& buffer) {
  std::size_t at = 1 + plainLength(text.substr(1));
  if (at < text.size() && text[at] == '"') // the common case
    return Token{text.substr(1, at - 1), at + 1};
  buffer.assign(text, 1, at - 1);
  while (at < text.size() && text[at] != '"') {
    const std::string_view rest = text.substr(at);
    const std::size_t plain = plainLength(rest);
    const std::size_t length = plain > 0         ? plain
                               : rest[0] == '\\' ? appendEscaped(buffer, rest)
                                                 : sequenceLength(rest);
    if (length == 0)
      return std::nullopt;
    if (rest[0] != '\\')
      buffer.append(rest, 0, length);
    at += length;
  }
  if (at == text.size())
    return std::nullopt;
  return Token{buffer, at + 1};
}

} // namespace velto
