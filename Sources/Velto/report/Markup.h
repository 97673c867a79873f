// Text with tags that is both HTML and well-formed XML.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto {

// Writes elements one after the other. One object belongs to one thread.
class Markup {
public:
  using Attributes = std::initializer_list<std::pair<std::string_view, std::string>>;

  // Opens an element. Names are the caller's own; values are escaped.
  Markup& open(std::string_view name, Attributes attributes = {});
  // Closes the innermost open element. Aborts if there is none.
  Markup& close();
  // Escaped text.
  Markup& text(std::string_view text);
  // An element that contains only text.
  Markup& element(std::string_view name, Attributes attributes, std::string_view text);
  Markup& element(std::string_view name, std::string_view text) { return element(name, {}, text); }
  // An element that never has content: of SVG, or a void one of HTML.
  Markup& empty(std::string_view name, Attributes attributes = {});
  // Markup that another object has finished, or text that needs no escaping. Not checked.
  Markup& raw(std::string_view markup);

  // All of it. Aborts if an element is still open.
  [[nodiscard]] std::string finish() const;

  // `text` as content or as a quoted value. Control characters other than the line feed, which XML
  // forbids, become U+FFFD.
  [[nodiscard]] static std::string escaped(std::string_view text);

private:
  void begin(std::string_view name, Attributes attributes);

  std::string markup_;
  std::vector<std::string> opened_;
};

} // namespace velto
