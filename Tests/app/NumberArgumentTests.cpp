#include "NumberArgument.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

namespace velto {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// Distinguishes 0 from -0.
bool sameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

RC_GTEST_PROP(NumberArgument, ReadsWhatPrintfWrites, ()) {
  const auto value = std::bit_cast<double>(*rc::gen::arbitrary<std::uint64_t>());
  RC_PRE(std::isfinite(value));
  const bool hexadecimal = *rc::gen::arbitrary<bool>();
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), hexadecimal ? "%a" : "%.17g", value);
  // printf writes the decimal point of the process's locale.
  for (char& character : text)
    if (character == ',')
      character = '.';
  RC_ASSERT(sameBits(numberArgument(text.data()).value(), value));
}

TEST(NumberArgument, ReadsEverySpelling) {
  const struct {
    const char* text;
    double value;
  } rows[] = {
      {"1250", 1250},
      {"-1.5", -1.5},
      {"+1.5", 1.5},
      {".5", 0.5},
      {"5.", 5},
      {"1e3", 1000},
      {"1E+3", 1000},
      {"25e-1", 2.5},
      {"-0", -0.0},
      {"0x10", 16},
      {"0X1.8P1", 3},
      {"-0x.8p1", -1},
      {"inf", infinity},
      {"-INF", -infinity},
      {"Infinity", infinity},
      {"4e-324", 5e-324},
      {"1.7976931348623157e308", std::numeric_limits<double>::max()},
  };
  for (const auto& row : rows) {
    const auto value = numberArgument(row.text);
    ASSERT_TRUE(value.has_value()) << row.text;
    EXPECT_TRUE(sameBits(*value, row.value)) << row.text;
  }
  EXPECT_TRUE(std::isnan(numberArgument("nan").value()));
  EXPECT_TRUE(std::isnan(numberArgument("-NaN").value()));
}

TEST(NumberArgument, RoundsValuesOutOfRangeToInfinityOrZero) {
  const std::string zeros(5000, '0');
  const struct {
    std::string text;
    double value;
  } rows[] = {
      {"1e400", infinity},
      {"1e+400", infinity},
      {"-0.001e+999", -infinity}, // the digits alone are below 1
      {"-1e400", -infinity},
      {"1.7976931348623159e308", infinity},
      {"1e99999999999999999999", infinity},
      {"1" + zeros, infinity},
      {"1" + zeros + "e-10", infinity},
      {"0x1p2000", infinity},
      {"0x1" + zeros, infinity},
      {"1e-400", 0},
      {"-1e-400", -0.0},
      {"2e-324", 0},
      {"1e-99999999999999999999", 0},
      {"0." + zeros + "1", 0},
      {"0." + zeros + "1e10", 0},
      {"0x1p-2000", 0},
      {"0x0." + zeros + "1", 0},
      {"0e99999999999999999999", 0},
  };
  for (const auto& row : rows) {
    const auto value = numberArgument(row.text);
    ASSERT_TRUE(value.has_value()) << row.text.substr(0, 30);
    EXPECT_TRUE(sameBits(*value, row.value)) << row.text.substr(0, 30);
  }
}

TEST(NumberArgument, RejectsEverythingElse) {
  for (const char* text :
       {"",      " ",     "1 ",    " 1",   "1,5",    "1.5.2", "abc",    "-",    "+",
        "+-1",   "--1",   ".",     "1e",   "1e+",    "0x",    "0xg",    "0x1p", "0x-1",
        "0x0x1", "0xinf", "0xnan", "infi", "nan(1)", "1f",    "1.0 Hz", "٣"})
    EXPECT_FALSE(numberArgument(text).has_value()) << '"' << text << '"';
}

} // namespace
} // namespace velto
