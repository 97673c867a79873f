#include "KeyMoves.h"

#include <gtest/gtest.h>

using namespace velto;

TEST(MovedChoice, WrapsAroundAndStartsFromEitherEnd) {
  using KeyMoves::movedChoice;
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

TEST(KeySteps, MoveByOneOrByAPageOrPastTheEnd) {
  EXPECT_EQ(KeyMoves::steps(Move::right, 20), 1);
  EXPECT_EQ(KeyMoves::steps(Move::up, 20), 1);
  EXPECT_EQ(KeyMoves::steps(Move::left, 20), -1);
  EXPECT_EQ(KeyMoves::steps(Move::down, 20), -1);
  EXPECT_EQ(KeyMoves::steps(Move::pageUp, 20), 20);
  EXPECT_EQ(KeyMoves::steps(Move::pageDown, 20), -20);
  EXPECT_GT(KeyMoves::steps(Move::toEnd, 20), 10000);
  EXPECT_LT(KeyMoves::steps(Move::toStart, 20), -10000);
}
