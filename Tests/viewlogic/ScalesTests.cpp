#include "Scales.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace velto;

namespace {

std::vector<std::string> labels(const std::vector<ScaleTick>& ticks) {
  std::vector<std::string> texts;
  for (const ScaleTick& tick : ticks)
    if (!tick.label.empty())
      texts.push_back(tick.label);
  return texts;
}

} // namespace

TEST(Scales, HaveTheEndsAndStepsOfTheDrills) {
  EXPECT_EQ(frequencyScale.lowest, 40);
  EXPECT_EQ(frequencyScale.highest, 16000);
  EXPECT_EQ(levelScale.lowest, 0);
  EXPECT_EQ(levelScale.highest, 7);
  EXPECT_EQ(levelScale.step, 0.05);
  EXPECT_EQ(dynamicsScale.lowest, 0);
  EXPECT_EQ(dynamicsScale.highest, 14);
  EXPECT_EQ(dynamicsScale.step, 0.5);
}

TEST(FrequencyScale, IsLogarithmic) {
  EXPECT_DOUBLE_EQ(frequencyScale.position(40, 700), 0);
  EXPECT_DOUBLE_EQ(frequencyScale.position(16000, 700), 700);
  EXPECT_NEAR(frequencyScale.position(800, 700), 350, 1e-9); // the geometric middle of 40 and 16000
  EXPECT_NEAR(frequencyScale.position(1000, 739), 397.0230, 1e-3); // 739 log(25) / log(400)
}

TEST(FrequencyScale, ClicksAtTheEndsGiveTheEnds) {
  EXPECT_EQ(frequencyScale.valueAt(0, 700), 40);
  EXPECT_EQ(frequencyScale.valueAt(700, 700), 16000);
  EXPECT_EQ(frequencyScale.valueAt(-50, 700), 40);
  EXPECT_EQ(frequencyScale.valueAt(9999, 700), 16000);
}

TEST(FrequencyScale, ClicksGiveTheNearerCentre) {
  const double middle = frequencyScale.position(std::sqrt(1000.0 * 1250.0), 700);
  EXPECT_EQ(frequencyScale.valueAt(middle - 0.01, 700), 1000);
  EXPECT_EQ(frequencyScale.valueAt(middle + 0.01, 700), 1250);
}

RC_GTEST_PROP(FrequencyScaleLaws, AClickOnACentreGivesIt, ()) {
  const auto index = *rc::gen::inRange<std::size_t>(0, 27);
  const double width = *rc::gen::inRange(200, 4000);
  const double centre = Bands::centres[index];
  RC_ASSERT(frequencyScale.valueAt(frequencyScale.position(centre, width), width) == centre);
}

TEST(FrequencyScale, AStripOfZeroWidthGivesTheLowerEnd) {
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
  // On a scale that covers only a part of the bands.
  constexpr FrequencyScale voice{.lowest = 300, .highest = 3400};
  EXPECT_EQ(voice.moved(1000, Move::toStart), 315);
  EXPECT_EQ(voice.moved(1000, Move::toEnd), 3150);
  EXPECT_EQ(voice.moved(3150, Move::right), 3150);
}

TEST(FrequencyScale, RoundsAnyNumberToTheNearestBand) {
  EXPECT_EQ(frequencyScale.nearest(1000), 1000);
  EXPECT_EQ(frequencyScale.nearest(1100), 1000); // a tie on the axis lies at 1118 Hz
  EXPECT_EQ(frequencyScale.nearest(1130), 1250);
  EXPECT_EQ(frequencyScale.nearest(-5), 40);
  EXPECT_EQ(frequencyScale.nearest(1e12), 16000);
}

TEST(FrequencyScale, SpokenTextHasTheUnit) {
  EXPECT_EQ(FrequencyScale::spoken(40), "40 Hz");
  EXPECT_EQ(FrequencyScale::spoken(315), "315 Hz");
  EXPECT_EQ(FrequencyScale::spoken(1000), "1 kHz");
  EXPECT_EQ(FrequencyScale::spoken(3150), "3.15 kHz");
  EXPECT_EQ(FrequencyScale::spoken(12500), "12.5 kHz");
}

RC_GTEST_PROP(FrequencyScaleLaws, OppositeKeysCancelOut, ()) {
  const auto index = *rc::gen::inRange<std::size_t>(1, 26);
  const double centre = Bands::centres[index];
  RC_ASSERT(frequencyScale.moved(frequencyScale.moved(centre, Move::right), Move::left) == centre);
  RC_ASSERT(frequencyScale.moved(frequencyScale.moved(centre, Move::down), Move::up) == centre);
}

TEST(FrequencyScale, HasATickForEachCentreAndTallOnesForDecades) {
  const auto ticks = frequencyScale.ticks();
  ASSERT_EQ(ticks.size(), 27U);
  for (std::size_t i = 0; i < ticks.size(); ++i) {
    const bool decade = i == 4 || i == 14 || i == 24;
    EXPECT_EQ(ticks[i].value, Bands::centres[i]);
    EXPECT_EQ(ticks[i].major, decade);
    EXPECT_EQ(ticks[i].height, decade ? 22 : 12);
  }
  EXPECT_EQ(labels(ticks), (std::vector<std::string>{"100", "1k", "10k"}));
}

TEST(FrequencyScale, HasNoTickBeyondItsEnds) {
  const auto ticks = FrequencyScale{.lowest = 300, .highest = 3400}.ticks();
  ASSERT_EQ(ticks.size(), 11U);
  EXPECT_EQ(ticks.front().value, 315);
  EXPECT_EQ(ticks.back().value, 3150);
}

TEST(FrequencyScale, TextHasTheUnit) {
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

RC_GTEST_PROP(DecibelScaleLaws, KeysStayOnTheGridOfClicks, ()) {
  const DecibelScale scale = *rc::gen::element(levelScale, dynamicsScale);
  const auto steps = static_cast<int>(std::lround(scale.highest / scale.step));
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

TEST(DecibelScale, RoundsAnyNumberToTheNearestStep) {
  EXPECT_NEAR(levelScale.nearest(2.03), 2.05, 1e-12);
  EXPECT_NEAR(dynamicsScale.nearest(2.2), 2, 1e-12);
  EXPECT_EQ(levelScale.nearest(-1), 0);
  EXPECT_FALSE(std::signbit(levelScale.nearest(-0.01)));
  EXPECT_NEAR(levelScale.nearest(1e12), 7, 1e-12);
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

TEST(DecibelScale, TextHasTwoDecimals) {
  EXPECT_EQ(DecibelScale::text(2.65), "2.65 dB");
  EXPECT_EQ(DecibelScale::text(5), "5.00 dB");
}
