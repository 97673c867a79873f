#include "Answering.h"

#include "Drills.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace velto;

namespace {

constexpr FrequencyScale frequencyScale{40, 16000};
constexpr DecibelScale levelScale{0, 7, 0.05};
constexpr DecibelScale dynamicsScale{0, 14, 0.5};

std::vector<std::string> labels(const std::vector<ScaleTick>& ticks) {
  std::vector<std::string> texts;
  for (const ScaleTick& tick : ticks)
    if (!tick.label.empty())
      texts.push_back(tick.label);
  return texts;
}

} // namespace

TEST(FrequencyScale, IsLogarithmic) {
  EXPECT_DOUBLE_EQ(frequencyScale.position(40, 700), 0);
  EXPECT_DOUBLE_EQ(frequencyScale.position(16000, 700), 700);
  EXPECT_NEAR(frequencyScale.position(800, 700), 350, 1e-9); // the geometric middle of 40 and 16000
  EXPECT_NEAR(frequencyScale.position(1000, 739), 397.0230, 1e-3); // 739 log(25) / log(400)
}

TEST(FrequencyScale, ClicksAtTheEndsAnswerTheEnds) {
  EXPECT_EQ(frequencyScale.valueAt(0, 700), 40);
  EXPECT_EQ(frequencyScale.valueAt(700, 700), 16000);
  EXPECT_EQ(frequencyScale.valueAt(-50, 700), 40);
  EXPECT_EQ(frequencyScale.valueAt(9999, 700), 16000);
}

TEST(FrequencyScale, BetweenTwoCentresTheNearerOneOnTheAxisWins) {
  const double middle = frequencyScale.position(std::sqrt(1000.0 * 1250.0), 700);
  EXPECT_EQ(frequencyScale.valueAt(middle - 0.01, 700), 1000);
  EXPECT_EQ(frequencyScale.valueAt(middle + 0.01, 700), 1250);
}

TEST(FrequencyScale, ATieGoesToTheLowerCentre) {
  // Infinitely far from all centres alike.
  EXPECT_EQ(Bands::nearestIndex(0), 0U);
  EXPECT_EQ(Bands::nearestIndex(std::numeric_limits<double>::infinity()), 0U);
}

RC_GTEST_PROP(FrequencyScaleLaws, AClickOnACentreAnswersIt, ()) {
  const auto index = *rc::gen::inRange<std::size_t>(0, 27);
  const double width = *rc::gen::inRange(200, 4000);
  const double centre = Bands::centres[index];
  RC_ASSERT(frequencyScale.valueAt(frequencyScale.position(centre, width), width) == centre);
}

TEST(FrequencyScale, AStripWithoutWidthAnswersItsLowerEnd) {
  EXPECT_EQ(frequencyScale.valueAt(10, 0), 40);
}

TEST(FrequencyScale, KeysMoveByABandAnOctaveOrToTheEnds) {
  const struct {
    double from;
    Move move;
    double to;
  } cases[] = {{1000, Move::right, 1250}, {1000, Move::up, 1250},      {1000, Move::left, 800},
               {1000, Move::down, 800},   {1000, Move::pageUp, 2000},  {1000, Move::pageDown, 500},
               {1000, Move::toStart, 40}, {1000, Move::toEnd, 16000},  {40, Move::left, 40},
               {50, Move::pageDown, 40},  {16000, Move::right, 16000}, {12500, Move::pageUp, 16000},
               {1050, Move::right, 1250}, {1, Move::right, 50},        {1e9, Move::left, 12500},
               {0, Move::right, 50},      {-3, Move::up, 50}};
  for (const auto& c : cases)
    EXPECT_EQ(frequencyScale.moved(c.from, c.move), c.to)
        << c.from << " by " << static_cast<int>(c.move);
  // Where the axis is shorter than the grid of bands.
  constexpr FrequencyScale voice{300, 3400};
  EXPECT_EQ(voice.moved(1000, Move::toStart), 315);
  EXPECT_EQ(voice.moved(1000, Move::toEnd), 3150);
  EXPECT_EQ(voice.moved(3150, Move::right), 3150);
}

TEST(FrequencyScale, TakesAnyNumberForTheNearestBand) {
  EXPECT_EQ(frequencyScale.nearest(1000), 1000);
  EXPECT_EQ(frequencyScale.nearest(1100), 1000); // a tie on the axis lies at 1118 Hz
  EXPECT_EQ(frequencyScale.nearest(1130), 1250);
  EXPECT_EQ(frequencyScale.nearest(-5), 40);
  EXPECT_EQ(frequencyScale.nearest(1e12), 16000);
}

