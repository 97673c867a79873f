// The compile flags that make every compiler compute the same samples are in force.

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace velto {
namespace {

// Read at run time, so that no compiler computes the results itself.
volatile double justAboveOne = 1 + 0x1p-30;
volatile double justBelowOne = 1 - 0x1p-30;
volatile double minusOne = -1;

// Two neighbouring roundings to float: the shape that the vectoriser of basic blocks in GCC 12
// breaks at -O2 and above.
[[gnu::noinline]] void roundTwo(double a, double b, double* out) {
  out[0] = static_cast<double>(static_cast<float>(a));
  out[1] = static_cast<double>(static_cast<float>(b));
}

TEST(CompileFlags, TwoNeighbouringStoresAreBothRoundedToFloat) {
  // 1 + 2^-30 and 1 - 2^-30 lie between 1 and the neighbouring floats.
  std::array<double, 2> out{};
  roundTwo(justAboveOne, justBelowOne, out.data());
  EXPECT_EQ(out[0], 1.0);
  EXPECT_EQ(out[1], 1.0);
}

// (1 + 2^-30)(1 - 2^-30) = 1 - 2^-60, which rounds to 1: the sum with -1 is 0, unless the product
// goes into the sum unrounded.
#if defined(__x86_64__)
[[gnu::noinline, gnu::target("fma")]]
#else
[[gnu::noinline]]
#endif
double
productPlus(double a, double b, double c) {
  return a * b + c;
}

TEST(CompileFlags, AProductIsRoundedBeforeItIsAdded) {
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
