// Checks the effect of the compile flags that make all compilers compute the same samples.

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace velto {
namespace {

// Volatile, so that no compiler folds the results at compile time.
volatile double justAboveOne = 1 + 0x1p-30;
volatile double justBelowOne = 1 - 0x1p-30;
volatile double minusOne = -1;

// Two adjacent roundings to float: the pattern that GCC 12's basic-block (SLP) vectoriser gets
// wrong at -O2 and above.
[[gnu::noinline]] void roundTwo(double a, double b, double* out) {
  out[0] = static_cast<double>(static_cast<float>(a));
  out[1] = static_cast<double>(static_cast<float>(b));
}

TEST(CompileFlags, AdjacentStoresAreBothRoundedToFloat) {
  // 1 + 2^-30 and 1 - 2^-30 lie between 1 and the neighbouring floats.
  std::array<double, 2> out{};
  roundTwo(justAboveOne, justBelowOne, out.data());
  EXPECT_EQ(out[0], 1.0);
  EXPECT_EQ(out[1], 1.0);
}

// (1 + 2^-30)(1 - 2^-30) = 1 - 2^-60, which rounds to 1. Adding -1 then gives 0, unless multiply
// and add are fused.
#if defined(__x86_64__)
[[gnu::noinline, gnu::target("fma")]]
#else
[[gnu::noinline]]
#endif
double
productPlus(double a, double b, double c) {
  return a * b + c;
}

TEST(CompileFlags, ProductsAreRoundedBeforeAddition) {
#if defined(__x86_64__)
  if (!__builtin_cpu_supports("fma"))
    GTEST_SKIP() << "this processor has no fused multiply-add";
#endif
  EXPECT_EQ(productPlus(justAboveOne, justBelowOne, minusOne), 0.0);
  // A fused multiply-add would differ.
  EXPECT_EQ(std::fma(justAboveOne, justBelowOne, minusOne), -0x1p-60);
}

} // namespace
} // namespace velto