TEST(FrequencyScale, IsReadOutWithItsUnit) {
  EXPECT_EQ(FrequencyScale::spoken(40), "40 Hz");
  EXPECT_EQ(FrequencyScale::spoken(315), "315 Hz");
  EXPECT_EQ(FrequencyScale::spoken(1000), "1 kHz");
  EXPECT_EQ(FrequencyScale::spoken(3150), "3.15 kHz");
  EXPECT_EQ(FrequencyScale::spoken(12500), "12.5 kHz");
}

RC_GTEST_PROP(FrequencyScaleLaws, AKeyAndItsOppositeLeadBack, ()) {
  const auto index = *rc::gen::inRange<std::size_t>(1, 26);
  const double centre = Bands::centres[index];
  RC_ASSERT(frequencyScale.moved(frequencyScale.moved(centre, Move::right), Move::left) == centre);
  RC_ASSERT(frequencyScale.moved(frequencyScale.moved(centre, Move::down), Move::up) == centre);
}

TEST(FrequencyScale, HasATickForEachCentreAndTallOnesForDecades) {
  const auto ticks = FrequencyScale::ticks();
  ASSERT_EQ(ticks.size(), 27U);
  for (std::size_t i = 0; i < ticks.size(); ++i) {
    const bool decade = i == 4 || i == 14 || i == 24;
    EXPECT_EQ(ticks[i].value, Bands::centres[i]);
    EXPECT_EQ(ticks[i].major, decade);
    EXPECT_EQ(ticks[i].height, decade ? 22 : 12);
  }
  EXPECT_EQ(labels(ticks), (std::vector<std::string>{"100", "1k", "10k"}));
}

TEST(FrequencyScale, NamesItsUnit) {
  EXPECT_EQ(FrequencyScale::text(3150), "3.15k Hz");
  EXPECT_EQ(FrequencyScale::text(40), "40 Hz");
}

TEST(DecibelScale, KeysMoveByAStepAPageOrToTheEnds) {
  const struct {
    DecibelScale scale;
    double from = 0;
    Move move = Move::left;
    double to = 0;
  } cases[] = {{levelScale, 2, Move::right, 2.05},    {levelScale, 2, Move::down, 1.95},
               {levelScale, 2, Move::pageUp, 3},      {levelScale, 2, Move::pageDown, 1},
               {levelScale, 2, Move::toStart, 0},     {levelScale, 2, Move::toEnd, 7},
               {levelScale, 0, Move::left, 0},        {levelScale, 0.5, Move::pageDown, 0},
               {levelScale, 7, Move::up, 7},          {levelScale, 6.5, Move::pageUp, 7},
               {levelScale, 2.02, Move::right, 2.05}, {levelScale, -4, Move::right, 0.05},
               {levelScale, 99, Move::left, 6.95},    {dynamicsScale, 5, Move::up, 5.5},
               {dynamicsScale, 5, Move::left, 4.5},   {dynamicsScale, 5, Move::pageUp, 7},
               {dynamicsScale, 5, Move::pageDown, 3}, {dynamicsScale, 1.5, Move::pageDown, 0},
               {dynamicsScale, 13, Move::pageUp, 14}, {dynamicsScale, 5, Move::toStart, 0},
               {dynamicsScale, 5, Move::toEnd, 14},   {dynamicsScale, 14, Move::right, 14}};
  for (const auto& c : cases)
    EXPECT_NEAR(c.scale.moved(c.from, c.move), c.to, 1e-12)
        << c.from << " by " << static_cast<int>(c.move);
}

// A key answers the very number that a click there answers.
RC_GTEST_PROP(DecibelScaleLaws, KeysStayOnTheGridOfClicks, ()) {
  const DecibelScale scale = *rc::gen::element(levelScale, dynamicsScale);
  const auto steps = static_cast<int>(std::lround(scale.upper / scale.step));
  double value = scale.valueAt(0, 1000);
  for (int i = 1; i <= steps; ++i) {
    value = scale.moved(value, Move::right);
    RC_ASSERT(value == scale.valueAt(1000.0 * i / steps, 1000));
  }
  RC_ASSERT(value == scale.moved(0, Move::toEnd));
  for (int i = 0; i < steps; ++i)
    value = scale.moved(value, Move::down);
  RC_ASSERT(value == 0);
}

TEST(DecibelScale, TakesAnyNumberForTheNearestStep) {
  EXPECT_NEAR(levelScale.nearest(2.03), 2.05, 1e-12);
  EXPECT_NEAR(dynamicsScale.nearest(2.2), 2, 1e-12);
  EXPECT_EQ(levelScale.nearest(-1), 0);
  EXPECT_FALSE(std::signbit(levelScale.nearest(-0.01)));
  EXPECT_NEAR(levelScale.nearest(1e12), 7, 1e-12);
}

