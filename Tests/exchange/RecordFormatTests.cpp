// Documentation/record-format.md says what the program does.
#include "Coding.h"
#include "ProfileCSV.h"
#include "kit/RecordTesting.h"

#include <set>

namespace velto {
namespace {

using testing::contentOf;

const std::string& page() {
  static const std::string text =
      contentOf(std::filesystem::path(VELTO_SOURCE_DIR) / "Documentation" / "record-format.md");
  return text;
}

// The block of code in that language.
std::string block(const std::string& language) {
  const std::string begin = "```" + language + "\n";
  const std::size_t at = page().find(begin);
  EXPECT_NE(at, std::string::npos) << language;
  EXPECT_EQ(page().find(begin, at + 1), std::string::npos) << language;
  const std::size_t first = at + begin.size();
  return page().substr(first, page().find("```", first) - first);
}

std::string withoutSpace(const std::string& text) {
  std::string compact;
  bool isQuoted = false;
  for (const char character : text) {
    if (character == '"')
      isQuoted = !isQuoted;
    if (isQuoted || (character != ' ' && character != '\n'))
      compact += character;
  }
  return compact;
}

// The first column of all tables whose second one is headed "value".
std::multiset<std::string> describedKeys() {
  std::multiset<std::string> keys;
  const std::string begin = "\n| `";
  for (std::size_t at = page().find(begin); at != std::string::npos;
       at = page().find(begin, at + 1)) {
    const std::size_t first = at + begin.size();
    keys.insert(page().substr(first, page().find('`', first) - first));
  }
  return keys;
}

TEST(RecordFormat, ShowsTheRecordThatTheProgramWrites) {
  const auto stored = Coding::decodeStored(block("json"));
  ASSERT_TRUE(stored);
  EXPECT_EQ(stored->attempts.size(), 2U);
  EXPECT_EQ(Coding::encode(*stored), withoutSpace(block("json")));
}

TEST(RecordFormat, ShowsTheSameRecordAsCSV) {
  std::string lines = block("csv"), file;
  for (const char character : lines)
    file.append(character == '\n' ? "\r" : "").push_back(character);
  const auto stored = Coding::decodeStored(block("json"));
  ASSERT_TRUE(stored);
  EXPECT_EQ(ProfileCSV::write(*stored), file);
  EXPECT_EQ(ProfileCSV::read(lines), stored);
}

TEST(RecordFormat, DescribesEveryKeyAndColumn) {
  const auto keys = describedKeys();
  const std::string json = block("json");
  for (std::size_t at = json.find('"'); at != std::string::npos;) {
    const std::size_t end = json.find('"', at + 1);
    const std::string word = json.substr(at + 1, end - at - 1);
    const bool isKey = json[end + 1] == ':';
    const bool isName = Drill::fromRawValue(word) || word == "14";
    if (isKey && !isName) {
      EXPECT_TRUE(keys.contains(word)) << word;
    }
    at = json.find('"', end + 1);
  }
  const auto rows = CSV::parse(block("csv"));
  for (const std::string& column : rows[0].fields)
    EXPECT_TRUE(keys.contains(column)) << column;
}

TEST(RecordFormat, TellsWhatAReaderToleratesAsTheProgramDoes) {
  using testing::changed;
  const std::string json = block("json");
  const auto stored = Coding::decodeStored(json);
  EXPECT_EQ(Coding::decodeStored(changed(json, "\"difficulty\": 32", "\"difficulty\": 3.2e1")),
            stored);
  EXPECT_EQ(Coding::decodeStored(changed(json, "\"error\": 1.05",
                                         "\"bandIndex\": null, \"new\": [1], \"error\": 1.05")),
            stored);
  EXPECT_EQ(Coding::decodeStored(changed(json, "9F0C6B1E", "9f0c6b1e")), stored);
  EXPECT_TRUE(Coding::decodeStored(changed(json, "\"level\": {", "\"timing\": {")));
  EXPECT_FALSE(
      Coding::decodeStored(changed(json, "\"drill\": \"level\"", "\"drill\": \"timing\"")));
  EXPECT_EQ(Coding::decodeStored("\xEF\xBB\xBF" + json), stored);
  EXPECT_FALSE(Coding::decodeStored(json + "{}"));
}

} // namespace
} // namespace velto
