#include "NumberText.h"

#include "Numbers.h"
#include "kit/RecordTesting.h"

#include <bit>
#include <limits>

namespace velto {
namespace {

RC_GTEST_PROP(NumberTextLaw, ReadsTheShortestTextAsTheSameDouble, ()) {
  const double value = *testing::finiteDouble();
  const auto read = NumberText::real(Numbers::shortest(value));
  RC_ASSERT(read.has_value());
  RC_ASSERT(std::bit_cast<std::uint64_t>(*read) == std::bit_cast<std::uint64_t>(value));
}

TEST(NumberText, RefusesWhatIsNoPlainNumber) {
  for (const char* text : {"", " 1", "1 ", "+1", "0x10", "inf", "-inf", "nan", "1,5", "1e400",
                           "1e-400", "--1", "1.5.2", "1e", "."}) {
    EXPECT_FALSE(NumberText::real(text)) << text;
    EXPECT_FALSE(NumberText::integer(text)) << text;
    EXPECT_FALSE(NumberText::natural(text)) << text;
  }
  EXPECT_EQ(NumberText::real("-1.5e1"), -15);
}

TEST(NumberText, RefusesIntegersThatDoNotFit) {
  EXPECT_EQ(NumberText::integer("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(NumberText::integer("9223372036854775808"), std::nullopt);
  EXPECT_EQ(NumberText::natural("18446744073709551615"), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(NumberText::natural("18446744073709551616"), std::nullopt);
  EXPECT_EQ(NumberText::natural("-1"), std::nullopt);
  EXPECT_EQ(NumberText::natural("1.0"), std::nullopt);
}

} // namespace
} // namespace velto
