// Converts records to and from JSON objects. The keys of a record are listed once, in its table of
// fields, which serves both directions:
//
//   template <> inline constexpr auto fields<Point> =
//       std::tuple{required("x", &Point::x), optional("y", &Point::y)};
//
// Writing follows the order of the table and omits an empty std::optional. Reading takes members in
// any order, skips unknown ones, and fails if a required member is missing or a value has the wrong
// type. An optional member may be missing or null. Of duplicate members the last one wins, but each
// must be valid.
#pragma once

#include "Date.h"
#include "Drill.h"
#include "JSONNumbers.h"
#include "JSONReader.h"
#include "JSONWriter.h"
#include "Numbers.h"
#include "UUID.h"

#include <bitset>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace velto::KeyedCoding {

// One row of a table of fields.
template <typename Record, typename Member, bool mustBePresent>
struct Field {
  using Value = Member;
  static constexpr bool isRequired = mustBePresent;

  std::string_view key;
  Member Record::*member;
};

template <typename Record, typename Member>
constexpr Field<Record, Member, true> required(std::string_view key, Member Record::*member) {
  return {key, member};
}

template <typename Record, typename Member>
constexpr Field<Record, Member, false> optional(std::string_view key, Member Record::*member) {
  return {key, member};
}

// The table of fields of a record type; std::nullptr_t for other types.
template <typename Record>
inline constexpr std::nullptr_t fields{};

template <typename T>
concept Keyed = !std::same_as<decltype(fields<T>), const std::nullptr_t>;

// An enumeration that is written as its raw value.
template <typename T>
concept RawNamed = requires(T value, std::string_view name) {
  { T::fromRawValue(name) } -> std::same_as<std::optional<T>>;
  { value.rawValue() } -> std::same_as<std::string_view>;
};

// Calls `use` with each field of the table and its index, in order.
template <Keyed Record, typename Use>
constexpr void forEachField(Use use) {
  constexpr std::size_t count = std::tuple_size_v<std::remove_cvref_t<decltype(fields<Record>)>>;
  [&]<std::size_t... index>(std::index_sequence<index...>) {
    (use.template operator()<index>(std::get<index>(fields<Record>)), ...);
  }
  (std::make_index_sequence<count>{});
}

// ---- Writing ----

inline void write(JSON::Writer& writer, double value) {
  writer.real(value);
}
inline void write(JSON::Writer& writer, bool value) {
  writer.boolean(value);
}
inline void write(JSON::Writer& writer, std::int64_t value) {
  writer.integer(value);
}
inline void write(JSON::Writer& writer, std::uint64_t value) {
  writer.integer(value);
}
inline void write(JSON::Writer& writer, Date value) {
  writer.real(value.secondsSinceReferenceDate);
}
inline void write(JSON::Writer& writer, const UUID& value) {
  writer.string(value.string());
}

template <RawNamed Enumeration>
void write(JSON::Writer& writer, Enumeration value) {
  writer.string(value.rawValue());
}

template <Keyed Record>
void write(JSON::Writer& writer, const Record& record);

template <typename Element>
void write(JSON::Writer& writer, const std::vector<Element>& elements) {
  writer.beginArray();
  for (const Element& element : elements)
    write(writer, element);
  writer.endArray();
}

// In numeric order of the keys, not in the order of their text.
template <typename Value>
void write(JSON::Writer& writer, const std::map<std::int64_t, Value>& members) {
  writer.beginObject();
  for (const auto& [key, value] : members) {
    std::string name;
    Numbers::append(name, key);
    writer.key(name);
    write(writer, value);
  }
  writer.endObject();
}

// Maps by drill name: the drills in their order, then all other names, sorted.
template <typename Value>
void write(JSON::Writer& writer, const std::map<std::string, Value>& members) {
  writer.beginObject();
  for (const Drill drill : Drill::allCases) {
    const auto found = members.find(std::string(drill.rawValue()));
    if (found == members.end())
      continue;
    writer.key(drill.rawValue());
    write(writer, found->second);
  }
  for (const auto& [name, value] : members) {
    if (Drill::fromRawValue(name))
      continue;
    writer.escapedKey(name);
    write(writer, value);
  }
  writer.endObject();
}

template <typename Value>
void writeMember(JSON::Writer& writer, std::string_view key, const Value& value) {
  writer.key(key);
  write(writer, value);
}

template <typename Value>
void writeMember(JSON::Writer& writer, std::string_view key, const std::optional<Value>& value) {
  if (value)
    writeMember(writer, key, *value);
}

template <Keyed Record>
void write(JSON::Writer& writer, const Record& record) {
  writer.beginObject();
  forEachField<Record>([&]<std::size_t>(const auto& field) {
    writeMember(writer, field.key, record.*(field.member));
  });
  writer.endObject();
}

// ---- Reading ----

// A reader that stores what it reads in the place set by fill().
template <typename Value>
class Filling : public JSON::Reader {
public:
  void fill(Value& place) { place_ = &place; }

protected:
  Value& place() { return *place_; }

