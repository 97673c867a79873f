#include "Numbers.h"

#include "Bands.h"
#include "Grading.h"
#include "Signals.h"
#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

namespace velto {
namespace {

using tests::require;
using tests::sameBits;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();

// Switches the process to a locale with a decimal comma. The destructor restores the C locale.
class CommaLocale {
public:
  CommaLocale() : active_(enter()) {}
  ~CommaLocale() {
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  // Whether printf writes a comma.
  [[nodiscard]] bool active() const { return active_ && print("%.1f", 0.5) == "0,5"; }

  template <typename... Values>
  static std::string print(const char* format, Values... values) {
    char text[512];
    std::snprintf(text, sizeof text, format, values...);
    return text;
  }

private:
  static bool enter() {
    setenv("LOCPATH", VELTO_TEST_LOCALES, 1);
    return std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
  }

  bool active_ = false;
};

template <typename... Values>
std::string print(const char* format, Values... values) {
  return CommaLocale::print(format, values...);
}

// Any double: a random bit pattern, which has any magnitude, one up to 20000, or a special case.
rc::Gen<double> anyDouble() {
  const auto anyBits = rc::gen::map(rc::gen::resize(100, rc::gen::arbitrary<std::uint64_t>()),
                                    [](std::uint64_t bits) { return std::bit_cast<double>(bits); });
  const auto special =
      rc::gen::element(0.0, -0.0, 0.5, 1.5, 2.5, 0.125, 999.5, 999.6, 5e-324,
                       std::numeric_limits<double>::max(), infinity, -infinity, notANumber);
  return rc::gen::weightedOneOf<double>(
      {{2, anyBits}, {2, tests::between(-20000, 20000)}, {1, special}});
}

rc::Gen<double> anyFiniteDouble() {
  return rc::gen::suchThat(anyDouble(), [](double value) { return std::isfinite(value); });
}

RC_GTEST_PROP(Numbers, FixedMatchesPrintfF, ()) {
  const double value = *anyDouble();
  const int decimals = *rc::gen::inRange(0, 12);
  RC_ASSERT(Numbers::fixed(value, decimals) == print("%.*f", decimals, value));
}

RC_GTEST_PROP(Numbers, GeneralMatchesPrintfG, ()) {
  const double value = *anyDouble();
  const int digits = *rc::gen::inRange(1, 18);
  RC_ASSERT(Numbers::general(value, digits) == print("%.*g", digits, value));
}

RC_GTEST_PROP(Numbers, ShortestReadsBackAsTheSameDouble, ()) {
  const double value = *anyFiniteDouble();
  require(sameBits(std::strtod(Numbers::shortest(value).c_str(), nullptr), value));
}

RC_GTEST_PROP(Numbers, ShortestIsNotLongerThanAnyTextThatReadsBack, ()) {
  const double value = *anyFiniteDouble();
  const std::string text = Numbers::shortest(value);
  for (int digits = 1; digits <= 17; ++digits) {
    const std::string candidate = print("%.*g", digits, value);
    if (std::strtod(candidate.c_str(), nullptr) == value)
      RC_ASSERT(text.size() <= candidate.size());
  }
}

TEST(Numbers, FixedRoundsHalvesToEvenAsPrintfDoes) {
  EXPECT_EQ(Numbers::fixed(0.125, 2), "0.12");
  EXPECT_EQ(Numbers::fixed(0.375, 2), "0.38");
  EXPECT_EQ(Numbers::fixed(2.5, 0), "2");
  EXPECT_EQ(Numbers::fixed(999.6, 0), "1000");
  EXPECT_EQ(Numbers::fixed(-0.0, 1), "-0.0");
  EXPECT_EQ(Numbers::fixed(infinity, 2), "inf");
  EXPECT_EQ(Numbers::fixed(-infinity, 2), "-inf");
  EXPECT_EQ(Numbers::fixed(notANumber, 2), "nan");
}

TEST(Numbers, FixedWritesEveryDigitOfTheLargestDouble) {
  const std::string text = Numbers::fixed(-std::numeric_limits<double>::max(), 2);
  EXPECT_EQ(text.size(), 313u);
  EXPECT_EQ(text.substr(0, 6), "-17976");
}

TEST(Numbers, ShortestMatchesKnownTexts) {
  EXPECT_EQ(Numbers::shortest(0.1), "0.1");
  EXPECT_EQ(Numbers::shortest(1e21), "1e+21");
  EXPECT_EQ(Numbers::shortest(-0.0), "-0");
  EXPECT_EQ(Numbers::shortest(20), "20");
  EXPECT_EQ(Numbers::shortest(1.0 / 3), "0.3333333333333333");
}

TEST(Numbers, IgnoreACommaLocale) {
  const CommaLocale locale;
  ASSERT_TRUE(locale.active());
  EXPECT_EQ(Numbers::fixed(1234.5, 2), "1234.50");
  EXPECT_EQ(Numbers::general(1.25, 4), "1.25");
  EXPECT_EQ(Numbers::shortest(0.1), "0.1");
  EXPECT_EQ(Bands::label(1250), "1.25k");
  EXPECT_EQ(Drills::grade(3.5, Trial{.drill = Drill::level, .targetLevelDB = 3}).errorText,
            "0.50 dB off");
}

TEST(Numbers, TruncatedDropsTheFraction) {
  EXPECT_EQ(Numbers::truncated(1.9), 1);
  EXPECT_EQ(Numbers::truncated(-1.9), -1);
  EXPECT_EQ(Numbers::truncated(-0.5), 0);
  EXPECT_EQ(Numbers::truncated(-0x1p63), smallest);
  EXPECT_EQ(Numbers::truncated(0x1.fffffffffffffp62), 9223372036854774784);
}

TEST(NumbersDeathTest, TruncatedDiesIfTheValueDoesNotFitAnInteger) {
  const char* message = "Velto: a number cannot be converted to an integer";
  EXPECT_DEATH((void)Numbers::truncated(notANumber), message);
  EXPECT_DEATH((void)Numbers::truncated(infinity), message);
  EXPECT_DEATH((void)Numbers::truncated(-infinity), message);
  EXPECT_DEATH((void)Numbers::truncated(0x1p63), message);
  EXPECT_DEATH((void)Numbers::truncated(-0x1.0000000000001p63), message);
}

TEST(Numbers, SaturatingIncrementStopsAtTheLargestInteger) {
  EXPECT_EQ(Numbers::saturatingIncrement(0), 1);
  EXPECT_EQ(Numbers::saturatingIncrement(smallest), smallest + 1);
  EXPECT_EQ(Numbers::saturatingIncrement(largest - 1), largest);
  EXPECT_EQ(Numbers::saturatingIncrement(largest), largest);
}

} // namespace
} // namespace velto
