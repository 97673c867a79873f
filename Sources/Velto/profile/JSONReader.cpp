#include "JSONReader.h"

#include "JSONNumbers.h"
#include "JSONStrings.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace velto::JSON {

namespace {

enum class Kind : bool { array, object };

// Forwards what the parser reads to the reader in charge. For skipped values it only counts the
// nesting.
class Dispatcher {
public:
  explicit Dispatcher(Reader& root) : next_(&root) {}

  bool null() {
    return scalar([](Reader& reader) { return reader.null(); });
  }
  bool boolean(bool value) {
    return scalar([&](Reader& reader) { return reader.boolean(value); });
  }
  bool number(const Number& value) {
    return scalar([&](Reader& reader) { return reader.number(value); });
  }
  bool string(std::string_view value) {
    return scalar([&](Reader& reader) { return reader.string(value); });
  }

  bool begin(Kind kind) {
    Reader* const taker = skippedLevels_ > 0 ? nullptr : reader();
    if (taker == nullptr) {
      ++skippedLevels_;
      return true;
    }
    open_.push_back({taker, kind});
    return kind == Kind::object ? taker->beginObject() : taker->beginArray();
  }
  void key(std::string_view name) {
    if (skippedLevels_ == 0)
      next_ = open_.back().reader->member(name);
  }
  bool end() {
    if (skippedLevels_ > 0) {
      --skippedLevels_;
      return true;
    }
    Reader* const ended = open_.back().reader;
    open_.pop_back();
    return ended->end();
  }

private:
  struct Open {
    Reader* reader;
    Kind kind;
  };

  // The reader of the value that begins now; nullptr to skip the value.
  Reader* reader() {
    if (!open_.empty() && open_.back().kind == Kind::array)
      return open_.back().reader->element();
    return next_;
  }

  template <typename Take>
  bool scalar(Take take) {
    if (skippedLevels_ > 0)
      return true;
    Reader* const taker = reader();
    return taker == nullptr || take(*taker);
  }

  Reader* next_;
  std::vector<Open> open_;
  std::size_t skippedLevels_ = 0;
};

// Each function reads what it is named after, and returns false if that is malformed or refused.
class Parser {
public:
  Parser(std::string_view text, Reader& root) : rest_(text), out_(root) {}

  bool text() {
    take("\xEF\xBB\xBF"); // a byte order mark
    if (!value())
      return false;
    while (!levels_.empty())
      if (!nextInLevel())
        return false;
    skipSpace();
    return rest_.empty();
  }

private:
  bool take(std::string_view token) {
    const bool isNext = rest_.starts_with(token);
    if (isNext)
      rest_.remove_prefix(token.size());
    return isNext;
  }
  bool take(char character) {
    const bool isNext = rest_.starts_with(character);
    if (isNext)
      rest_.remove_prefix(1);
    return isNext;
  }

  void skipSpace() {
    const auto isSpace = [](char character) {
      return character == ' ' || character == '\n' || character == '\r' || character == '\t';
    };
    while (!rest_.empty() && rest_.front() <= ' ' && isSpace(rest_.front()))
      rest_.remove_prefix(1);
  }

  // Of an array or object only its beginning.
  bool value() {
    skipSpace();
    if (rest_.empty())
      return false;
    switch (rest_.front()) {
    case '{':
      return begin(Kind::object);
    case '[':
      return begin(Kind::array);
    case '"': {
      const auto value = string();
      return value && out_.string(*value);
    }
    case 't':
      return take("true") && out_.boolean(true);
    case 'f':
      return take("false") && out_.boolean(false);
    case 'n':
      return take("null") && out_.null();
    default:
      return number();
    }
  }

  bool begin(Kind kind) {
    rest_.remove_prefix(1);
    levels_.push_back(kind == Kind::object);
    isLevelEmpty_ = true;
    return out_.begin(kind);
  }

  // The end of the innermost array or object, or its next value.
  bool nextInLevel() {
    const bool isObject = levels_.back();
    const bool isFirst = std::exchange(isLevelEmpty_, false);
    skipSpace();
    if (take(isObject ? '}' : ']')) {
      levels_.pop_back();
      return out_.end();
    }
    return (isFirst || take(',')) && (!isObject || key()) && value();
  }

  bool key() {
    skipSpace();
    if (!rest_.starts_with('"'))
      return false;
    const auto name = string();
    if (!name)
      return false;
    out_.key(*name);
    skipSpace();
    return take(':');
  }

  std::optional<std::string_view> string() {
    const auto token = JSONStrings::first(rest_, buffer_);
    if (!token)
      return std::nullopt;
    rest_.remove_prefix(token->length);
    return token->value;
  }

  bool number() {
    const std::string_view text = rest_.substr(0, JSONNumbers::length(rest_));
    if (text.empty())
      return false;
    rest_.remove_prefix(text.size());
    const auto real = JSONNumbers::real(text);
    return real && out_.number({*real, text});
  }

  std::string_view rest_;
  Dispatcher out_;
  std::vector<bool> levels_;  // the open arrays and objects: true for an object
  bool isLevelEmpty_ = false; // the innermost one has just begun
  std::string buffer_;
};

} // namespace

std::optional<std::int64_t> Number::int64() const {
  return JSONNumbers::wholeInt64(text);
}

std::optional<std::uint64_t> Number::uint64() const {
  return JSONNumbers::wholeUInt64(text);
}

bool read(std::string_view text, Reader& root) {
  return Parser(text, root).text();
}

} // namespace velto::JSON
