#include "UTF8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace velto {

namespace {

// How a sequence goes on behind its first byte: the number of bytes, and the range of the first of
// them, which excludes overlong forms, surrogates and what lies above U+10FFFF.
struct Continuation {
  std::size_t bytes;
  unsigned least, most;
};

Continuation behind(unsigned first) {
  constexpr unsigned least = 0x80, most = 0xBF;
  if (first < 0x80)
    return {0, least, most};
  if (first >= 0xC2 && first <= 0xDF)
    return {1, least, most};
  if (first == 0xE0)
    return {2, 0xA0, most};
  if (first == 0xED)
    return {2, least, 0x9F};
  if (first >= 0xE1 && first <= 0xEF)
    return {2, least, most};
  if (first == 0xF0)
    return {3, 0x90, most};
  if (first >= 0xF1 && first <= 0xF3)
    return {3, least, most};
  if (first == 0xF4)
    return {3, least, 0x8F};
  return {SIZE_MAX, least, most}; // no sequence begins so
}

} // namespace

bool UTF8::isValid(std::string_view text) {
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  for (std::size_t i = 0; i < text.size();) {
    const Continuation more = behind(byte(i));
    if (more.bytes > text.size() - i - 1)
      return false;
    for (std::size_t k = 1; k <= more.bytes; ++k) {
      const unsigned least = k == 1 ? more.least : 0x80, most = k == 1 ? more.most : 0xBF;
      if (byte(i + k) < least || byte(i + k) > most)
        return false;
    }
    i += more.bytes + 1;
  }
  return true;
}

} // namespace velto
