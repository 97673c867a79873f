#include "ChipLayout.h"

#include "Scales.h"
#include "StripLayout.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

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

// A marker's bar as it is drawn.
struct Bar {
  double left, right;

  Bar(double x, double ratio) : left(StripLayout::markerLeft(x, ratio)) {
    right = left + std::max(std::round(2 * ratio), 1.0) / ratio;
  }
};

// The distance of a chip, drawn with its edges on the nearest pixels, to a bar; negative if they
// overlap.
double distance(const Box& chip, const Bar& bar, double ratio) {
  const auto pixel = [ratio](double x) { return std::round(x * ratio) / ratio; };
  return std::max(bar.left - pixel(chip.right), pixel(chip.left) - bar.right);
}

constexpr double exact = 1e-6;

// Describes the first fault in the places of two markers' chips. Empty if there is none.
std::string faultOf(const ChipLayout::Marker& answer, const ChipLayout::Marker& truth,
                    double stripWidth, double ratio) {
  const auto places = ChipLayout::place(answer, truth, stripWidth, ratio);
  const Box a = boxOf(places.answer, answer.chipWidth);
  const Box t = boxOf(places.truth, truth.chipWidth);
  for (const Box& box : {a, t})
    if (box.left < 0 || box.right > stripWidth || box.top < 0 ||
        box.bottom > StripLayout::stripHeight - 22)
      return "a chip leaves the strip or covers ticks";
  if (overlap(a, t))
    return "the chips overlap";
  const bool equal = std::abs(answer.x - truth.x) < exact;
  const Bar answerBar(answer.x, ratio);
  const Bar truthBar(truth.x, ratio);
  const auto check = [&](const Box& chip, const Bar& own, const Bar& other,
                         bool crosses) -> std::string {
    const double toOwn = distance(chip, own, ratio);
    const double toOther = distance(chip, other, ratio);
    if (toOwn < -exact)
      return "a chip covers its own bar";
    if (!crosses && toOther < -exact)
      return "a chip crosses the other bar without `crosses`";
    if (crosses && (toOwn > exact || toOther > ChipLayout::closeGap))
      return "a crossing chip does not touch its own bar, or is away from the other";
    if (!crosses && !equal && toOwn >= toOther - exact)
      return "a chip is not nearer to its own bar than to the other";
    return {};
  };
  std::string fault = check(a, answerBar, truthBar, places.answer.crosses);
  if (fault.empty())
    fault = check(t, truthBar, answerBar, places.truth.crosses);
  return fault;
}

// What makes up the width of a chip in a face, in points: its padding, each character, and "ACTUAL"
// with its gap.
struct Face {
  double padding, character, actual;

  [[nodiscard]] double answer(const std::string& text) const {
    return std::ceil(padding + character * static_cast<double>(text.size()));
  }
  [[nodiscard]] double truth(const std::string& text) const {
    return std::ceil(answer(text) + actual);
  }
};

constexpr std::array faces{Face{14, 6, 42}, Face{14, 7, 46}, Face{14, 8.5, 52}};
constexpr std::array ratios{1.0, 1.25, 1.5, 1.75, 2.0};
constexpr int narrowest = 560; // the strip of the smallest window
constexpr int widest = 2560 - 441;

} // namespace

TEST(Chips, StandRightOfTheirBar) {
  const auto places = ChipLayout::place(ChipLayout::Marker{300, 60}, std::nullopt, 739, 1);
  EXPECT_EQ(places.answer, (ChipLayout::Place{306, 6}));
}

TEST(Chips, StandLeftOfTheirBarAtTheRightEdge) {
  const auto places = ChipLayout::place(ChipLayout::Marker{700, 60}, std::nullopt, 739, 1);
  EXPECT_EQ(places.answer, (ChipLayout::Place{634, 6}));
}

TEST(Chips, StandOnOppositeSidesOfCloseMarkers) {
  const auto places =
      ChipLayout::place(ChipLayout::Marker{211, 60}, ChipLayout::Marker{280, 104}, 739, 1);
  EXPECT_EQ(places.answer, (ChipLayout::Place{145, 6}));
  EXPECT_EQ(places.truth, (ChipLayout::Place{286, 6}));
}

TEST(Chips, TouchTheirBarWhereTheyCrossTheOther) {
  const auto left =
      ChipLayout::place(ChipLayout::Marker{10, 60}, ChipLayout::Marker{30, 104}, 739, 1);
  EXPECT_EQ(left.answer, (ChipLayout::Place{11, 6, true}));
  EXPECT_EQ(left.truth, (ChipLayout::Place{36, 30}));
  const auto right =
      ChipLayout::place(ChipLayout::Marker{735, 60}, ChipLayout::Marker{720, 104}, 739, 1);
  EXPECT_EQ(right.truth, (ChipLayout::Place{610, 6}));
  EXPECT_EQ(right.answer, (ChipLayout::Place{674, 30, true}));
}

TEST(Chips, TouchTheirBarWhereTheyJustFitBetweenBars) {
  const auto left =
      ChipLayout::place(ChipLayout::Marker{10, 60}, ChipLayout::Marker{75, 104}, 739, 1);
  EXPECT_EQ(left.answer, (ChipLayout::Place{11, 6}));
  EXPECT_EQ(left.truth, (ChipLayout::Place{81, 6}));
  const auto right =
      ChipLayout::place(ChipLayout::Marker{735, 60}, ChipLayout::Marker{670, 104}, 739, 1);
  EXPECT_EQ(right.truth, (ChipLayout::Place{560, 6}));
  EXPECT_EQ(right.answer, (ChipLayout::Place{674, 6}));
}

