#include "ChipLayout.h"

#include "StripLayout.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <optional>

using namespace velto;

namespace {

struct Box {
  double left, top, right, bottom;
};

Box boxOf(const ChipLayout::Place& place, double width) {
  return {place.x, place.y, place.x + width, place.y + ChipLayout::chipHeight};
}

bool overlap(const Box& a, const Box& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

bool crosses(double bar, const Box& chip) {
  constexpr double half = StripLayout::markerWidth / 2;
  return bar + half > chip.left && bar - half < chip.right;
}

} // namespace

TEST(Chips, StandRightOfTheirBar) {
  const auto places = ChipLayout::place(ChipLayout::Marker{300, 60}, std::nullopt, 739);
  EXPECT_EQ(places.answer, (ChipLayout::Place{306, 6}));
}

TEST(Chips, StandLeftOfTheirBarAtTheRightEdge) {
  const auto places = ChipLayout::place(ChipLayout::Marker{700, 60}, std::nullopt, 739);
  EXPECT_EQ(places.answer, (ChipLayout::Place{634, 6}));
}

TEST(Chips, StandOnOppositeSidesOfCloseMarkers) {
  const auto places =
      ChipLayout::place(ChipLayout::Marker{211, 60}, ChipLayout::Marker{280, 104}, 739);
  EXPECT_EQ(places.answer, (ChipLayout::Place{145, 6}));
  EXPECT_EQ(places.truth, (ChipLayout::Place{286, 6}));
}

TEST(Chips, StackWhereThereIsNoRoomBesideEachOther) {
  const auto left = ChipLayout::place(ChipLayout::Marker{10, 60}, ChipLayout::Marker{30, 104}, 739);
  EXPECT_EQ(left.answer, (ChipLayout::Place{36, 6}));
  EXPECT_EQ(left.truth, (ChipLayout::Place{36, 30}));
  const auto right =
      ChipLayout::place(ChipLayout::Marker{735, 60}, ChipLayout::Marker{720, 104}, 739);
  EXPECT_EQ(right.truth, (ChipLayout::Place{610, 6}));
  EXPECT_EQ(right.answer, (ChipLayout::Place{654, 30}));
}

RC_GTEST_PROP(ChipLaws, StayInsideTheStripClearOfBarsAndOfEachOther, ()) {
  const double strip = *rc::gen::inRange(560, 2400);
  const auto marker = [strip](int widest) {
    return ChipLayout::Marker{*rc::gen::inRange(0, 10001) * strip / 10000,
                              static_cast<double>(*rc::gen::inRange(30, widest))};
  };
  const ChipLayout::Marker answer = marker(80);
  const ChipLayout::Marker truth = marker(130);
  const auto places = ChipLayout::place(answer, truth, strip);
  const Box a = boxOf(places.answer, answer.chipWidth);
  const Box t = boxOf(places.truth, truth.chipWidth);
  for (const Box& box : {a, t}) {
    RC_ASSERT(box.left >= 0);
    RC_ASSERT(box.right <= strip);
    RC_ASSERT(box.top >= 0);
    RC_ASSERT(box.bottom <= StripLayout::stripHeight - 22); // clear of the ticks
    RC_ASSERT(!crosses(answer.x, box));
    RC_ASSERT(!crosses(truth.x, box));
  }
  RC_ASSERT(!overlap(a, t));
}
