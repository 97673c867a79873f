#include "PageKeys.h"

#include <gtest/gtest.h>

using namespace velto;
using Command = PageKeys::Command;

TEST(PageKeyNames, MeanWhatTheWindowsKeysMean) {
  const auto command = [](std::string_view key) { return PageKeys::command({.key = key}); };
  EXPECT_EQ(command(" "), Command::cycleSlot);
  EXPECT_EQ(command("1"), Command::firstSlot);
  EXPECT_EQ(command("2"), Command::secondSlot);
  EXPECT_EQ(command("3"), Command::thirdSlot);
  EXPECT_EQ(command("n"), Command::newTrial);
  EXPECT_EQ(command("Enter"), Command::advance);
  for (const char* key : {"", "0", "4", "N", "m", "Tab", "ArrowLeft", "Escape"})
    EXPECT_EQ(command(key), std::nullopt) << key;
  const auto move = [](std::string_view key) { return PageKeys::move({.key = key}); };
  EXPECT_EQ(move("ArrowLeft"), Move::left);
  EXPECT_EQ(move("ArrowRight"), Move::right);
  EXPECT_EQ(move("ArrowUp"), Move::up);
  EXPECT_EQ(move("ArrowDown"), Move::down);
  EXPECT_EQ(move("PageUp"), Move::pageUp);
  EXPECT_EQ(move("PageDown"), Move::pageDown);
  EXPECT_EQ(move("Home"), Move::toStart);
  EXPECT_EQ(move("End"), Move::toEnd);
  for (const char* key : {"", " ", "Enter", "Left"})
    EXPECT_EQ(move(key), std::nullopt) << key;
}
