// Reads JSON as a stream: each value goes straight to the reader that expects it, and no tree of
// the text is ever built.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace velto::JSON {

// One number, under each of the types that hold it. 5.0 and 5e0 are integers; 1.9 and whatever does
// not fit are not. Every integer is a real number.
struct Number {
  double real = 0;
  std::optional<std::int64_t> int64;
  std::optional<std::uint64_t> uint64;
};

// Receives values of one kind. Each call says whether the value is acceptable; the first refusal
// ends the reading. A plain Reader accepts nothing.
class Reader {
public:
  Reader() = default;
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  virtual ~Reader() = default;

  virtual bool null() { return false; }
  virtual bool boolean(bool) { return false; }
  virtual bool number(const Number&) { return false; }
  virtual bool string(std::string_view) { return false; }

  virtual bool beginArray() { return false; }
  virtual bool beginObject() { return false; }
  // The reader of the next element of the array, or of the value of `key`; it must live until that
  // value ends. nullptr skips the value, whatever it is.
  virtual Reader* element() { return nullptr; }
  virtual Reader* member(std::string_view /*key*/) { return nullptr; }
  // The end of the array or object.
  virtual bool end() { return true; }
};

// Whether the whole of `text` is one well-formed JSON value (RFC 8259, in UTF-8) that `root`
// accepted. Nesting costs neither stack nor, beyond a bit a level, memory. Any thread; independent
// of the locale.
[[nodiscard]] bool read(std::string_view text, Reader& root);

} // namespace velto::JSON
