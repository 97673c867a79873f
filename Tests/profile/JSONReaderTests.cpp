// The reader compared with another parser: same texts accepted, same values.
#include "JSONReader.h"

#include "Numbers.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto {
namespace {

std::string described(double value) {
  return std::to_string(std::bit_cast<std::uint64_t>(value)) + ' ';
}

// Writes down what it reads.
class Recorder : public JSON::Reader {
public:
  bool null() override { return add("null "); }
  bool boolean(bool value) override { return add(value ? "true " : "false "); }
  bool number(const JSON::Number& value) override { return add(described(value.real)); }
  bool string(std::string_view value) override { return add('"' + std::string(value) + "\" "); }
  bool beginArray() override { return begin("[ ", "] "); }
  bool beginObject() override { return begin("{ ", "} "); }
  Reader* element() override { return this; }
  Reader* member(std::string_view key) override {
    add(std::string(key) + ": ");
    return this;
  }
  bool end() override {
    const std::string text = ends_.back();
    ends_.pop_back();
    return add(text);
  }

  std::string events;

private:
  bool add(const std::string& event) {
    events += event;
    return true;
  }
  bool begin(const char* event, const char* end) {
    ends_.emplace_back(end);
    return add(event);
  }

  std::vector<std::string> ends_;
};

// Same, by the other parser.
class OtherRecorder : public nlohmann::json_sax<nlohmann::json> {
public:
  bool null() override { return recorder_.null(); }
  bool boolean(bool value) override { return recorder_.boolean(value); }
  bool number_integer(std::int64_t value) override {
    return real(value == 0 ? -0.0 : static_cast<double>(value)); // only for numbers with a sign
  }
  bool number_unsigned(std::uint64_t value) override { return real(static_cast<double>(value)); }
  bool number_float(double value, const std::string&) override { return real(value); }
  bool string(std::string& value) override { return recorder_.string(value); }
  bool binary(nlohmann::json::binary_t&) override { return false; }
  bool start_object(std::size_t) override { return recorder_.beginObject(); }
  bool key(std::string& name) override { return recorder_.member(name) != nullptr; }
  bool end_object() override { return recorder_.end(); }
  bool start_array(std::size_t) override { return recorder_.beginArray(); }
  bool end_array() override { return recorder_.end(); }
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override {
    return false;
  }

  [[nodiscard]] const std::string& events() const { return recorder_.events; }

private:
  bool real(double value) { return recorder_.number({value, ""}); }

