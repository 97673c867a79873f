#include "Staircase.h"

#include "Numbers.h"

#include <algorithm>

namespace velto {

void Staircase::record(bool correct) {
  const double step = reversals <= 1 ? 12 : reversals <= 3 ? 8 : reversals <= 6 ? 5 : 3;

  std::int64_t direction = 0;
  if (correct) {
    consecutiveCorrect = Numbers::saturatingIncrement(consecutiveCorrect);
    if (consecutiveCorrect < 2)
      return;
    difficulty = std::min(difficulty + step, 100.0);
    direction = 1;
  } else {
    difficulty = std::max(difficulty - step, 0.0);
    direction = -1;
  }
  consecutiveCorrect = 0;
  if (lastDirection != 0 && lastDirection != direction)
    reversals = Numbers::saturatingIncrement(reversals);
  lastDirection = direction;
}

} // namespace velto