TEST(Choices, GoRoundAndStartFromEitherEnd) {
  using Answering::movedChoice;
  EXPECT_EQ(movedChoice(0, 3, Move::right), 1);
  EXPECT_EQ(movedChoice(1, 3, Move::down), 2);
  EXPECT_EQ(movedChoice(2, 3, Move::right), 0);
  EXPECT_EQ(movedChoice(2, 3, Move::left), 1);
  EXPECT_EQ(movedChoice(0, 3, Move::up), 2);
  EXPECT_EQ(movedChoice(1, 3, Move::toStart), 0);
  EXPECT_EQ(movedChoice(1, 3, Move::toEnd), 2);
  EXPECT_EQ(movedChoice(1, 3, Move::pageUp), 1);
  EXPECT_EQ(movedChoice(1, 3, Move::pageDown), 1);
  EXPECT_EQ(movedChoice(-1, 3, Move::right), 0);
  EXPECT_EQ(movedChoice(-1, 3, Move::left), 2);
  EXPECT_EQ(movedChoice(-1, 3, Move::pageUp), -1);
  EXPECT_EQ(movedChoice(0, 1, Move::right), 0);
  EXPECT_EQ(movedChoice(-1, 0, Move::right), -1);
}

TEST(DecibelScale, IsLinear) {
  EXPECT_DOUBLE_EQ(levelScale.position(0, 700), 0);
  EXPECT_DOUBLE_EQ(levelScale.position(3.5, 700), 350);
  EXPECT_DOUBLE_EQ(dynamicsScale.position(14, 700), 700);
}

TEST(DecibelScale, RoundsAClickToItsStep) {
  EXPECT_DOUBLE_EQ(dynamicsScale.valueAt(43, 100), 6.0);
  EXPECT_DOUBLE_EQ(levelScale.valueAt(43, 100), 3.0);
  EXPECT_DOUBLE_EQ(dynamicsScale.valueAt(25, 1400), 0.5); // 0.25 dB: halves go up
  EXPECT_DOUBLE_EQ(levelScale.valueAt(-3, 100), 0);
  EXPECT_DOUBLE_EQ(levelScale.valueAt(103, 100), 7);
  EXPECT_DOUBLE_EQ(dynamicsScale.valueAt(103, 100), 14);
}

RC_GTEST_PROP(DecibelScaleLaws, AnswersAreMultiplesOfTheStepNearThePointer, ()) {
  const bool level = *rc::gen::arbitrary<bool>();
  const DecibelScale scale = level ? levelScale : dynamicsScale;
  const double width = *rc::gen::inRange(200, 4000);
  const double x = *rc::gen::inRange(0, 4000) * width / 4000;
  const double value = scale.valueAt(x, width);
  const double steps = std::round(value / scale.step);
  RC_ASSERT(value == steps * scale.step);
  RC_ASSERT(std::abs(scale.position(value, width) - x) <=
            scale.position(scale.step, width) / 2 + 1e-9);
}

TEST(DecibelScale, LevelTicksEveryHalfAndLabelsEachWholeDecibel) {
  const auto ticks = levelScale.ticks();
  ASSERT_EQ(ticks.size(), 15U);
  for (std::size_t i = 0; i < ticks.size(); ++i) {
    EXPECT_EQ(ticks[i].value, static_cast<double>(i) * 0.5);
    EXPECT_EQ(ticks[i].major, i % 2 == 0);
    EXPECT_EQ(ticks[i].height, i % 2 == 0 ? 22 : 11);
  }
  EXPECT_EQ(labels(ticks), (std::vector<std::string>{"0", "1", "2", "3", "4", "5", "6", "7"}));
}

TEST(DecibelScale, DynamicsTicksEachDecibelAndLabelsEvenOnes) {
  const auto ticks = dynamicsScale.ticks();
  ASSERT_EQ(ticks.size(), 15U);
  for (std::size_t i = 0; i < ticks.size(); ++i) {
    EXPECT_EQ(ticks[i].value, static_cast<double>(i));
    EXPECT_EQ(ticks[i].major, i % 2 == 0);
  }
  EXPECT_EQ(labels(ticks), (std::vector<std::string>{"0", "2", "4", "6", "8", "10", "12", "14"}));
}

TEST(DecibelScale, WritesTwoDecimals) {
  EXPECT_EQ(DecibelScale::text(2.65), "2.65 dB");
  EXPECT_EQ(DecibelScale::text(5), "5.00 dB");
}

