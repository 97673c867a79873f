#include "JSONReader.h"

#include "CLocale.h"
#include "JSONNumbers.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace velto::JSON {

namespace {

template <typename To, typename From>
std::optional<To> ifInRange(From value) {
  return std::in_range<To>(value) ? std::optional(static_cast<To>(value)) : std::nullopt;
}

Number whole(std::uint64_t value) {
  return {static_cast<double>(value), ifInRange<std::int64_t>(value), value};
}

// The parser reports integers here only if they begin with a minus sign, so 0 stands for "-0".
Number whole(std::int64_t value) {
  return {value == 0 ? -0.0 : static_cast<double>(value), value, ifInRange<std::uint64_t>(value)};
}

Number decimal(double value, std::string_view text) {
  return {value, JSONNumbers::wholeInt64(text), JSONNumbers::wholeUInt64(text)};
}

// Forwards parser events to the reader in charge. For skipped values it only counts the nesting.
class Dispatcher {
public:
  explicit Dispatcher(Reader& root) : next_(&root) {}

  bool null() {
    return scalar([](Reader& reader) { return reader.null(); });
  }
  bool boolean(bool value) {
    return scalar([&](Reader& reader) { return reader.boolean(value); });
  }
  bool number_integer(std::int64_t value) {
    return scalar([&](Reader& reader) { return reader.number(whole(value)); });
  }
  bool number_unsigned(std::uint64_t value) {
    return scalar([&](Reader& reader) { return reader.number(whole(value)); });
  }
  bool number_float(double value, const std::string& text) {
    return scalar([&](Reader& reader) { return reader.number(decimal(value, text)); });
  }
  bool string(const std::string& value) {
    return scalar([&](Reader& reader) { return reader.string(value); });
  }
  bool binary(const nlohmann::json::binary_t&) { return false; }

  bool start_object(std::size_t) {
    return enter([](Reader& reader) { return reader.beginObject(); }, Kind::object);
  }
  bool start_array(std::size_t) {
    return enter([](Reader& reader) { return reader.beginArray(); }, Kind::array);
  }
  bool key(const std::string& name) {
    if (skippedLevels_ == 0)
      next_ = open_.back().reader->member(name);
    return true;
  }
  bool end_object() { return leave(); }
  bool end_array() { return leave(); }

  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) {
    return false;
  }

private:
  enum class Kind { object, array };

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

  template <typename Begin>
  bool enter(Begin begin, Kind kind) {
    Reader* const taker = skippedLevels_ > 0 ? nullptr : reader();
    if (taker == nullptr) {
      ++skippedLevels_;
      return true;
    }
    open_.push_back({taker, kind});
    return begin(*taker);
  }

  bool leave() {
    if (skippedLevels_ > 0) {
      --skippedLevels_;
      return true;
    }
    Reader* const ended = open_.back().reader;
    open_.pop_back();
    return ended->end();
  }

  Reader* next_;
  std::vector<Open> open_;
  std::size_t skippedLevels_ = 0;
};

} // namespace

bool read(std::string_view text, Reader& root) {
  // The parser treats a zero byte as the end of its input and would ignore the rest.
  if (text.find('\0') != text.npos)
    return false;
  bool accepted = false;
  // The parser takes its decimal point from the locale.
  runInCLocale([&] {
    Dispatcher dispatcher(root);
    accepted = nlohmann::json::sax_parse(text.begin(), text.end(), &dispatcher);
  });
  return accepted;
}

} // namespace velto::JSON
