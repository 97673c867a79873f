// Streaming JSON reader: passes each value to the reader that expects it and builds no tree.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace velto::JSON {

// A finite number, valid during the call that passes it.
struct Number {
  double real = 0;
  std::string_view text;

  // The integer that it equals exactly: 5.0 and 5e0 are integers; 1.9 and numbers out of range are
  // not.
  [[nodiscard]] std::optional<std::int64_t> int64() const;
  [[nodiscard]] std::optional<std::uint64_t> uint64() const;
};

// Receives values of one kind. Each function returns whether the value is acceptable; the first
// false ends the reading. The base class accepts no value.
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
  // The reader of the next array element, or of the value of `key`. It must live until that value
  // ends. nullptr skips the value.
  virtual Reader* element() { return nullptr; }
  virtual Reader* member(std::string_view /*key*/) { return nullptr; }
  // End of the array or object.
  virtual bool end() { return true; }
};

// True if the whole of `text` is one well-formed JSON value (RFC 8259, UTF-8, with or without a
// byte order mark) of finite numbers that `root` accepted. Deep nesting costs no stack, and one bit
// of memory per level. Any thread. Independent of the process's locale.
[[nodiscard]] bool read(std::string_view text, Reader& root);

} // namespace velto::JSON
