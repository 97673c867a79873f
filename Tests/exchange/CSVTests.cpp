#include "CSV.h"

#include "kit/RecordTesting.h"

namespace velto {
namespace {

using Fields = std::vector<std::string>;

std::vector<Fields> fieldsIn(std::string_view text) {
  std::vector<Fields> all;
  for (const CSV::Row& row : CSV::parse(text))
    all.push_back(row.fields);
  return all;
}

// The line of the damage; 0 if there is none.
std::string damageIn(std::string_view text) {
  try {
    static_cast<void>(CSV::parse(text));
  } catch (const CSV::Damaged& problem) {
    return problem.what();
  }
  return "";
}

TEST(CSV, QuotesOnlyWhatNeedsIt) {
  std::string text;
  CSV::append(text, Fields{"a", "", "b c", "1,5", "say \"A\"", "two\nlines", "\r"});
  EXPECT_EQ(text, "a,,b c,\"1,5\",\"say \"\"A\"\"\",\"two\nlines\",\"\r\"\r\n");
}

TEST(CSV, ReadsLinesWithEitherEnd) {
  const std::vector<Fields> expected{{"a", "b"}, {"", "c"}};
  EXPECT_EQ(fieldsIn("a,b\r\n,c\r\n"), expected);
  EXPECT_EQ(fieldsIn("a,b\n,c\n"), expected);
  EXPECT_EQ(fieldsIn("\xEF\xBB\xBF"
                     "a,b\n\"\",\"c\"\n"),
            expected);
  EXPECT_EQ(fieldsIn(""), std::vector<Fields>{});
  EXPECT_EQ(fieldsIn("\n"), (std::vector<Fields>{{""}}));
}

TEST(CSV, CountsTheLinesInsideOfFields) {
  const auto rows = CSV::parse("a,\"1\n2\n3\"\nb\n");
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0].line, 1U);
  EXPECT_EQ(rows[1].line, 4U);
}

TEST(CSV, RefusesDamageWithItsLine) {
  EXPECT_EQ(damageIn("a\nb"), "line 2: the file ends within it");
  EXPECT_EQ(damageIn("a\nb\r"), "line 2: the file ends within it");
  EXPECT_EQ(damageIn("a\n\"b\nc"), "line 2: a quote is not closed");
  EXPECT_EQ(damageIn("a\nb\"c\n"), "line 2: a stray character");
  EXPECT_EQ(damageIn("a\n\"b\"c\n"), "line 2: a stray character");
  EXPECT_EQ(damageIn("a\nb\rc\n"), "line 2: a stray character");
}

RC_GTEST_PROP(CSVLaw, ReadsBackWhatItWrites, ()) {
  const auto character = rc::gen::element('a', ',', '"', '\r', '\n', ' ', '\0', '\xE9');
  const auto rows = *rc::gen::container<std::vector<Fields>>(
      rc::gen::nonEmpty(rc::gen::container<Fields>(rc::gen::container<std::string>(character))));
  std::string text;
  for (const Fields& fields : rows)
    CSV::append(text, fields);
  RC_ASSERT(fieldsIn(text) == rows);
}

RC_GTEST_PROP(CSVLaw, ReadsAnythingWithoutHarm, ()) {
  const auto character = rc::gen::element('a', ',', '"', '\r', '\n', '\xEF', '\xBB', '\xBF');
  const auto text = *rc::gen::container<std::string>(character);
  static_cast<void>(damageIn(text));
}

} // namespace
} // namespace velto
