// Writes compact JSON to a string. Members keep the order in which they are written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velto::JSON {

// One JSON text. The caller must write a key before each value in an object, and as many ends as
// begins; this is not checked. One object belongs to one thread.
class Writer {
public:
  void reserve(std::size_t bytes) { text_.reserve(bytes); }

  void beginObject() { begin('{'); }
  void endObject() { text_ += '}'; }
  void beginArray() { begin('['); }
  void endArray() { text_ += ']'; }

  // Writes a member's key; its value comes next. `name` must not need escapes.
  void key(std::string_view name);
  // Same, for any `name` in UTF-8.
  void escapedKey(std::string_view name);

  void boolean(bool value);
  void integer(std::int64_t value);
  void integer(std::uint64_t value);
  // Writes the shortest digits that read back as the same double. A value that is not finite makes
  // finish() fail.
  void real(double value);
  // Any `value` in UTF-8.
  void string(std::string_view value);

  // The text; nullopt if a number was not finite. Call once, at the end.
  [[nodiscard]] std::optional<std::string> finish();

private:
  void separate();
  void begin(char bracket);
  void quote(std::string_view value);

  std::string text_;
  bool failed_ = false;
};

} // namespace velto::JSON
