// Writes JSON straight into a string: compact, and members in the order in which they are written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velto::JSON {

// One text. The caller keeps the order: a key before each value in an object, as many ends as
// begins; none of that is checked. One object belongs to one thread.
class Writer {
public:
  void reserve(std::size_t bytes) { text_.reserve(bytes); }

  void beginObject() { begin('{'); }
  void endObject() { text_ += '}'; }
  void beginArray() { begin('['); }
  void endArray() { text_ += ']'; }

  // Of an object's member; its value comes next. `name` needs no escapes.
  void key(std::string_view name);
  // The same for any `name` in UTF-8.
  void escapedKey(std::string_view name);

  void boolean(bool value);
  void integer(std::int64_t value);
  void integer(std::uint64_t value);
  // The shortest digits that read back the same. One that is not finite cannot be written: the
  // whole text fails.
  void real(double value);
  // Any `value` in UTF-8.
  void string(std::string_view value);

  // The text; none if a number could not be written. The writer is then used up.
  [[nodiscard]] std::optional<std::string> finish();

private:
  void separate();
  void begin(char bracket);
  void quote(std::string_view value);

  std::string text_;
  bool failed_ = false;
};

} // namespace velto::JSON