TEST(Chips, OfEqualMarkersStandOnBothSidesOrWhereThereIsRoom) {
  const auto at = [](double x) {
    return ChipLayout::place(ChipLayout::Marker{x, 60}, ChipLayout::Marker{x, 104}, 739, 1);
  };
  EXPECT_EQ(at(300).answer, (ChipLayout::Place{234, 6}));
  EXPECT_EQ(at(300).truth, (ChipLayout::Place{306, 6}));
  EXPECT_EQ(at(0).answer, (ChipLayout::Place{6, 6}));
  EXPECT_EQ(at(0).truth, (ChipLayout::Place{6, 30}));
  EXPECT_EQ(at(739).answer, (ChipLayout::Place{673, 6}));
  EXPECT_EQ(at(739).truth, (ChipLayout::Place{629, 30}));
}

TEST(ChipLaws, HoldForAllPairsOfBandsAtEveryWidth) {
  for (const Face& face : faces)
    for (int width = narrowest; width <= widest; ++width) {
      const double ratio = ratios[static_cast<std::size_t>(width) % ratios.size()];
      for (const double answer : Bands::centres)
        for (const double truth : Bands::centres) {
          const auto position = [width](double f) { return frequencyScale.position(f, width); };
          const std::string fault =
              faultOf({position(answer), face.answer(FrequencyScale::text(answer))},
                      {position(truth), face.truth(FrequencyScale::text(truth))}, width, ratio);
          ASSERT_EQ(fault, "") << answer << " Hz, actual " << truth << " Hz, " << width
                               << " points, " << ratio << "x";
        }
    }
}

TEST(ChipLaws, HoldForAllPairsOfDecibels) {
  // A truth of the dynamics drill has one decimal.
  const std::array scales{std::pair{levelScale, 0.05}, std::pair{dynamicsScale, 0.1}};
  constexpr int widthStep = 41;
  for (const auto& scaleAndStep : scales)
    for (const Face& face : faces)
      for (int width = narrowest; width <= widest; width += widthStep) {
        const DecibelScale& scale = scaleAndStep.first;
        const double truthStep = scaleAndStep.second;
        const double ratio = ratios[static_cast<std::size_t>(width) % ratios.size()];
        for (int i = 0; i * scale.step <= scale.highest + exact; ++i)
          for (int j = 0; j * truthStep <= scale.highest + exact; ++j) {
            const std::string longest = "10.00 dB";
            const std::string fault =
                faultOf({scale.position(i * scale.step, width), face.answer(longest)},
                        {scale.position(j * truthStep, width), face.truth(longest)}, width, ratio);
            ASSERT_EQ(fault, "") << i * scale.step << " dB, actual " << j * truthStep << " dB, "
                                 << width << " points, " << ratio << "x";
          }
      }
}

// Crossing chips are the exception: one in at most 40 of 729 pairs of bands.
TEST(ChipLaws, FewChipsCrossTheOtherBar) {
  const Face& face = faces[1];
  constexpr double width = 739;
  int crossing = 0;
  for (const double answer : Bands::centres)
    for (const double truth : Bands::centres) {
      const auto places =
          ChipLayout::place(ChipLayout::Marker{frequencyScale.position(answer, width),
                                               face.answer(FrequencyScale::text(answer))},
                            ChipLayout::Marker{frequencyScale.position(truth, width),
                                               face.truth(FrequencyScale::text(truth))},
                            width, 1);
      EXPECT_FALSE(places.answer.crosses && places.truth.crosses);
      crossing += static_cast<int>(places.answer.crosses || places.truth.crosses);
    }
  EXPECT_GT(crossing, 0);
  EXPECT_LE(crossing, 40);
}

RC_GTEST_PROP(ChipLaws, StayInsideTheStripAndApart, ()) {
  const double strip = *rc::gen::inRange(560, 2400);
  const auto marker = [strip](int widestChip) {
    return ChipLayout::Marker{*rc::gen::inRange(0, 10001) * strip / 10000,
                              static_cast<double>(*rc::gen::inRange(30, widestChip))};
  };
  const ChipLayout::Marker answer = marker(80);
  const ChipLayout::Marker truth = marker(130);
  const double ratio = *rc::gen::elementOf(ratios);
  const auto places = ChipLayout::place(answer, truth, strip, ratio);
  const Box a = boxOf(places.answer, answer.chipWidth);
  const Box t = boxOf(places.truth, truth.chipWidth);
  for (const Box& box : {a, t}) {
    RC_ASSERT(box.left >= 0);
    RC_ASSERT(box.right <= strip);
    RC_ASSERT(box.top >= 0);
    RC_ASSERT(box.bottom <= StripLayout::stripHeight - 22); // clear of the ticks
  }
  RC_ASSERT(!overlap(a, t));
  // Markers closer than that are drawn as one bar.
  if (std::abs(answer.x - truth.x) >= 3)
    RC_ASSERT(faultOf(answer, truth, strip, ratio) == "");
}
