#include "Markup.h"

#include "FatalError.h"

namespace velto {

std::string Markup::escaped(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char character : text) {
    switch (character) {
    case '&':
      result += "&amp;";
      break;
    case '<':
      result += "&lt;";
      break;
    case '>':
      result += "&gt;";
      break;
    case '"':
      result += "&quot;";
      break;
    default:
      if (static_cast<unsigned char>(character) < 0x20 && character != '\n')
        result += "\xEF\xBF\xBD";
      else
        result += character;
    }
  }
  return result;
}

void Markup::begin(std::string_view name, Attributes attributes) {
  markup_.append("<").append(name);
  for (const auto& [key, value] : attributes)
    markup_.append(" ").append(key).append("=\"").append(escaped(value)).append("\"");
}

Markup& Markup::open(std::string_view name, Attributes attributes) {
  begin(name, attributes);
  markup_ += ">";
  opened_.emplace_back(name);
  return *this;
}

Markup& Markup::close() {
  if (opened_.empty())
    fatalError("no element is open");
  markup_.append("</").append(opened_.back()).append(">");
  opened_.pop_back();
  return *this;
}

Markup& Markup::text(std::string_view text) {
  markup_ += escaped(text);
  return *this;
}

Markup& Markup::element(std::string_view name, Attributes attributes, std::string_view text) {
  return open(name, attributes).text(text).close();
}

Markup& Markup::empty(std::string_view name, Attributes attributes) {
  begin(name, attributes);
  markup_ += "/>";
  return *this;
}

Markup& Markup::raw(std::string_view markup) {
  markup_ += markup;
  return *this;
}

std::string Markup::finish() const {
  if (!opened_.empty())
    fatalError("an element is still open");
  return markup_;
}

} // namespace velto
