#include "UTF8.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace velto {
namespace {

TEST(UTF8, AcceptsTheLastOfEachLength) {
  for (const char* text :
       {"", "a", "\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
        "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "\xF0\x9F\x8E\xA7 caf\xC3\xA9"})
    EXPECT_TRUE(UTF8::isValid(text)) << text;
  EXPECT_TRUE(UTF8::isValid(std::string(1, '\0')));
}

TEST(UTF8, RefusesWhatIsIllFormed) {
  for (const char* text : {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC2", "\xC2g", "\xE0\x9F\xBF",
                           "\xE0\xA0", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF", "\xF0\x90\x80",
                           "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "a\xFE", "\xE1\x80g"})
    EXPECT_FALSE(UTF8::isValid(text)) << text;
}

// Whatever follows in memory: here the rest of the sequence.
TEST(UTF8, RefusesASequenceThatIsCutOff) {
  for (const std::string_view text : {"\xC2\x80", "\xE0\xA0\x80", "\xF0\x90\x80\x80"})
    for (std::size_t bytes = 1; bytes < text.size(); ++bytes)
      EXPECT_FALSE(UTF8::isValid(text.substr(0, bytes))) << text << " " << bytes;
}

} // namespace
} // namespace velto
