#include "Coding.h"

#include "kit/RecordTesting.h"

#include <locale.h>

#include <algorithm>
#include <functional>
#include <utility>

namespace velto {
namespace {

using namespace testing;

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr auto most = std::numeric_limits<std::int64_t>::max();
constexpr auto least = std::numeric_limits<std::int64_t>::min();

const std::string trialText =
    R"({"drill":"frequency","seed":18446744073709551615,"material":"Drum loop","difficulty":32.5,)"
    R"("slots":2,"targetFreq":1250,"boostDB":9.3,"boostQ":2.9,"targetLevelDB":0.25,)"
    R"("targetGRdB":0.5,"oddSlot":1,"correlation":0.75})";
const Trial trialValue{.drill = Drill::frequency,
                       .seed = 18446744073709551615U,
                       .material = Material::drums,
                       .difficulty = 32.5,
                       .slots = 2,
                       .targetFreq = 1250,
                       .boostDB = 9.3,
                       .boostQ = 2.9,
                       .targetLevelDB = 0.25,
                       .targetGRdB = 0.5,
                       .oddSlot = 1,
                       .correlation = 0.75};

const std::string staircaseText =
    R"({"difficulty":44.25,"consecutiveCorrect":1,"reversals":6,"lastDirection":-1})";
const Staircase staircaseValue{44.25, 1, 6, -1};

const std::string rollText = R"({"attempts":10,"hits":4,"errorSum":7.125})";
const BandRoll rollValue{10, 4, 7.125};

const std::string idText = "0123ABCD-4567-49AB-8DEF-00FF10EE20DD";
const std::string attemptText =
    R"({"id":"0123ABCD-4567-49AB-8DEF-00FF10EE20DD","date":801234567.25,"drill":"frequency",)"
    R"("material":"Pink noise","difficulty":20,"correct":true,"error":0.32,"bandIndex":14})";
const Attempt attemptValue{.id = UUID::fromString(idText).value(),
                           .date = {801234567.25},
                           .drill = Drill::frequency,
                           .material = Material::pinkNoise,
                           .difficulty = 20,
                           .correct = true,
                           .error = 0.32,
                           .bandIndex = 14};
const std::string levelText =
    R"({"id":"0123ABCD-4567-49AB-8DEF-00FF10EE20DD","date":-0.5,"drill":"level",)"
    R"("material":"Synth pad","difficulty":1e-07,"correct":false,"error":1e+21})";
const Attempt levelValue{.id = UUID::fromString(idText).value(),
                         .date = {-0.5},
                         .drill = Drill::level,
                         .material = Material::pad,
                         .difficulty = 1e-7,
                         .correct = false,
                         .error = 1e21,
                         .bandIndex = std::nullopt};

const std::string storedText = R"({"attempts":[)" + attemptText + "," + levelText +
                               R"(],"staircases":{"frequency":)" + staircaseText +
                               R"(},"lifetime":{"3":)" + rollText + "}}";
const Stored storedValue{
    {attemptValue, levelValue}, {{"frequency", staircaseValue}}, {{3, rollValue}}};

// ---- Writing ----

TEST(Coding, WritesKeysInFieldOrder) {
  EXPECT_EQ(Coding::encode(trialValue), trialText);
  EXPECT_EQ(Coding::encode(staircaseValue), staircaseText);
  EXPECT_EQ(Coding::encode(rollValue), rollText);
  EXPECT_EQ(Coding::encode(attemptValue), attemptText);
  EXPECT_EQ(Coding::encode(storedValue), storedText);
}

TEST(Coding, OmitsAnAbsentBand) {
  EXPECT_EQ(Coding::encode(levelValue), levelText);
}

TEST(Coding, WritesAllThreeMembersOfAnEmptyRecord) {
  EXPECT_EQ(Coding::encode(Stored{}), R"({"attempts":[],"staircases":{},"lifetime":{}})");
}

TEST(Coding, WritesStaircasesInDrillOrderThenUnknownNamesSorted) {
  Stored stored;
  for (const char* name : {"polarity", "zoom", "level", "Aura", "dynamics", "frequency", ""})
    stored.staircases[name] = Staircase{};
  const std::string text = Coding::encode(stored).value();
  std::size_t position = 0;
  for (const char* name : {"\"frequency\"", "\"level\"", "\"dynamics\"", "\"polarity\"", "\"\"",
                           "\"Aura\"", "\"zoom\""}) {
    const std::size_t next = text.find(name, position);
    ASSERT_NE(next, text.npos) << name << " in " << text;
    position = next;
  }
}

TEST(Coding, WritesBandsInAscendingOrder) {
  Stored stored;
  for (const std::int64_t band : {10, 9, 26, 0, -2})
    stored.lifetime[band] = rollValue;
  EXPECT_EQ(Coding::encode(stored).value(), R"({"attempts":[],"staircases":{},"lifetime":{"-2":)" +
                                                rollText + R"(,"0":)" + rollText + R"(,"9":)" +
                                                rollText + R"(,"10":)" + rollText + R"(,"26":)" +
                                                rollText + "}}");
}

TEST(Coding, EscapesUnknownNames) {
  Stored stored;
  const std::string name = "a\"b\\c\nd\x01/\x7f\xc3\xa9\xf0\x9f\x8e\xa7";
  stored.staircases[name] = staircaseValue;
  const std::string text = Coding::encode(stored).value();
  EXPECT_NE(text.find("\"a\\\"b\\\\c\\u000ad\\u0001/\x7f\xc3\xa9\xf0\x9f\x8e\xa7\":"), text.npos)
      << text;
  EXPECT_EQ(Coding::decodeStored(text), stored);
}

TEST(Coding, DoesNotEncodeNonFiniteNumbers) {
  for (const double value : {infinite, -infinite, notANumber}) {
    for (double Trial::*field :
         {&Trial::difficulty, &Trial::targetFreq, &Trial::boostDB, &Trial::boostQ,
          &Trial::targetLevelDB, &Trial::targetGRdB, &Trial::correlation}) {
      Trial trial = trialValue;
      trial.*field = value;
      EXPECT_EQ(Coding::encode(trial), std::nullopt);
    }
    EXPECT_EQ(Coding::encode(Staircase{.difficulty = value}), std::nullopt);
    EXPECT_EQ(Coding::encode(BandRoll{1, 1, value}), std::nullopt);
    for (const auto& spoil : std::vector<std::function<void(Attempt&)>>{
             [&](Attempt& a) { a.date.secondsSinceReferenceDate = value; },
             [&](Attempt& a) { a.difficulty = value; }, [&](Attempt& a) { a.error = value; }}) {
      Stored stored = storedValue;
      spoil(stored.attempts[0]);
      EXPECT_EQ(Coding::encode(stored.attempts[0]), std::nullopt);
      EXPECT_EQ(Coding::encode(stored), std::nullopt);
    }
    Stored stored = storedValue;
    stored.staircases["frequency"].difficulty = value;
    EXPECT_EQ(Coding::encode(stored), std::nullopt);
    stored = storedValue;
    stored.lifetime[3].errorSum = value;
    EXPECT_EQ(Coding::encode(stored), std::nullopt);
  }
}

// ---- Reading ----

TEST(Coding, ReadsTheTextsThatItWrites) {
  EXPECT_EQ(Coding::decodeTrial(trialText), trialValue);
  EXPECT_EQ(Coding::decodeStaircase(staircaseText), staircaseValue);
  EXPECT_EQ(Coding::decodeBandRoll(rollText), rollValue);
  EXPECT_EQ(Coding::decodeAttempt(attemptText), attemptValue);
  EXPECT_EQ(Coding::decodeAttempt(levelText), levelValue);
  EXPECT_EQ(Coding::decodeStored(storedText), storedValue);
}

TEST(Coding, ReadsAHandWrittenFile) {
  const std::string text =
      "\n{ \"lifetime\" : { } ,\t\"staircases\":\r\n {},\n \"attempts\" : [ {\n"
      "\"bandIndex\": 14.0, \"error\" : 32e-2, \"correct\":true,\n"
      "\"difficulty\": 2.0E1, \"material\":\"Pink\\u0020noise\",\n"
      "\"dr\\u0069ll\":\"frequency\", \"date\": 801234567.25,\n"
      "\"id\":\"0123abcd-4567-49ab-8def-00ff10ee20dd\" } ] }\n\n";
  EXPECT_EQ(Coding::decodeStored(text), (Stored{{attemptValue}, {}, {}}));
}

TEST(Coding, ReadsKeysInAnyOrder) {
  std::vector<std::string> members{R"("attempts":10)", R"("hits":4)", R"("errorSum":7.125)"};
  std::sort(members.begin(), members.end());
  do {
    const std::string text = "{" + members[0] + "," + members[1] + "," + members[2] + "}";
    EXPECT_EQ(Coding::decodeBandRoll(text), rollValue) << text;
  } while (std::next_permutation(members.begin(), members.end()));
  EXPECT_EQ(Coding::decodeStored(R"({"lifetime":{"3":)" + rollText +
                                 R"(},"staircases":{"frequency":)" + staircaseText +
                                 R"(},"attempts":[)" + attemptText + "," + levelText + "]}"),
            storedValue);
}

struct KeyedCase {
  std::string text;
  std::vector<std::string> requiredKeys;
  std::function<bool(std::string_view)> reads;
};

std::vector<KeyedCase> keyedCases() {
  return {{trialText,
           {"drill", "seed", "material", "difficulty", "slots", "targetFreq", "boostDB", "boostQ",
            "targetLevelDB", "targetGRdB", "oddSlot", "correlation"},
           [](auto text) { return Coding::decodeTrial(text).has_value(); }},
          {staircaseText,
           {"difficulty", "consecutiveCorrect", "reversals", "lastDirection"},
           [](auto text) { return Coding::decodeStaircase(text).has_value(); }},
          {rollText,
           {"attempts", "hits", "errorSum"},
           [](auto text) { return Coding::decodeBandRoll(text).has_value(); }},
          {attemptText,
           {"id", "date", "drill", "material", "difficulty", "correct", "error"},
           [](auto text) { return Coding::decodeAttempt(text).has_value(); }},
          {R"({"attempts":[],"staircases":{},"lifetime":{}})",
           {"attempts", "staircases"},
           [](auto text) { return Coding::decodeStored(text).has_value(); }}};
}

std::string quoted(const std::string& key) {
  return "\"" + key + "\":";
}

TEST(Coding, RejectsAMissingRequiredKey) {
  for (const auto& [text, keys, reads] : keyedCases()) {
    EXPECT_TRUE(reads(text));
    for (const std::string& key : keys)
      EXPECT_FALSE(reads(changed(text, quoted(key), quoted(key + "2")))) << key << " of " << text;
  }
}

TEST(Coding, RejectsAMissingRequiredKeyOfAnyElement) {
  const auto without = [](const std::string& text, const std::string& key) {
    return changed(text, quoted(key), quoted(key + "2"));
  };
  const auto file = [](const std::string& attempt, const std::string& staircase,
                       const std::string& roll) {
    return R"({"attempts":[)" + attemptText + "," + attempt + R"(],"staircases":{"level":)" +
           staircaseText + R"(,"dynamics":)" + staircase + R"(},"lifetime":{"1":)" + rollText +
           R"(,"2":)" + roll + "}}";
  };
  EXPECT_TRUE(Coding::decodeStored(file(levelText, staircaseText, rollText)));
  EXPECT_FALSE(Coding::decodeStored(file(without(levelText, "error"), staircaseText, rollText)));
  EXPECT_FALSE(
      Coding::decodeStored(file(levelText, without(staircaseText, "reversals"), rollText)));
  EXPECT_FALSE(Coding::decodeStored(file(levelText, staircaseText, without(rollText, "hits"))));
}

TEST(Coding, IgnoresKeysInsideUnknownValues) {
  EXPECT_FALSE(Coding::decodeBandRoll(R"({"x":{"hits":4},"attempts":10,"errorSum":7.125})"));
  EXPECT_FALSE(Coding::decodeBandRoll(R"({"x":[{"hits":4}],"attempts":10,"errorSum":7.125})"));
  EXPECT_EQ(Coding::decodeBandRoll(R"({"hits":4,"x":{"hits":5},"attempts":10,"errorSum":7.125})"),
            rollValue);
}

TEST(Coding, RejectsValuesOfAnotherTypeAndNull) {
  for (const auto& [text, keys, reads] : keyedCases()) {
    for (const std::string& key : keys) {
      int accepted = 0;
      for (const char* value : {"true", "1", "\"frequency\"", "\"Synth pad\"", "[]", "{}",
                                "\"0123ABCD-4567-49AB-8DEF-00FF10EE20DD\"", "null"})
        accepted += reads(changed(text, quoted(key), quoted(key) + value + R"(,"x":)"));
      EXPECT_EQ(accepted, 1) << key << " of " << text;
    }
  }
}

TEST(Coding, SkipsUnknownKeysWithAnyValidValue) {
  for (const auto& [text, keys, reads] : keyedCases()) {
    for (const char* value : {"null", "true", "-1.5e300", "\"x\"", "[]", "{}",
                              R"([1,[2,{"drill":[{"attempts":{}}]}],null])",
                              R"({"attempts":"no","id":{"date":[[[]]]},"drill":5})"}) {
      EXPECT_TRUE(
          reads(changed(text, quoted(keys[0]), quoted("new") + value + "," + quoted(keys[0]))));
      EXPECT_TRUE(reads(text.substr(0, text.size() - 1) + ",\"new\":" + value + "}"));
    }
    EXPECT_FALSE(reads(text.substr(0, text.size() - 1) + R"(,"new":[}])"));
    EXPECT_FALSE(reads(text.substr(0, text.size() - 1) + R"(,"new":1e400})"));
  }
}

TEST(Coding, SkipsUnknownKeysInEveryObjectOfAFile) {
  const std::string extra = R"(,"more":{"bandIndex":[1,{"error":"x"}]}})";
  const auto widened = [&](const std::string& text) {
    return text.substr(0, text.size() - 1) + extra;
  };
  EXPECT_EQ(Coding::decodeStored(R"({"attempts":[)" + widened(attemptText) + "," +
                                 widened(levelText) + R"(],"staircases":{"frequency":)" +
                                 widened(staircaseText) + R"(},"lifetime":{"3":)" +
                                 widened(rollText) + "}" + extra),
            storedValue);
}

TEST(Coding, LastDuplicateKeyWinsButAllMustBeValid) {
  const auto twice = [](const std::string& first, const std::string& second) {
    return Coding::decodeBandRoll(R"({"attempts":)" + first +
                                  R"(,"hits":4,"errorSum":7.125,"attempts":)" + second + "}");
  };
  EXPECT_EQ(twice("99", "10"), rollValue);
  EXPECT_EQ(twice("\"x\"", "10"), std::nullopt);
  EXPECT_EQ(twice("99", "true"), std::nullopt);

  const std::string tail = R"(,"staircases":{}})";
  EXPECT_EQ(Coding::decodeStored(R"({"attempts":[)" + levelText + R"(],"attempts":[)" +
                                 attemptText + "]" + tail),
            (Stored{{attemptValue}, {}, {}}));
  EXPECT_EQ(Coding::decodeStored(R"({"attempts":[{}],"attempts":[])" + tail), std::nullopt);
  EXPECT_EQ(Coding::decodeStored(R"({"attempts":[],"lifetime":{"3":)" + rollText +
                                 R"(},"lifetime":null)" + tail),
            Stored{});
  EXPECT_EQ(Coding::decodeStored(R"({"attempts":[],"lifetime":{"3":)" + rollText +
                                 R"(},"lifetime":{"4":)" + rollText + "}" + tail),
            (Stored{{}, {}, {{4, rollValue}}}));
}

TEST(Coding, AcceptsABandThatIsAnIntegerAbsentOrNull) {
  Attempt without = attemptValue;
  without.bandIndex.reset();
  EXPECT_EQ(Coding::decodeAttempt(changed(attemptText, R"(,"bandIndex":14)", "")), without);
  EXPECT_EQ(Coding::decodeAttempt(changed(attemptText, ":14}", ":null}")), without);
  EXPECT_EQ(Coding::decodeAttempt(changed(attemptText, ":14}", R"(:14,"bandIndex":null})")),
            without);
  for (const char* value : {"true", "\"14\"", "[]", "[14]", "{}", "14.5", "1e30"})
    EXPECT_EQ(Coding::decodeAttempt(changed(attemptText, ":14}", std::string(":") + value + "}")),
              std::nullopt)
        << value;
}

TEST(Coding, ReadsAFileWithoutARollUp) {
  const Stored without{storedValue.attempts, storedValue.staircases, {}};
  const std::string lifetime = R"(,"lifetime":{"3":)" + rollText + "}";
  EXPECT_EQ(Coding::decodeStored(changed(storedText, lifetime, "")), without);
  EXPECT_EQ(Coding::decodeStored(changed(storedText, lifetime, R"(,"lifetime":null)")), without);
  for (const char* value : {"[]", "true", "0", "\"\"", R"({"3":null})", R"({"3":[]})"})
    EXPECT_EQ(
        Coding::decodeStored(changed(storedText, lifetime, R"(,"lifetime":)" + std::string(value))),
        std::nullopt)
        << value;
}

TEST(Coding, ReadsIntegersExactly) {
  const auto reversals = [](const std::string& number) -> std::optional<std::int64_t> {
    const auto read = Coding::decodeStaircase(changed(staircaseText, ":6,", ":" + number + ","));
    return read ? std::optional(read->reversals) : std::nullopt;
  };
  const std::vector<std::pair<std::string, std::optional<std::int64_t>>> cases{
      {"0", 0},
      {"-0", 0},
      {"-0.0", 0},
      {"5.0", 5},
      {"5.000", 5},
      {"-5.0", -5},
      {"5e0", 5},
      {"50e-1", 5},
      {"0.5E+1", 5},
      {"500e-2", 5},
      {"1e18", 1000000000000000000},
      {"0e999999999999999999999", 0},
      {"0.0e-5", 0},
      {"9223372036854775807", most},
      {"9223372036854775807.0", most},
      {"922337203685477580.7e1", most},
      {"-9223372036854775808", least},
      {"-9223372036854775808.0", least},
      {"9007199254740993.0", 9007199254740993},
      {"1.9", std::nullopt},
      {"-0.5", std::nullopt},
      {"5e-1", std::nullopt},
      {"1e-400", std::nullopt},
      {"4503599627370496.4", std::nullopt},
      {"9223372036854775808", std::nullopt},
      {"9223372036854775808.0", std::nullopt},
      {"-9223372036854775809", std::nullopt},
      {"-9223372036854775809.0", std::nullopt},
      {"18446744073709551616", std::nullopt},
      {"1e19", std::nullopt},
      {"1e300", std::nullopt},
      {"1e400", std::nullopt},
      {"true", std::nullopt},
      {"\"5\"", std::nullopt},
      {"05", std::nullopt},
      {"+5", std::nullopt},
      {"5.", std::nullopt},
      {".5", std::nullopt},
      {"0x5", std::nullopt},
      {"NaN", std::nullopt},
      {"Infinity", std::nullopt}};
  for (const auto& [number, expected] : cases)
    EXPECT_EQ(reversals(number), expected) << number;
}

TEST(Coding, ReadsSeedsAsExactUnsignedIntegers) {
  const auto seed = [](const std::string& number) -> std::optional<std::uint64_t> {
    const auto read = Coding::decodeTrial(changed(trialText, "18446744073709551615", number));
    return read ? std::optional(read->seed) : std::nullopt;
  };
  const std::vector<std::pair<std::string, std::optional<std::uint64_t>>> cases{
      {"0", 0U},
      {"-0", 0U},
      {"-0.0", 0U},
      {"7.0", 7U},
      {"18446744073709551615", 18446744073709551615U},
      {"18446744073709551615.0", 18446744073709551615U},
      {"1e19", 10000000000000000000U},
      {"18446744073709551616", std::nullopt},
      {"18446744073709551616.0", std::nullopt},
      {"-1", std::nullopt},
      {"-1.0", std::nullopt},
      {"0.5", std::nullopt},
      {"1e20", std::nullopt}};
  for (const auto& [number, expected] : cases)
    EXPECT_EQ(seed(number), expected) << number;
}

TEST(Coding, ReadsIntegersAsRealNumbers) {
  const auto difficulty = [](const std::string& number) -> std::optional<double> {
    const auto read = Coding::decodeStaircase(changed(staircaseText, "44.25", number));
    return read ? std::optional(read->difficulty) : std::nullopt;
  };
  EXPECT_EQ(difficulty("7"), 7);
  EXPECT_EQ(difficulty("-7"), -7);
  EXPECT_EQ(difficulty("250"), 250); // not clamped
  EXPECT_EQ(difficulty("18446744073709551615"), 0x1p64);
  EXPECT_EQ(difficulty("9007199254740993"), 9007199254740992.0);
  EXPECT_EQ(difficulty("-9223372036854775809"), -0x1p63);
  EXPECT_EQ(difficulty("123456789012345678901234567890"), 123456789012345678901234567890.0);
  EXPECT_EQ(difficulty("1.7976931348623157e308"), std::numeric_limits<double>::max());
  EXPECT_EQ(difficulty("1e-400"), 0);
  EXPECT_TRUE(sameBits(difficulty("-0").value(), -0.0));
  EXPECT_TRUE(sameBits(difficulty("-0.0").value(), -0.0));
  EXPECT_TRUE(sameBits(difficulty("0").value(), 0.0));
  EXPECT_EQ(difficulty("1e309"), std::nullopt);
  EXPECT_EQ(difficulty("-1e400"), std::nullopt);
  EXPECT_EQ(difficulty("\"7\""), std::nullopt);
}

TEST(Coding, IgnoresACommaLocale) {
#ifdef VELTO_TEST_LOCALES // locales generated by the build
  const ScopedVariable folder("LOCPATH", VELTO_TEST_LOCALES);
#endif
  const std::string previous = setlocale(LC_ALL, nullptr);
  if (setlocale(LC_ALL, "de_DE.UTF-8") == nullptr)
    GTEST_SKIP() << "no locale with a decimal comma is installed";
  const std::string point = localeconv()->decimal_point;
  const auto trial = Coding::decodeTrial(trialText);
  const auto text = Coding::encode(trialValue);
  const auto five = Coding::decodeStaircase(changed(staircaseText, ":6,", ":5.0,"));
  const auto tiny = Coding::decodeStaircase(changed(staircaseText, "44.25", "1.5e-400"));
  const std::string pointAfter = localeconv()->decimal_point;
  setlocale(LC_ALL, previous.c_str());
  EXPECT_EQ(point, ",");
  EXPECT_EQ(pointAfter, ","); // coding leaves the locale as it was
  EXPECT_EQ(trial, trialValue);
  EXPECT_EQ(text, trialText);
  EXPECT_EQ(five.value().reversals, 5);
  EXPECT_EQ(tiny.value().difficulty, 0);
}

TEST(Coding, DrillAndMaterialNamesMatchExactly) {
  EXPECT_FALSE(Coding::decodeAttempt(changed(attemptText, "\"frequency\"", "\"Frequency\"")));
  EXPECT_FALSE(Coding::decodeAttempt(changed(attemptText, "\"Pink noise\"", "\"Pink Noise\"")));
}

TEST(Coding, BandNamesAreDecimalIntegers) {
  const auto bandOf = [](const std::string& name) -> std::optional<std::int64_t> {
    const auto read = Coding::decodeStored(changed(storedText, "\"3\"", "\"" + name + "\""));
    return read ? std::optional(read->lifetime.begin()->first) : std::nullopt;
  };
  EXPECT_EQ(bandOf("26"), 26);
  EXPECT_EQ(bandOf("-1"), -1);
  EXPECT_EQ(bandOf("+4"), 4);
  EXPECT_EQ(bandOf("007"), 7);
  EXPECT_EQ(bandOf("9223372036854775807"), most);
  for (const char* name :
       {"", "x", "3.0", "3 ", " 3", "3e0", "0x3", "+", "-", "+-3", "--3", "9223372036854775808"})
    EXPECT_EQ(bandOf(name), std::nullopt) << name;
}

TEST(Coding, BandNamesOfEqualValueAreOneBand) {
  const auto read = Coding::decodeStored(
      changed(storedText, R"("3":)", R"("03":{"attempts":1,"hits":1,"errorSum":1},"3":)"));
  EXPECT_EQ(read.value().lifetime, (std::map<std::int64_t, BandRoll>{{3, rollValue}}));
}

TEST(Coding, KeepsStaircasesWithUnknownNames) {
  const std::string text = changed(storedText, R"("staircases":{)",
                                   R"("staircases":{"loudness":)" + staircaseText + ",");
  const Stored read = Coding::decodeStored(text).value();
  EXPECT_EQ(read.staircases.at("loudness"), staircaseValue);
  EXPECT_EQ(Coding::encode(read), changed(storedText, R"(},"lifetime")",
                                          R"(,"loudness":)" + staircaseText + R"(},"lifetime")"));
  EXPECT_FALSE(Coding::decodeStored(changed(text, R"("loudness":)", R"("loudness":0,"x":)")));
}

TEST(Coding, RejectsMalformedText) {
  for (const std::string& text :
       std::vector<std::string>{"",
                                " ",
                                "null",
                                "5",
                                "\"x\"",
                                "[]",
                                "{",
                                "}",
                                "{}}",
                                storedText + "x",
                                storedText + "{}",
                                storedText + ",",
                                storedText.substr(1),
                                "[" + storedText + "]",
                                "// c\n" + storedText,
                                changed(storedText, ",\"staircases\"", ",,\"staircases\""),
                                changed(storedText, "],\"staircases\"", ",],\"staircases\""),
                                changed(storedText, "\"staircases\":", "\"staircases\""),
                                changed(storedText, "\"staircases\"", "staircases"),
                                changed(storedText, "\"staircases\"", "'staircases'"),
                                changed(storedText, "801234567.25", "1e400"),
                                std::string(storedText) + '\0',
                                storedText + std::string("\0{}", 3),
                                std::string("\0", 1) + storedText,
                                "\xff\xfe" + storedText})
    EXPECT_EQ(Coding::decodeStored(text), std::nullopt) << text;
  EXPECT_TRUE(Coding::decodeStored(" \t\r\n" + storedText + " \t\r\n"));
}

TEST(Coding, RejectsInvalidUnicode) {
  const auto named = [](const std::string& name) {
    return Coding::decodeStored(changed(storedText, "\"frequency\":{", "\"" + name + "\":{"));
  };
  EXPECT_TRUE(named("\xc3\xa9"));
  EXPECT_TRUE(named("\\ud83c\\udfa7"));
  for (const char* name : {"\xff", "\xc3", "\xc0\x80", "\xed\xa0\x80", "\xf5\x80\x80\x80", "\x80",
                           "\\ud83c", "\\udfa7", "\\u12", "\\x", "\n", "\x01"})
    EXPECT_FALSE(named(name)) << name;
}

TEST(Coding, SkipsOrRejectsDeepNesting) {
  constexpr int depth = 1'000'000;
  const auto nested = [](const std::string& open, const std::string& close) {
    std::string text;
    for (int i = 0; i < depth; ++i)
      text += open;
    text += "0";
    for (int i = 0; i < depth; ++i)
      text += close;
    return text;
  };
  const std::string arrays = nested("[", "]");
  const std::string objects = nested("{\"a\":", "}");
  for (const std::string& deep : {arrays, objects}) {
    EXPECT_TRUE(Coding::decodeStored(
        changed(storedText, "\"staircases\"", "\"x\":" + deep + ",\"staircases\"")));
    EXPECT_FALSE(Coding::decodeStored(deep));
    EXPECT_FALSE(Coding::decodeStored(R"({"staircases":{},"attempts":)" + deep + "}"));
    EXPECT_FALSE(Coding::decodeStored(R"({"staircases":{},"x":)" + deep));
  }
}

// ---- Damage ----

// Expects a damaged text to be rejected, or to be another valid record that survives a round trip.
void expectHarmless(const std::string& text) {
  const auto read = Coding::decodeStored(text);
  if (!read)
    return;
  const auto written = Coding::encode(*read);
  ASSERT_TRUE(written) << text;
  ASSERT_EQ(Coding::decodeStored(*written), read) << text;
}

TEST(Coding, RejectsEveryTruncation) {
  for (std::size_t length = 0; length < storedText.size(); ++length)
    EXPECT_EQ(Coding::decodeStored(storedText.substr(0, length)), std::nullopt) << length;
}

TEST(Coding, EveryChangeOfOneByteIsHarmless) {
  for (std::size_t position = 0; position < storedText.size(); ++position) {
    std::string text = storedText;
    for (int value = 0; value < 256; ++value) {
      text[position] = static_cast<char>(value);
      expectHarmless(text);
    }
  }
}

TEST(Coding, EveryLostOrDoubledByteIsHarmless) {
  for (std::size_t position = 0; position < storedText.size(); ++position) {
    expectHarmless(std::string(storedText).erase(position, 1));
    expectHarmless(std::string(storedText).insert(position, 1, storedText[position]));
  }
}

RC_GTEST_PROP(Coding, ScrambledTextIsHarmless, ()) {
  std::string text = storedText;
  for (int i = *rc::gen::inRange(1, 6); i > 0; --i) {
    const auto from = *rc::gen::inRange<std::size_t>(0, storedText.size());
    const auto length = *rc::gen::inRange<std::size_t>(0, 60);
    text.insert(*rc::gen::inRange<std::size_t>(0, text.size()), storedText.substr(from, length));
  }
  expectHarmless(text);
}

// ---- Round trips ----

// The texts of doubles differ whenever their bits do: equal texts mean bit-equal values.

RC_GTEST_PROP(Coding, ATrialReadsBackBitForBit, ()) {
  Trial trial{.drill = *anyDrill(), .seed = *anyBits(), .material = *anyMaterial()};
  trial.slots = *anyInteger();
  trial.oddSlot = *anyInteger();
  for (double Trial::*field :
       {&Trial::difficulty, &Trial::targetFreq, &Trial::boostDB, &Trial::boostQ,
        &Trial::targetLevelDB, &Trial::targetGRdB, &Trial::correlation})
    trial.*field = *finiteDouble();
  const std::string text = Coding::encode(trial).value();
  const Trial read = Coding::decodeTrial(text).value();
  RC_ASSERT(read == trial);
  RC_ASSERT(Coding::encode(read) == text);
}

RC_GTEST_PROP(Coding, ARecordReadsBackBitForBitAndIsWrittenTheSame, ()) {
  const Stored stored = anyStored();
  const std::string text = Coding::encode(stored).value();
  const Stored read = Coding::decodeStored(text).value();
  RC_ASSERT(read == stored);
  RC_ASSERT(Coding::encode(read) == text);
}

} // namespace
} // namespace velto