TEST(Ticks, StartOnWholeDevicePixelsInsideTheStrip) {
  EXPECT_EQ(Answering::tickLeft(0, 1, 739, 1), 0);
  EXPECT_EQ(Answering::tickLeft(739, 1, 739, 1), 738);
  EXPECT_EQ(Answering::tickLeft(100.3, 1, 739, 1), 100);
  EXPECT_EQ(Answering::tickLeft(100.3, 1, 739, 2), 100); // 99.8 points are 199.6 pixels
  EXPECT_EQ(Answering::tickLeft(100.6, 1, 739, 2), 100);
  EXPECT_EQ(Answering::tickLeft(100.8, 1, 739, 2), 100.5);
}

RC_GTEST_PROP(TickLaws, AreOnTheGridAndNearTheirPlace, ()) {
  const double ratio = *rc::gen::element(1.0, 1.25, 1.5, 2.0, 3.0);
  const double strip = *rc::gen::inRange(200, 2000);
  const double x = *rc::gen::inRange(0, 10000) * strip / 10000;
  const double left = Answering::tickLeft(x, 1, strip, ratio);
  RC_ASSERT(std::abs(left * ratio - std::round(left * ratio)) < 1e-6);
  RC_ASSERT(left >= 0);
  RC_ASSERT(left <= strip);
  RC_ASSERT(std::abs(left + 0.5 - x) <= 1);
}

namespace {

struct Box {
  double left, top, right, bottom;
};

Box boxOf(const Answering::ChipPlace& place, double width) {
  return {place.x, place.y, place.x + width, place.y + Answering::chipHeight};
}

bool overlap(const Box& a, const Box& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

// A bar is 2 points wide.
bool crosses(double bar, const Box& chip) {
  return bar + 1 > chip.left && bar - 1 < chip.right;
}

} // namespace

TEST(Chips, StandRightOfTheirBar) {
  const auto places = Answering::placeChips(Answering::MarkerSize{300, 60}, std::nullopt, 739);
  EXPECT_EQ(places.answer, (Answering::ChipPlace{306, 6}));
}

TEST(Chips, GoLeftWhereTheyWouldLeaveTheStrip) {
  const auto places = Answering::placeChips(Answering::MarkerSize{700, 60}, std::nullopt, 739);
  EXPECT_EQ(places.answer, (Answering::ChipPlace{634, 6}));
}

TEST(Chips, OfCloseMarkersTurnAwayFromEachOther) {
  const auto places =
      Answering::placeChips(Answering::MarkerSize{211, 60}, Answering::MarkerSize{280, 104}, 739);
  EXPECT_EQ(places.answer, (Answering::ChipPlace{145, 6}));
  EXPECT_EQ(places.truth, (Answering::ChipPlace{286, 6}));
}

TEST(Chips, StackWhereThereIsNoRoomBesideEachOther) {
  const auto left =
      Answering::placeChips(Answering::MarkerSize{10, 60}, Answering::MarkerSize{30, 104}, 739);
  EXPECT_EQ(left.answer, (Answering::ChipPlace{36, 6}));
  EXPECT_EQ(left.truth, (Answering::ChipPlace{36, 30}));
  const auto right =
      Answering::placeChips(Answering::MarkerSize{735, 60}, Answering::MarkerSize{720, 104}, 739);
  EXPECT_EQ(right.truth, (Answering::ChipPlace{610, 6}));
  EXPECT_EQ(right.answer, (Answering::ChipPlace{654, 30}));
}

RC_GTEST_PROP(ChipLaws, StayInsideTheStripClearOfBarsAndOfEachOther, ()) {
  const double strip = *rc::gen::inRange(560, 2400);
  const auto marker = [strip](int widest) {
    return Answering::MarkerSize{*rc::gen::inRange(0, 10001) * strip / 10000,
                                 static_cast<double>(*rc::gen::inRange(30, widest))};
  };
  const Answering::MarkerSize answer = marker(80);
  const Answering::MarkerSize truth = marker(130);
  const auto places = Answering::placeChips(answer, truth, strip);
  const Box a = boxOf(places.answer, answer.chipWidth);
  const Box t = boxOf(places.truth, truth.chipWidth);
  for (const Box& box : {a, t}) {
    RC_ASSERT(box.left >= 0);
    RC_ASSERT(box.right <= strip);
    RC_ASSERT(box.top >= 0);
    RC_ASSERT(box.bottom <= Answering::stripHeight - 22); // clear of the ticks
    RC_ASSERT(!crosses(answer.x, box));
    RC_ASSERT(!crosses(truth.x, box));
  }
  RC_ASSERT(!overlap(a, t));
}