  Recorder recorder_;
};

constexpr std::string_view refused = "refused";

std::string readBy(std::string_view text) {
  Recorder recorder;
  return JSON::read(text, recorder) ? recorder.events : std::string(refused);
}

std::string readByTheOther(std::string_view text) {
  if (text.find('\0') != text.npos) // which it takes for the end
    return std::string(refused);
  OtherRecorder recorder;
  return nlohmann::json::sax_parse(text.begin(), text.end(), &recorder) ? recorder.events()
                                                                        : std::string(refused);
}

void expectSame(std::string_view text) {
  RC_ASSERT(readBy(text) == readByTheOther(text));
}

TEST(JSONReader, ReadsEveryByteAndPairOfBytesInAStringAsTheOtherParserDoes) {
  int accepted = 0;
  for (int first = 0; first < 256; ++first)
    for (int second = 0; second < 256; ++second) {
      const std::string text{'"', static_cast<char>(first), static_cast<char>(second), '"'};
      const std::string read = readBy(text);
      ASSERT_EQ(read, readByTheOther(text)) << first << ' ' << second;
      accepted += static_cast<int>(read != refused);
    }
  // Pairs of the 94 plain ASCII characters, escapes of 8 characters, sequences of two bytes.
  EXPECT_EQ(accepted, 94 * 94 + 8 + 30 * 64);
}

// Leads and ends of every row in the table of well-formed sequences, and their neighbours.
TEST(JSONReader, ReadsLongUTF8SequencesAsTheOtherParserDoes) {
  const std::string bytes = "a\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF"
                            "\xF0\xF1\xF3\xF4\xF5\xFF";
  for (const char first : bytes)
    for (const char second : bytes)
      for (const char third : bytes)
        for (const char fourth : bytes)
          for (const std::size_t length : {3U, 4U}) {
            std::string text{'"', first, second, third, fourth};
            text.resize(length + 1);
            text += '"';
            ASSERT_EQ(readBy(text), readByTheOther(text)) << testing::PrintToString(text);
          }
}

TEST(JSONReader, ReadsEscapedCharactersAsTheOtherParserDoes) {
  const auto escape = [](unsigned unit) {
    char text[8] = {};
    std::snprintf(text, sizeof text, unit % 2 == 0 ? "\\u%04X" : "\\u%04x", unit);
    return std::string(text);
  };
  for (unsigned unit = 0; unit <= 0xFFFF; ++unit)
    for (const std::string& text :
         {"[\"" + escape(unit) + "\"]", "\"a" + escape(unit) + escape(0xDC00) + "b\""})
      ASSERT_EQ(readBy(text), readByTheOther(text)) << text;
  for (unsigned low = 0xDB00; low <= 0xE100; ++low) {
    const std::string text = '"' + escape(0xD9AB) + escape(low) + '"';
    ASSERT_EQ(readBy(text), readByTheOther(text)) << text;
  }
  for (const char* const text :
       {R"("\u")", R"("\u1")", R"("\u12 4")", R"("\u+123")", R"("\uD800")", R"("\uD800\n")",
        R"("\uD800\u")", R"("\uD800\uDC0")", R"("\)", R"("\u0000")", R"("\U0041")"})
    EXPECT_EQ(readBy(text), readByTheOther(text)) << text;
}

TEST(JSONReader, ReadsBracketsAndCommasAsTheOtherParserDoes) {
  const std::vector<std::string> tokens{"[", "]", "{", "}", ",", ":", "1", "\"a\"", " "};
  std::vector<std::string> texts{""};
  int accepted = 0;
  for (int length = 0; length < 6; ++length) {
    std::vector<std::string> longer;
    for (const std::string& text : texts)
      for (const std::string& token : tokens)
        longer.push_back(text + token);
    for (const std::string& text : longer) {
      const std::string read = readBy(text);
      ASSERT_EQ(read, readByTheOther(text)) << text;
      accepted += static_cast<int>(read != refused);
    }
    texts = std::move(longer);
  }
  EXPECT_GT(accepted, 100);
}

TEST(JSONReader, ReadsLimitsOfNumbersAsTheOtherParserDoes) {
  for (const char* const text : {"-0",
                                 "0",
                                 "-0.0",
                                 "00",
                                 "01",
                                 "-",
                                 "-01",
                                 "+1",
                                 "1.",
                                 ".5",
                                 "1e",
                                 "1e+",
                                 "1e-",
                                 "1E5",
                                 "1e5",
                                 "1.5e+05",
                                 "0e0",
                                 "0e999999999999",
                                 "1e999999999999",
                                 "1e-999999999999",
                                 "-1e-400",
                                 "1e400",
                                 "-1e400",
                                 "1.7976931348623157e308",
                                 "1.7976931348623159e308",
                                 "4.9e-324",
                                 "2.4e-324",
                                 "2.5e-324",
                                 "2.2250738585072014e-308",
                                 "2.2250738585072011e-308",
                                 "9223372036854775807",
                                 "9223372036854775808",
                                 "-9223372036854775808",
                                 "-9223372036854775809",
                                 "18446744073709551615",
                                 "18446744073709551616",
                                 "9007199254740993",
                                 "1 2",
                                 "1a",
                                 "1.2.3",
                                 "1e5.5",
                                 "0x10",
                                 "Infinity",
                                 "NaN",
                                 "nan",
                                 "inf",
                                 "1_000",
                                 "1,5"})
    EXPECT_EQ(readBy(text), readByTheOther(text)) << text;
}

RC_GTEST_PROP(JSONReader, ReadsNumbersAsTheOtherParserDoes, ()) {
  for (int i = 0; i < 100; ++i) {
    const auto digits = [](int most) {
      return *rc::gen::container<std::string>(static_cast<std::size_t>(*rc::gen::inRange(1, most)),
                                              rc::gen::inRange('0', ':'));
    };
    std::string text = digits(24);
    if (*rc::gen::arbitrary<bool>())
      text += '.' + digits(30);
    if (*rc::gen::arbitrary<bool>())
      text += *rc::gen::elementOf(std::vector<std::string>{"e", "E-", "e+"}) + digits(4);
    expectSame(text);
    expectSame(Numbers::shortest(std::bit_cast<double>(*rc::gen::arbitrary<std::uint64_t>())));
  }
}

// Valid texts, and what a few lost, doubled, swapped and wrong bytes make of them.
RC_GTEST_PROP(JSONReader, ReadsChangedTextsAsTheOtherParserDoes, ()) {
  static const std::string seed = " {\"a\": [1, -2.5e3, 0.1, true,false , null, "
                                  "\"x\\n\\u00e9\\ud83d\\ude00\xC3\xA4\"],\r\n\t\"b\""
                                  ":{}, \"\":[[],[{\"c\":[0]}], {\"d\":-0, \"d\":\"\\\\\"}]} ";
  static const std::string alphabet =
      "{}[]:,\"\\ \n\t0123456789-+.eEtrufalsn\xC3\xA4\xEF\xBB\xBF\x01";
  RC_ASSERT(readBy(seed) != refused);
  RC_ASSERT(readBy("\xEF\xBB\xBF" + seed) != refused);
  for (int i = 0; i < 200; ++i) {
    std::string text = seed;
    for (int changes = *rc::gen::inRange(1, 5); changes > 0 && !text.empty(); --changes) {
      const auto at = *rc::gen::inRange<std::size_t>(0, text.size());
      const auto length = *rc::gen::inRange<std::size_t>(0, 12);
      switch (*rc::gen::inRange(0, 5)) {
      case 0:
        text.erase(at, length);
        break;
      case 1:
        text.insert(at, text.substr(*rc::gen::inRange<std::size_t>(0, text.size()), length));
        break;
      case 2:
        text[at] = *rc::gen::elementOf(alphabet);
        break;
      case 3:
        text.insert(at, 1, *rc::gen::elementOf(alphabet));
        break;
      default:
        text.resize(at);
      }
    }
    expectSame(text);
  }
}

} // namespace
} // namespace velto
