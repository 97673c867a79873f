#include "Staircase.h"

#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace velto {
namespace {

using namespace tests;

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();

// `start` after a sequence of right (R) and wrong (W) answers.
Staircase after(const std::string& answers, Staircase start = {}) {
  for (const char answer : answers)
    start.record(answer == 'R');
  return start;
}

TEST(Staircase, StartsAtTwenty) {
  EXPECT_EQ(Staircase(), (Staircase{20, 0, 0, 0}));
}

TEST(Staircase, CountersSaturate) {
  EXPECT_EQ(after("R", {50, largest, 0, 1}), (Staircase{62, 0, 0, 1}));
  EXPECT_EQ(after("R", {50, largest - 1, 0, 1}), (Staircase{62, 0, 0, 1}));
  EXPECT_EQ(after("W", {50, 0, largest, 1}), (Staircase{47, 0, largest, -1}));
  EXPECT_EQ(after("W", {50, 0, largest - 1, 1}), (Staircase{47, 0, largest, -1}));
}

TEST(Staircase, AcceptsStoredFieldsOutOfRange) {
  EXPECT_EQ(after("R", {50, -3, 0, 1}), (Staircase{50, -2, 0, 1}));
  EXPECT_EQ(after("R", {50, smallest, 0, 1}), (Staircase{50, smallest + 1, 0, 1}));
  EXPECT_EQ(after("W", {50, 0, -4, 1}), (Staircase{38, 0, -3, -1}));
  EXPECT_EQ(after("RR", {50, 0, 0, 7}), (Staircase{62, 0, 1, 1}));
  EXPECT_EQ(after("RR", {250, 0, 0, 0}), (Staircase{100, 0, 0, 1}));
  EXPECT_EQ(after("W", {-50, 0, 0, 0}), (Staircase{0, 0, 0, -1}));
}

rc::Gen<std::int64_t> anyCounter() {
  return rc::gen::weightedOneOf<std::int64_t>(
      {{4, rc::gen::inRange<std::int64_t>(0, 9)},
       {1, rc::gen::inRange<std::int64_t>(-5, 200)},
       {1, rc::gen::element(largest, largest - 1, largest - 2, smallest, smallest + 1)}});
}

rc::Gen<Staircase> anyStaircase() {
  return rc::gen::map(
      rc::gen::tuple(rc::gen::oneOf(between(0, 100), between(-200, 300),
                                    rc::gen::element(0.0, 3.0, 12.0, 20.0, 88.0, 97.0, 100.0)),
                     anyCounter(), anyCounter(),
                     rc::gen::element<std::int64_t>(-1, -1, 0, 1, 1, 2, largest, smallest)),
      [](const std::tuple<double, std::int64_t, std::int64_t, std::int64_t>& fields) {
        const auto& [difficulty, consecutiveCorrect, reversals, lastDirection] = fields;
        return Staircase{difficulty, consecutiveCorrect, reversals, lastDirection};
      });
}

RC_GTEST_PROP(StaircaseLaw, MatchesTheModel, (const std::vector<bool>& answers)) {
  Staircase actual = *anyStaircase();
  reference::Staircase expected{actual.difficulty, actual.consecutiveCorrect, actual.reversals,
                                actual.lastDirection};
  for (const bool answer : answers) {
    actual.record(answer);
    expected.record(answer);
    require(sameBits(actual.difficulty, expected.difficulty));
    RC_ASSERT(actual.consecutiveCorrect == expected.consecutiveCorrect);
    RC_ASSERT(actual.reversals == expected.reversals);
    RC_ASSERT(actual.lastDirection == expected.lastDirection);
  }
}

} // namespace
} // namespace velto
