#include "Pair.h"

#include "CoreSupport.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>

namespace velto {
namespace {

using namespace tests;

TEST(Pair, ItsPartsAreThoseOfTwoPairs) {
  const Pair a{1, 2}, b{3, 4};
  EXPECT_EQ(firstOfEach(a, b)[0], 1);
  EXPECT_EQ(firstOfEach(a, b)[1], 3);
  EXPECT_EQ(secondOfEach(a, b)[0], 2);
  EXPECT_EQ(secondOfEach(a, b)[1], 4);
  EXPECT_EQ(straddling(a, b)[0], 2);
  EXPECT_EQ(straddling(a, b)[1], 3);
  EXPECT_EQ(both(5)[0], 5);
  EXPECT_EQ(both(5)[1], 5);
}

// A compiler that takes both steps for one would keep the bits that the first one drops.
RC_GTEST_PROP(PairLaw, EachHalfIsRoundedTo32BitsAsAloneThenWidened, ()) {
  const double a = *between(-4, 4), b = *between(-4, 4);
  const Pair there = widened(rounded(Pair{a, b}));
  require(sameBits(there[0], static_cast<double>(static_cast<float>(a))));
  require(sameBits(there[1], static_cast<double>(static_cast<float>(b))));
  require(sameBits(widened(rounded(a)), there[0]));
}

TEST(Pair, TwoSamplesOfABufferAreReadAndWritten) {
  std::array<float, 4> x{1, 2, 3, 4};
  EXPECT_EQ(pairAt(x, 1)[0], 2);
  EXPECT_EQ(pairAt(x, 1)[1], 3);
  setPair(x, 1, pairAt(x, 2));
  EXPECT_EQ(x, (std::array<float, 4>{1, 3, 4, 4}));
}

} // namespace
} // namespace velto
