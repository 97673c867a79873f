#include "Pair.h"

#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace velto {
namespace {

using namespace tests;

// A compiler that optimised both conversions away would keep bits that a float drops.
RC_GTEST_PROP(PairLaw, RoundsAndWidensLikeEachHalfAlone, ()) {
  const double a = *between(-4, 4), b = *between(-4, 4);
  const Pair there = widened(rounded(Pair{a, b}));
  require(sameBits(there[0], static_cast<double>(static_cast<float>(a))));
  require(sameBits(there[1], static_cast<double>(static_cast<float>(b))));
  require(sameBits(widened(rounded(a)), there[0]));
}

} // namespace
} // namespace velto
