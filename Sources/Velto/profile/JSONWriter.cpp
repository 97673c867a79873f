#include "JSONWriter.h"

#include "Numbers.h"

#include <cmath>
#include <utility>

namespace velto::JSON {

namespace {

bool needsEscape(char character) {
  return character == '"' || character == '\\' || static_cast<unsigned char>(character) < 0x20;
}

void appendEscaped(std::string& text, char character) {
  constexpr std::string_view digits = "0123456789abcdef";
  if (character == '"' || character == '\\') {
    text += '\\';
    text += character;
    return;
  }
  const auto code = static_cast<unsigned char>(character);
  text += "\\u00";
  text += digits[code >> 4];
  text += digits[code & 0xF];
}

} // namespace

// A value or a key needs a comma unless it is the first inside its brackets or follows its key.
void Writer::separate() {
  if (!text_.empty() && text_.back() != '{' && text_.back() != '[' && text_.back() != ':')
    text_ += ',';
}

void Writer::begin(char bracket) {
  separate();
  text_ += bracket;
}

void Writer::quote(std::string_view value) {
  text_ += '"';
  for (const char character : value) {
    if (needsEscape(character))
      appendEscaped(text_, character);
    else
      text_ += character;
  }
  text_ += '"';
}

void Writer::key(std::string_view name) {
  separate();
  text_ += '"';
  text_ += name;
  text_ += "\":";
}

void Writer::escapedKey(std::string_view name) {
  separate();
  quote(name);
  text_ += ':';
}

void Writer::boolean(bool value) {
  separate();
  text_ += value ? "true" : "false";
}

void Writer::integer(std::int64_t value) {
  separate();
  Numbers::append(text_, value);
}

void Writer::integer(std::uint64_t value) {
  separate();
  Numbers::append(text_, value);
}

void Writer::real(double value) {
  separate();
  if (std::isfinite(value))
    Numbers::append(text_, value);
  else
    failed_ = true;
}

void Writer::string(std::string_view value) {
  separate();
  quote(value);
}

std::optional<std::string> Writer::finish() {
  if (failed_)
    return std::nullopt;
  return std::move(text_);
}

} // namespace velto::JSON
