#include "LaunchOptions.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

using namespace velto;

namespace {

LaunchOptions optionsOf(std::initializer_list<std::string> arguments) {
  std::vector<std::string> list{"velto"};
  list.insert(list.end(), arguments);
  return launchOptions(Arguments(list));
}

} // namespace

TEST(LaunchOptions, AreEmptyWithoutSwitches) {
  const auto options = optionsOf({});
  EXPECT_FALSE(options.shotPath);
  EXPECT_EQ(options.drill, Drill::frequency);
  EXPECT_FALSE(options.scriptedAnswer);
  EXPECT_FALSE(options.fixedDark);
  EXPECT_FALSE(options.fair);
}

TEST(LaunchOptions, AcceptFairAtAnyPosition) {
  EXPECT_TRUE(optionsOf({"--fair"}).fair);
  EXPECT_TRUE(optionsOf({"--drill", "level", "--fair"}).fair);
  EXPECT_EQ(optionsOf({"--fair", "--drill", "level"}).drill, Drill::level);
  for (const char* text : {"fair", "-fair", "--Fair", "--fair=1"})
    EXPECT_FALSE(optionsOf({text}).fair) << text;
}

TEST(LaunchOptions, AcceptValuesInAnyOrder) {
  const auto options = optionsOf({"--drill", "polarity", "--shot", "out.png", "--answer", "1"});
  EXPECT_EQ(options.drill, Drill::polarity);
  EXPECT_EQ(options.shotPath, "out.png");
  EXPECT_EQ(options.scriptedAnswer, 1.0);
  EXPECT_EQ(optionsOf({"--answer", "1", "--drill", "level"}).drill, Drill::level);
}

TEST(LaunchOptions, IgnoreUnknownDrillsAndInvalidNumbers) {
  EXPECT_EQ(optionsOf({"--drill", "Level"}).drill, Drill::frequency);
  EXPECT_EQ(optionsOf({"--drill", "loudness"}).drill, Drill::frequency);
  for (const char* text : {"", "three", "1,5"})
    EXPECT_FALSE(optionsOf({"--answer", text}).scriptedAnswer) << text;
}

TEST(LaunchOptions, OnlyTheWordLightSelectsLight) {
  EXPECT_EQ(optionsOf({"--appearance", "light"}).fixedDark, false);
  for (const char* word : {"dark", "xyz", "Light", ""})
    EXPECT_EQ(optionsOf({"--appearance", word}).fixedDark, true) << word;
}

TEST(LaunchOptions, IgnoreASwitchWithoutAValue) {
  EXPECT_FALSE(optionsOf({"--shot"}).shotPath);
  EXPECT_FALSE(optionsOf({"--answer"}).scriptedAnswer);
  EXPECT_FALSE(optionsOf({"--appearance"}).fixedDark);
  EXPECT_EQ(optionsOf({"--drill"}).drill, Drill::frequency);
}

TEST(Arguments, TheFirstOccurrenceOfASwitchWins) {
  EXPECT_EQ(optionsOf({"--drill", "level", "--drill", "polarity"}).drill, Drill::level);
  // A switch may itself be the value of another one.
  EXPECT_EQ(optionsOf({"--shot", "--drill", "level"}).shotPath, "--drill");
  EXPECT_EQ(optionsOf({"--shot", "--drill", "level"}).drill, Drill::level);
}
