#include "NumberText.h"

#include "Numbers.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>

namespace velto {
namespace {

rc::Gen<double> anyFiniteDouble() {
  const auto anyBits = rc::gen::resize(100, rc::gen::arbitrary<std::uint64_t>());
  const auto anything = rc::gen::suchThat(
      rc::gen::map(anyBits, [](std::uint64_t bits) { return std::bit_cast<double>(bits); }),
      [](double value) { return std::isfinite(value); });
  return rc::gen::oneOf(anything,
                        rc::gen::map(rc::gen::inRange(-4000, 4001), [](int n) { return n / 40.0; }),
                        rc::gen::element(0.0, -0.0, 5e-324, -5e-324, 2.2250738585072009e-308,
                                         0x1p53, 1e21, 1e-7, std::numeric_limits<double>::max()));
}

RC_GTEST_PROP(NumberTextLaw, ReadsTheShortestTextAsTheSameDouble, ()) {
  const double value = *anyFiniteDouble();
  const auto read = NumberText::real(Numbers::shortest(value));
  RC_ASSERT(read.has_value());
  RC_ASSERT(std::bit_cast<std::uint64_t>(*read) == std::bit_cast<std::uint64_t>(value));
}

TEST(NumberText, RefusesWhatIsNoPlainNumber) {
  for (const char* text :
       {"",    " 1",    "1 ", "+1", "0x10", "inf", "-inf", "nan", "1,5",   "1e400", "1e-400",
        "--1", "1.5.2", "1e", ".",  "-",    "-.",  "e5",   "1e+", "1e--5", "1e5.0", "1e5 "}) {
    EXPECT_FALSE(NumberText::real(text)) << text;
    EXPECT_FALSE(NumberText::integer(text)) << text;
    EXPECT_FALSE(NumberText::natural(text)) << text;
  }
  EXPECT_FALSE(NumberText::real(std::string_view("1\0", 2)));
}

TEST(NumberText, ReadsWithOrWithoutPointAndExponent) {
  EXPECT_EQ(NumberText::real("-1.5e1"), -15);
  EXPECT_EQ(NumberText::real("1E+2"), 100);
  EXPECT_EQ(NumberText::real("025e-1"), 2.5);
  EXPECT_EQ(NumberText::real(".5"), 0.5);
  EXPECT_EQ(NumberText::real("5."), 5);
  EXPECT_EQ(NumberText::real("0e-400"), 0);
  // Half way between two doubles: the even one.
  EXPECT_EQ(NumberText::real("0.3000000000000000166533453693773481063544750213623046875"),
            0x1.3333333333334p-2);
}

TEST(NumberText, ReadsAPointUnderACommaLocale) {
  struct Comma : std::numpunct<char> {
    [[nodiscard]] char do_decimal_point() const override { return ','; }
  };
  const std::locale former =
      std::locale::global(std::locale(std::locale::classic(), new Comma)); // owned by the locale
  EXPECT_EQ(NumberText::real("2.5"), 2.5);
  EXPECT_FALSE(NumberText::real("2,5"));
  std::locale::global(former);
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
