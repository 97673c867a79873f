#include "CSV.h"

#include <algorithm>

namespace velto {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

void appendField(std::string& text, const std::string& field) {
  if (field.find_first_of(",\"\r\n") == field.npos) {
    text += field;
    return;
  }
  text += '"';
  for (const char character : field) {
    if (character == '"')
      text += '"';
    text += character;
  }
  text += '"';
}

class Parser {
public:
  explicit Parser(std::string_view text) : text_(text) {}

  [[nodiscard]] bool isAtEnd() const { return at_ == text_.size(); }

  CSV::Row row() {
    CSV::Row row{.line = line_, .fields = {}};
    do
      row.fields.push_back(isNext('"') ? quoted() : plain());
    while (skips(','));
    skips('\r');
    if (!skips('\n'))
      throw CSV::Damaged(line_, isAtEnd() ? "the file ends within it" : "a stray character");
    ++line_;
    return row;
  }

private:
  [[nodiscard]] bool isNext(char character) const { return !isAtEnd() && text_[at_] == character; }

  bool skips(char character) {
    if (!isNext(character))
      return false;
    ++at_;
    return true;
  }

  std::string plain() {
    const std::size_t end = std::min(text_.find_first_of(",\"\r\n", at_), text_.size());
    std::string field(text_.substr(at_, end - at_));
    at_ = end;
    return field;
  }

  std::string quoted() {
    const std::size_t begin = line_;
    std::string field;
    ++at_;
    while (true) {
      const std::size_t quote = text_.find('"', at_);
      if (quote == text_.npos)
        throw CSV::Damaged(begin, "a quote is not closed");
      field += text_.substr(at_, quote - at_);
      line_ += static_cast<std::size_t>(
          std::count(text_.begin() + static_cast<std::ptrdiff_t>(at_),
                     text_.begin() + static_cast<std::ptrdiff_t>(quote), '\n'));
      at_ = quote + 1;
      if (!skips('"'))
        return field;
      field += '"';
    }
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
};

} // namespace

void CSV::append(std::string& text, std::span<const std::string> fields) {
  for (bool isFirst = true; const std::string& field : fields) {
    if (!isFirst)
      text += ',';
    isFirst = false;
    appendField(text, field);
  }
  text += "\r\n";
}

std::vector<CSV::Row> CSV::parse(std::string_view text) {
  if (text.starts_with(byteOrderMark))
    text.remove_prefix(byteOrderMark.size());
  std::vector<Row> rows;
  for (Parser parser(text); !parser.isAtEnd();)
    rows.push_back(parser.row());
  return rows;
}

} // namespace velto
