#include "Wording.h"

#include <gtest/gtest.h>

using namespace velto;

TEST(Wording, HasATitleAndAPromptForEachDrill) {
  const struct {
    Drill drill;
    const char* title;
    const char* prompt;
  } rows[] = {
      {Drill::frequency, "Frequency", "One band is boosted. Point at it."},
      {Drill::level, "Level", "B is louder than A. By how much?"},
      {Drill::dynamics, "Dynamics", "B is compressed, loudness-matched. How much gain reduction?"},
      {Drill::polarity, "Polarity", "One of the three has a flipped channel. Which?"}};
  for (const auto& row : rows) {
    EXPECT_EQ(Wording::title(row.drill), row.title);
    EXPECT_EQ(Wording::prompt(row.drill), row.prompt);
  }
}

TEST(Wording, HasShortNamesOfMaterials) {
  EXPECT_EQ(Wording::title(Material(Material::pinkNoise)), "Pink");
  EXPECT_EQ(Wording::title(Material(Material::drums)), "Drums");
  EXPECT_EQ(Wording::title(Material(Material::pad)), "Pad");
}

TEST(Wording, SlotsHaveLettersExceptInPolarity) {
  for (const Drill drill : {Drill::frequency, Drill::level, Drill::dynamics}) {
    EXPECT_EQ(Wording::slotTitle(drill, 0), "A");
    EXPECT_EQ(Wording::slotTitle(drill, 1), "B");
  }
  EXPECT_EQ(Wording::slotTitle(Drill::polarity, 0), "1");
  EXPECT_EQ(Wording::slotTitle(Drill::polarity, 2), "3");
}

TEST(Wording, JoinsTheVerdictInAFixedOrder) {
  const Trial trial{.drill = Drill::frequency, .targetFreq = 3150};
  EXPECT_EQ(Wording::verdictDetail(Drills::grade(1000, trial)),
            "you 1k Hz   ·   actual 3.15k Hz   ·   1.66 oct off");
  EXPECT_EQ(Wording::announcement(Drills::grade(1000, trial)),
            "MISS, you 1k Hz, actual 3.15k Hz, 1.66 oct off");
  EXPECT_EQ(Wording::verdict(true), "HIT");
  EXPECT_EQ(Wording::verdict(false), "MISS");
}

TEST(Wording, NamesAnswers) {
  EXPECT_EQ(Wording::answerName(Drill::frequency), "Frequency");
  EXPECT_EQ(Wording::answerName(Drill::level), "How much louder");
  EXPECT_EQ(Wording::answerName(Drill::dynamics), "How much gain reduction");
  EXPECT_EQ(Wording::answerName(Drill::polarity), "Flipped slot");
}

TEST(Wording, NamesControlsForScreenReaders) {
  EXPECT_EQ(Wording::playName("A"), "Play A");
  EXPECT_EQ(Wording::slotName(0), "Slot 1");
  EXPECT_EQ(Wording::spokenDifficulty("20"), "Difficulty, 20");
  EXPECT_EQ(Wording::spokenProgress("3 of 20"), "Trial 3 of 20");
}

TEST(Wording, SpeaksTheRightAnswerOnceItIsKnown) {
  EXPECT_EQ(Wording::spokenAnswer("1 kHz", ""), "1 kHz");
  EXPECT_EQ(Wording::spokenAnswer("1 kHz", "3.15 kHz"), "1 kHz, actual 3.15 kHz");
}

TEST(Wording, CaptionsSlotsOnceTheFlippedOneIsKnown) {
  EXPECT_EQ(Wording::slotCaption(1, std::nullopt), "?");
  EXPECT_EQ(Wording::slotCaption(1, 1), "FLIPPED");
  EXPECT_EQ(Wording::slotCaption(1, 2), "in phase");
}

TEST(Wording, SaysWhatThePrimaryButtonDoes) {
  EXPECT_EQ(Wording::primary(false, false), "Submit");
  EXPECT_EQ(Wording::primary(true, false), "Next");
  EXPECT_EQ(Wording::primary(true, true), "Close");
  using Texts = std::vector<std::string_view>;
  EXPECT_EQ(Wording::primaryTexts(false), (Texts{"Submit", "Next"}));
  EXPECT_EQ(Wording::primaryTexts(true), (Texts{"Submit", "Next", "Close"}));
}

TEST(Wording, SaysWhatHappensBeforeTheVerdict) {
  EXPECT_EQ(Wording::status(true, false), "rendering…");
  EXPECT_EQ(Wording::status(false, true), "saving…");
  EXPECT_EQ(Wording::status(false, false), "listen, then answer");
}