  bool accept(const std::optional<Value>& value) {
    if (value)
      place() = *value;
    return value.has_value();
  }

private:
  Value* place_ = nullptr;
};

template <typename Value>
class ValueReader;

template <>
class ValueReader<double> : public Filling<double> {
public:
  bool number(const JSON::Number& value) override { return accept(value.real); }
};

template <>
class ValueReader<std::int64_t> : public Filling<std::int64_t> {
public:
  bool number(const JSON::Number& value) override { return accept(value.int64()); }
};

template <>
class ValueReader<std::uint64_t> : public Filling<std::uint64_t> {
public:
  bool number(const JSON::Number& value) override { return accept(value.uint64()); }
};

template <>
class ValueReader<bool> : public Filling<bool> {
public:
  bool boolean(bool value) override { return accept(value); }
};

template <>
class ValueReader<Date> : public Filling<Date> {
public:
  bool number(const JSON::Number& value) override { return accept(Date{value.real}); }
};

template <>
class ValueReader<UUID> : public Filling<UUID> {
public:
  bool string(std::string_view value) override { return accept(UUID::fromString(value)); }
};

template <RawNamed Enumeration>
class ValueReader<Enumeration> : public Filling<Enumeration> {
public:
  bool string(std::string_view value) override {
    return this->accept(Enumeration::fromRawValue(value));
  }
};

template <>
class ValueReader<std::optional<std::int64_t>> : public Filling<std::optional<std::int64_t>> {
public:
  bool number(const JSON::Number& value) override {
    place() = value.int64();
    return place().has_value();
  }
};

// Reads null as an empty value.
template <typename Value>
class NullableReader : public ValueReader<Value> {
public:
  bool null() override {
    this->place() = Value{};
    return true;
  }
};

template <typename Element>
class ValueReader<std::vector<Element>> : public Filling<std::vector<Element>> {
public:
  bool beginArray() override {
    this->place().clear();
    return true;
  }
  JSON::Reader* element() override {
    element_.fill(this->place().emplace_back());
    return &element_;
  }

private:
  ValueReader<Element> element_;
};

inline std::optional<std::string> parseKey(std::string_view text, const std::string*) {
  return std::string(text);
}

inline std::optional<std::int64_t> parseKey(std::string_view text, const std::int64_t*) {
  return JSONNumbers::integer(text);
}

template <typename Key, typename Value>
class ValueReader<std::map<Key, Value>> : public Filling<std::map<Key, Value>> {
public:
  bool beginObject() override {
    this->place().clear();
    return true;
  }
  JSON::Reader* member(std::string_view text) override {
    const auto key = parseKey(text, static_cast<const Key*>(nullptr));
    if (!key)
      return &refusing_;
    value_.fill(this->place()[*key]);
    return &value_;
  }

private:
  ValueReader<Value> value_;
  JSON::Reader refusing_;
};

// The reader of a field's value. Optional fields may be null.
template <typename AnyField>
using FieldReader = std::conditional_t<AnyField::isRequired, ValueReader<typename AnyField::Value>,
                                       NullableReader<typename AnyField::Value>>;

template <typename Table>
struct TableReaders;

template <typename... AnyField>
struct TableReaders<std::tuple<AnyField...>> {
  using Tuple = std::tuple<FieldReader<AnyField>...>;
};

template <Keyed Record>
class ValueReader<Record> : public Filling<Record> {
public:
  bool beginObject() override {
    this->place() = Record{};
    seen_.reset();
    return true;
  }

  JSON::Reader* member(std::string_view key) override {
    JSON::Reader* found = nullptr;
    forEachField<Record>([&]<std::size_t index>(const auto& field) {
      if (field.key != key)
        return;
      auto& reader = std::get<index>(readers_);
      reader.fill(this->place().*(field.member));
      seen_.set(index);
      found = &reader;
    });
    return found;
  }

  bool end() override {
    bool complete = true;
    forEachField<Record>([&]<std::size_t index>(const auto& field) {
      if (std::remove_cvref_t<decltype(field)>::isRequired && !seen_[index])
        complete = false;
    });
    return complete;
  }

private:
  using Readers = typename TableReaders<std::remove_cvref_t<decltype(fields<Record>)>>::Tuple;

  Readers readers_;
  std::bitset<std::tuple_size_v<Readers>> seen_;
};

// ---- Whole texts ----

// nullopt if a number is not finite.
template <Keyed Record>
std::optional<std::string> encode(const Record& record, std::size_t expectedBytes = 0) {
  JSON::Writer writer;
  writer.reserve(expectedBytes);
  write(writer, record);
  return writer.finish();
}

// nullopt if `text` is not well-formed JSON, or not a record of this type.
template <Keyed Record>
std::optional<Record> decode(std::string_view text) {
  std::optional<Record> record(std::in_place);
  ValueReader<Record> reader;
  reader.fill(*record);
  if (!JSON::read(text, reader))
    record.reset();
  return record;
}

} // namespace velto::KeyedCoding
