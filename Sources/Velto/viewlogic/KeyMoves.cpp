#include "KeyMoves.h"

namespace velto {

std::int64_t KeyMoves::steps(Move move, std::int64_t page) {
  constexpr std::int64_t beyond = 1'000'000;
  switch (move) {
  case Move::left:
  case Move::down:
    return -1;
  case Move::right:
  case Move::up:
    return 1;
  case Move::pageDown:
    return -page;
  case Move::pageUp:
    return page;
  case Move::toStart:
    return -beyond;
  case Move::toEnd:
    break;
  }
  return beyond;
}

int KeyMoves::movedChoice(int chosen, int count, Move move) {
  if (count < 1)
    return -1;
  switch (move) {
  case Move::left:
  case Move::up:
    return chosen > 0 ? chosen - 1 : count - 1;
  case Move::right:
  case Move::down:
    return chosen < count - 1 ? chosen + 1 : 0;
  case Move::toStart:
    return 0;
  case Move::toEnd:
    return count - 1;
  case Move::pageUp:
  case Move::pageDown:
    break;
  }
  return chosen;
}

} // namespace velto
